#include "twin/options.h"

#include "text/number_reading.h"
#include "text/plain_text.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstddef>
#include <cstdint>

namespace tessaro {
namespace {

constexpr double smallestWaferMm = 0.1;
constexpr double largestWaferMm = 100.0;
constexpr double densestPerMm2 = 1000.0;
constexpr double mostFlakes = 1e6;
constexpr double steepestTilt = 1.0;
constexpr double slowestMotion = 0.01;
constexpr double fastestMotion = 1000.0;
constexpr std::size_t longestSerialNumber = 15; // bytes, as GigE Vision has it
constexpr std::string_view axisLetters = "XYZ";
constexpr std::string_view none = "none"; // no device, no axes
constexpr std::string_view faultOption = "--fault";

constexpr std::string_view helpText =
    "Usage: tessaro-twin [OPTION]...\n"
    "A simulated microscope: a wafer with known flakes, the camera that looks at it, and the stage.\n"
    "\n"
    "  --seed N              which wafer: the same number makes the same one (default 1)\n"
    "  --wafer-mm S          side of the square wafer, whose lower left corner lies at the\n"
    "                        stage's 0,0; 0.1 to 100 (default 4)\n"
    "  --density N           flakes a mm^2, 0 to 1000 (default 60); at most 1000000 in all.\n"
    "                        Flakes that find no room are left out\n"
    "  --material NAME       graphene (default), hbn or tmdc\n"
    "  --substrate NAME      sio2 (default), glass or sapphire. Colours are those of the operator's\n"
    "                        presets; pairs without a preset look as on sio2\n"
    "  --tilt X,Y            by how many um the focus rises along a um of X and of Y (default 0,0)\n"
    "  --focus-z Z           the Z of the focus at the stage's 0,0, in um (default 0)\n"
    "  --at X,Y,Z            where the stage stands, in um (default: the wafer's middle, in focus)\n"
    "  --truth FILE          write all flakes to FILE, as JSON\n"
    "  --render FILE         write the picture that the operator would see to FILE (.png, .jpg) and exit\n"
    "  --camera-address A    the address that the camera serves (default 127.0.0.1); with none there is\n"
    "                        no camera\n"
    "  --stage-link PATH     a link to the stage's line, beside the name that is printed; a stale one is\n"
    "                        replaced\n"
    "  --stage-log FILE      write each command that the stage gets to FILE, with its time in ms\n"
    "  --limits X0:X1,Y0:Y1,Z0:Z1\n"
    "                        between which places the stage goes, in um (default: 110000 in X and Y\n"
    "                        and 3000 in Z to both sides of where it stands at first)\n"
    "  --time-factor F       the stage moves so many times as fast; 0.01 to 1000 (default 1)\n"
    "  --progress AXES       the axes that tell on their way where they are: X, Y and Z, in any order, or\n"
    "                        none (default XY)\n"
    "  --serial-number NAME  the camera's, up to 15 bytes (default TWIN01)\n"
    "  --fault NAME[=ARG]    start with this fault; may be given several times: camera-gone,\n"
    "                        lost-packets[=SHARE], frame-size[=WIDTHxHEIGHT], endless-automatic,\n"
    "                        stage-silent, stage-no-arrival, stage-garbled, stage-pieces[=N],\n"
    "                        stage-late[=MS], stage-other-axis, stage-junk, stage-impossible,\n"
    "                        stage-gone\n"
    "  --control SOCKET      take commands, a line each, from this local socket: move X,Y,Z,\n"
    "                        where, fault NAME[=ARG], clear NAME, quit. Each is answered with ok, or\n"
    "                        error: and why; where with ok X,Y,Z standing, or ok X,Y,Z moving\n"
    "  --quiet               say nothing but what went wrong\n"
    "  --help                show this and exit\n"
    "  --version             show the version and exit\n"
    "\n"
    "Exit status: 0 done, 1 could not do it, 2 wrong usage.\n";

/// Takes the value, or refuses it.
using Taker = bool (*)(std::string_view value, TwinOptions& options);

bool TakeText(std::string_view value, std::string& text) {
    text = value;
    return !value.empty();
}

bool TakeMaterial(std::string_view value, TwinOptions& options) {
    const std::optional<Material> material = MaterialNamed(value);
    options.wafer.material = material.value_or(options.wafer.material);
    return material.has_value();
}

bool TakeSubstrate(std::string_view value, TwinOptions& options) {
    const std::optional<Substrate> substrate = SubstrateNamed(value);
    options.wafer.substrate = substrate.value_or(options.wafer.substrate);
    return substrate.has_value();
}

bool TakeTilt(std::string_view value, TwinOptions& options) {
    std::array<double, 2> tilt = {};
    if (!ReadNumbers(value, -steepestTilt, steepestTilt, tilt))
        return false;
    options.wafer.tiltUmPerUm = {tilt[0], tilt[1]};
    return true;
}

bool TakePosition(std::string_view value, TwinOptions& options) {
    std::array<double, 3> at = {};
    if (!ReadNumbers(value, -farthestUm, farthestUm, at))
        return false;
    options.at = StagePosition{at[0], at[1], at[2]};
    return true;
}

/// Letters of axes, each once, or "none".
bool TakeProgress(std::string_view value, TwinOptions& options) {
    options.progressAxes = {};
    if (value == none)
        return true;
    for (const char letter : value) {
        const std::size_t axis = axisLetters.find(letter);
        if (axis == std::string_view::npos || options.progressAxes[axis])
            return false;
        options.progressAxes[axis] = true;
    }
    return !value.empty();
}

bool TakeCameraAddress(std::string_view value, TwinOptions& options) {
    options.cameraAddress = value == none ? "" : value;
    return !value.empty();
}

bool TakeSerialNumber(std::string_view value, TwinOptions& options) {
    return value.size() <= longestSerialNumber && TakeText(value, options.serialNumber);
}

/// "LOW:HIGH", no empty range.
bool TakeRange(std::string_view value, double& low, double& high) {
    const std::size_t colon = value.find(':');
    return colon != std::string_view::npos &&
           ReadNumber(value.substr(0, colon), -farthestUm, farthestUm, low) &&
           ReadNumber(value.substr(colon + 1), low + umPerStep, farthestUm, high);
}

bool TakeLimits(std::string_view value, TwinOptions& options) {
    const std::size_t first = value.find(',');
    const std::size_t second = value.find(',', first + 1);
    if (first == std::string_view::npos || second == std::string_view::npos)
        return false;
    StageLimits& limits = options.limits.emplace();
    return TakeRange(value.substr(0, first), limits.low.x, limits.high.x) &&
           TakeRange(value.substr(first + 1, second - first - 1), limits.low.y, limits.high.y) &&
           TakeRange(value.substr(second + 1), limits.low.z, limits.high.z);
}

struct ValueOption {
    std::string_view name;
    Taker take;
};
constexpr std::array valueOptions = {
    ValueOption{"--seed",
                [](std::string_view value, TwinOptions& options) {
                    return ReadNumber<std::uint64_t>(value, 0, UINT64_MAX, options.wafer.seed);
                }},
    ValueOption{"--wafer-mm",
                [](std::string_view value, TwinOptions& options) {
                    return ReadNumber(value, smallestWaferMm, largestWaferMm, options.wafer.sideMm);
                }},
    ValueOption{"--density",
                [](std::string_view value, TwinOptions& options) {
                    return ReadNumber(value, 0.0, densestPerMm2, options.wafer.flakesPerMm2);
                }},
    ValueOption{"--material", TakeMaterial},
    ValueOption{"--substrate", TakeSubstrate},
    ValueOption{"--tilt", TakeTilt},
    ValueOption{"--focus-z",
                [](std::string_view value, TwinOptions& options) {
                    return ReadNumber(value, -farthestUm, farthestUm, options.wafer.focusZUm);
                }},
    ValueOption{"--at", TakePosition},
    ValueOption{"--truth", [](std::string_view value,
                              TwinOptions& options) { return TakeText(value, options.truthFile); }},
    ValueOption{"--render", [](std::string_view value,
                               TwinOptions& options) { return TakeText(value, options.renderFile); }},
    ValueOption{"--camera-address", TakeCameraAddress},
    ValueOption{"--stage-link", [](std::string_view value,
                                   TwinOptions& options) { return TakeText(value, options.stageLink); }},
    ValueOption{"--stage-log", [](std::string_view value,
                                  TwinOptions& options) { return TakeText(value, options.stageLog); }},
    ValueOption{"--limits", TakeLimits},
    ValueOption{"--time-factor",
                [](std::string_view value, TwinOptions& options) {
                    return ReadNumber(value, slowestMotion, fastestMotion, options.timeFactor);
                }},
    ValueOption{"--progress", TakeProgress},
    ValueOption{"--serial-number", TakeSerialNumber},
    ValueOption{faultOption, [](std::string_view, TwinOptions&) { return true; }},
    ValueOption{"--control", [](std::string_view value,
                                TwinOptions& options) { return TakeText(value, options.controlSocket); }},
};

struct Switch {
    std::string_view name;
    bool TwinOptions::*member;
};
constexpr std::array switches = {Switch{"--quiet", &TwinOptions::quiet}, Switch{"--help", &TwinOptions::help},
                                 Switch{"--version", &TwinOptions::version}};

bool IsOfCamera(const Fault& fault) {
    return fault.kind < FaultKind::StageSilent;
}

TwinOptionError Refused(std::initializer_list<std::string_view> pieces) {
    return {Joined(pieces)};
}

/// What is wrong with options that are each right by themselves; nothing when they can be obeyed.
std::string WrongTogether(const TwinOptions& options) {
    const WaferOptions& wafer = options.wafer;
    if (wafer.flakesPerMm2 * wafer.sideMm * wafer.sideMm > mostFlakes)
        return "a wafer of this size and density has more than 1000000 flakes";
    if (!options.renderFile.empty() && !PictureType(options.renderFile))
        return Joined({"'", options.renderFile, "' is no name of a .png or .jpg picture"});
    if (!options.renderFile.empty() && options.renderFile == options.truthFile)
        return "--render and --truth need different files";
    if (options.cameraAddress.empty() && std::ranges::any_of(options.faults, IsOfCamera))
        return "--fault: there is no camera";
    if (options.at && options.limits && !IsWithin(*options.at, *options.limits))
        return "--at lies beyond --limits";
    return {};
}

} // namespace

std::variant<TwinOptions, TwinOptionError> ParseTwinOptions(std::span<const std::string_view> arguments) {
    TwinOptions options;
    while (!arguments.empty()) {
        const std::string_view argument = arguments.front();
        arguments = arguments.subspan(1);
        if (const auto* const found = std::ranges::find(switches, argument, &Switch::name);
            found != switches.end()) {
            options.*found->member = true;
            continue;
        }
        const std::size_t equals = argument.find('=');
        const std::string_view name = argument.substr(0, equals);
        const auto* const found = std::ranges::find(valueOptions, name, &ValueOption::name);
        if (found == valueOptions.end())
            return Refused({"there is no option '", argument, "'"});
        if (equals == std::string_view::npos && arguments.empty())
            return Refused({name, " needs a value"});
        const std::string_view value =
            equals == std::string_view::npos ? arguments.front() : argument.substr(equals + 1);
        if (equals == std::string_view::npos)
            arguments = arguments.subspan(1);
        if (found->name == faultOption) {
            const auto fault = ParseFault(value);
            if (const FaultError* const error = std::get_if<FaultError>(&fault))
                return Refused({error->reason});
            options.faults.push_back(std::get<Fault>(fault));
        }
        if (!found->take(value, options))
            return Refused({"'", value, "' is no value for ", name});
    }
    if (std::string wrong = WrongTogether(options); !wrong.empty())
        return TwinOptionError{wrong};
    return options;
}

std::string_view TwinHelp() {
    return helpText;
}

StagePosition StartPosition(const TwinOptions& options, const Wafer& wafer) {
    const double middle = wafer.SideUm() / 2.0;
    const StagePosition start =
        options.at.value_or(StagePosition{middle, middle, wafer.FocusZ(middle, middle)});
    return options.limits ? NearestWithin(start, *options.limits) : start;
}

std::optional<std::string_view> PictureType(std::string_view file) {
    std::string suffix(file.substr(std::min(file.size(), file.rfind('.'))));
    std::ranges::transform(suffix, suffix.begin(), [](unsigned char character) {
        return static_cast<char>(std::tolower(character));
    });
    if (suffix == ".png")
        return "image/png";
    if (suffix == ".jpg" || suffix == ".jpeg")
        return "image/jpeg";
    return std::nullopt;
}

} // namespace tessaro
