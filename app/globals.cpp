#include "app/globals.h"

namespace tessaro {
namespace {

// Made before main, on purpose: the working folder exists before anything can fail.
Globals globals{NativeFolders()}; // NOLINT(cert-err58-cpp)

} // namespace

Globals& ProgramGlobals() {
    return globals;
}

} // namespace tessaro
