#include "twin/service/served_stage.h"

#include "text/plain_text.h"

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <stdexcept>

namespace tessaro {
namespace {

constexpr double millisecondsASecond = 1000.0;
constexpr int decimals = 3;

struct SimpleFault {
    FaultKind kind;
    bool ReplyFaultSettings::*setting;
};
constexpr std::array simpleFaults = {
    SimpleFault{FaultKind::StageSilent, &ReplyFaultSettings::silent},
    SimpleFault{FaultKind::StageNoArrival, &ReplyFaultSettings::noArrival},
    SimpleFault{FaultKind::StageGarbled, &ReplyFaultSettings::garbled},
    SimpleFault{FaultKind::StageOtherAxis, &ReplyFaultSettings::otherAxis},
    SimpleFault{FaultKind::StageImpossible, &ReplyFaultSettings::impossible}};

/// Of bytes that no command has, their hexadecimal number.
std::string Printable(std::string_view text) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string printable;
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if (byte > ' ' && byte < 0x7F && character != '\\')
            printable += character;
        else
            printable += {'\\', 'x', digits[byte / 16], digits[byte % 16]};
    }
    return printable;
}

} // namespace

ServedStage::ServedStage(const ServedStageOptions& options)
    : m_limits(options.limits.value_or(UsualLimitsAround(options.position))), m_start(StageSeconds()),
      m_axes(options.position, m_limits, options.timeFactor),
      m_controller(
          m_axes, [this](std::string_view text, double now) { Log(text, now); }, options.progressAxes),
      m_wire(m_controller), m_line(m_wire, options.linkPath) {
    OpenLog(options.logPath);
}

void ServedStage::OpenLog(const std::string& path) {
    if (path.empty())
        return;
    m_log.reset(std::fopen(path.c_str(), "we"));
    if (m_log == nullptr)
        throw std::runtime_error("cannot write the stage's log '" + path + "': " + std::strerror(errno));
}

void ServedStage::Log(std::string_view text, double now) {
    if (m_log == nullptr)
        return;
    const std::string time = NumberText((now - m_start) * millisecondsASecond, decimals);
    std::fprintf(m_log.get(), "%s %s\n", time.c_str(), Printable(text).c_str());
    std::fflush(m_log.get());
}

bool ServedStage::Put(const StagePosition& position) {
    if (!IsWithin(position, m_limits))
        return false;
    m_controller.ForgetMoves();
    m_axes.Put(position, StageSeconds());
    m_line.Serve();
    return true;
}

std::string ServedStage::Where() const {
    const double now = StageSeconds();
    const StagePosition position = m_axes.PositionAt(now);
    bool moves = false;
    for (std::size_t axis = 0; axis < stageAxisCount; ++axis)
        moves = moves || m_axes.MovesAt(axis, now);
    return Joined({NumberText(position.x, decimals), ",", NumberText(position.y, decimals), ",",
                   NumberText(position.z, decimals), moves ? " moving" : " standing"});
}

void ServedStage::Set(const Fault& fault) {
    ReplyFaultSettings& settings = m_wire.Faults();
    if (fault.kind == FaultKind::StagePieces)
        settings.piece = static_cast<std::size_t>(fault.piece);
    if (fault.kind == FaultKind::StageLate)
        settings.lateSeconds = fault.lateMs / millisecondsASecond;
    if (fault.kind == FaultKind::StageJunk)
        m_wire.StartJunk(StageSeconds());
    if (fault.kind == FaultKind::StageGone)
        m_line.Unplug();
    Switch(fault.kind, true);
}

void ServedStage::Clear(FaultKind kind) {
    ReplyFaultSettings& settings = m_wire.Faults();
    if (kind == FaultKind::StagePieces)
        settings.piece.reset();
    if (kind == FaultKind::StageLate)
        settings.lateSeconds = 0.0;
    if (kind == FaultKind::StageJunk)
        m_wire.StopJunk();
    if (kind == FaultKind::StageGone)
        m_line.PlugIn();
    Switch(kind, false);
}

void ServedStage::Switch(FaultKind kind, bool on) {
    for (const SimpleFault& simple : simpleFaults)
        if (simple.kind == kind)
            m_wire.Faults().*simple.setting = on;
    m_line.Serve();
}

} // namespace tessaro
