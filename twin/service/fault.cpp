#include "twin/service/fault.h"

#include "text/number_reading.h"

#include <array>

namespace tessaro {
namespace {

struct NamedFault {
    std::string_view name;
    FaultKind kind;
};

constexpr std::array faultNames = {NamedFault{"camera-gone", FaultKind::CameraGone},
                                   NamedFault{"lost-packets", FaultKind::LostPackets},
                                   NamedFault{"frame-size", FaultKind::FrameSize},
                                   NamedFault{"endless-automatic", FaultKind::EndlessAutomatic},
                                   NamedFault{"stage-silent", FaultKind::StageSilent},
                                   NamedFault{"stage-no-arrival", FaultKind::StageNoArrival},
                                   NamedFault{"stage-garbled", FaultKind::StageGarbled},
                                   NamedFault{"stage-pieces", FaultKind::StagePieces},
                                   NamedFault{"stage-late", FaultKind::StageLate},
                                   NamedFault{"stage-other-axis", FaultKind::StageOtherAxis},
                                   NamedFault{"stage-junk", FaultKind::StageJunk},
                                   NamedFault{"stage-impossible", FaultKind::StageImpossible},
                                   NamedFault{"stage-gone", FaultKind::StageGone}};

constexpr int smallestSide = 16;
constexpr int largestSide = 4096;
constexpr int longestPiece = 100; // bytes, more than any reply
constexpr int latestMs = 60'000;

FaultError WrongValue(std::string_view text) {
    return {"'" + std::string(text) + "' is no value for this fault"};
}

std::variant<Fault, FaultError> WithShare(Fault fault, std::string_view text) {
    if (!ReadNumber(text, 0.0, 1.0, fault.share))
        return WrongValue(text);
    return fault;
}

std::variant<Fault, FaultError> WithSize(Fault fault, std::string_view text) {
    const std::size_t times = text.find('x');
    if (times == std::string_view::npos ||
        !ReadNumber(text.substr(0, times), smallestSide, largestSide, fault.width) ||
        !ReadNumber(text.substr(times + 1), smallestSide, largestSide, fault.height))
        return WrongValue(text);
    return fault;
}

std::variant<Fault, FaultError> WithNumber(Fault fault, int Fault::*member, int largest,
                                           std::string_view text) {
    if (!ReadNumber(text, 1, largest, fault.*member))
        return WrongValue(text);
    return fault;
}

} // namespace

std::variant<FaultKind, FaultError> ParseFaultName(std::string_view name) {
    for (const NamedFault& known : faultNames)
        if (known.name == name)
            return known.kind;
    std::string all;
    for (const NamedFault& known : faultNames)
        all += (all.empty() ? "" : ", ") + std::string(known.name);
    return FaultError{"there is no fault '" + std::string(name) + "', only " + all};
}

std::variant<Fault, FaultError> ParseFault(std::string_view text) {
    const std::size_t equals = text.find('=');
    const auto kind = ParseFaultName(text.substr(0, equals));
    if (const FaultError* error = std::get_if<FaultError>(&kind))
        return *error;
    Fault fault;
    fault.kind = std::get<FaultKind>(kind);
    if (equals == std::string_view::npos)
        return fault;
    const std::string_view value = text.substr(equals + 1);
    if (fault.kind == FaultKind::LostPackets)
        return WithShare(fault, value);
    if (fault.kind == FaultKind::FrameSize)
        return WithSize(fault, value);
    if (fault.kind == FaultKind::StagePieces)
        return WithNumber(fault, &Fault::piece, longestPiece, value);
    if (fault.kind == FaultKind::StageLate)
        return WithNumber(fault, &Fault::lateMs, latestMs, value);
    return WrongValue(value);
}

} // namespace tessaro
