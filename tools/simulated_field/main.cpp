// tessaro-simulate-field: draws a random microscope field into a PNG file and says what is in it.

#include "imaging/frame_buffer.h"
#include "imaging/picture_to_frame.h"
#include "platform/picture_files.h"
#include "platform/qt/qt_picture_files.h"
#include "simulated_field/random_field.h"
#include "simulated_field/simulated_field.h"
#include "simulated_field/truth_json.h"
#include "text/number_reading.h"
#include "text/plain_text.h"
#include "text/whole_file.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <getopt.h>
#include <iostream>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace {

using namespace tessaro;

enum ExitCode { Done = 0, CouldNotWrite = 1, WrongUsage = 2 };

constexpr std::string_view helpText =
    "Usage: tessaro-simulate-field [OPTION]... OUTPUT.png\n"
    "Draws a simulated microscope field with known flakes.\n"
    "\n"
    "  --seed N        which field: the same number draws the same picture (default 1)\n"
    "  --singles N     single-layer flakes, 0 to 1000 (default 8)\n"
    "  --others N      flakes of two layers to bulk, 0 to 1000 (default 6)\n"
    "  --area MIN,MAX  sizes of the single layers in um^2, up to 10000 (default 150,380: large\n"
    "                  enough for the usual minimum area, and well below the size at which\n"
    "                  a flake becomes its own background)\n"
    "  --noise SIGMA   noise of every pixel and channel, 0 to 100 (default 1.2)\n"
    "  --truth FILE    write what the field holds to FILE, as JSON\n"
    "  --help          show this and exit\n"
    "  --version       show the version and exit\n"
    "\n"
    "Flakes that find no room are left out; the line that is printed counts those drawn.\n"
    "Exit status: 0 done, 1 could not write, 2 wrong usage.\n";

constexpr int maximumFlakes = 1000;
constexpr double maximumNoiseSigma = 100.0;
constexpr double maximumAreaUm2 = 10'000.0;

struct Order {
    std::uint64_t seed = 1;
    int singleLayers = 8;
    int otherFlakes = 6;
    AreaRangeUm2 singleLayerArea = findableSingleLayerArea;
    double noiseSigma = SimulatedField().noiseSigma;
    std::string truthPath; // empty: not wanted
    std::string outputPath;
};

/// What the command line asks for, or the status to leave with at once.
using OrderOrExit = std::variant<Order, ExitCode>;

ExitCode Refuse(std::string_view reason) {
    std::cerr << "tessaro-simulate-field: " << reason << "\nTry 'tessaro-simulate-field --help'.\n";
    return WrongUsage;
}

bool ReadArea(std::string_view text, AreaRangeUm2& range) {
    const std::size_t comma = text.find(',');
    return comma != std::string_view::npos &&
           ReadNumber(text.substr(0, comma), 1.0, maximumAreaUm2, range.minimum) &&
           ReadNumber(text.substr(comma + 1), range.minimum, maximumAreaUm2, range.maximum);
}

enum Option { Seed = 1, Singles, Others, Area, Noise, Truth, Help, Version };

constexpr std::array<option, 9> optionTable = {{{"seed", required_argument, nullptr, Seed},
                                                {"singles", required_argument, nullptr, Singles},
                                                {"others", required_argument, nullptr, Others},
                                                {"area", required_argument, nullptr, Area},
                                                {"noise", required_argument, nullptr, Noise},
                                                {"truth", required_argument, nullptr, Truth},
                                                {"help", no_argument, nullptr, Help},
                                                {"version", no_argument, nullptr, Version},
                                                {nullptr, 0, nullptr, 0}}};

/// Takes an option with its value into the order; false when the value is not one for it.
bool TakeOption(int chosen, std::string_view value, Order& order) {
    switch (chosen) {
    case Seed:
        return ReadNumber<std::uint64_t>(value, 0, UINT64_MAX, order.seed);
    case Singles:
        return ReadNumber(value, 0, maximumFlakes, order.singleLayers);
    case Others:
        return ReadNumber(value, 0, maximumFlakes, order.otherFlakes);
    case Area:
        return ReadArea(value, order.singleLayerArea);
    case Noise:
        return ReadNumber(value, 0.0, maximumNoiseSigma, order.noiseSigma);
    default:
        order.truthPath = value;
        return !order.truthPath.empty();
    }
}

OrderOrExit TakeOutputPath(std::span<char*> operands, Order order) {
    if (operands.size() != 1)
        return Refuse(operands.empty() ? "the output file is missing" : "there is more than one output file");
    order.outputPath = operands[0];
    if (order.outputPath.empty() || order.outputPath == order.truthPath)
        return Refuse("the output file needs a name of its own");
    return order;
}

OrderOrExit ReadCommandLine(int argumentCount, char** arguments) {
    Order order;
    int tableIndex = 0;
    for (;;) {
        const int chosen = getopt_long(argumentCount, arguments, "", optionTable.data(), &tableIndex);
        if (chosen == -1)
            break;
        if (chosen == Help) {
            std::cout << helpText;
            return Done;
        }
        if (chosen == Version) {
            std::cout << "tessaro-simulate-field " TESSARO_VERSION "\n";
            return Done;
        }
        if (chosen == '?')
            return Refuse("the command line was not understood"); // getopt_long has said which option
        if (!TakeOption(chosen, optarg, order))
            return Refuse(Joined({"'", optarg, "' is no value for --",
                                  optionTable[static_cast<std::size_t>(tableIndex)].name}));
    }
    return TakeOutputPath(std::span(arguments + optind, arguments + argumentCount), order);
}

template<typename Bytes>
bool WriteFile(const std::string& path, const Bytes& bytes) {
    if (WriteWholeFile(path, bytes))
        return true;
    std::cerr << "tessaro-simulate-field: could not write '" << path << "'\n";
    return false;
}

bool WritePicture(const std::string& path, const FrameBuffer& frame) {
    QtPictureFiles pictureFiles;
    const auto encoded = pictureFiles.Encode(FrameToPicture(frame), "image/png");
    if (const PictureError* error = std::get_if<PictureError>(&encoded)) {
        std::cerr << "tessaro-simulate-field: could not make a PNG picture: " << error->reason << "\n";
        return false;
    }
    return WriteFile(path, std::get<std::vector<std::uint8_t>>(encoded));
}

std::string Summary(const Order& order, const SimulatedField& field) {
    int singleLayers = 0;
    double singleLayerAreaUm2 = 0.0;
    for (const SimulatedFlake& flake : field.flakes) {
        if (flake.layers == 1) {
            ++singleLayers;
            singleLayerAreaUm2 += FlakeAreaUm2(flake);
        }
    }
    const int otherFlakes = static_cast<int>(field.flakes.size()) - singleLayers;
    const std::string leftOut = singleLayers + otherFlakes < order.singleLayers + order.otherFlakes
                                    ? "; the others found no room"
                                    : "";
    const std::string truth =
        order.truthPath.empty() ? "" : Joined({"    their outlines are in ", order.truthPath, "\n"});
    return Joined({order.outputPath, ": drew ", std::to_string(singleLayers), " single layers (",
                   NumberText(singleLayerAreaUm2, 0), " um2 in all) and ", std::to_string(otherFlakes),
                   " thicker flakes, seed ", std::to_string(order.seed), ", noise ",
                   NumberText(order.noiseSigma, 1), leftOut, "\n", truth});
}

ExitCode CarryOut(const Order& order) {
    SimulatedField field = RandomField(order.seed, order.singleLayers, order.otherFlakes,
                                       {.singleLayerArea = order.singleLayerArea});
    field.noiseSigma = order.noiseSigma;
    FrameBuffer frame;
    DrawField(field, order.seed, frame);
    if (!WritePicture(order.outputPath, frame))
        return CouldNotWrite;
    if (!order.truthPath.empty() && !WriteFile(order.truthPath, TruthJson(field, order.seed)))
        return CouldNotWrite;
    std::cout << Summary(order, field);
    return Done;
}

} // namespace

int main(int argumentCount, char** arguments) {
    const OrderOrExit order = ReadCommandLine(argumentCount, arguments);
    if (const ExitCode* exitCode = std::get_if<ExitCode>(&order))
        return *exitCode;
    return CarryOut(std::get<Order>(order));
}
