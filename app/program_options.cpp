#include "app/program_options.h"

#include <array>
#include <optional>

namespace tessaro {
namespace {

struct ValueOption {
    std::string_view name;
    std::string ProgramOptions::*value;
};

constexpr std::string_view noDevice = "none";
constexpr std::array<ValueOption, 2> valueOptions = {
    {{"--camera", &ProgramOptions::camera}, {"--stage-port", &ProgramOptions::stagePort}}};

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
            if (value != noDevice)
                return OptionError{std::string(name) + ": only 'none' is known, not '" + std::string(value) +
                                   "'"};
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
           "  --camera none      look for no camera; a moving test pattern stands in\n"
           "  --stage-port none  open no serial line; the stage is simulated\n"
           "  --help             show this text\n"
           "  --version          show the version\n"
           "\n"
           "Settings and images are kept in the folders Image_Data and Image_Detail on the desktop.\n";
}

} // namespace tessaro
