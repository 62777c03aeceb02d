#include "app/menu_commands.h"

#include "analysis/channel_view.h"
#include "app/resource_ids.h"
#include "camera/camera_session.h"

namespace tessaro {
namespace {

constexpr int imageExposures = 4;
constexpr std::uint32_t channelViewMs = 2000; // a channel view stays for so long
constexpr int backgroundSweeps = 3;

void ShowChannelOfNewFrame(Operations& operations, int mode) {
    operations.GrabFrame(imageExposures);
    operations.ComputeFrameStatistics();
    operations.ShowChannel(mode);
    operations.Wait(channelViewMs);
}

void Capture(Operations& operations) {
    operations.GrabFrame(imageExposures);
    operations.ShowFrame();
}

void Configure(Operations& operations) {
    operations.SwitchLiveView(0);
    operations.ConfigureContrast();
    if (operations.LiveViewBefore() != 0)
        operations.SwitchLiveView(1);
}

void SaveImages(Operations& operations) {
    operations.MakeSessionFolders(0);
    operations.SavePlainImage();
    operations.SaveDetailImage();
}

/// The live view stays off, so that the imported picture stays on the screen. A cancelled dialog loads the
/// file of the time before again.
void ImportImage(Operations& operations) {
    operations.SwitchLiveView(0);
    operations.ChooseImportFile();
    if (!operations.HasImportFile())
        return;
    operations.LoadImportFile();
    operations.ComputeFrameStatistics();
}

/// Shown after each sweep, so that the operator sees the model settle.
void FitBackground(Operations& operations) {
    operations.ResetBackgroundModel();
    for (int sweep = 0; sweep < backgroundSweeps; ++sweep) {
        operations.FitBackgroundModel();
        operations.ShowBackground(true);
    }
}

} // namespace

void RunMenuCommand(Operations& operations, std::uint32_t commandId) {
    switch (commandId) {
    case command::redImage:
        ShowChannelOfNewFrame(operations, channel_view::redOnly);
        break;
    case command::greenImage:
        ShowChannelOfNewFrame(operations, channel_view::greenOnly);
        break;
    case command::blueImage:
        ShowChannelOfNewFrame(operations, channel_view::blueOnly);
        break;
    case command::originalImage:
        operations.ShowChannel(channel_view::allChannels);
        break;
    case command::capture:
        Capture(operations);
        break;
    case command::discernContrast:
        operations.DecideSingleLayers();
        break;
    case command::configuration:
        Configure(operations);
        break;
    case command::noiseRejection:
        operations.RejectNoise();
        break;
    case command::findSingleLayers:
        operations.FindCandidates(true);
        break;
    case command::grouping:
        operations.GroupGrains();
        break;
    case command::startScan:
        operations.RunScan();
        break;
    case command::settingXyStage:
        operations.ConfigureStage();
        break;
    case command::saveImage:
        SaveImages(operations);
        break;
    case command::autoContrastOnce:
        operations.ControlCamera(camera_mode::openAndAdjust);
        break;
    case command::xyStageConfiguration:
        operations.OpenPortConfiguration();
        break;
    case command::autoFocusing:
        operations.FineFocus();
        break;
    case command::controlPanel:
        operations.OpenControlPanel();
        break;
    case command::importImage:
        ImportImage(operations);
        break;
    case command::stopStartGrabbing:
        operations.SwitchLiveView(operations.LiveViewOn() != 0 ? 0 : 1);
        break;
    case command::showBackground:
        operations.ShowBackground(false);
        break;
    case command::backgroundFitting:
        FitBackground(operations);
        break;
    case command::information:
        operations.ShowAbout();
        break;
    case command::exit:
        operations.DestroyMainWindow();
        break;
    default:
        break;
    }
}

} // namespace tessaro
