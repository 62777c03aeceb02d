#pragma once

#include "platform/aravis/gvcp_probe.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace tessaro {

/// Where a camera is.
struct CameraPlace {
    std::string name;                     // by which the library opens it
    std::optional<std::uint32_t> address; // where it can be asked whether it is there
};

/// What the library knows of a camera that answered its call. Texts it does not know are empty.
struct FoundCamera {
    std::string id;
    std::string physicalId;
    std::string serialNumber;
    std::string address;
    std::string protocol;
};

/// The first camera that is called `wanted` in one of these ways, or the first at all where nothing is
/// wanted.
std::optional<CameraPlace> PlaceOfFirst(std::span<const FoundCamera> cameras, const std::string& wanted);

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
