#pragma once

#include "app/number_text.h"
#include "app/operations.h"

#include <functional>
#include <string>
#include <vector>

namespace tessaro {

/// Keeps every operation that does something, with its argument, in order. What is asked is answered from the
/// fields.
class RecordingOperations : public Operations {
public:
    void AdoptMainWindow(WindowHandle window) override { Note("adopt", static_cast<long long>(window)); }
    void GrabFrame(int exposures) override { Note("grab", exposures); }
    void ShowFrame() override { Note("show frame"); }
    void ComputeFrameStatistics() override { Note("statistics"); }
    void UpdateFocusMeasures() override { Note("focus measures"); }
    void ControlCamera(int mode) override { Note("control camera", mode); }
    void ShowChannel(int mode) override { Note("show channel", mode); }
    void ShowBackground(bool fitted) override { Note("show background", fitted ? 1 : 0); }
    void ResetBackgroundModel() override { Note("reset model"); }
    void FitBackgroundModel() override { Note("fit model"); }
    void FindCandidates(bool paint) override { Note("find candidates", paint ? 1 : 0); }
    void RejectNoise() override { Note("reject noise"); }
    void GroupGrains() override { Note("group grains"); }
    void DecideSingleLayers() override { Note("decide"); }
    void ProbePixel(std::uint32_t position) override { Note("probe", position); }
    void MakeSessionFolders(int newSession) override { Note("session folders", newSession); }
    void SavePlainImage() override { Note("save plain"); }
    void SaveDetailImage() override { Note("save detail"); }
    void ChooseImportFile() override { Note("choose import"); }
    bool HasImportFile() override { return hasImportFile; }
    void LoadImportFile() override { Note("load import"); }
    void MoveAxisBy(int axis, double um) override { Note(Formatted("move %d by %g", axis, um)); }
    void MoveToScanOrigin() override { Note("move to origin"); }
    void FineFocus() override { Note("fine focus"); }
    void RunScan() override { Note("scan"); }
    void OpenControlPanel() override { Note("open panel"); }
    void OpenPortConfiguration() override { Note("open port configuration"); }
    void CloseDialogs() override { Note("close dialogs"); }
    void ConfigureContrast() override { Note("configure contrast"); }
    void ConfigureStage() override { Note("configure stage"); }
    void ShowAbout() override { Note("about"); }
    void SwitchLiveView(std::int32_t on) override {
        Note("live view", on);
        before = liveView;
        liveView = on;
    }
    void StopLiveTimer() override { Note("stop live timer"); }
    std::int32_t LiveViewOn() override { return liveView; }
    std::int32_t LiveViewBefore() override { return before; }
    bool Scanning() override { return scanning; }
    void ShowInformation(std::string_view text) override { Note("information: " + std::string(text)); }
    void ShowProgress(std::string_view text) override { Note("progress: " + std::string(text)); }
    void ShowStagePosition() override { Note("show position"); }
    float NoiseLevel() override { return noise; }
    float FocusValue() override { return focus; }
    void Wait(std::uint32_t milliseconds) override {
        Note("wait", milliseconds);
        if (whileWaiting)
            whileWaiting();
    }
    void TakeKeyboardFocus() override { Note("take keyboard"); }
    void DestroyMainWindow() override { Note("destroy"); }
    void PostQuit(int exitCode) override { Note("quit", exitCode); }

    std::vector<std::string> calls;
    std::function<void()> whileWaiting; // what happens during each wait
    std::function<void(const std::string&)> onCall;
    std::int32_t liveView = 1;
    std::int32_t before = 1;
    bool scanning = false;
    bool hasImportFile = false;
    float noise = 0.0F;
    float focus = 0.0F;

private:
    void Note(const std::string& call) {
        calls.push_back(call);
        if (onCall)
            onCall(call);
    }
    void Note(const std::string& call, long long argument) { Note(call + " " + std::to_string(argument)); }
};

} // namespace tessaro
