#pragma once

#include "platform/aravis/gvcp_probe.h"

#include <cstdint>
#include <optional>
#include <string>

namespace tessaro {

/// Where a camera is.
struct CameraPlace {
    std::string name;                     // by which the library opens it
    std::optional<std::uint32_t> address; // where it can be asked whether it is there
};

/// Finds the camera that was asked for. Finding throws CameraError when it is not there.
class CameraSearch {
public:
    /// An address, which is asked and nobody else; an identification; or nothing, for the first camera.
    explicit CameraSearch(std::string wanted);

    /// Looks where the camera was last, and then, unless an address was wanted, on all interfaces.
    CameraPlace Find();

private:
    static CameraPlace Discover(const std::string& wanted);

    std::string m_wanted;
    std::optional<CameraPlace> m_last;
};

} // namespace tessaro
