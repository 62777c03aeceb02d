#include "scan/contrast_dialog.h"

#include "app/dialog_numbers.h"
#include "app/resource_ids.h"
#include "scan/contrast_presets.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace tessaro {
namespace {

namespace control {
constexpr int graphene = 1023;
constexpr int hbn = 1024;
constexpr int tmdc = 1033;
constexpr int substrate = 1034;
constexpr int redUp = 1009;
constexpr int redDown = 1010;
constexpr int greenUp = 1050;
constexpr int greenDown = 1011;
constexpr int blueUp = 1016;
constexpr int blueDown = 1051;
constexpr int tolerance = 1020;
constexpr int toleranceUp = 1027;
constexpr int toleranceDown = 1026;
constexpr int flakeArea = 1000;
constexpr int scoreThreshold = 1007;
constexpr int noiseLevel = 1012;
constexpr int focus = 1015;
constexpr int smoothing = 1013;
constexpr int imageRefresh = 1028;
constexpr int testNow = 1008;

constexpr std::array<int, 3> materials = {graphene, hbn, tmdc};
constexpr std::array<int, channelCount> contrast = {1017, 1018, 1019};
constexpr std::array<int, channelCount> background = {1003, 1005, 1006};
} // namespace control

constexpr std::size_t red = 0;
constexpr std::size_t green = 1;
constexpr std::size_t blue = 2;

constexpr float step = 1.0F;               // of a contrast and of the tolerance, percent
constexpr float greatestContrast = 100.0F; // either way
constexpr float greatestTolerance = 90.0F; // by its buttons

/// What is no number leaves the value as it was.
void TakeTyped(Dialogs& dialogs, WindowHandle dialog, int controlId, float& value) {
    value = TypedFloat(dialogs, dialog, controlId).value_or(value);
}

} // namespace

void ContrastDialog::Show(WindowHandle owner) {
    m_reach.dialogs.RunModal(resource::contrastDialog, owner, *this);
}

void ContrastDialog::Initialize(WindowHandle dialog) {
    for (std::size_t i = 0; i < control::materials.size(); ++i)
        m_reach.dialogs.SetChecked(dialog, control::materials[i],
                                   m_reach.settings.material == static_cast<std::int32_t>(i));
    for (const char* name : substrateNames)
        m_reach.dialogs.AddChoice(dialog, control::substrate, name);
    m_reach.dialogs.SelectChoice(dialog, control::substrate, m_reach.choices.substrate);
    ShowSettings(dialog);
    ShowMeasured(dialog);
    m_reach.dialogs.SetChecked(dialog, control::smoothing, m_reach.choices.smoothing == 1);
}

void ContrastDialog::ShowSettings(WindowHandle dialog) {
    ShowContrasts(dialog, "%.1f");
    ShowInteger(m_reach.dialogs, dialog, control::flakeArea, m_reach.settings.minimumFlakeArea);
    ShowNumber(dialog, control::scoreThreshold, "%.1f", m_reach.settings.scoreThreshold);
}

void ContrastDialog::ShowMeasured(WindowHandle dialog) {
    for (std::size_t channel = 0; channel < channelCount; ++channel)
        ShowNumber(dialog, control::background[channel], "%.1f", m_reach.frame.bgPeak[channel]);
    ShowNumber(dialog, control::noiseLevel, "%.1f", m_reach.measured.noiseLevel);
    ShowNumber(dialog, control::focus, "%.1f", m_reach.focusValue);
}

void ContrastDialog::ShowContrasts(WindowHandle dialog, const char* format) {
    for (std::size_t channel = 0; channel < channelCount; ++channel)
        ShowNumber(dialog, control::contrast[channel], format, m_reach.settings.targetContrast[channel]);
    ShowNumber(dialog, control::tolerance, format, m_reach.settings.contrastTolerance);
}

void ContrastDialog::ShowNumber(WindowHandle dialog, int controlId, const char* format, double value) {
    m_reach.dialogs.SetItemText(dialog, controlId, Formatted(format, value));
}

/// A substrate that has been chosen meanwhile goes first, whichever control speaks.
void ContrastDialog::Command(WindowHandle dialog, int controlId, [[maybe_unused]] Notification notification) {
    if (!TakeSubstrate(dialog))
        Act(dialog, controlId);
}

/// False when it is still the same, also where none is chosen: a dialog that is gone answers so.
bool ContrastDialog::TakeSubstrate(WindowHandle dialog) {
    const int chosen = m_reach.dialogs.SelectedChoice(dialog, control::substrate);
    if (chosen < 0 || chosen == m_reach.choices.substrate)
        return false;
    m_reach.choices.substrate = chosen;
    ApplyPreset(dialog);
    return true;
}

void ContrastDialog::Act(WindowHandle dialog, int controlId) {
    switch (controlId) {
    case control::redUp:
        StepContrast(dialog, red, step);
        break;
    case control::redDown:
        StepContrast(dialog, red, -step);
        break;
    case control::greenUp:
        StepContrast(dialog, green, step);
        break;
    case control::greenDown:
        StepContrast(dialog, green, -step);
        break;
    case control::blueUp:
        StepContrast(dialog, blue, step);
        break;
    case control::blueDown:
        StepContrast(dialog, blue, -step);
        break;
    case control::toleranceUp:
        StepTolerance(dialog, step);
        break;
    case control::toleranceDown:
        StepTolerance(dialog, -step);
        break;
    case control::graphene:
        ChooseMaterial(dialog, material::graphene);
        break;
    case control::hbn:
        ChooseMaterial(dialog, material::hbn);
        break;
    case control::tmdc:
        ChooseMaterial(dialog, material::tmdc);
        break;
    case control::smoothing:
        SwitchSmoothing(dialog);
        break;
    case control::imageRefresh:
        RefreshImage();
        break;
    case control::testNow:
        TestNow(dialog);
        break;
    case commandOk: // leaves the dialog open
        Set(dialog);
        break;
    case commandCancel:
        m_reach.dialogs.EndModal(dialog, 0);
        break;
    default:
        break;
    }
}

/// It may go beyond what "Set" allows.
void ContrastDialog::StepContrast(WindowHandle dialog, std::size_t channel, float by) {
    float& contrast = m_reach.settings.targetContrast[channel];
    contrast += by;
    ShowNumber(dialog, control::contrast[channel], "%.0f", contrast);
    FindAgain();
}

void ContrastDialog::StepTolerance(WindowHandle dialog, float by) {
    float& tolerance = m_reach.settings.contrastTolerance;
    tolerance = std::clamp(tolerance + by, 0.0F, greatestTolerance);
    ShowNumber(dialog, control::tolerance, "%.1f", tolerance);
    FindAgain();
}

void ContrastDialog::ChooseMaterial(WindowHandle dialog, std::int32_t material) {
    m_reach.settings.material = material;
    ApplyPreset(dialog);
}

/// Where there is none, the contrasts stay; they are shown anew all the same.
void ContrastDialog::ApplyPreset(WindowHandle dialog) {
    if (const ContrastPreset* preset = PresetFor(m_reach.settings.material, m_reach.choices.substrate)) {
        m_reach.settings.targetContrast = preset->targetContrast;
        m_reach.settings.contrastTolerance = preset->tolerance;
    }
    ShowContrasts(dialog, "%.2f");
}

void ContrastDialog::SwitchSmoothing(WindowHandle dialog) {
    m_reach.choices.smoothing = m_reach.dialogs.IsChecked(dialog, control::smoothing) ? 1 : 0;
    Detect();
}

void ContrastDialog::RefreshImage() {
    m_reach.work.ComputeFrameStatistics();
    m_reach.work.ShowFrame();
}

/// With what is typed, as it is.
void ContrastDialog::TestNow(WindowHandle dialog) {
    for (std::size_t channel = 0; channel < channelCount; ++channel)
        TakeTyped(m_reach.dialogs, dialog, control::contrast[channel],
                  m_reach.settings.targetContrast[channel]);
    TakeTyped(m_reach.dialogs, dialog, control::tolerance, m_reach.settings.contrastTolerance);
    Detect();
}

void ContrastDialog::Set(WindowHandle dialog) {
    m_reach.settings.minimumFlakeArea =
        TypedInteger(m_reach.dialogs, dialog, control::flakeArea).value_or(m_reach.settings.minimumFlakeArea);
    TakeTyped(m_reach.dialogs, dialog, control::scoreThreshold, m_reach.settings.scoreThreshold);
    SetContrasts(dialog);
    SetTolerance(dialog);
}

void ContrastDialog::SetContrasts(WindowHandle dialog) {
    for (std::size_t channel = 0; channel < channelCount; ++channel) {
        float& contrast = m_reach.settings.targetContrast[channel];
        if (const auto typed = TypedFloat(m_reach.dialogs, dialog, control::contrast[channel]))
            contrast = std::clamp(*typed, -greatestContrast, greatestContrast);
        ShowNumber(dialog, control::contrast[channel], "%.1f", contrast);
    }
}

/// No wider than the strongest contrast: beyond it the bare substrate would be found. An empty box is left
/// alone.
void ContrastDialog::SetTolerance(WindowHandle dialog) {
    if (m_reach.dialogs.ItemText(dialog, control::tolerance, numberBytes).empty())
        return;
    const auto& [r, g, b] = m_reach.settings.targetContrast;
    float& tolerance = m_reach.settings.contrastTolerance;
    if (const auto typed = TypedFloat(m_reach.dialogs, dialog, control::tolerance))
        tolerance = std::clamp(*typed, 0.0F, std::max({std::fabs(r), std::fabs(g), std::fabs(b)}));
    ShowNumber(dialog, control::tolerance, "%.1f", tolerance);
}

/// After a step: quick enough to press the button again and again.
void ContrastDialog::FindAgain() {
    m_reach.work.ShowFrame();
    m_reach.work.ComputeFrameStatistics();
    m_reach.work.FindCandidates(true);
}

void ContrastDialog::Detect() {
    m_reach.work.ComputeFrameStatistics();
    m_reach.work.ShowFrame();
    AnalyseFrame(m_reach.work, true);
}

} // namespace tessaro
