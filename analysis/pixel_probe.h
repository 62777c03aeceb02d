#pragma once

#include "analysis/background_grid.h"
#include "app/settings.h"
#include "imaging/frame_buffer.h"
#include "platform/message_boxes.h"

#include <array>
#include <cstdint>
#include <string>

namespace tessaro {

/// What a click on the image measures.
struct ProbedPixel {
    int x = 0; // frame pixel
    int y = 0;
    std::array<float, 3> intensity = {}; // [red, green, blue], 0 to 255
    std::array<float, 3> contrast = {}; // percent against the measured background; not finite where that is 0
};

/// `position` is a packed client position of the main window.
ProbedPixel MeasurePixel(const FrameRecord& frame, const BackgroundGrid& background, std::uint32_t position);

std::string ProbeCaption(const ProbedPixel& pixel);
std::string ProbeText(const ProbedPixel& pixel);

/// Makes the contrast of the pixel the target, with a tolerance of half its largest part, at most 20.
void TakeAsTarget(const ProbedPixel& pixel, Settings& settings);

/// Shows what lies under the click and, on Yes, takes it as target.
void ProbePixel(const FrameRecord& frame, const BackgroundGrid& background, std::uint32_t position,
                MessageBoxes& boxes, WindowHandle owner, Settings& settings);

} // namespace tessaro
