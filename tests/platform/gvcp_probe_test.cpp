#include "platform/aravis/aravis_cameras.h"
#include "platform/aravis/gvcp_probe.h"
#include "support/background_program.h"
#include "tests/platform/served_camera.h"

#include <gtest/gtest.h>

#include <span>
#include <vector>

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

constexpr std::uint8_t number = 2;

std::vector<std::uint8_t> Answer(std::uint8_t statusHigh, std::uint8_t statusLow, std::uint8_t privilege) {
    return {statusHigh, statusLow, 0x00, 0x81, 0x00, 0x04, 0x00, number, 0x00, 0x00, 0x00, privilege};
}

TEST(MeaningOf, IsWhoControlsTheCamera) {
    EXPECT_EQ(MeaningOf(Answer(0, 0, 0), number), CameraAnswer::Free);
    EXPECT_EQ(MeaningOf(Answer(0, 0, 1), number), CameraAnswer::Controlled) << "for one alone";
    EXPECT_EQ(MeaningOf(Answer(0, 0, 2), number), CameraAnswer::Controlled);
    EXPECT_EQ(MeaningOf(Answer(0, 0, 4), number), CameraAnswer::Free) << "may be switched over";
    EXPECT_EQ(MeaningOf(Answer(0x80, 0x06, 0), number), CameraAnswer::Controlled) << "access denied";
}

TEST(MeaningOf, IsUnclearWhereACameraDoesNotSay) {
    EXPECT_EQ(MeaningOf(Answer(0x80, 0x07, 0), number), CameraAnswer::Unclear) << "busy";
    EXPECT_EQ(MeaningOf(Answer(0x80, 0x01, 0), number), CameraAnswer::Unclear)
        << "the camera does not know the question";
    EXPECT_EQ(MeaningOf(Answer(0x00, 0x06, 0), number), CameraAnswer::Unclear);
    auto shortAnswer = Answer(0, 0, 2);
    shortAnswer.resize(11);
    EXPECT_EQ(MeaningOf(shortAnswer, number), CameraAnswer::Unclear);
}

TEST(MeaningOf, IsNothingForWhatIsNoAnswer) {
    EXPECT_EQ(MeaningOf(Answer(0, 0, 2), number + 1), CameraAnswer::None) << "to an earlier question";
    auto other = Answer(0, 0, 2);
    other[3] = 0x83;
    EXPECT_EQ(MeaningOf(other, number), CameraAnswer::None) << "to another command";
    EXPECT_EQ(MeaningOf({}, number), CameraAnswer::None);
    EXPECT_EQ(MeaningOf(std::span(other).first(7), number), CameraAnswer::None);
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
    EXPECT_TRUE(Eventually([] { return AskCamera(Address()) != CameraAnswer::None; }));
}

} // namespace
} // namespace tessaro
