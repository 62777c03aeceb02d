#pragma once

#include "twin/stage/line_link.h"
#include "twin/stage/pseudo_terminal.h"
#include "twin/stage/stage_wire.h"

#include <functional>
#include <optional>
#include <string>
#include <utility>

namespace tessaro {

/// The clock of the stage: seconds since some moment in the past.
double StageSeconds();

/// Carries the wire's bytes over a pseudo-terminal, within the main loop of the calling thread, which it
/// never blocks. Clients may come and go; when nothing moves and nobody speaks, it costs nothing.
class StageLine {
public:
    /// Makes a terminal ready for the next client; false when it cannot be opened any more.
    using Renewal = std::function<bool(const PseudoTerminal& terminal)>;

    /// Where programs find the line: a link, if one is wanted. Throws std::runtime_error when it cannot be
    /// served there.
    StageLine(StageWire& wire, std::string linkPath, Renewal renew = &PseudoTerminal::Renew);
    StageLine(const StageLine&) = delete;
    StageLine& operator=(const StageLine&) = delete;
    ~StageLine();

    /// The terminal's name; none while it is unplugged.
    std::string Name() const { return m_terminal ? m_terminal->Name() : std::string(); }

    /// Called from now on with the name of every other terminal that takes the place of this one.
    void TellNewNames(std::function<void(const std::string& name)> tell) { m_tellName = std::move(tell); }

    /// To be called when something was done to the wire or the stage meanwhile.
    void Serve();

    void Unplug(); // hangs up on who has it open, and takes the link away
    void PlugIn(); // another terminal, at the same link

private:
    struct Source;

    void ServeTerminal();
    void MakeReadyForNextClient();

    StageWire& m_wire;
    std::string m_linkPath; // empty: no link
    Renewal m_renew;
    std::function<void(const std::string& name)> m_tellName;
    std::optional<PseudoTerminal> m_terminal;
    std::optional<LineLink> m_link;
    Source* m_source = nullptr;
    void* m_watched = nullptr; // the source's mark of the terminal
};

} // namespace tessaro
