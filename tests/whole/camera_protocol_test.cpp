#include "camera/camera.h"
#include "camera/test_pattern.h"
#include "platform/aravis/aravis_cameras.h"
#include "support/background_program.h"
#include "support/shell_fixture.h"
#include "twin/camera/gige_camera.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace tessaro {
namespace {

constexpr const char* address = "127.0.0.1";
constexpr std::uint8_t brightScene = 120;

/// The program's camera session, the real adapter, and a camera at the other end of the wire that sees an
/// even grey.
class CameraOnTheWire : public ShellFixture {
protected:
    ~CameraOnTheWire() override {
        m_goneAt = 0;
        m_frameBegun.notify_all();
        if (m_unplugger.joinable())
            m_unplugger.join();
    }

    void Connect() {
        ASSERT_EQ(camera.InitializeCamera(), 1);
        camera.ControlCamera(camera_mode::openAndAdjust);
        session->camera->SetEnumeration("ExposureAuto", "Off"); // the scene stays as bright as it is
        session->camera->SetEnumeration("GainAuto", "Off");
        ASSERT_EQ(camera.GrabFrame(1), 0);
        ASSERT_TRUE(ShowsScene());
    }

    bool ShowsScene() const {
        const std::uint8_t* byte = session->workingFrame.Data();
        for (int pixel = 0; pixel < framePixelCount; ++pixel, byte += bytesPerPixel)
            if (byte[0] != level || byte[1] != level || byte[2] != level)
                return false;
        return true;
    }

    bool ShowsTestPattern() const {
        const auto expected = std::make_unique<CameraSession>();
        if (session->testPatternPhase == 0)
            return false;
        while (expected->testPatternPhase != session->testPatternPhase)
            DrawTestPattern(*expected);
        return std::equal(expected->workingFrame.Data(), expected->workingFrame.Data() + frameByteCount,
                          session->workingFrame.Data());
    }

    /// The camera vanishes as soon as it has begun so many more frames.
    void UnplugDuringFrame(int count) {
        m_goneAt = frames + count;
        m_unplugger = std::thread([this] {
            std::unique_lock lock(m_mutex);
            m_frameBegun.wait(lock, [this] { return frames >= m_goneAt; });
            lock.unlock();
            served.Unplug();
        });
    }

    std::string LastInformation() const {
        return Information().empty() ? std::string() : Information().back();
    }

    std::atomic<std::uint8_t> level = brightScene;
    std::atomic<int> frames = 0;
    GigECamera served{address, "WIRE01",
                      [this](const ExposureSettings&, std::uint64_t, std::span<std::uint8_t> mosaic) {
                          std::ranges::fill(mosaic, level.load());
                          const std::lock_guard lock(m_mutex);
                          ++frames;
                          m_frameBegun.notify_all();
                      }};
    std::unique_ptr<CameraSession> session = std::make_unique<CameraSession>();
    AravisCameras cameras{address};
    std::ostringstream report;
    Camera camera{*session, cameras, status, pump, ui.clock, report};

private:
    std::mutex m_mutex;
    std::condition_variable m_frameBegun;
    std::atomic<int> m_goneAt = 0;
    std::thread m_unplugger;
};

TEST_F(CameraOnTheWire, ShowsTheMeanOfFourExposures) {
    Connect();
    level = 77;
    EXPECT_EQ(camera.GrabFrame(4), 0);
    EXPECT_TRUE(ShowsScene());
}

TEST_F(CameraOnTheWire, IsSaidToBeAbsentWhenNobodyIsThere) {
    served.Unplug();
    EXPECT_EQ(camera.InitializeCamera(), 0);
    EXPECT_EQ(LastInformation(), "No camera detected");
    camera.GrabFrame(4);
    EXPECT_TRUE(ShowsTestPattern());
}

TEST_F(CameraOnTheWire, GoneBetweenGrabsShowsTheTestPatternAndSaysNothing) {
    Connect();
    const auto before = Information();
    served.Unplug();
    EXPECT_EQ(camera.GrabFrame(1), 0);
    EXPECT_TRUE(ShowsTestPattern());
    EXPECT_EQ(Information(), before);
    camera.ControlCamera(camera_mode::openAndAdjust);
    EXPECT_EQ(LastInformation(), "No camera detected");
}

TEST_F(CameraOnTheWire, PluggedInAgainItIsOpenedByMode1) {
    Connect();
    served.Unplug();
    camera.GrabFrame(1);
    served.PlugIn();
    camera.GrabFrame(1);
    EXPECT_TRUE(ShowsTestPattern()) << "nobody has opened it yet";
    camera.ControlCamera(camera_mode::openAndAdjust);
    EXPECT_EQ(LastInformation(), "Camera Auto Exposure ");
    camera.GrabFrame(4);
    EXPECT_TRUE(ShowsScene());
}

class CameraGoneOnTheWire : public CameraOnTheWire, public testing::WithParamInterface<int> {};

TEST_P(CameraGoneOnTheWire, InTheMiddleOfAnExposureShowsTheTestPattern) {
    Connect();
    level = 60; // what is summed until then must not show
    UnplugDuringFrame(GetParam());
    // The frames of a grab may be over before the camera is gone: then it is gone for the next.
    for (int grab = 0; grab < 20 && !ShowsTestPattern(); ++grab) {
        camera.GrabFrame(4);
        EXPECT_TRUE(ShowsTestPattern() || ShowsScene());
    }
    EXPECT_TRUE(ShowsTestPattern());
}

INSTANTIATE_TEST_SUITE_P(Exposure, CameraGoneOnTheWire, testing::Values(1, 2, 3, 4));

TEST_F(CameraOnTheWire, LosingOnePacketInAHundredShowsWholePicturesOnly) {
    Connect();
    served.SetLostPackets(0.01);
    for (const int next : {30, 60, 90}) {
        level = static_cast<std::uint8_t>(next);
        camera.GrabFrame(1);
        EXPECT_TRUE(ShowsScene()) << next;
    }
}

TEST_F(CameraOnTheWire, FramesOfAnotherSizeShowTheTestPatternUntilTheCameraIsSetUpAnew) {
    Connect();
    served.SetFrameSize(1232, 1028);
    for (int grab = 0; grab < 3 && !ShowsTestPattern(); ++grab)
        camera.GrabFrame(4);
    EXPECT_TRUE(ShowsTestPattern());
    served.SetFrameSize(twinSensorWidth, twinSensorHeight);
    camera.ControlCamera(camera_mode::openAndAdjust);
    camera.GrabFrame(4);
    EXPECT_TRUE(ShowsScene());
}

TEST_F(CameraOnTheWire, AutomaticFunctionsOfModeTwoEndByThemselves) {
    Connect();
    camera.ControlCamera(camera_mode::adjustOnce);
    EXPECT_NE(report.str().find("GainAuto went back to 'Off' after "), std::string::npos) << report.str();
    EXPECT_NE(report.str().find("ExposureAuto went back to 'Off' after "), std::string::npos);
}

TEST_F(CameraOnTheWire, AutomaticFunctionThatNeverEndsIsGivenUpAfterThe101stFrame) {
    Connect();
    served.SetEndlessAutomatic(true);
    const std::string before = report.str();
    const int begun = frames;
    camera.ControlCamera(camera_mode::adjustOnce);
    EXPECT_EQ(LastInformation(), "No camera detected");
    EXPECT_GE(frames - begun, 101);
    EXPECT_EQ(report.str().substr(before.size()), "Trying 'GainAuto = Once'.\nInitial Gain = 0\n");
    served.SetEndlessAutomatic(false);
    camera.GrabFrame(1);
    EXPECT_TRUE(ShowsScene()) << "frames can be taken all the same";
}

} // namespace
} // namespace tessaro
