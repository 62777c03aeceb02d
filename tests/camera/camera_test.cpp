#include "camera/camera.h"
#include "platform/standard/absent_cameras.h"
#include "tests/camera/camera_fixture.h"

#include <functional>

namespace tessaro {
namespace {

constexpr const char* nothingThere = "No camera detected";

const Texts wholePicture = {"Set AutoFunctionROISelector ROI1", "Set AutoFunctionROIUseBrightness true",
                            "Set AutoFunctionROISelector ROI2", "Set AutoFunctionROIUseBrightness false",
                            "Set AutoFunctionROISelector ROI1", "Set AutoFunctionROIOffsetX 0",
                            "Set AutoFunctionROIOffsetY 2",     "Set AutoFunctionROIWidth 2464",
                            "Set AutoFunctionROIHeight 2054",   "Set AutoTargetBrightness 0.300000"};

Texts Joined(const std::vector<Texts>& parts) {
    Texts all;
    for (const Texts& part : parts)
        all.insert(all.end(), part.begin(), part.end());
    return all;
}

class CameraTest : public CameraFixture {
protected:
    /// What happens in the middle of mode 1's wait.
    void DuringTheWait(const std::function<void()>& act) {
        ui.messages.PostAt(ui.clock.now + 50, {windows.main, MessageKind::Other});
        ui.messages.onDispatch = [act](const Message& message) {
            if (message.kind == MessageKind::Other)
                act();
        };
    }

    /// From the next such call on the camera answers so.
    void OnCall(const std::string& call, const std::function<void()>& act) {
        scripted.onCall = [call, act](const std::string& made) {
            if (made == call)
                act();
        };
    }

    void TurnOff(const char* function) {
        std::get<ScriptedFeature::Enumeration>(scripted.features.at(function).value).value = "Off";
    }
};

TEST_F(CameraTest, SessionStartsWithoutACameraAtTheSensorsSize) {
    EXPECT_EQ(session->present, 0);
    EXPECT_EQ(session->camera, nullptr);
    EXPECT_EQ(session->width, 2464);
    EXPECT_EQ(session->height, 2056);
    EXPECT_EQ(session->byteCount, 5'065'984);
}

TEST_F(CameraTest, FindsTheFirstCameraAndDoesNotOpenIt) {
    EXPECT_EQ(camera.InitializeCamera(), 1);
    EXPECT_EQ(session->present, 1);
    EXPECT_FALSE(session->camera->IsOpen());
    EXPECT_EQ(scripted.calls, (Texts{"Initialize", "CreateFirstDevice"}));
    EXPECT_TRUE(Information().empty());
}

TEST_F(CameraTest, SaysThatThereIsNone) {
    scripted.present = false;
    EXPECT_EQ(camera.InitializeCamera(), 0);
    EXPECT_EQ(session->present, 0);
    EXPECT_EQ(session->camera, nullptr);
    EXPECT_EQ(Information(), Texts{nothingThere});
}

TEST_F(CameraTest, SaysThatThereIsNoneWhenTheRuntimeDoesNotStart) {
    scripted.FailAt("Initialize");
    EXPECT_EQ(camera.InitializeCamera(), 0);
    EXPECT_EQ(session->present, 0);
    EXPECT_EQ(scripted.calls, Texts{"Initialize"});
    EXPECT_EQ(Information(), Texts{nothingThere});
}

TEST_F(CameraTest, FindsNoneInARuntimeWithoutCameras) {
    AbsentCameras none;
    Camera without{*session, none, status, pump, ui.clock, report};
    EXPECT_EQ(without.InitializeCamera(), 0);
    EXPECT_EQ(session->present, 0);
    EXPECT_EQ(Information(), Texts{nothingThere});
}

TEST_F(CameraTest, WithoutACameraEveryModeSaysSo) {
    for (const int mode : {1, 2, 3, 4})
        EXPECT_EQ(camera.ControlCamera(mode), 0);
    EXPECT_EQ(Information(), Texts(4, nothingThere));
    EXPECT_EQ(ui.clock.now, 0U) << "and does not wait";
    EXPECT_FALSE(camera.IsColorCamera());
}

TEST_F(CameraTest, OpensAndAdjustsInThisOrder) {
    camera.InitializeCamera();
    scripted.calls.clear();
    EXPECT_EQ(camera.ControlCamera(1), 0);
    EXPECT_EQ(Information(), (Texts{"Camera Opening", "Camera Auto Gain Control", "Camera Auto Exposure "}));
    EXPECT_EQ(scripted.calls, Joined({{"Open", "Set PixelFormat BayerRG8"},
                                      wholePicture,
                                      {"Set GainAuto Continuous"},
                                      wholePicture,
                                      {"Set ExposureAuto Continuous", "SetMaxNumBuffer 10"}}));
    EXPECT_EQ(report.str(), "Trying 'GainAuto = Continuous'.\nInitial Gain = 1.5\n"
                            "ExposureAuto 'GainAuto = Continuous'.\nInitial exposure time = 5000 us\n");
    EXPECT_EQ(ui.clock.now, 100U);
}

TEST_F(CameraTest, WaitsBetweenGainAndExposureWithMessagesDispatched) {
    camera.InitializeCamera();
    Texts before;
    DuringTheWait([&] { before = Information(); });
    OnCall("Set ExposureAuto Continuous", [&] { EXPECT_EQ(ui.clock.now, 100U); });
    camera.ControlCamera(1);
    ASSERT_FALSE(before.empty());
    EXPECT_EQ(before.back(), "Camera Auto Exposure ");
}

TEST_F(CameraTest, LosesTheCameraInTheWaitAndDoesNotTakeItForOneWithoutTheFunction) {
    camera.InitializeCamera();
    DuringTheWait([&] { scripted.gone = true; });
    EXPECT_EQ(camera.ControlCamera(1), 0);
    EXPECT_EQ(Information().back(), nothingThere);
    EXPECT_EQ(report.str(), "Trying 'GainAuto = Continuous'.\nInitial Gain = 1.5\n");
    EXPECT_EQ(scripted.calls.back(), "Set GainAuto Continuous");
}

TEST_F(CameraTest, LeavesThePixelFormatWhereItIsRight) {
    Connect();
    session->camera->SetEnumeration("PixelFormat", "BayerRG8");
    scripted.calls.clear();
    camera.ControlCamera(1);
    ASSERT_GT(scripted.calls.size(), 1U);
    EXPECT_EQ(scripted.calls[0], "Open");
    EXPECT_EQ(scripted.calls[1], wholePicture[0]);
}

TEST_F(CameraTest, OpensACameraThatCannotAdjustItself) {
    scripted.features.erase("GainAuto");
    scripted.features.at("ExposureAuto").writable = false;
    camera.InitializeCamera();
    camera.ControlCamera(1);
    EXPECT_EQ(report.str(), "The camera does not support Gain Auto.\n"
                            "The camera does not support Exposure Auto.\n");
    EXPECT_EQ(Information().back(), "Camera Auto Exposure ");
    EXPECT_EQ(scripted.calls.back(), "SetMaxNumBuffer 10");
}

class FailingStep : public CameraTest, public testing::WithParamInterface<const char*> {};

TEST_P(FailingStep, OfOpeningSaysThatThereIsNoCamera) {
    camera.InitializeCamera();
    scripted.FailAt(GetParam());
    EXPECT_EQ(camera.ControlCamera(1), 0);
    EXPECT_EQ(scripted.calls.back(), GetParam());
    EXPECT_EQ(Information().back(), nothingThere);
    EXPECT_EQ(session->present, 1) << "a later try may do";
    camera.ControlCamera(1);
    EXPECT_EQ(scripted.calls.back(), "SetMaxNumBuffer 10");
}

INSTANTIATE_TEST_SUITE_P(EachStep, FailingStep,
                         testing::Values("Open", "Set PixelFormat BayerRG8",
                                         "Set AutoFunctionROISelector ROI2",
                                         "Set AutoTargetBrightness 0.300000", "Set GainAuto Continuous",
                                         "Set ExposureAuto Continuous", "SetMaxNumBuffer 10"));

TEST_F(CameraTest, GrabsInTheMiddleOfTheWait) {
    Connect();
    ThenEvenImage(77);
    DuringTheWait([&] { camera.GrabFrame(1); });
    camera.ControlCamera(1);
    EXPECT_EQ(WorkingByte(5, 5, 0), 77);
    EXPECT_EQ(scripted.calls.back(), "SetMaxNumBuffer 10");
}

TEST_F(CameraTest, AdjustsInTheMiddleOfItself) {
    Connect();
    int depth = 0;
    DuringTheWait([&] {
        ++depth;
        camera.ControlCamera(1);
    });
    camera.ControlCamera(1);
    EXPECT_EQ(depth, 1);
    EXPECT_EQ(Information(), (Texts{"Camera Opening", "Camera Auto Gain Control", "Camera Auto Exposure ",
                                    "Camera Opening", "Camera Auto Gain Control", "Camera Auto Exposure "}));
    EXPECT_EQ(std::count(scripted.calls.begin(), scripted.calls.end(), "SetMaxNumBuffer 10"), 2);
}

TEST_F(CameraTest, FindsAnotherCameraInTheMiddleOfTheWait) {
    Connect();
    ThenEvenImage(1);
    camera.GrabFrame(1);
    DuringTheWait([&] { EXPECT_EQ(camera.InitializeCamera(), 1); });
    camera.ControlCamera(1);
    EXPECT_EQ(scripted.held, 0) << "the last image went before its camera";
    EXPECT_TRUE(report.str().ends_with("The camera does not support Exposure Auto.\n"))
        << "the other one is not open yet";
}

TEST_F(CameraTest, DoesNothingInOtherModes) {
    Connect();
    for (const int mode : {0, 5, -1})
        EXPECT_EQ(camera.ControlCamera(mode), 0);
    EXPECT_TRUE(scripted.calls.empty());
    EXPECT_TRUE(Information().empty());
}

TEST_F(CameraTest, AdjustsOnceInMode2AndKeepsWhatWasFound) {
    Connect();
    scripted.ThenImage(8, 8, Samples(64));
    scripted.ThenImage(8, 8, Samples(64));
    OnCall("GrabOne 5000", [&] {
        TurnOff("GainAuto");
        TurnOff("ExposureAuto");
        scripted.features.at("Gain").value = 3.25;
        scripted.features.at("ExposureTime").value = 7000.5;
    });
    EXPECT_EQ(camera.ControlCamera(2), 0);
    EXPECT_EQ(scripted.calls, Joined({{"Set GainAuto Once"},
                                      wholePicture,
                                      {"Set GainAuto Once", "GrabOne 5000", "Set ExposureAuto Once"},
                                      wholePicture,
                                      {"Set ExposureAuto Once", "GrabOne 5000"}}));
    EXPECT_EQ(session->storedGain, 3.25);
    EXPECT_EQ(session->storedExposureTimeUs, 7000.5);
    EXPECT_TRUE(Information().empty());
}

TEST_F(CameraTest, SaysThatThereIsNoneWhenMode2DoesNotFinish) {
    Connect();
    for (int image = 0; image < 101; ++image)
        scripted.ThenImage(8, 8, Samples(64));
    EXPECT_EQ(camera.ControlCamera(2), 0);
    EXPECT_EQ(Information(), Texts{nothingThere});
    EXPECT_EQ(session->storedGain, 0.0);
}

TEST_F(CameraTest, TakesASingleFrameIntoTheAccumulatorInMode3) {
    Connect();
    scripted.ThenImage(4, 2, {10, 20, 30, 40, 50, 60, 70, 80});
    camera.GrabFrame(1);
    scripted.calls.clear();
    scripted.ThenImage(3, 2, {1, 2, 3, 4, 5, 6});
    EXPECT_EQ(camera.ControlCamera(3), 0);
    EXPECT_EQ(scripted.calls, (Texts{"RegisterConfiguration single frame", "GrabOne 5000",
                                     "RegisterConfiguration continuous"}));
    EXPECT_EQ(session->width, 4) << "that of the grab before";
    EXPECT_EQ(session->height, 2);
    const std::vector<std::uint16_t> first(session->accumulator.begin(), session->accumulator.begin() + 8);
    EXPECT_EQ(first, (std::vector<std::uint16_t>{1, 2, 3, 4, 5, 6, 70, 80}));
}

TEST_F(CameraTest, LeavesTheAccumulatorWhenTheSingleFrameIsBroken) {
    Connect();
    session->accumulator[0] = 7;
    scripted.ThenBrokenImage();
    camera.ControlCamera(3);
    EXPECT_EQ(session->accumulator[0], 7);
    EXPECT_EQ(session->width, 2464) << "there was no grab before";
    EXPECT_EQ(scripted.calls.back(), "RegisterConfiguration continuous");
}

TEST_F(CameraTest, SaysThatThereIsNoneWhenTheSingleFrameDoesNotCome) {
    Connect();
    scripted.ThenNothing();
    camera.ControlCamera(3);
    EXPECT_EQ(Information(), Texts{nothingThere});
}

TEST_F(CameraTest, AppliesStoredValuesInMode4) {
    Connect();
    session->storedGain = 2.5;
    session->storedExposureTimeUs = 1234.56;
    EXPECT_EQ(camera.ControlCamera(4), 0);
    EXPECT_EQ(scripted.calls, (Texts{"Set GainAuto Off", "Set ExposureAuto Off", "Set Gain 2.500000",
                                     "Set ExposureTime 1234.560000"}));
    EXPECT_EQ(Information(), Texts{"exposure time: 1234.6"});
    EXPECT_STREQ(session->statusText.data(), "exposure time: 1234.6");
}

TEST_F(CameraTest, AppliesAModerateLightBeforeAnythingIsStored) {
    Connect();
    camera.ControlCamera(4);
    EXPECT_EQ(Information(), Texts{"exposure time: 10000.0"});
    EXPECT_EQ(scripted.calls[2], "Set Gain 0.000000");
}

TEST_F(CameraTest, CutsAStatusTextThatIsTooLong) {
    Connect();
    session->storedExposureTimeUs = 1e300;
    camera.ControlCamera(4);
    EXPECT_EQ(Information().back().size(), 99U);
}

TEST_F(CameraTest, IsAColourCameraWhenAFormatIsAMosaic) {
    Connect();
    EXPECT_TRUE(camera.IsColorCamera());
    auto& format = std::get<ScriptedFeature::Enumeration>(scripted.features.at("PixelFormat").value);
    format.settable = {"Mono8", "BayerGB12"};
    EXPECT_TRUE(camera.IsColorCamera());
    format.settable = {"Mono8", "RGB8", "bayer"};
    EXPECT_FALSE(camera.IsColorCamera());
    scripted.features.erase("PixelFormat");
    EXPECT_FALSE(camera.IsColorCamera());
}

} // namespace
} // namespace tessaro
