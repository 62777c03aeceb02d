#include "app/program_options.h"

#include "app/number_text.h"

#include <array>
#include <optional>

namespace tessaro {
namespace {

constexpr std::int32_t fastestFocusSpeed = 5000; // of the stage
constexpr std::int32_t longestRange = 1000;      // mm, more than any wafer has

using Taken = std::optional<OptionError>; // nothing: the value is taken

/// An option with a value.
struct ValueOption {
    std::string_view name;
    Taken (*take)(std::string_view value, ProgramOptions& options);
    bool ofScan = false; // says how --scan is to scan
};

/// Is --scan there, with or without options of its own?
UnattendedScan& ScanOf(ProgramOptions& options) {
    return options.scan.has_value() ? *options.scan : options.scan.emplace();
}

Taken TakeText(std::string_view option, std::string_view value, std::string& text) {
    if (value.empty())
        return OptionError{std::string(option) + " needs a value"};
    text = value;
    return std::nullopt;
}

Taken TakeCamera(std::string_view value, ProgramOptions& options) {
    return TakeText("--camera", value, options.camera);
}

Taken TakeCameraRuntime(std::string_view value, ProgramOptions& options) {
    if (value != "pylon" && value != "aravis")
        return OptionError{"--camera-runtime: only 'pylon' and 'aravis' are known, not '" +
                           std::string(value) + "'"};
    options.cameraRuntime = value;
    return std::nullopt;
}

Taken TakeStagePort(std::string_view value, ProgramOptions& options) {
    return TakeText("--stage-port", value, options.stagePort);
}

Taken TakeFocusCurve(std::string_view value, ProgramOptions& options) {
    return TakeText("--focus-curve", value, options.focusCurve);
}

/// Without the blanks that a number in a file or a dialog may have before it.
bool TakeOptionNumber(std::string_view& text, std::int32_t& value) {
    const bool beginsBlank = !text.empty() && (text[0] == ' ' || (text[0] >= '\t' && text[0] <= '\r'));
    return !beginsBlank && TakeNumber(text, value);
}

Taken TakeFocusSpeed(std::string_view value, ProgramOptions& options) {
    std::int32_t speed = 0;
    std::string_view rest = value;
    if (!TakeOptionNumber(rest, speed) || !rest.empty() || speed < 1 || speed > fastestFocusSpeed)
        return OptionError{"--focus-speed: a whole number of um/s from 1 to " +
                           std::to_string(fastestFocusSpeed) + " is needed, not '" + std::string(value) +
                           "'"};
    options.focusSpeed = speed;
    return std::nullopt;
}

Taken TakeReport(std::string_view value, ProgramOptions& options) {
    return TakeText("--report", value, options.report);
}

Taken TakeRange(std::string_view option, std::string_view value, std::optional<std::int32_t>& range) {
    std::int32_t mm = 0;
    std::string_view rest = value;
    if (!TakeOptionNumber(rest, mm) || !rest.empty() || mm < 0 || mm > longestRange)
        return OptionError{std::string(option) + ": a whole number of mm from 0 to " +
                           std::to_string(longestRange) + " is needed, not '" + std::string(value) + "'"};
    range = mm;
    return std::nullopt;
}

Taken TakeXRange(std::string_view value, ProgramOptions& options) {
    return TakeRange("--x-range", value, ScanOf(options).xRange);
}

Taken TakeYRange(std::string_view value, ProgramOptions& options) {
    return TakeRange("--y-range", value, ScanOf(options).yRange);
}

Taken TakeOrigin(std::string_view value, ProgramOptions& options) {
    UnattendedScan& scan = ScanOf(options);
    std::string_view rest = value;
    const bool hasX = TakeOptionNumber(rest, scan.originX) && rest.starts_with(',');
    rest.remove_prefix(hasX ? 1 : 0);
    if (!hasX || !TakeOptionNumber(rest, scan.originY) || !rest.empty())
        return OptionError{"--origin: X,Y in whole um is needed, not '" + std::string(value) + "'"};
    return std::nullopt;
}

constexpr std::array<ValueOption, 9> valueOptions = {{{"--camera", TakeCamera},
                                                      {"--camera-runtime", TakeCameraRuntime},
                                                      {"--stage-port", TakeStagePort},
                                                      {"--focus-curve", TakeFocusCurve},
                                                      {"--focus-speed", TakeFocusSpeed},
                                                      {"--report", TakeReport},
                                                      {"--x-range", TakeXRange, true},
                                                      {"--y-range", TakeYRange, true},
                                                      {"--origin", TakeOrigin, true}}};

const ValueOption* FindValueOption(std::string_view name) {
    for (const ValueOption& option : valueOptions)
        if (option.name == name)
            return &option;
    return nullptr;
}

} // namespace

std::variant<ProgramOptions, OptionError> ParseProgramOptions(std::span<const std::string_view> arguments) {
    ProgramOptions options;
    bool scans = false;
    std::string_view scanOption; // one that says how, for the message
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string_view argument = arguments[i];
        const std::size_t equals = argument.find('=');
        const std::string_view name = argument.substr(0, equals);
        if (argument == "--help" || argument == "-h") {
            options.help = true;
        } else if (argument == "--version") {
            options.version = true;
        } else if (argument == "--scan") {
            ScanOf(options);
            scans = true;
        } else if (argument == "--no-tilt") {
            ScanOf(options).noTilt = true;
            scanOption = argument;
        } else if (const ValueOption* option = FindValueOption(name); option != nullptr) {
            if (equals == std::string_view::npos && i + 1 == arguments.size())
                return OptionError{std::string(name) + " needs a value"};
            const std::string_view value =
                equals == std::string_view::npos ? arguments[++i] : argument.substr(equals + 1);
            if (const auto error = option->take(value, options))
                return *error;
            if (option->ofScan)
                scanOption = name;
        } else {
            return OptionError{"unknown argument '" + std::string(argument) + "'"};
        }
    }
    if (!scans && !scanOption.empty())
        return OptionError{std::string(scanOption) + " needs --scan"};
    return options;
}

std::string_view ProgramHelp() {
    return "Usage: tessaro [OPTION...]\n"
           "Searches for single-layer flakes with microscope, camera and stage.\n"
           "\n"
           "  --camera CAMERA           the camera of this identity or address; an address is opened\n"
           "                            without looking around in the network. Without this option the\n"
           "                            first camera found; with 'none' none, a moving test pattern\n"
           "                            stands in\n"
           "  --camera-runtime RUNTIME  'pylon' (where it is built in, and then the usual one) or 'aravis'\n"
           "  --stage-port PATH         the serial device of the stage, whatever number the settings say.\n"
           "                            Without this option /dev/ttyUSB, /dev/ttyACM or /dev/ttyS with that\n"
           "                            number, the first that is there; with 'none' none is opened, and "
           "the\n"
           "                            stage is simulated\n"
           "  --focus-curve FILE        what each step of focusing saw is added to this file, for a plot:\n"
           "                            comma-separated values with the Z, the score and the focus value\n"
           "  --focus-speed UM_PER_S    the speed at which Z goes down in coarse focusing, 1 to 5000\n"
           "                            (450); a camera with fewer frames a second wants less\n"
           "  --report FILE             what scans find: a line of JSON for each field as it is finished,\n"
           "                            and one at the end of each scan. The file is begun anew; '-' is the\n"
           "                            standard output\n"
           "  --scan                    scan once without an operator and end; without a display too. The\n"
           "                            settings say what and where, as far as no option does. Ctrl-C ends\n"
           "                            the scan early, a second Ctrl-C the program at once. Exit status:\n"
           "                            0 scanned to the end, 3 stopped or out of focus, 4 no camera or no\n"
           "                            stage\n"
           "    --x-range MM            the area's width, 0 to 1000\n"
           "    --y-range MM            the area's height, 0 to 1000\n"
           "    --origin X,Y            its first field, in um (0,0). The tilt is measured at origin,\n"
           "                            origin + X range and origin + Y range; all three must lie on the\n"
           "                            sample, or Z may be driven far off\n"
           "    --no-tilt               scan at the Z that the stage stands at, without focusing\n"
           "  --help                    show this text\n"
           "  --version                 show the version\n"
           "\n"
           "Settings and images are kept in the folders Image_Data and Image_Detail on the desktop.\n";
}

} // namespace tessaro
