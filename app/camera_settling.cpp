#include "app/camera_settling.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace tessaro {
namespace {

constexpr std::uint64_t longestMs = 10'000;
constexpr std::uint32_t longestWaitMs = 100; // for a message: whether it is over is asked so often
constexpr int alikeWhenSettled = 5;
constexpr double alikeLevels = 0.3; // of 255
constexpr int sampleStep = 7 * bytesPerPixel;
constexpr int grabs = 3;

} // namespace

void CameraSettling::Wait() {
    MessageLoop& messages = m_services.ui.messages;
    Clock& clock = m_services.ui.clock;
    const std::uint64_t start = clock.TickMilliseconds();
    m_patternPhase = m_services.globals.camera.testPatternPhase;
    while (!HasSettled() && !m_isOver() && clock.TickMilliseconds() - start < longestMs) {
        Message message;
        if (!messages.TakeMessage(message, longestWaitMs))
            continue;
        messages.Dispatch(message);
        if (message.kind == MessageKind::Timer && message.parameter == liveTimerId)
            LookAtFrame();
    }
}

bool CameraSettling::HasSettled() const {
    return m_alike >= alikeWhenSettled;
}

/// The test pattern is no image.
void CameraSettling::LookAtFrame() {
    const double brightness = Brightness();
    const std::uint32_t phase = m_services.globals.camera.testPatternPhase;
    const bool isAlike = phase == m_patternPhase && std::abs(brightness - m_brightness) < alikeLevels;
    m_alike = isAlike ? m_alike + 1 : 0;
    m_brightness = brightness;
    m_patternPhase = phase;
}

/// The mean of a part of the green samples.
double CameraSettling::Brightness() const {
    const auto* bytes = m_services.globals.camera.workingFrame.Data();
    std::int64_t sum = 0;
    std::int64_t count = 0;
    for (int at = 1; at < frameByteCount; at += sampleStep, ++count)
        sum += bytes[at];
    return static_cast<double>(sum) / static_cast<double>(count);
}

bool CameraSettling::GivesImages() {
    const std::uint32_t& phase = m_services.globals.camera.testPatternPhase;
    for (int grab = 0; grab < grabs; ++grab) {
        const std::uint32_t before = phase;
        m_services.currentField.GrabFrame(1);
        if (phase == before)
            return true;
    }
    return false;
}

} // namespace tessaro
