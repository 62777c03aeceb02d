#include "app/program_options.h"

#include "app/number_text.h"

#include <array>
#include <optional>

namespace tessaro {
namespace {

constexpr std::int32_t fastestFocusSpeed = 5000; // of the stage

using Taken = std::optional<OptionError>; // nothing: the value is taken

/// An option with a value.
struct ValueOption {
    std::string_view name;
    Taken (*take)(std::string_view value, ProgramOptions& options);
};

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

Taken TakeFocusSpeed(std::string_view value, ProgramOptions& options) {
    std::int32_t speed = 0;
    std::string_view rest = value;
    if (!TakeNumber(rest, speed) || !rest.empty() || speed < 1 || speed > fastestFocusSpeed)
        return OptionError{"--focus-speed: a whole number of um/s from 1 to " +
                           std::to_string(fastestFocusSpeed) + " is needed, not '" + std::string(value) +
                           "'"};
    options.focusSpeed = speed;
    return std::nullopt;
}

Taken TakeReport(std::string_view value, ProgramOptions& options) {
    return TakeText("--report", value, options.report);
}

constexpr std::array<ValueOption, 6> valueOptions = {{{"--camera", TakeCamera},
                                                      {"--camera-runtime", TakeCameraRuntime},
                                                      {"--stage-port", TakeStagePort},
                                                      {"--focus-curve", TakeFocusCurve},
                                                      {"--focus-speed", TakeFocusSpeed},
                                                      {"--report", TakeReport}}};

const ValueOption* FindValueOption(std::string_view name) {
    for (const ValueOption& option : valueOptions)
        if (option.name == name)
            return &option;
    return nullptr;
}

} // namespace

std::variant<ProgramOptions, OptionError> ParseProgramOptions(std::span<const std::string_view> arguments) {
    ProgramOptions options;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string_view argument = arguments[i];
        const std::size_t equals = argument.find('=');
        const std::string_view name = argument.substr(0, equals);
        if (argument == "--help" || argument == "-h") {
            options.help = true;
        } else if (argument == "--version") {
            options.version = true;
        } else if (const ValueOption* option = FindValueOption(name); option != nullptr) {
            if (equals == std::string_view::npos && i + 1 == arguments.size())
                return OptionError{std::string(name) + " needs a value"};
            const std::string_view value =
                equals == std::string_view::npos ? arguments[++i] : argument.substr(equals + 1);
            if (const auto error = option->take(value, options))
                return *error;
        } else {
            return OptionError{"unknown argument '" + std::string(argument) + "'"};
        }
    }
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
           "                            and one at the end of each scan. The file is begun anew\n"
           "  --help                    show this text\n"
           "  --version                 show the version\n"
           "\n"
           "Settings and images are kept in the folders Image_Data and Image_Detail on the desktop.\n";
}

} // namespace tessaro
