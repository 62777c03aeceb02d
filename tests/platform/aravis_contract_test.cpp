#include "platform/aravis/aravis_cameras.h"
#include "support/background_program.h"
#include "tests/platform/camera_device_contract.h"
#include "twin/camera/gige_camera.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>

namespace tessaro {
namespace {

constexpr const char* address = "127.0.0.1";

/// A camera of the simulated microscope that sees an even surface of level `seen`.
class AravisMachine {
public:
    CameraRuntime& Runtime() { return m_cameras; }
    void ExpectImages(int) {}
    void FallSilent() { m_camera.SetLostPackets(1.0); }
    void Disappear() { m_camera.Unplug(); }

    std::atomic<std::uint8_t> seen = 100;
    std::atomic<int> framesBegun = 0;

private:
    GigECamera m_camera{address, "TEST01",
                        [this](const ExposureSettings&, std::uint64_t, std::span<std::uint8_t> mosaic) {
                            const std::uint8_t level = seen;
                            ++framesBegun;
                            std::ranges::fill(mosaic, level);
                        },
                        SensorSize{320, 240}}; // a few packets: no receiver is too slow for them
    AravisCameras m_cameras{address};
};

INSTANTIATE_TYPED_TEST_SUITE_P(Aravis, CameraDeviceContract, AravisMachine);

TEST(AravisOnTwin, SendsNoImageThatWasBegunBeforeTheGrab) {
    AravisMachine machine;
    const auto device = machine.Runtime().CreateFirstDevice();
    device->Open();
    for (int round = 1; round <= 20; ++round) {
        // The camera goes on taking frames that nobody fetches: one of them is under way when the next grab
        // begins.
        const int begun = machine.framesBegun;
        device->StartGrabbing(2);
        ASSERT_TRUE(Eventually([&] { return machine.framesBegun >= begun + 2; }));
        machine.seen = static_cast<std::uint8_t>(round);
        device->StartGrabbing(1);
        const GrabResult result = device->RetrieveResult(10'000);
        ASSERT_TRUE(result.GrabSucceeded());
        EXPECT_TRUE(
            std::ranges::all_of(result.GetBuffer(), [&](std::uint8_t sample) { return sample == round; }))
            << round << " " << int{result.GetBuffer().front()} << " " << int{result.GetBuffer().back()};
    }
}

} // namespace
} // namespace tessaro
