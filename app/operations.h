#pragma once

#include "platform/message.h"

#include <cstdint>
#include <string_view>

namespace tessaro {

/// What the main window makes the program do. It decides what is done in which order, and knows nothing of
/// how.
class Operations {
public:
    virtual ~Operations() = default;

    virtual void AdoptMainWindow(WindowHandle window) = 0; // known from now on

    virtual void GrabFrame(int exposures) = 0;
    virtual void ShowFrame() = 0;
    virtual void ComputeFrameStatistics() = 0;
    virtual void UpdateFocusMeasures() = 0;
    virtual void ControlCamera(int mode) = 0;

    virtual void ShowChannel(int mode) = 0;
    virtual void ShowBackground(bool fitted) = 0;
    virtual void ResetBackgroundModel() = 0;
    virtual void FitBackgroundModel() = 0;

    virtual void FindCandidates(bool paint) = 0;
    virtual void RejectNoise() = 0;
    virtual void GroupGrains() = 0; // with the minimum flake area of the settings, and the grains' edges
    virtual void DecideSingleLayers() = 0;
    virtual void ProbePixel(std::uint32_t position) = 0;

    virtual void MakeSessionFolders(int newSession) = 0;
    virtual void SavePlainImage() = 0;
    virtual void SaveDetailImage() = 0;
    virtual void ChooseImportFile() = 0;
    virtual bool HasImportFile() = 0; // one was ever chosen
    virtual void LoadImportFile() = 0;

    virtual void MoveAxisBy(int axis, double um) = 0;
    virtual void MoveToScanOrigin() = 0;
    virtual void FineFocus() = 0;
    virtual void RunScan() = 0;

    virtual void OpenControlPanel() = 0; // these two: unless it is open
    virtual void OpenPortConfiguration() = 0;
    virtual void CloseDialogs() = 0;      // the control panel and the port dialog
    virtual void ConfigureContrast() = 0; // the rest: returns when the dialog is closed
    virtual void ConfigureStage() = 0;
    virtual void ShowAbout() = 0;

    virtual void SwitchLiveView(std::int32_t on) = 0;
    virtual void StopLiveTimer() = 0;
    virtual std::int32_t LiveViewOn() = 0;
    virtual std::int32_t LiveViewBefore() = 0; // before the last switch
    virtual bool Scanning() = 0;

    virtual void ShowInformation(std::string_view text) = 0;
    virtual void ShowProgress(std::string_view text) = 0;
    virtual void ShowStagePosition() = 0;
    virtual float NoiseLevel() = 0;
    virtual float FocusValue() = 0;

    virtual void Wait(std::uint32_t milliseconds) = 0; // dispatches messages meanwhile
    virtual void TakeKeyboardFocus() = 0;
    virtual void DestroyMainWindow() = 0;
    virtual void PostQuit(int exitCode) = 0;
};

} // namespace tessaro
