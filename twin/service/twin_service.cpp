#include "twin/service/twin_service.h"

#include "twin/service/control_socket.h"

#include <csignal>
#include <cstdio>
#include <exception>
#include <glib-unix.h>
#include <memory>
#include <optional>
#include <stdexcept>
#include <variant>

namespace tessaro {
namespace {

template<typename... Handlers>
struct Overloaded : Handlers... {
    using Handlers::operator()...;
};
template<typename... Handlers>
Overloaded(Handlers...) -> Overloaded<Handlers...>;

int StopLoop(void* loop) {
    g_main_loop_quit(static_cast<GMainLoop*>(loop));
    return G_SOURCE_CONTINUE;
}

/// A loop that a signal ends.
class SignalLoop {
public:
    SignalLoop() : m_loop(g_main_loop_new(nullptr, FALSE)) {
        for (const int signal : {SIGTERM, SIGINT})
            g_unix_signal_add(signal, StopLoop, m_loop);
    }
    SignalLoop(const SignalLoop&) = delete;
    SignalLoop& operator=(const SignalLoop&) = delete;
    ~SignalLoop() { g_main_loop_unref(m_loop); }

    void Run() { g_main_loop_run(m_loop); }

    /// Not before what is going on, an answer for instance, is done.
    void Stop() {
        g_idle_add_full(
            G_PRIORITY_LOW, [](void* loop) { return StopLoop(loop), G_SOURCE_REMOVE; }, m_loop, nullptr);
    }

private:
    GMainLoop* m_loop;
};

} // namespace

TwinDevices::TwinDevices(const Wafer& wafer, const TwinServiceOptions& options)
    : m_stage(options.stage), m_renderer(wafer) {
    if (!options.cameraAddress.empty())
        m_camera.emplace(options.cameraAddress, options.serialNumber,
                         [this](const ExposureSettings& exposure, std::uint64_t noiseSeed,
                                std::span<std::uint8_t> mosaic) { TakeFrame(exposure, noiseSeed, mosaic); });
    for (const Fault& fault : options.faults)
        Set(fault);
}

/// The exposure begins now, so that a frame never shows what was before it was begun: the camera looks a
/// little ahead on the way that the stage goes.
void TwinDevices::TakeFrame(const ExposureSettings& exposure, std::uint64_t noiseSeed,
                            std::span<std::uint8_t> mosaic) {
    constexpr double secondsAUs = 1e-6;
    const ExposureWay way = WayDuring(StageSeconds(), exposure.exposureTimeUs * secondsAUs,
                                      [this](double time) { return m_stage.PositionAt(time); });
    m_renderer.Render(way, exposure, noiseSeed, mosaic);
}

void TwinDevices::Set(const Fault& fault) {
    switch (fault.kind) {
    case FaultKind::CameraGone:
        return Camera().Unplug();
    case FaultKind::LostPackets:
        return Camera().SetLostPackets(fault.share);
    case FaultKind::FrameSize:
        return Camera().SetFrameSize(fault.width, fault.height);
    case FaultKind::EndlessAutomatic:
        return Camera().SetEndlessAutomatic(true);
    default:
        return m_stage.Set(fault);
    }
}

void TwinDevices::Clear(FaultKind kind) {
    switch (kind) {
    case FaultKind::CameraGone:
        return Camera().PlugIn();
    case FaultKind::LostPackets:
        return Camera().SetLostPackets(0.0);
    case FaultKind::FrameSize:
        return Camera().ClearFrameSize();
    case FaultKind::EndlessAutomatic:
        return Camera().SetEndlessAutomatic(false);
    default:
        return m_stage.Clear(kind);
    }
}

GigECamera& TwinDevices::Camera() {
    if (!m_camera)
        throw std::runtime_error("there is no camera");
    return *m_camera;
}

std::string TwinDevices::Move(const StagePosition& target) {
    return m_stage.Put(target) ? "ok" : "error: that is beyond the stage's limits";
}

std::string TwinDevices::Obey(std::string_view line, bool& quit) {
    const auto done = [](const auto& act) {
        act();
        return std::string("ok");
    };
    try {
        return std::visit(
            Overloaded{[this](const MoveCommand& move) { return Move(move.target); },
                       [this](const WhereCommand&) { return "ok " + m_stage.Where(); },
                       [&](const Fault& fault) { return done([&] { Set(fault); }); },
                       [&](const ClearCommand& clear) { return done([&] { Clear(clear.kind); }); },
                       [&](const QuitCommand&) { return done([&] { quit = true; }); },
                       [](const CommandError& error) { return "error: " + error.reason; }},
            ParseControlCommand(line));
    } catch (const std::exception& error) { // the camera's address or the link's place was taken meanwhile
        return std::string("error: ") + error.what();
    }
}

namespace {

/// All at once; nobody may be there to read it: no reason to end.
void Say(const std::string& lines) {
    if (std::fputs(lines.c_str(), stdout) < 0 || std::fflush(stdout) != 0)
        std::fprintf(stderr, "tessaro-twin: could not say on standard output that the devices are ready\n");
}

std::string StageIsReady(const std::string& name) {
    return "tessaro-twin: stage is ready at " + name + "\n";
}

} // namespace

void ServeTwin(const Wafer& wafer, const TwinServiceOptions& options) {
    std::signal(SIGPIPE, SIG_IGN);
    SignalLoop loop;
    TwinDevices devices(wafer, options);
    std::optional<ControlSocket> control;
    if (!options.controlPath.empty()) {
        control.emplace(options.controlPath, [&](std::string_view line) {
            bool quit = false;
            std::string answer = devices.Obey(line, quit);
            if (!options.quiet)
                std::fprintf(stderr, "tessaro-twin: %.*s: %s\n", static_cast<int>(line.size()), line.data(),
                             answer.c_str());
            if (quit)
                loop.Stop();
            return answer;
        });
    }
    std::string ready;
    if (const std::string stage = devices.StageLineName(); !stage.empty()) // none when it is gone already
        ready = StageIsReady(stage);
    if (!options.cameraAddress.empty())
        ready +=
            "tessaro-twin: camera " + options.serialNumber + " is ready at " + options.cameraAddress + "\n";
    Say(ready);
    devices.TellNewStageLineNames([](const std::string& name) { Say(StageIsReady(name)); });
    loop.Run();
}

} // namespace tessaro
