#include "camera/test_pattern.h"

#include <array>
#include <cstddef>

namespace tessaro {
namespace {

constexpr std::uint32_t phaseStep = 50;

} // namespace

void DrawTestPattern(CameraSession& session) {
    session.testPatternPhase += phaseStep;
    std::array<std::uint8_t, sensorWidth> across;
    for (std::uint32_t x = 0; x < sensorWidth; ++x)
        across[x] = static_cast<std::uint8_t>((x + session.testPatternPhase) / 3U % 255U);
    std::uint8_t* row = session.workingFrame.Data();
    for (int y = 0; y < sensorHeight; ++y, row += sensorWidth) {
        const auto down = static_cast<std::uint8_t>(y / 2 % 255);
        for (std::size_t x = 0; x < across.size(); ++x)
            row[x] = static_cast<std::uint8_t>(across[x] + down);
    }
}

} // namespace tessaro
