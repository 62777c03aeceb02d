#pragma once

#include <string>
#include <string_view>
#include <variant>

namespace tessaro {

enum class FaultKind { CameraGone, LostPackets, FrameSize, EndlessAutomatic };

/// Something that goes wrong with the devices until it is cleared.
struct Fault {
    FaultKind kind = FaultKind::CameraGone;
    double share = 0.01; // LostPackets: of all packets, 0 to 1
    int width = 1232;    // FrameSize: what the camera sends, in pixels
    int height = 1028;
};

struct FaultError {
    std::string reason;
};

/// "NAME" or "NAME=ARG": camera-gone, lost-packets[=SHARE], frame-size[=WIDTHxHEIGHT], endless-automatic.
std::variant<Fault, FaultError> ParseFault(std::string_view text);

/// The kind of a bare name.
std::variant<FaultKind, FaultError> ParseFaultName(std::string_view name);

} // namespace tessaro
