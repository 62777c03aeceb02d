#pragma once

#include "analysis/background_grid.h"
#include "analysis/background_parameters.h"
#include "imaging/frame_buffer.h"

#include <cstddef>
#include <cstdint>

namespace tessaro {

// Channels are 0 red, 1 green, 2 blue.

/// The model's intensity at block (gx, gy), which may be any: the model does not end with the grid.
double ModelValue(const BackgroundModel& model, int channel, int gx, int gy);

/// The sum of the squared differences between measured background and model over the 256 blocks.
double ModelError(const BackgroundModel& model, const BackgroundGrid& background, int channel);

/// Tries the values of one parameter from its lower bound, step by step, as long as they lie below its upper
/// bound, and keeps the one with the least error, the lowest of equals. Without any trial that is the lower
/// bound itself. The bounds are taken as they are; the step must be above 0 and large enough to change a
/// value between them when it is added.
void LineSearchParameter(BackgroundModel& model, const BackgroundGrid& background, int channel,
                         ModelParameter parameter);

/// One sweep: puts all bounds `searchSteps` steps around the parameters, searches each parameter once with
/// the others held, then writes the model into the grid's fitted set. The next sweep goes on from there; the
/// usual three do not converge and are not meant to.
void FitBackgroundModel(BackgroundModel& model, BackgroundGrid& background);

/// Makes every channel flat again, at its dominant intensity as the last statistics pass found it.
void ResetBackgroundModel(BackgroundModel& model, const FrameRecord& frame);

/// Paints each block of the measured or the fitted grid into `view`, frameByteCount bytes in the FrameBuffer
/// layout, in one colour: the whole part of the three intensities, modulo 256. Pixels of no block and every
/// pixel's fourth byte stay as they are. Returns 1.
int PaintBackground(const BackgroundGrid& background, bool fitted, std::uint8_t* view);

} // namespace tessaro
