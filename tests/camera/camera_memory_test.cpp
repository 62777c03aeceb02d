#include "support/watched_memory.h"
#include "tests/camera/camera_fixture.h"

namespace tessaro {
namespace {

class CameraMemory : public CameraFixture {};

TEST_F(CameraMemory, IsNeverTakenForAFrame) {
    Connect();
    scripted.remembersCalls = false;
    for (const int frames : {1, 4, 6}) {
        for (int image = 0; image < frames; ++image) {
            scripted.ThenBrokenImage();
            ThenEvenImage(50);
        }
        const std::size_t before = blocksTaken;
        camera.GrabFrame(frames);
        EXPECT_EQ(blocksTaken, before) << frames;
        EXPECT_EQ(WorkingByte(1, 1, 1), 50);
    }
    EXPECT_GT(blocksTaken, 0U) << "they are counted";
}

TEST_F(CameraMemory, IsNeverTakenForTheTestPattern) {
    const std::size_t before = blocksTaken;
    camera.GrabFrame(4);
    EXPECT_EQ(blocksTaken, before);
    EXPECT_EQ(session->testPatternPhase, 50U);
}

} // namespace
} // namespace tessaro
