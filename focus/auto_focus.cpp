#include "focus/auto_focus.h"

#include "focus/coarse_sweep.h"
#include "focus/fine_climb.h"

namespace tessaro {

void AutoFocus::CoarseFocus([[maybe_unused]] const float* hint, std::int32_t range, std::int32_t speed) {
    CoarseSweep(m_reach, range, speed).Run();
}

int AutoFocus::FineFocus(const float* hint, [[maybe_unused]] int flag) {
    return FineClimb(m_reach, hint).Run();
}

} // namespace tessaro
