#include "platform/fake/virtual_clock.h"
#include "reference/plain_camera.h"
#include "tests/camera/camera_fixture.h"

#include <algorithm>
#include <cstring>
#include <random>

namespace tessaro {
namespace {

template<class Left, class Right>
bool SameBytes(const Left* left, const Right* right, std::size_t count) {
    static_assert(sizeof(Left) == sizeof(Right));
    return std::memcmp(left, right, count * sizeof(Left)) == 0;
}

/// The camera and its plain transcription on two cameras with one script.
class CameraEquality : public CameraFixture, public testing::WithParamInterface<std::uint32_t> {
protected:
    CameraEquality() {
        Connect();
        m_plainDevice = m_plainScript.CreateFirstDevice();
        m_plainDevice->Open();
        m_plainScript.calls.clear();
        m_plain->camera = m_plainDevice.get();
        m_plain->present = 1;
        // What no image wrote can be told from what one did.
        for (std::size_t i = 0; i < sensorByteCount; ++i) {
            session->accumulator[i] = m_plain->accumulator[i] = static_cast<std::uint16_t>(Below(65'536));
            session->convertedFrame.Data()[i] = m_plain->converted[i] = static_cast<std::uint8_t>(Below(256));
        }
    }

    std::uint32_t Below(std::uint32_t limit) { return static_cast<std::uint32_t>(m_random()) % limit; }

    void ThenImage(int width, int height) {
        Samples samples(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
        for (std::size_t i = 0; i < samples.size(); i += sizeof(std::uint32_t)) {
            const auto word = static_cast<std::uint32_t>(m_random());
            std::memcpy(samples.data() + i, &word, std::min(sizeof word, samples.size() - i));
        }
        scripted.ThenImage(width, height, samples);
        m_plainScript.ThenImage(width, height, std::move(samples));
    }

    void ThenBroken(std::uint32_t count) {
        for (std::uint32_t image = 0; image < count; ++image) {
            scripted.ThenBrokenImage();
            m_plainScript.ThenBrokenImage();
        }
    }

    void ThenFault() {
        scripted.ThenFault("gone");
        m_plainScript.ThenFault("gone");
    }

    void ThenAnyImage() {
        if (Below(6) == 0)
            ThenImage(static_cast<int>(Below(2600)), static_cast<int>(Below(2100)));
        else
            ThenImage(sensorWidth, sensorHeight);
    }

    /// With what may go wrong on the way.
    void ThenFrame(int frames) {
        for (int k = 0; k < frames; ++k) {
            if (Below(3) == 0)
                ThenBroken(Below(5));
            if (Below(10) == 0) {
                ThenFault();
                return;
            }
            ThenAnyImage();
        }
    }

    void GrabAndCompare(int frames) {
        camera.GrabFrame(frames);
        m_plain->GrabFrame(frames, m_plainClock);
        ExpectSameBuffers();
        ExpectSameNumbers();
        EXPECT_EQ(scripted.calls, m_plainScript.calls);
        EXPECT_EQ(ui.clock.now, m_plainClock.now);
    }

private:
    void ExpectSameBuffers() const {
        EXPECT_TRUE(SameBytes(session->accumulator.data(), m_plain->accumulator.data(), sensorByteCount));
        EXPECT_TRUE(SameBytes(session->rawFrame.data(), m_plain->raw.data(), sensorByteCount));
        EXPECT_TRUE(SameBytes(session->convertedFrame.Data(), m_plain->converted.data(), sensorByteCount));
        EXPECT_TRUE(SameBytes(session->workingFrame.Data(), m_plain->working.data(), sensorByteCount));
    }

    void ExpectSameNumbers() const {
        const auto numbers = [](const auto& state) {
            return std::vector<std::int64_t>{state.byteCount,
                                             state.p00,
                                             state.p01,
                                             state.p10,
                                             state.p11,
                                             state.sourceIndex,
                                             state.targetIndex,
                                             state.width,
                                             state.height,
                                             state.grabResult.GrabSucceeded() ? 1 : 0,
                                             state.grabResult.GetWidth(),
                                             state.grabResult.GetHeight()};
        };
        EXPECT_EQ(numbers(*session), numbers(*m_plain));
        EXPECT_EQ(session->testPatternPhase, static_cast<std::uint32_t>(m_plain->phase));
    }

    std::mt19937 m_random{GetParam()};
    ScriptedCamera m_plainScript;
    std::unique_ptr<CameraDevice> m_plainDevice;
    std::unique_ptr<reference::PlainCamera> m_plain = std::make_unique<reference::PlainCamera>();
    VirtualClock m_plainClock;
};

TEST_P(CameraEquality, HoldsForRandomFramesAndFailures) {
    for (int frame = 0; frame < 6; ++frame) {
        const int frames = 1 + static_cast<int>(Below(frame == 5 ? 9 : 4));
        ThenFrame(frames);
        GrabAndCompare(frames);
    }
}

TEST_P(CameraEquality, HoldsForWholeFramesOneAfterAnother) {
    for (const int frames : {4, 1, 2, 3, 5}) {
        for (int k = 0; k < frames; ++k)
            ThenImage(sensorWidth, sensorHeight);
        GrabAndCompare(frames);
    }
}

TEST_P(CameraEquality, HoldsWhenAnImageNeverComesWhole) {
    const int frames = 2 + static_cast<int>(GetParam() % 3);
    const auto missing = static_cast<int>(Below(static_cast<std::uint32_t>(frames)));
    // Each start asks for all images; those before the missing one are used up.
    std::uint32_t broken = 0;
    for (int attempt = 0, left = frames - missing; attempt < 1000; ++attempt) {
        broken += left > 0 ? 1 : 0;
        left = left > 0 ? left - 1 : frames;
    }
    for (int k = 0; k < frames; ++k) {
        if (k == missing)
            ThenBroken(broken);
        else
            ThenImage(sensorWidth, sensorHeight);
    }
    GrabAndCompare(frames);
}

TEST_P(CameraEquality, HoldsWhenTheCameraIsGone) {
    for (int whole = 0; whole < 5; ++whole) {
        for (int k = 0; k < whole; ++k)
            ThenAnyImage();
        ThenFault();
        GrabAndCompare(5);
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, CameraEquality, testing::Range(1U, 6U));

} // namespace
} // namespace tessaro
