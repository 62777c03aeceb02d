#include "app/unattended_scan.h"

#include "app/camera_settling.h"
#include "app/number_text.h"

#include <algorithm>

namespace tessaro {
namespace {

constexpr int questionsToTheStage = 3;

/// On its line, and answering. An open line may have a controller at its end that is switched off.
bool IsStageThere(StageLink& stage) {
    for (int question = 0; question < questionsToTheStage && stage.offline == 0; ++question) {
        stage.QueryPosition(axisX);
        if (stage.offline == 0 && stage.lastResult == 1 && stage.bytesTransferred > 0)
            return true;
    }
    return false;
}

const char* WhyItEnded(ScanEnd why) {
    switch (why) {
    case ScanEnd::FocusFailed:
        return "tessaro: focusing failed, no field was scanned\n";
    case ScanEnd::Interrupted:
        return "tessaro: another scan or a search for the focus ended the scan\n";
    default:
        return "tessaro: the scan was stopped\n";
    }
}

} // namespace

void UnattendedScanRun::SetUp(Globals& globals) const {
    globals.scan.originX = m_options.originX;
    globals.scan.originY = m_options.originY;
    if (m_options.noTilt)
        globals.focusControl.tiltCorrection = 0;
}

void UnattendedScanRun::TakeRanges(Services& services) {
    Settings& settings = services.globals.settings;
    m_xRange = {settings.xRange, m_options.xRange.value_or(settings.xRange)};
    m_yRange = {settings.yRange, m_options.yRange.value_or(settings.yRange)};
    settings.xRange = m_xRange.ofScan;
    settings.yRange = m_yRange.ofScan;
    services.controlPanel.ShowRanges(); // or what it shows would win
}

void UnattendedScanRun::GiveRangesBack(Settings& settings) const {
    if (settings.xRange == m_xRange.ofScan)
        settings.xRange = m_xRange.ofSettings;
    if (settings.yRange == m_yRange.ofScan)
        settings.yRange = m_yRange.ofSettings;
}

void UnattendedScanRun::ScanAndClose(Services& services) {
    m_exitCode = Scan(services);
    if (!services.ui.messages.HasQuit())
        services.ui.windows.Destroy(services.globals.windows.main);
}

int UnattendedScanRun::Scan(Services& services) {
    if (IsOver(services))
        return unattended_exit::stopped;
    if (!HasDevices(services))
        return unattended_exit::deviceMissing;
    GoToOrigin(services);
    CameraSettling camera(services, [&] { return IsOver(services); });
    camera.Wait();
    if (IsOver(services))
        return unattended_exit::stopped;
    m_cameraIsMissing = !camera.GivesImages();
    if (m_cameraIsMissing)
        return unattended_exit::deviceMissing;
    m_globals = &services.globals;
    services.scanRun.RunScan();
    m_globals = nullptr;
    m_stageWasLost = services.globals.stage.offline != 0;
    return m_why == ScanEnd::Completed ? unattended_exit::completed : unattended_exit::stopped;
}

bool UnattendedScanRun::IsOver(Services& services) const {
    return services.ui.messages.HasQuit() || m_interrupted();
}

bool UnattendedScanRun::HasDevices(Services& services) {
    m_cameraIsMissing = services.globals.camera.present == 0;
    m_stageIsMissing = !IsStageThere(services.globals.stage);
    return !m_cameraIsMissing && !m_stageIsMissing;
}

/// The camera adjusts itself to what the scan begins with. And the scan knows exactly where it begins: a move
/// of both axes asks only one of them where it has arrived.
void UnattendedScanRun::GoToOrigin(Services& services) {
    const ScanState& scan = services.globals.scan;
    services.stageMotion.MoveXY(scan.originX, scan.originY);
    services.globals.stage.QueryPosition(axisX);
    services.globals.stage.QueryPosition(axisY);
    services.status.ShowStagePosition();
}

void UnattendedScanRun::FieldFinished([[maybe_unused]] const ScannedField& field) {
    if (m_globals == nullptr)
        return;
    ++m_fields;
    m_found += CountSingleLayers(m_globals->findings);
    m_fieldsWithoutImage += m_globals->camera.patternStandsIn ? 1 : 0;
}

void UnattendedScanRun::Tell(TerminalStatus& terminal, const WriteText& errors) const {
    terminal.EndLine();
    if (m_why.has_value())
        terminal.Say(
            Formatted("%d fields scanned, %d single layers marked; one that lies in two fields counts "
                      "twice.",
                      m_fields, m_found));
    TellWhatIsMissing(errors);
    TellWhatWasLost(errors);
    if (m_exitCode == unattended_exit::notStarted)
        errors("tessaro: there is no window to begin with\n");
    else if (m_exitCode == unattended_exit::stopped)
        errors(WhyItEnded(m_why.value_or(ScanEnd::Stopped)));
}

std::vector<std::string> UnattendedScanRun::WhyItDidNotBegin() const {
    if (m_why.has_value())
        return {};
    if (m_exitCode == unattended_exit::notStarted)
        return {"there is no window to begin with"};
    std::vector<std::string> reasons;
    if (m_cameraIsMissing)
        reasons.emplace_back("no camera gives images");
    if (m_stageIsMissing)
        reasons.emplace_back("no stage answers");
    if (reasons.empty())
        reasons.emplace_back("it was stopped before");
    return reasons;
}

void UnattendedScanRun::TellWhatIsMissing(const WriteText& errors) const {
    if (m_cameraIsMissing)
        errors("tessaro: no camera gives images, nothing was scanned\n");
    if (m_stageIsMissing)
        errors("tessaro: no stage answers, nothing was scanned\n");
}

/// The scan goes on then, as with an operator: on a simulated stage, or with the test pattern.
void UnattendedScanRun::TellWhatWasLost(const WriteText& errors) const {
    if (m_stageWasLost)
        errors("tessaro: the line to the stage was lost during the scan: later fields are not where they "
               "were meant to be\n");
    if (m_fieldsWithoutImage > 0)
        errors(
            Formatted("tessaro: the camera was lost during the scan: %d of %d fields show a test pattern\n",
                      m_fieldsWithoutImage, m_fields));
}

} // namespace tessaro
