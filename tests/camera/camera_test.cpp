#include "camera/camera.h"
#include "platform/standard/absent_cameras.h"
#include "support/shell_fixture.h"

#include <memory>
#include <sstream>

namespace tessaro {
namespace {

using Texts = std::vector<std::string>;

class CameraTest : public ShellFixture {
protected:
    std::unique_ptr<CameraSession> m_session = std::make_unique<CameraSession>();
    AbsentCameras cameras;
    std::ostringstream report;
    Camera camera{*m_session, cameras, status, pump, ui.clock, report};
};

TEST_F(CameraTest, SessionStartsWithoutACameraAtTheSensorsSize) {
    EXPECT_EQ(m_session->present, 0);
    EXPECT_EQ(m_session->width, 2464);
    EXPECT_EQ(m_session->height, 2056);
    EXPECT_EQ(m_session->byteCount, 5'065'984);
}

TEST_F(CameraTest, SaysThatThereIsNone) {
    EXPECT_EQ(camera.InitializeCamera(), 0);
    EXPECT_EQ(m_session->present, 0);
    EXPECT_EQ(Information(), Texts{"No camera detected"});
}

TEST_F(CameraTest, SaysSoAgainWhenItIsToBeOpened) {
    EXPECT_EQ(camera.ControlCamera(1), 0);
    EXPECT_EQ(Information(), Texts{"No camera detected"});
}

TEST_F(CameraTest, ShowsTheMovingTestPatternOncePerGrabWhateverTheExposures) {
    EXPECT_EQ(camera.GrabFrame(4), 0);
    EXPECT_EQ(m_session->workingFrame.Data()[0], 16); // 50 / 3
    EXPECT_EQ(camera.GrabFrame(1), 0);
    EXPECT_EQ(m_session->workingFrame.Data()[0], 33); // 100 / 3
    EXPECT_TRUE(Information().empty()) << "a frame that could not be taken is not reported";
}

} // namespace
} // namespace tessaro
