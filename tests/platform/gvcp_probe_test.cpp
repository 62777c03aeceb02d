#include "platform/aravis/aravis_cameras.h"
#include "platform/aravis/gvcp_probe.h"
#include "tests/platform/served_camera.h"

#include <gtest/gtest.h>

namespace tessaro {
namespace {

std::uint32_t Address() {
    return ParseAddress(ServedCamera::address).value_or(0);
}

TEST(ParseAddress, KnowsAddressesFromNames) {
    EXPECT_EQ(ParseAddress("0.0.0.0"), 0u);
    EXPECT_TRUE(ParseAddress("192.168.1.20"));
    for (const char* text : {"", "camera", "1.2.3", "1.2.3.4.5", "256.1.1.1", " 1.2.3.4", "1.2.3.4 ", "::1"})
        EXPECT_FALSE(ParseAddress(text)) << text;
}

TEST(AskCamera, HearsNothingWhereThereIsNone) {
    EXPECT_EQ(AskCamera(Address()), CameraAnswer::None);
}

TEST(AskCamera, HearsWhetherTheCameraIsControlled) {
    const ServedCamera served;
    EXPECT_EQ(AskCamera(Address()), CameraAnswer::Free);
    const auto device = AravisCameras(ServedCamera::address).CreateFirstDevice();
    EXPECT_EQ(AskCamera(Address()), CameraAnswer::Free) << "it is not open yet";
    device->Open();
    EXPECT_EQ(AskCamera(Address()), CameraAnswer::Controlled);
}

TEST(AskCamera, HearsNothingFromACameraThatHangs) {
    ServedCamera served;
    served.Freeze();
    EXPECT_EQ(AskCamera(Address()), CameraAnswer::None);
    served.Thaw();
    while (AskCamera(Address()) == CameraAnswer::None) {
    }
}

} // namespace
} // namespace tessaro
