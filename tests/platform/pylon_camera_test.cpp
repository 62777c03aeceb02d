#include "tests/platform/camera_device_contract.h"
#include "tests/platform/pylon_machine.h"

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>
#include <variant>
#include <vector>

namespace tessaro {
namespace {

TEST(PylonCameras, StartTheRuntimeOnceAndEndItWithTheLastCamera) {
    PylonMachine machine;
    std::unique_ptr<CameraDevice> device;
    {
        PylonCameras cameras;
        cameras.Initialize();
        cameras.Initialize();
        EXPECT_EQ(TheRuntime().started, 1);
        device = cameras.CreateFirstDevice();
    }
    EXPECT_EQ(TheRuntime().started, 1);
    EXPECT_EQ(TheRuntime().devices, 1);
    device.reset();
    EXPECT_EQ(TheRuntime().started, 0);
    EXPECT_EQ(TheRuntime().devices, 0);
}

TEST(PylonCameras, ThrowTheRuntimesTextWhenItDoesNotStart) {
    PylonMachine machine;
    TheRuntime().faults["PylonInitialize"] = "no transport layer";
    try {
        machine.cameras.Initialize();
        FAIL() << "no error";
    } catch (const CameraError& error) {
        EXPECT_STREQ(error.what(), "no transport layer");
    }
    EXPECT_THROW(machine.cameras.CreateFirstDevice(), CameraError) << "not started";
}

TEST(PylonCameras, ThrowWhenThereIsNoCamera) {
    PylonMachine machine;
    TheRuntime().cameras.clear();
    machine.cameras.Initialize();
    EXPECT_THROW(machine.cameras.CreateFirstDevice(), CameraError);
}

TEST(PylonCameras, TakeTheFirstCameraOrTheOneThatIsAskedFor) {
    PylonMachine machine;
    const auto second = PlugIn("40000002");
    second->features["Gain"] = {7.0};
    second->ipAddress = "192.168.3.20";
    const auto gainOf = [](const std::string& camera) {
        PylonCameras cameras(camera);
        cameras.Initialize();
        const auto device = cameras.CreateFirstDevice();
        device->Open();
        return device->GetFloat("Gain");
    };
    EXPECT_EQ(gainOf(""), 1.5);
    EXPECT_EQ(gainOf("40000002"), 7.0);
    EXPECT_EQ(gainOf("192.168.3.20"), 7.0);
    EXPECT_THROW(gainOf("40000003"), CameraError);
    EXPECT_THROW(gainOf("192.168.3.21"), CameraError);
}

TEST_F(PylonCameraTest, AsksForTheLatestImagesInALoopOfItsOwn) {
    m_machine.ExpectImages(1);
    m_device->StartGrabbing(4);
    m_device->RetrieveResult(300);
    EXPECT_EQ(TheRuntime().calls, (Calls{"StartGrabbing 4 2 1", "RetrieveResult 300 1"}));
}

TEST_F(PylonCameraTest, GrabsOneImageWithAnExceptionWhenNoneComes) {
    m_machine.ExpectImages(1);
    m_device->GrabOne(300);
    EXPECT_EQ(TheRuntime().calls, (Calls{"StartGrabbing 1 0 1", "RetrieveResult 300 1"}));
    EXPECT_EQ(ErrorOf([this] { m_device->GrabOne(5000); }), "Grab timed out.");
    EXPECT_FALSE(m_device->IsGrabbing());
    EXPECT_TRUE(m_device->IsWritable("PixelFormat")) << "nothing is locked";
}

TEST_F(PylonCameraTest, NoticesWithinAPieceOfTheWaitForOneImageThatTheCameraIsRemoved) {
    int waits = 0;
    TheRuntime().onWait = [&] { OnCable().removed = ++waits == 2; };
    EXPECT_EQ(ErrorOf([this] { m_device->GrabOne(5000); }), "The camera was removed");
    EXPECT_EQ(waits, 2);
    EXPECT_FALSE(m_device->IsGrabbing());
}

TEST_F(PylonCameraTest, AGrabThatFailsIsEndedSoThatFeaturesCanBeSet) {
    m_device->StartGrabbing(3);
    EXPECT_FALSE(m_device->IsWritable("PixelFormat"));
    TheRuntime().faults["RetrieveResult"] = "the buffer is lost";
    EXPECT_EQ(ErrorOf([this] { m_device->RetrieveResult(100); }), "the buffer is lost");
    EXPECT_FALSE(m_device->IsGrabbing());
    m_device->SetEnumeration("PixelFormat", "Mono8");
    EXPECT_EQ(m_device->GetEnumeration("PixelFormat"), "Mono8");
}

TEST_F(PylonCameraTest, AnImageThatIsRefusedEndsItsGrab) {
    Frame small = WholeFrame(1);
    small.width = 4;
    m_machine.camera->frames.push_back(small);
    m_device->StartGrabbing(3);
    EXPECT_THROW(m_device->RetrieveResult(100), CameraError);
    EXPECT_FALSE(m_device->IsGrabbing());
}

TEST_F(PylonCameraTest, SaysWhenThereIsNothingToWaitFor) {
    EXPECT_EQ(ErrorOf([this] { m_device->RetrieveResult(100); }), "No grab is under way");
}

TEST_F(PylonCameraTest, OpeningAnOpenCameraEndsItsGrabAndSelectsTheWholeSensorAgain) {
    m_device->SetInteger("Width", 4);
    m_device->StartGrabbing(2);
    m_device->Open();
    EXPECT_FALSE(m_device->IsGrabbing());
    EXPECT_EQ(m_device->GetInteger("Width"), 6);
}

TEST_F(PylonCameraTest, SelectsTheWholeSensorAndContinuousAcquisitionAtOpening) {
    EXPECT_EQ(m_device->GetInteger("OffsetX"), 0);
    EXPECT_EQ(m_device->GetInteger("OffsetY"), 1);
    EXPECT_EQ(m_device->GetInteger("Width"), 6);
    EXPECT_EQ(m_device->GetInteger("Height"), 4);
    EXPECT_EQ(m_device->GetEnumeration("AcquisitionMode"), "Continuous");
}

TEST(PylonCameras, RegisterTheKindOfAcquisitionBeforeTheyOpen) {
    PylonMachine machine;
    machine.cameras.Initialize();
    const auto device = machine.cameras.CreateFirstDevice();
    TheRuntime().calls.clear();
    device->Open();
    EXPECT_EQ(TheRuntime().calls, (std::vector<std::string>{"RegisterConfiguration 1 1", "Open"}));
}

TEST(PylonCameras, LeaveAsItIsWhatCannotBeWrittenAtOpening) {
    PylonMachine machine;
    machine.camera->features.erase("OffsetX");
    machine.camera->features["OffsetY"].writable = false;
    machine.camera->features["Width"].writable = false;
    machine.cameras.Initialize();
    const auto device = machine.cameras.CreateFirstDevice();
    device->Open();
    EXPECT_EQ(device->GetInteger("OffsetY"), 2);
    EXPECT_EQ(device->GetInteger("Width"), 2);
    EXPECT_EQ(device->GetInteger("Height"), 4);
    machine.camera->frames.push_back({2, 4, std::vector<std::uint8_t>(8, 7)});
    EXPECT_EQ(device->GrabOne(100).GetWidth(), 2);
}

TEST_F(PylonCameraTest, AnImageHasTheSizeThatTheCameraWasSetTo) {
    m_device->SetInteger("Width", 4);
    m_device->SetInteger("Height", 2);
    OnCable().frames.push_back({4, 2, std::vector<std::uint8_t>(8, 7)});
    EXPECT_EQ(m_device->GrabOne(100).GetBuffer().size(), 8U);
    EXPECT_EQ(ErrorOfFrame(WholeFrame(1)), "The camera sent an image of another size than it was set to");
}

TEST_F(PylonCameraTest, StopsAGrabBeforeItStartsAnother) {
    m_device->StartGrabbing(4);
    m_device->StartGrabbing(1);
    EXPECT_EQ(TheRuntime().calls, (Calls{"StartGrabbing 4 2 1", "StopGrabbing", "StartGrabbing 1 2 1"}));
}

TEST_F(PylonCameraTest, DividesALongWaitAndLetsTheLastPieceThrow) {
    m_device->StartGrabbing(1);
    EXPECT_EQ(ErrorOf([this] { m_device->RetrieveResult(1200); }), "Grab timed out.");
    EXPECT_EQ(TheRuntime().calls, (Calls{"StartGrabbing 1 2 1", "RetrieveResult 500 0",
                                         "RetrieveResult 500 0", "RetrieveResult 200 1"}));
}

TEST_F(PylonCameraTest, WaitsWithoutLimitUntilAnImageComes) {
    int waits = 0;
    TheRuntime().onWait = [&] {
        if (++waits == 20)
            m_machine.ExpectImages(1);
    };
    m_device->StartGrabbing(1);
    EXPECT_TRUE(m_device->RetrieveResult(waitWithoutLimit).GrabSucceeded());
    EXPECT_EQ(waits, 20);
}

TEST_F(PylonCameraTest, AWaitWithoutLimitEndsWhenTheCameraIsRemoved) {
    int waits = 0;
    TheRuntime().onWait = [&] { OnCable().removed = ++waits == 3; };
    m_device->StartGrabbing(1);
    EXPECT_EQ(ErrorOf([this] { m_device->RetrieveResult(waitWithoutLimit); }), "The camera was removed");
    EXPECT_EQ(waits, 3);
}

TEST_F(PylonCameraTest, PassesOnTheTextOfEveryFault) {
    const std::map<std::string, std::function<void()>> actions = {
        {"StartGrabbing", [this] { m_device->StartGrabbing(1); }},
        {"RetrieveResult", [this] { m_device->GrabOne(10); }},
        {"RegisterConfiguration", [this] { m_device->RegisterConfiguration(Acquisition::Continuous); }},
    };
    for (const auto& [call, action] : actions) {
        TheRuntime().faults[call] = "fault of " + call;
        EXPECT_EQ(ErrorOf(action), "fault of " + call);
    }
    EXPECT_EQ(ErrorOf([this] { m_device->GetFloat("Hue"); }), "Node Hue is not accessible.");
    EXPECT_EQ(ErrorOf([this] { m_device->SetEnumeration("PixelFormat", "RGB"); }),
              "The value RGB cannot be set.");
}

TEST_F(PylonCameraTest, ARemovedCameraIsReplacedByTheOneThatIsPluggedIn) {
    m_device->StartGrabbing(2);
    OnCable().removed = true;
    EXPECT_FALSE(m_device->IsOpen());
    EXPECT_EQ(ErrorOf([this] { m_device->IsReadable("Gain"); }), "The camera was removed");
    EXPECT_EQ(ErrorOf([this] { m_device->IsWritable("Gain"); }), "The camera was removed");
    EXPECT_EQ(ErrorOf([this] { m_device->SetMaxNumBuffer(10); }), "The camera was removed");
    EXPECT_THROW(m_device->GetFloat("Gain"), CameraError);
    EXPECT_THROW(m_device->Open(), CameraError) << "there is none";
    EXPECT_FALSE(m_device->IsOpen());
    EXPECT_FALSE(m_device->IsGrabbing());
    EXPECT_THROW(m_device->GetFloat("Gain"), CameraError) << "the runtime has no device";

    m_machine.camera = PlugIn("40000001");
    m_machine.ExpectImages(1);
    TheRuntime().faults["Open"] = "another program has it";
    EXPECT_EQ(ErrorOf([this] { m_device->Open(); }), "another program has it");
    m_device->Open();
    EXPECT_TRUE(m_device->IsOpen());
    EXPECT_EQ(m_device->GetFloat("Gain"), 1.5);
    EXPECT_TRUE(m_device->GrabOne(100).GrabSucceeded());
    EXPECT_EQ(TheRuntime().devices, 1);
}

TEST_F(PylonCameraTest, ARemovedCameraIsLookedForByItsNumber) {
    PylonCameras cameras("40000001");
    cameras.Initialize();
    const auto device = cameras.CreateFirstDevice();
    OnCable().removed = true;
    PlugIn("40000002");
    EXPECT_THROW(device->Open(), CameraError);
    PlugIn("40000001");
    device->Open();
    EXPECT_TRUE(device->IsOpen());
}

TEST_F(PylonCameraTest, TheKindOfAcquisitionHoldsAtOnceUntilTheCameraIsOpenedAnew) {
    m_device->RegisterConfiguration(Acquisition::SingleFrame);
    EXPECT_EQ(TheRuntime().calls, Calls{"RegisterConfiguration 1 1"}) << "in place of the others, and owned";
    EXPECT_EQ(m_device->GetEnumeration("AcquisitionMode"), "SingleFrame");

    OnCable().removed = true;
    PlugIn("40000001");
    m_device->Open();
    EXPECT_EQ(m_device->GetEnumeration("AcquisitionMode"), "Continuous");
}

TEST_F(PylonCameraTest, SetsFeaturesOfEveryKind) {
    m_device->SetBoolean("AutoFunctionROIUseBrightness", true);
    EXPECT_TRUE(std::get<bool>(OnCable().features["AutoFunctionROIUseBrightness"].value));
    m_device->SetInteger("Width", 4);
    EXPECT_EQ(m_device->GetInteger("Width"), 4);
    const IntegerRange range = m_device->GetIntegerRange("Width");
    EXPECT_EQ(range.minimum, 2);
    EXPECT_EQ(range.maximum, 6);
    EXPECT_EQ(m_device->SettableValues("PixelFormat"), (Calls{"Mono8", "BayerRG8", "BayerRG12"}));
}

TEST_F(PylonCameraTest, AFeatureMayBeForReadingOnly) {
    OnCable().features["Gain"].writable = false;
    EXPECT_TRUE(m_device->IsReadable("Gain"));
    EXPECT_FALSE(m_device->IsWritable("Gain"));
    EXPECT_THROW(m_device->SetFloat("Gain", 2.0), CameraError);
    OnCable().features["Gain"].readable = false;
    EXPECT_FALSE(m_device->IsReadable("Gain"));
}

} // namespace

INSTANTIATE_TYPED_TEST_SUITE_P(Pylon, CameraDeviceContract, PylonMachine);

} // namespace tessaro
