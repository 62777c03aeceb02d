#include "platform/aravis/aravis_cameras.h"
#include "tests/platform/served_camera.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

namespace tessaro {
namespace {

constexpr std::uint32_t timeoutMs = 10'000; // far longer than any image takes

class AravisCamera : public testing::Test {
protected:
    AravisCamera() {
        m_cameras.Initialize();
        m_device = m_cameras.CreateFirstDevice();
        m_device->Open();
    }

    ServedCamera m_served;
    AravisCameras m_cameras{ServedCamera::address};
    std::unique_ptr<CameraDevice> m_device;
};

TEST_F(AravisCamera, SendsTheWholeSensor) {
    m_device->StartGrabbing(1);
    const GrabResult result = m_device->RetrieveResult(timeoutMs);
    EXPECT_TRUE(result.GrabSucceeded());
    EXPECT_EQ(result.GetWidth(), 640);
    EXPECT_EQ(result.GetHeight(), 480);
    EXPECT_EQ(result.GetBuffer().size(), 640u * 480u);
}

TEST_F(AravisCamera, SendsNothingOlderThanTheGrab) {
    for (int mark = 2; mark < 100; ++mark) {
        m_served.Tell("mark " + std::to_string(mark));
        m_device->StartGrabbing(1);
        const GrabResult result = m_device->RetrieveResult(timeoutMs);
        ASSERT_TRUE(result.GrabSucceeded());
        EXPECT_TRUE(
            std::ranges::all_of(result.GetBuffer(), [&](std::uint8_t sample) { return sample == mark; }))
            << mark << " " << int{result.GetBuffer()[0]};
    }
}

} // namespace
} // namespace tessaro
