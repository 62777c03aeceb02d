#pragma once

#include "app/operations.h"
#include "app/services.h"

namespace tessaro {

/// The operations of the main window, done.
class ProgramOperations : public Operations {
public:
    explicit ProgramOperations(Services& services) : m_services(services), m_globals(services.globals) {}

    void AdoptMainWindow(WindowHandle window) override;
    void GrabFrame(int exposures) override;
    void ShowFrame() override;
    void ComputeFrameStatistics() override;
    void UpdateFocusMeasures() override;
    void ControlCamera(int mode) override;
    void ShowChannel(int mode) override;
    void ShowBackground(bool fitted) override;
    void ResetBackgroundModel() override;
    void FitBackgroundModel() override;
    void FindCandidates(bool paint) override;
    void RejectNoise() override;
    void GroupGrains() override;
    void DecideSingleLayers() override;
    void ProbePixel(std::uint32_t position) override;
    void MakeSessionFolders(int newSession) override;
    void SavePlainImage() override;
    void SaveDetailImage() override;
    void ChooseImportFile() override;
    bool HasImportFile() override;
    void LoadImportFile() override;
    void MoveAxisBy(int axis, double um) override;
    void MoveToScanOrigin() override;
    void FineFocus() override;
    void RunScan() override;
    void OpenControlPanel() override;
    void OpenPortConfiguration() override;
    void CloseDialogs() override;
    void ConfigureContrast() override;
    void ConfigureStage() override;
    void ShowAbout() override;
    void SwitchLiveView(std::int32_t on) override;
    void StopLiveTimer() override;
    std::int32_t LiveViewOn() override;
    std::int32_t LiveViewBefore() override;
    bool Scanning() override;
    void ShowInformation(std::string_view text) override;
    void ShowProgress(std::string_view text) override;
    void ShowStagePosition() override;
    float NoiseLevel() override;
    float FocusValue() override;
    void Wait(std::uint32_t milliseconds) override;
    void TakeKeyboardFocus() override;
    void DestroyMainWindow() override;
    void PostQuit(int exitCode) override;

private:
    Services& m_services;
    Globals& m_globals;
};

} // namespace tessaro
