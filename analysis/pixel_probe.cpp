#include "analysis/pixel_probe.h"

#include "analysis/pixel_access.h"
#include "app/number_text.h"

#include <algorithm>
#include <cmath>

namespace tessaro {
namespace {

constexpr float widestTolerance = 20.0F;      // percentage points
constexpr std::int32_t contrastFromPixel = 4; // the material that no preset stands for

} // namespace

ProbedPixel MeasurePixel(const FrameRecord& frame, const BackgroundGrid& background, std::uint32_t position) {
    ProbedPixel pixel;
    pixel.x = PositionX(position);
    pixel.y = WindowRow(PositionY(position));
    const int gx = gridSize * pixel.x / frameWidth;
    const int gy = gridSize * pixel.y / frameHeight;
    for (int channel = 0; channel < channelCount; ++channel) {
        const auto c = static_cast<std::size_t>(channel);
        const int along = AverageAlongX(frame, channel, pixel.x - 1, pixel.y, 3);
        const int across = AverageAlongY(frame, channel, pixel.x, pixel.y - 1, 3);
        const int mean = (along + across) / 2;
        pixel.intensity[c] = static_cast<float>(mean);
        const float local = background.Measured(channel, gx, gy);
        pixel.contrast[c] = (pixel.intensity[c] - local) / local * 100.0F;
    }
    return pixel;
}

std::string ProbeCaption(const ProbedPixel& pixel) {
    return Formatted("Pixel Analysis at Position: (%d,%d)", pixel.x, pixel.y);
}

std::string ProbeText(const ProbedPixel& pixel) {
    const auto& [r, g, b] = pixel.intensity;
    const auto& [cr, cg, cb] = pixel.contrast;
    return Formatted("Intensity: \tR:%.1f \tG:%.1f \tB:%.1f\nContrast: \tR:%.0f%% \tG:%.0f%% \tB:%.0f%%\n\n"
                     "Do you want to change the contrast with these values?",
                     static_cast<double>(r), static_cast<double>(g), static_cast<double>(b),
                     static_cast<double>(cr), static_cast<double>(cg), static_cast<double>(cb));
}

void TakeAsTarget(const ProbedPixel& pixel, Settings& settings) {
    settings.targetContrast = pixel.contrast;
    const auto& [r, g, b] = pixel.contrast;
    const float largest = std::max({std::fabs(r), std::fabs(g), std::fabs(b)});
    settings.contrastTolerance = largest / 2.0F < widestTolerance ? largest / 2.0F : widestTolerance;
    settings.material = contrastFromPixel;
}

void ProbePixel(const FrameRecord& frame, const BackgroundGrid& background, std::uint32_t position,
                MessageBoxes& boxes, WindowHandle owner, Settings& settings) {
    const ProbedPixel pixel = MeasurePixel(frame, background, position);
    if (boxes.AskYesNo(owner, ProbeText(pixel), ProbeCaption(pixel)))
        TakeAsTarget(pixel, settings);
}

} // namespace tessaro
