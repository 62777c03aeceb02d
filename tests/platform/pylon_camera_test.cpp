#include "platform/pylon/pylon_cameras.h"
#include "tests/platform/camera_device_contract.h"
#include "tests/pylon_standin/pylon_standin.h"

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <variant>
#include <vector>

namespace tessaro {
namespace {

using pylon_standin::Camera;
using pylon_standin::Enumeration;
using pylon_standin::Frame;
using pylon_standin::Integer;
using pylon_standin::TheRuntime;

constexpr std::uint32_t frameWidth = 6;
constexpr std::uint32_t frameHeight = 4;
constexpr std::size_t frameBytes = 24;

Frame WholeFrame(std::uint8_t first) {
    Frame frame{frameWidth, frameHeight, {}};
    for (std::size_t i = 0; i < frameBytes; ++i)
        frame.bytes.push_back(static_cast<std::uint8_t>(first + i));
    return frame;
}

std::shared_ptr<Camera> PlugIn(const std::string& serialNumber) {
    auto camera = std::make_shared<Camera>();
    camera->serialNumber = serialNumber;
    camera->features = {
        {"PixelFormat", {Enumeration{"BayerRG8", {"Mono8", "BayerRG8", "BayerRG12"}}}},
        {"AcquisitionMode", {Enumeration{"MultiFrame", {"SingleFrame", "Continuous"}}}},
        {"Gain", {1.5}},
        {"ExposureTime", {5000.0}},
        {"OffsetX", {Integer{2, 0, 4}}},
        {"OffsetY", {Integer{2, 1, 2}}},
        {"Width", {Integer{2, 2, frameWidth}}}, // a part of the sensor
        {"Height", {Integer{2, 2, frameHeight}}},
        {"AutoFunctionROIUseBrightness", {false}},
    };
    for (const char* feature : {"PixelFormat", "AcquisitionMode", "OffsetX", "OffsetY", "Width", "Height"})
        camera->features[feature].lockedByGrabs = true;
    TheRuntime().cameras.push_back(camera);
    return camera;
}

/// A fresh runtime that knows one camera.
struct PylonMachine {
    PylonMachine() {
        TheRuntime() = {};
        camera = PlugIn("40000001");
    }

    CameraRuntime& Runtime() { return cameras; }
    void ExpectImages(int count) {
        for (int image = 0; image < count; ++image)
            camera->frames.push_back(WholeFrame(++m_sent));
    }
    void FallSilent() { camera->frames.clear(); }
    void Disappear() { camera->removed = true; }

    std::shared_ptr<Camera> camera;
    PylonCameras cameras;

private:
    std::uint8_t m_sent = 0;
};

class PylonCameraTest : public testing::Test {
protected:
    PylonCameraTest() {
        m_machine.cameras.Initialize();
        m_device = m_machine.cameras.CreateFirstDevice();
        m_device->Open();
        TheRuntime().calls.clear();
    }

    using Calls = std::vector<std::string>;

    static std::string ErrorOf(const std::function<void()>& action) {
        try {
            action();
        } catch (const CameraError& error) {
            return error.what();
        }
        return "no error";
    }

    /// The error of an image that the camera sends.
    std::string ErrorOfFrame(const Frame& frame) {
        m_machine.camera->frames.push_back(frame);
        m_device->StartGrabbing(1);
        return ErrorOf([this] { m_device->RetrieveResult(100); });
    }

    Camera& OnCable() { return *m_machine.camera; }

    PylonMachine m_machine;
    std::unique_ptr<CameraDevice> m_device;
};

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

TEST_F(PylonCameraTest, ImagesOutliveTheCameraTheyCameFrom) {
    m_machine.ExpectImages(1);
    const GrabResult held = m_device->GrabOne(100);
    OnCable().removed = true;
    PlugIn("40000001");
    m_device->Open();
    EXPECT_EQ(held.GetBuffer().front(), 1);
    EXPECT_EQ(held.GetBuffer().back(), 24);
}

TEST_F(PylonCameraTest, HandsBuffersBackWhenTheImagesGo) {
    m_machine.ExpectImages(4);
    m_device->StartGrabbing(4);
    std::vector<GrabResult> held;
    for (int image = 1; image <= 4; ++image) {
        held.push_back(m_device->RetrieveResult(100));
        EXPECT_EQ(TheRuntime().images, image);
    }
    for (std::size_t image = 0; image < held.size(); ++image)
        EXPECT_EQ(held[image].GetBuffer().front(), image + 1);
    held.clear();
    EXPECT_EQ(TheRuntime().images, 0);
}

TEST_F(PylonCameraTest, ThrowsWhileAllBuffersAreHeldAndGoesOnAfterwards) {
    m_device->SetMaxNumBuffer(3);
    m_machine.ExpectImages(4);
    m_device->StartGrabbing(4);
    std::vector<GrabResult> held;
    for (int image = 0; image < 3; ++image)
        held.push_back(m_device->RetrieveResult(100));
    EXPECT_EQ(ErrorOf([this] { m_device->RetrieveResult(waitWithoutLimit); }),
              "All image buffers of the camera are held");
    held.erase(held.begin() + 1);
    held.push_back(m_device->RetrieveResult(100));
    EXPECT_EQ(held.back().GetBuffer().front(), 4);
}

TEST_F(PylonCameraTest, HoldsTenImagesUnlessItIsTold) {
    m_machine.ExpectImages(11);
    m_device->StartGrabbing(11);
    std::vector<GrabResult> held;
    for (int image = 0; image < 10; ++image)
        held.push_back(m_device->RetrieveResult(100));
    EXPECT_THROW(m_device->RetrieveResult(100), CameraError);
}

TEST_F(PylonCameraTest, ANumberOfBuffersThatCannotBeIsTheNextGrabsError) {
    m_device->SetMaxNumBuffer(0);
    EXPECT_EQ(ErrorOf([this] { m_device->StartGrabbing(1); }), "MaxNumBuffer cannot be set.");
    m_device->SetMaxNumBuffer(-5);
    EXPECT_THROW(m_device->GrabOne(100), CameraError);
}

TEST_F(PylonCameraTest, ABrokenImageIsAResultWithoutSamples) {
    Frame frame = WholeFrame(1);
    frame.succeeded = false;
    OnCable().frames.push_back(frame);
    m_device->StartGrabbing(1);
    const GrabResult result = m_device->RetrieveResult(100);
    EXPECT_FALSE(result.GrabSucceeded());
    EXPECT_TRUE(result.GetBuffer().empty());
    EXPECT_FALSE(m_device->IsGrabbing());
}

TEST_F(PylonCameraTest, RefusesWhatIsNoWholeImage) {
    Frame oneByteShort = WholeFrame(1);
    oneByteShort.bytes.pop_back();
    Frame withoutBytes = WholeFrame(1);
    withoutBytes.bytes = {};
    for (const Frame& frame : {oneByteShort, withoutBytes})
        EXPECT_EQ(ErrorOfFrame(frame), "The camera sent less than a whole image");
    Frame huge = WholeFrame(1);
    huge.width = huge.height = 0xFFFFFFFF;
    Frame narrow = WholeFrame(1);
    narrow.width = frameWidth - 1;
    Frame low = WholeFrame(1);
    low.height = frameHeight - 1;
    for (const Frame& frame : {huge, narrow, low, Frame{0, 0, {}}})
        EXPECT_EQ(ErrorOfFrame(frame), "The camera sent an image of another size than it was set to");
    EXPECT_EQ(TheRuntime().images, 0) << "their buffers are free again";
}

TEST_F(PylonCameraTest, RefusesOtherThanTheMosaicWithoutGaps) {
    Frame twoBytes = WholeFrame(1);
    twoBytes.pixelFormat = "BayerRG12";
    Frame grey = WholeFrame(1);
    grey.pixelFormat = "Mono8";
    Frame gaps = WholeFrame(1);
    gaps.paddingX = 2;
    for (const Frame& frame : {twoBytes, grey, gaps})
        EXPECT_EQ(ErrorOfFrame(frame), "The camera sent an image that is not BayerRG8");
}

TEST_F(PylonCameraTest, TakesTheFirstSamplesOfALongerPayload) {
    Frame withChunks = WholeFrame(1);
    withChunks.bytes.resize(frameBytes + 100);
    OnCable().frames.push_back(withChunks);
    EXPECT_EQ(m_device->GrabOne(100).GetBuffer().size(), frameBytes);
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
