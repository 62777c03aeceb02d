#pragma once

#include <pylon/InstantCamera.h>

namespace Pylon {

class CBaslerUniversalInstantCamera : public CInstantCamera {};

} // namespace Pylon
