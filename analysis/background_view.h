#pragma once

#include "analysis/background_grid.h"
#include "imaging/screen_view.h"

namespace tessaro {

/// Shows the measured background, or the fitted model, as a mosaic of its 16 x 16 blocks. Returns 1.
int ShowBackground(Screen& screen, const BackgroundGrid& background, bool fitted);

} // namespace tessaro
