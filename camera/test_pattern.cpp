#include "camera/test_pattern.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace tessaro {
namespace {

constexpr std::uint32_t phaseStep = 50;
constexpr std::size_t period = std::size_t{3} * 255; // of the pattern along a row

} // namespace

void DrawTestPattern(CameraSession& session) {
    session.testPatternPhase += phaseStep;
    std::array<std::uint8_t, period> across;
    for (std::uint32_t x = 0; x < period; ++x)
        across[x] = static_cast<std::uint8_t>((x + session.testPatternPhase) / 3U % 255U);
    const auto width = static_cast<std::size_t>(session.width > 0 ? session.width : sensorWidth);
    std::uint8_t* bytes = session.workingFrame.Data();
    for (std::size_t start = 0; start < sensorByteCount; start += width) {
        const auto down = static_cast<std::uint8_t>(start / width / 2 % 255);
        const std::size_t end = std::min<std::size_t>(start + width, sensorByteCount);
        for (std::size_t i = start; i < end; i += period) {
            const std::size_t count = std::min(period, end - i);
            for (std::size_t x = 0; x < count; ++x)
                bytes[i + x] = static_cast<std::uint8_t>(across[x] + down);
        }
    }
}

} // namespace tessaro
