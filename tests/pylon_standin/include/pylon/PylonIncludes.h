#pragma once

// Stands in for the pylon camera runtime: those of its calls that the adapter uses, under their names.

#include <pylon/InstantCamera.h>
#include <pylon/Parameter.h>
#include <pylon/PylonBase.h>
