#include "app/program_options.h"

#include <array>
#include <optional>

namespace tessaro {
namespace {

using Check = std::optional<OptionError> (*)(std::string_view value);

/// An option with a value, and what it may be.
struct ValueOption {
    std::string_view name;
    std::string ProgramOptions::*value;
    Check check;
};

std::optional<OptionError> CheckCamera(std::string_view value) {
    if (value.empty())
        return OptionError{"--camera needs a value"};
    return std::nullopt;
}

std::optional<OptionError> CheckCameraRuntime(std::string_view value) {
    if (value == "pylon" || value == "aravis")
        return std::nullopt;
    return OptionError{"--camera-runtime: only 'pylon' and 'aravis' are known, not '" + std::string(value) +
                       "'"};
}

std::optional<OptionError> CheckStagePort(std::string_view value) {
    if (value.empty())
        return OptionError{"--stage-port needs a value"};
    return std::nullopt;
}

constexpr std::array<ValueOption, 3> valueOptions = {
    {{"--camera", &ProgramOptions::camera, CheckCamera},
     {"--camera-runtime", &ProgramOptions::cameraRuntime, CheckCameraRuntime},
     {"--stage-port", &ProgramOptions::stagePort, CheckStagePort}}};

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
            if (const auto error = option->check(value))
                return *error;
            options.*(option->value) = value;
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
           "  --help                    show this text\n"
           "  --version                 show the version\n"
           "\n"
           "Settings and images are kept in the folders Image_Data and Image_Detail on the desktop.\n";
}

} // namespace tessaro
