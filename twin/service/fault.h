#pragma once

#include <string>
#include <string_view>
#include <variant>

namespace tessaro {

/// Those of the camera, then those of the stage.
enum class FaultKind {
    CameraGone,
    LostPackets,
    FrameSize,
    EndlessAutomatic,
    StageSilent,
    StageNoArrival,
    StageGarbled,
    StagePieces,
    StageLate,
    StageOtherAxis,
    StageJunk,
    StageImpossible,
    StageGone
};

/// Something that goes wrong with the devices until it is cleared.
struct Fault {
    FaultKind kind = FaultKind::CameraGone;
    double share = 0.01; // LostPackets: of all packets, 0 to 1
    int width = 1232;    // FrameSize: what the camera sends, in pixels
    int height = 1028;
    int piece = 0;    // StagePieces: bytes before the pause; 0: every place in turn
    int lateMs = 200; // StageLate
};

struct FaultError {
    std::string reason;
};

/// "NAME" or "NAME=ARG": the names of the kinds in small letters, with dashes. lost-packets[=SHARE],
/// frame-size[=WIDTHxHEIGHT], stage-pieces[=N] and stage-late[=MS] take values.
std::variant<Fault, FaultError> ParseFault(std::string_view text);

/// The kind of a bare name.
std::variant<FaultKind, FaultError> ParseFaultName(std::string_view name);

} // namespace tessaro
