#pragma once

#include "app/resource_ids.h"
#include "platform/fake/fake_dialogs.h"
#include "scan/contrast_dialog.h"
#include "support/scripted_field.h"

#include <gtest/gtest.h>

#include <array>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace tessaro {

/// The contrast dialog on a field that takes no time.
class ContrastDialogTest : public testing::Test {
protected:
    using Texts = std::vector<std::string>;
    using Contrasts = std::array<float, 3>; // [red, green, blue]

    static constexpr auto owner = static_cast<WindowHandle>(5);

    /// As when it is shown; from here on the texts that it writes are counted.
    FakeDialogs::Dialog& Open() {
        window = dialogs.CreateModeless(resource::contrastDialog, owner, dialog);
        dialogs.textsSet.clear();
        return Opened();
    }
    FakeDialogs::Dialog& Opened() { return dialogs.dialogs.at(window); }
    void Close() { dialogs.DestroyModeless(window); }

    void Press(int controlId) { dialogs.Notify(window, controlId, Notification::Clicked); }
    void Type(int controlId, const std::string& text) { Opened().texts[controlId] = text; }
    void TypeContrasts(const std::string& red, const std::string& green, const std::string& blue) {
        Type(1017, red);
        Type(1018, green);
        Type(1019, blue);
    }
    void SwitchBox(int controlId, bool checked) {
        dialogs.SetChecked(window, controlId, checked);
        Press(controlId);
    }
    void ChooseSubstrate(int place) {
        dialogs.SelectChoice(window, 1034, place);
        dialogs.Notify(window, 1034, Notification::SelectionChanged);
    }

    /// Red, green, blue and the tolerance.
    Texts ContrastTexts() {
        std::map<int, std::string>& texts = Opened().texts;
        return {texts[1017], texts[1018], texts[1019], texts[1020]};
    }
    void SetContrasts(Contrasts contrasts, float tolerance) {
        settings.targetContrast = contrasts;
        settings.contrastTolerance = tolerance;
    }

    const Texts quickly = {"show", "statistics", "find and paint"};
    const Texts inFull = {"statistics", "show", "find and paint", "reject noise", "group", "decide"};

    FakeDialogs dialogs;
    Settings settings;
    ContrastChoices choices;
    FrameRecord frame;
    std::unique_ptr<FrameMeasurements> measured = std::make_unique<FrameMeasurements>();
    float focusValue = 10.0F;
    ScriptedField field;
    ContrastDialog dialog{{dialogs, settings, choices, frame, *measured, focusValue, field}};
    WindowHandle window = WindowHandle::None;
};

} // namespace tessaro
