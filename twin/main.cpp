// tessaro-twin: a simulated microscope. Picks the adapters.

#include "imaging/frame_buffer.h"
#include "imaging/picture_to_frame.h"
#include "platform/picture_files.h"
#include "platform/qt/qt_picture_files.h"
#include "text/plain_text.h"
#include "text/whole_file.h"
#include "twin/operator_view.h"
#include "twin/options.h"
#include "twin/sensor_renderer.h"
#include "twin/service/twin_service.h"
#include "twin/truth.h"
#include "twin/wafer.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <iostream>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace {

using namespace tessaro;

enum ExitCode { Done = 0, CouldNot = 1, WrongUsage = 2 };

void Complain(std::string_view reason) {
    std::cerr << "tessaro-twin: " << reason << "\n";
}

ExitCode Refuse(std::string_view reason) {
    Complain(reason);
    std::cerr << "Try 'tessaro-twin --help'.\n";
    return WrongUsage;
}

template<typename Bytes>
bool Write(const std::string& path, const Bytes& bytes) {
    if (WriteWholeFile(path, bytes))
        return true;
    Complain(Joined({"could not write '", path, "'"}));
    return false;
}

std::string WaferSummary(const Wafer& wafer) {
    const auto& flakes = wafer.Flakes();
    const auto singleLayers = std::ranges::count(flakes, 1, &WaferFlake::layers);
    return Joined({"a wafer with ", std::to_string(flakes.size()), " flakes, ", std::to_string(singleLayers),
                   " of them single layers"});
}

/// The frame at the start position; each wafer has noise of its own.
ExitCode RenderPicture(const TwinOptions& options, const Wafer& wafer) {
    const StagePosition at = StartPosition(options, wafer);
    std::vector<std::uint8_t> mosaic(twinMosaicBytes);
    SensorRenderer(wafer).Render(at, {}, options.wafer.seed, mosaic);
    FrameBuffer frame;
    MosaicToFrame(mosaic, frame);
    const auto encoded =
        QtPictureFiles().Encode(FrameToPicture(frame), PictureType(options.renderFile).value_or("image/png"));
    if (const PictureError* const error = std::get_if<PictureError>(&encoded)) {
        Complain(Joined({"could not make the picture: ", error->reason}));
        return CouldNot;
    }
    if (!Write(options.renderFile, std::get<std::vector<std::uint8_t>>(encoded)))
        return CouldNot;
    if (!options.quiet)
        std::cout << Joined({options.renderFile, ": the field at ", NumberText(at.x, 1), ", ",
                             NumberText(at.y, 1), ", ", NumberText(at.z, 1), " of ", WaferSummary(wafer),
                             "\n"});
    return Done;
}

ExitCode Serve(const TwinOptions& options, const Wafer& wafer) {
    TwinServiceOptions service;
    service.stage = {.position = StartPosition(options, wafer),
                     .limits = options.limits,
                     .timeFactor = options.timeFactor,
                     .progressAxes = options.progressAxes,
                     .linkPath = options.stageLink,
                     .logPath = options.stageLog};
    service.cameraAddress = options.cameraAddress;
    service.serialNumber = options.serialNumber;
    service.controlPath = options.controlSocket;
    service.quiet = options.quiet;
    service.faults = options.faults;
    ServeTwin(wafer, service);
    return Done;
}

ExitCode Run(const TwinOptions& options) {
    const Wafer wafer(options.wafer);
    if (!options.truthFile.empty() && !Write(options.truthFile, WaferTruthJson(wafer)))
        return CouldNot;
    return options.renderFile.empty() ? Serve(options, wafer) : RenderPicture(options, wafer);
}

ExitCode Start(std::span<char*> arguments) {
    const std::vector<std::string_view> words(arguments.begin(), arguments.end());
    const auto parsed = ParseTwinOptions(words);
    if (const TwinOptionError* const error = std::get_if<TwinOptionError>(&parsed))
        return Refuse(error->reason);
    const TwinOptions& options = std::get<TwinOptions>(parsed);
    if (options.help)
        std::cout << TwinHelp();
    else if (options.version)
        std::cout << "tessaro-twin " TESSARO_VERSION "\n";
    else
        return Run(options);
    return Done;
}

} // namespace

int main(int argumentCount, char** arguments) {
    try {
        return Start(
            std::span(arguments, static_cast<std::size_t>(argumentCount)).subspan(argumentCount > 0 ? 1 : 0));
    } catch (const std::exception& error) {
        std::fprintf(stderr, "tessaro-twin: %s\n", error.what());
        return CouldNot;
    }
}
