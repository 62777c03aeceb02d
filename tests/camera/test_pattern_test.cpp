#include "camera/test_pattern.h"

#include <gtest/gtest.h>

#include <memory>

namespace tessaro {
namespace {

/// The pattern, byte by byte as it is defined.
std::uint8_t PatternByte(int i, int phase) {
    const int x = i % 2464;
    const int y = i / 2464;
    const int value = ((x + phase) / 3) % 255 + (y / 2) % 255;
    return static_cast<std::uint8_t>(value & 0xFF);
}

int WrongBytes(const CameraSession& session, int phase) {
    int wrong = 0;
    for (int i = 0; i < frameByteCount; ++i)
        wrong += session.workingFrame.Data()[i] != PatternByte(i, phase) ? 1 : 0;
    return wrong;
}

TEST(TestPattern, CoversTheWholeFrameAfterThePhaseHasGrownBy50) {
    const auto session = std::make_unique<CameraSession>();
    DrawTestPattern(*session);
    EXPECT_EQ(session->testPatternPhase, 50U);
    EXPECT_EQ(WrongBytes(*session, 50), 0);
}

TEST(TestPattern, MovesBy50WithEveryFrame) {
    const auto session = std::make_unique<CameraSession>();
    DrawTestPattern(*session);
    DrawTestPattern(*session);
    EXPECT_EQ(WrongBytes(*session, 100), 0);
}

TEST(TestPattern, HasTheseBytes) {
    const auto session = std::make_unique<CameraSession>();
    DrawTestPattern(*session);
    const std::uint8_t* bytes = session->workingFrame.Data();
    EXPECT_EQ(bytes[0], 16);                  // 50 / 3
    EXPECT_EQ(bytes[1], 17);                  // 51 / 3
    EXPECT_EQ(bytes[714], 254);               // 764 / 3 = 254
    EXPECT_EQ(bytes[715], 0);                 // 765 / 3 = 255, which is 0 again
    EXPECT_EQ(bytes[2464], 16);               // row 1 is like row 0
    EXPECT_EQ(bytes[2 * 2464], 17);           // row 2 is one more
    EXPECT_EQ(bytes[508 * 2464], 14);         // 16 + 254 = 270
    EXPECT_EQ(bytes[510 * 2464], 16);         // 16 + 0
    EXPECT_EQ(bytes[2055 * 2464 + 2463], 79); // 837 mod 255 + 1027 mod 255 = 72 + 7
}

TEST(TestPattern, AfterADayOfFramesStillFollowsItsPhase) {
    const auto session = std::make_unique<CameraSession>();
    session->testPatternPhase = 10 * 86'400 * 50;
    DrawTestPattern(*session);
    EXPECT_EQ(WrongBytes(*session, 10 * 86'400 * 50 + 50), 0);
}

TEST(TestPattern, FollowsTheWidthOfTheSession) {
    const auto session = std::make_unique<CameraSession>();
    session->width = 700;
    DrawTestPattern(*session);
    const std::uint8_t* bytes = session->workingFrame.Data();
    EXPECT_EQ(bytes[699], 249);      // 749 / 3
    EXPECT_EQ(bytes[700], 16);       // the next row begins
    EXPECT_EQ(bytes[1400], 17);      // and the one after it is one more
    EXPECT_EQ(bytes[5'065'983], 92); // x 83, y 7237: 133 / 3 = 44 and 3618 mod 255 = 48
}

TEST(TestPattern, MayBeOneLongRow) {
    const auto session = std::make_unique<CameraSession>();
    session->width = 2'147'483'647;
    DrawTestPattern(*session);
    EXPECT_EQ(session->workingFrame.Data()[765], 16);
    EXPECT_EQ(session->workingFrame.Data()[5'065'983], 67); // 5,066,033 / 3 = 1,688,677
}

TEST(TestPattern, WithoutAWidthTakesTheSensors) {
    for (const int width : {0, -5}) {
        const auto session = std::make_unique<CameraSession>();
        session->width = width;
        DrawTestPattern(*session);
        EXPECT_EQ(WrongBytes(*session, 50), 0);
    }
}

} // namespace
} // namespace tessaro
