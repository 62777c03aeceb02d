#include "app/program_operations.h"

#include "analysis/background_model.h"
#include "analysis/background_view.h"
#include "analysis/channel_view.h"
#include "analysis/pixel_probe.h"

namespace tessaro {
void ProgramOperations::AdoptMainWindow(WindowHandle window) {
    m_globals.windows.main = window;
}

void ProgramOperations::GrabFrame(int exposures) {
    m_services.currentField.GrabFrame(exposures);
}

void ProgramOperations::ShowFrame() {
    m_services.currentField.ShowFrame();
}

void ProgramOperations::ComputeFrameStatistics() {
    m_services.currentField.ComputeFrameStatistics();
}

void ProgramOperations::UpdateFocusMeasures() {
    m_services.focusMeter.UpdateFocusMeasures(m_globals.frame);
}

void ProgramOperations::ControlCamera(int mode) {
    m_services.camera.ControlCamera(mode);
}

void ProgramOperations::ShowChannel(int mode) {
    tessaro::ShowChannel(m_services.screen, m_globals.camera.workingFrame, mode);
}

void ProgramOperations::ShowBackground(bool fitted) {
    tessaro::ShowBackground(m_services.screen, m_globals.measured.background, fitted);
}

void ProgramOperations::ResetBackgroundModel() {
    tessaro::ResetBackgroundModel(m_globals.analyzer.backgroundModel, m_globals.frame);
}

void ProgramOperations::FitBackgroundModel() {
    tessaro::FitBackgroundModel(m_globals.analyzer.backgroundModel, m_globals.measured.background);
}

void ProgramOperations::FindCandidates(bool paint) {
    m_services.currentField.FindCandidates(paint);
}

void ProgramOperations::RejectNoise() {
    m_services.currentField.RejectNoise();
}

void ProgramOperations::GroupGrains() {
    m_services.currentField.GroupGrains();
}

void ProgramOperations::DecideSingleLayers() {
    m_services.currentField.DecideSingleLayers();
}

void ProgramOperations::ProbePixel(std::uint32_t position) {
    tessaro::ProbePixel(m_globals.frame, m_globals.measured.background, position, m_services.ui.boxes,
                        m_globals.windows.main, m_globals.settings);
}

void ProgramOperations::MakeSessionFolders(int newSession) {
    m_services.images.MakeSessionFolders(newSession);
}

void ProgramOperations::SavePlainImage() {
    m_services.images.SavePlainImage(m_globals.camera.workingFrame, m_globals.findings);
}

void ProgramOperations::SaveDetailImage() {
    m_services.images.SaveDetailImage();
}

void ProgramOperations::ChooseImportFile() {
    const auto chosen = m_services.ui.chooser.ChooseFileToOpen();
    if (!chosen.has_value())
        return;
    m_globals.folders.importedFile = chosen;
    ShowInformation("File:" + chosen->string());
}

bool ProgramOperations::HasImportFile() {
    return m_globals.folders.importedFile.has_value();
}

void ProgramOperations::LoadImportFile() {
    m_services.screen.LoadPictureFile(*m_globals.folders.importedFile, m_globals.scan.imageArea,
                                      m_services.ui.folders, m_services.ui.pictures,
                                      m_globals.camera.workingFrame);
}

void ProgramOperations::MoveAxisBy(int axis, double um) {
    m_services.stageMotion.MoveAxisBy(axis, um);
}

void ProgramOperations::MoveToScanOrigin() {
    m_services.stageMotion.MoveXY(m_globals.scan.originX, m_globals.scan.originY);
}

void ProgramOperations::FineFocus() {
    m_services.autoFocus.FineFocus(m_services.autoFocus.Hint(), 1);
}

void ProgramOperations::RunScan() {
    m_services.scanRun.RunScan();
}

void ProgramOperations::OpenControlPanel() {
    m_services.controlPanel.Open(m_globals.windows.main);
}

void ProgramOperations::OpenPortConfiguration() {
    m_services.portDialog.Open(m_globals.windows.main);
}

void ProgramOperations::CloseDialogs() {
    m_services.controlPanel.Close();
    m_services.portDialog.Close();
}

void ProgramOperations::ConfigureContrast() {
    m_services.contrastDialog.Show(m_globals.windows.main);
}

void ProgramOperations::ConfigureStage() {
    m_services.stageDialog.Show(m_globals.windows.main);
}

void ProgramOperations::ShowAbout() {
    m_services.aboutBox.Show(m_globals.windows.main);
}

void ProgramOperations::SwitchLiveView(std::int32_t on) {
    m_services.liveView.Switch(on);
}

void ProgramOperations::StopLiveTimer() {
    m_services.ui.messages.KillTimer(m_globals.windows.main, liveTimerId);
}

std::int32_t ProgramOperations::LiveViewOn() {
    return m_globals.liveTimer.on;
}

std::int32_t ProgramOperations::LiveViewBefore() {
    return m_globals.liveTimer.previous;
}

bool ProgramOperations::Scanning() {
    return m_globals.scan.scanning != 0;
}

void ProgramOperations::ShowInformation(std::string_view text) {
    m_services.status.ShowInformation(text);
}

void ProgramOperations::ShowProgress(std::string_view text) {
    m_services.status.ShowProgress(text);
}

void ProgramOperations::ShowStagePosition() {
    m_services.status.ShowStagePosition();
}

float ProgramOperations::NoiseLevel() {
    return m_globals.measured.noiseLevel;
}

float ProgramOperations::FocusValue() {
    return m_globals.focusValue;
}

void ProgramOperations::Wait(std::uint32_t milliseconds) {
    m_services.pump.PumpMessages(milliseconds);
}

void ProgramOperations::TakeKeyboardFocus() {
    m_services.ui.windows.SetKeyboardFocus(m_globals.windows.main);
}

void ProgramOperations::DestroyMainWindow() {
    m_services.ui.windows.Destroy(m_globals.windows.main);
}

void ProgramOperations::PostQuit(int exitCode) {
    m_services.ui.messages.PostQuit(exitCode);
}

} // namespace tessaro
