#include "platform/aravis/aravis_cameras.h"
#include "platform/aravis/camera_search.h"
#include "support/background_program.h"
#include "tests/platform/served_camera.h"
#include "tests/platform/served_images.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

namespace tessaro {
namespace {

std::unique_ptr<CameraDevice> OpenCamera() {
    AravisCameras cameras(ServedCamera::address);
    cameras.Initialize();
    auto device = cameras.CreateFirstDevice();
    device->Open();
    return device;
}

const std::vector<FoundCamera> found{
    {"Maker-Model-1", "usb-1", "1", "bus 1", "USB3Vision"},
    {"Maker-Model-2", "00:11:22:33:44:55", "2", "192.168.1.20", "GigEVision"},
    {"Maker-Model-3", "00:11:22:33:44:66", "3", "192.168.1.30", "GigEVision"},
};

TEST(PlaceOfFirst, IsTheFirstOfAllWhereNoneIsWanted) {
    const auto place = PlaceOfFirst(found, "");
    ASSERT_TRUE(place);
    EXPECT_EQ(place->name, "Maker-Model-1");
    EXPECT_EQ(place->address, std::nullopt) << "a USB camera cannot be asked";
    EXPECT_FALSE(PlaceOfFirst({}, ""));
}

TEST(PlaceOfFirst, IsWhereTheWantedOneIs) {
    for (const char* wanted : {"Maker-Model-3", "00:11:22:33:44:66", "3", "192.168.1.30"}) {
        const auto place = PlaceOfFirst(found, wanted);
        ASSERT_TRUE(place) << wanted;
        EXPECT_EQ(place->name, "192.168.1.30") << wanted;
        EXPECT_EQ(place->address, ParseAddress("192.168.1.30")) << wanted;
    }
    for (const char* wanted : {"Maker-Model", "4", "192.168.1.3"})
        EXPECT_FALSE(PlaceOfFirst(found, wanted)) << wanted;
}

TEST(PlaceOfFirst, IsTheNameWhereTheAddressIsNone) {
    const std::vector<FoundCamera> odd{{"Maker-Model-5", "", "5", "somewhere", "GigEVision"}};
    const auto place = PlaceOfFirst(odd, "5");
    ASSERT_TRUE(place);
    EXPECT_EQ(place->name, "Maker-Model-5");
    EXPECT_EQ(place->address, std::nullopt);
}

class AravisCameraTest : public testing::Test {
protected:
    ServedCamera m_served;
    std::unique_ptr<CameraDevice> m_device = OpenCamera();
};

TEST_F(AravisCameraTest, IsSetToTheWholeSensor) {
    m_device->StartGrabbing(1);
    const GrabResult result = m_device->RetrieveResult(timeoutMs);
    EXPECT_TRUE(result.GrabSucceeded());
    EXPECT_EQ(result.GetWidth(), 320);
    EXPECT_EQ(result.GetHeight(), 240);
    EXPECT_EQ(result.GetBuffer().size(), 320u * 240u);
}

TEST_F(AravisCameraTest, SendsOneImageAfterTheOtherHoweverItWasLeft) {
    m_device->RegisterConfiguration(Acquisition::SingleFrame);
    m_device->SetEnumeration("TriggerMode", "On");
    m_device.reset();
    m_device = OpenCamera();
    EXPECT_EQ(m_device->GetEnumeration("AcquisitionMode"), "Continuous");
    EXPECT_EQ(m_device->GetEnumeration("TriggerMode"), "Off");
    m_device->StartGrabbing(4);
    for (int image = 0; image < 4; ++image)
        EXPECT_TRUE(m_device->RetrieveResult(timeoutMs).GrabSucceeded()) << image;
}

TEST_F(AravisCameraTest, SendsTheLatestWhenNobodyFetchedTheEarlier) {
    m_device->SetMaxNumBuffer(2);
    const auto sendsTheLatest = [&] {
        m_served.Tell("mark 1");
        m_device->StartGrabbing(3);
        m_served.Tell("wait 5");
        m_served.Tell("mark 2");
        m_served.Tell("wait 5");
        int latest = 0;
        for (int image = 0; image < 3; ++image)
            latest += IsAll(m_device->RetrieveResult(timeoutMs), 2) ? 1 : 0;
        return latest == 3;
    };
    EXPECT_TRUE(Eventually(sendsTheLatest)) << "a busy machine may receive some of them late";
    EXPECT_FALSE(m_device->IsGrabbing());
}

TEST_F(AravisCameraTest, DoesNotWaitForImagesWhenAllAreHeld) {
    m_device->SetMaxNumBuffer(2);
    m_device->StartGrabbing(3);
    const GrabResult first = m_device->RetrieveResult(timeoutMs);
    GrabResult second = m_device->RetrieveResult(timeoutMs);
    EXPECT_THROW(m_device->RetrieveResult(waitWithoutLimit), CameraError);
    second = GrabResult();
    EXPECT_TRUE(m_device->RetrieveResult(timeoutMs).GrabSucceeded());
}

TEST_F(AravisCameraTest, KeepsHeldImagesWhenTheNumberOfBuffersChanges) {
    m_device->StartGrabbing(1);
    const GrabResult held = m_device->RetrieveResult(timeoutMs);
    m_served.Tell("mark 2");
    m_device->SetMaxNumBuffer(3);
    m_device->StartGrabbing(4);
    for (int image = 0; image < 3; ++image)
        m_device->RetrieveResult(timeoutMs);
    EXPECT_TRUE(IsAll(m_device->RetrieveResult(timeoutMs), 2)) << "by now the mark must have arrived";
    EXPECT_TRUE(IsAll(held, 1));
}

TEST_F(AravisCameraTest, SendsImagesOfTheSizeThatItIsSetTo) {
    m_device->SetInteger("Height", 120);
    m_device->StartGrabbing(1);
    EXPECT_EQ(m_device->RetrieveResult(timeoutMs).GetHeight(), 120);
    m_device->SetInteger("Height", 240);
    m_device->StartGrabbing(1);
    EXPECT_EQ(m_device->RetrieveResult(timeoutMs).GetHeight(), 240);
}

TEST_F(AravisCameraTest, RefusesImagesOfAnotherPixelFormat) {
    for (const char* format : {"Mono8", "Mono16"}) {
        m_device->SetEnumeration("PixelFormat", format);
        m_device->StartGrabbing(1);
        EXPECT_THROW(m_device->RetrieveResult(timeoutMs), CameraError) << format;
        EXPECT_FALSE(m_device->IsGrabbing()) << format;
    }
    m_device->SetEnumeration("PixelFormat", "BayerRG8");
    m_device->StartGrabbing(1);
    EXPECT_TRUE(m_device->RetrieveResult(timeoutMs).GrabSucceeded());
}

TEST_F(AravisCameraTest, RefusesNumbersOfBuffersThatMakeNoSense) {
    for (const int count : {0, -1, 1'000'000})
        EXPECT_THROW(m_device->SetMaxNumBuffer(count), CameraError) << count;
}

TEST_F(AravisCameraTest, TakesNoNumberOfBuffersBeforeItIsOpen) {
    const auto closed = AravisCameras(ServedCamera::address).CreateFirstDevice();
    EXPECT_THROW(closed->SetMaxNumBuffer(1), CameraError);
}

TEST_F(AravisCameraTest, RefusesToGrabNothing) {
    for (const int count : {0, -1})
        EXPECT_THROW(m_device->StartGrabbing(count), CameraError) << count;
}

TEST_F(AravisCameraTest, CanBeOpenedByTheNextProgramAtOnce) {
    m_device.reset();
    EXPECT_TRUE(OpenCamera()->IsOpen());
}

// What the kernel counts for this process: "task" its threads, "fd" its descriptors.
auto CountOf(const char* what) {
    return std::distance(std::filesystem::directory_iterator(std::string("/proc/self/") + what), {});
}

TEST_F(AravisCameraTest, LeavesNoThreadAndNoDescriptorBehind) {
    m_device.reset();
    const auto grabOnce = [] {
        const auto device = OpenCamera();
        device->StartGrabbing(1);
        ASSERT_TRUE(device->RetrieveResult(timeoutMs).GrabSucceeded());
    };
    grabOnce(); // what the library keeps for good
    const auto threads = CountOf("task");
    const auto descriptors = CountOf("fd");
    for (int round = 0; round < TESSARO_CAMERA_ROUNDS; ++round)
        grabOnce();
    EXPECT_TRUE(Eventually([&] { return CountOf("task") <= threads; })) << CountOf("task") << " " << threads;
    EXPECT_TRUE(Eventually([&] { return CountOf("fd") <= descriptors; }))
        << CountOf("fd") << " " << descriptors;
}

} // namespace
} // namespace tessaro
