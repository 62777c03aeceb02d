#include "twin/stage/stage_line.h"

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <glib-unix.h>
#include <utility>

namespace tessaro {
namespace {

constexpr double microseconds = 1e6;
constexpr std::int64_t never = -1;

} // namespace

double StageSeconds() {
    return static_cast<double>(g_get_monotonic_time()) / microseconds;
}

/// Woken by the terminal or by the time.
struct StageLine::Source {
    GSource base;
    StageLine* line;

    static gboolean Dispatch(GSource* source, GSourceFunc /*callback*/, gpointer /*data*/) {
        reinterpret_cast<Source*>(source)->line->Serve();
        return G_SOURCE_CONTINUE;
    }
};

StageLine::StageLine(StageWire& wire, std::string linkPath, Renewal renew)
    : m_wire(wire), m_linkPath(std::move(linkPath)), m_renew(std::move(renew)) {
    static GSourceFuncs functions = {nullptr, nullptr, Source::Dispatch, nullptr, nullptr, nullptr};
    m_source = reinterpret_cast<Source*>(g_source_new(&functions, sizeof(Source)));
    m_source->line = this;
    try {
        PlugIn();
    } catch (...) {
        g_source_unref(&m_source->base);
        throw;
    }
    g_source_attach(&m_source->base, g_main_context_get_thread_default());
}

StageLine::~StageLine() {
    g_source_destroy(&m_source->base);
    g_source_unref(&m_source->base);
}

void StageLine::PlugIn() {
    if (m_terminal)
        return;
    m_terminal.emplace();
    m_terminal->TakeEvent(); // our own: nobody has opened it yet
    try {
        if (!m_linkPath.empty())
            m_link.emplace(m_linkPath, m_terminal->Name());
    } catch (...) {
        m_terminal.reset();
        throw;
    }
    m_watched = g_source_add_unix_fd(&m_source->base, m_terminal->Events(), G_IO_IN);
    if (m_tellName)
        m_tellName(m_terminal->Name());
    Serve();
}

void StageLine::Unplug() {
    if (m_terminal)
        g_source_remove_unix_fd(&m_source->base, m_watched);
    m_link.reset();
    m_terminal.reset();
}

/// Asks the terminal last: the wire may have room again.
void StageLine::Serve() {
    const std::string bytes = m_wire.Run(StageSeconds());
    if (m_terminal) {
        m_terminal->Write(bytes);
        ServeTerminal();
    }
    const double next = m_wire.NextTime();
    g_source_set_ready_time(&m_source->base, std::isinf(next)
                                                 ? never
                                                 : static_cast<std::int64_t>(std::ceil(next * microseconds)));
}

/// What was written before the line was closed still counts.
void StageLine::ServeTerminal() {
    const bool changed = m_terminal->TakeEvent();
    if (const std::size_t room = m_wire.Room(); room > 0)
        m_wire.Receive(m_terminal->Read(room), StageSeconds());
    if (changed && !m_terminal->IsOpened())
        MakeReadyForNextClient();
}

/// Made raw before its last bytes are read: from then on nothing is echoed.
void StageLine::MakeReadyForNextClient() {
    const bool renewed = m_renew(*m_terminal);
    m_terminal->TakeEvent(); // our own
    m_wire.EndWith(m_terminal->ReadAll(), StageSeconds());
    if (renewed || m_terminal->IsOpened()) // the next client may be there already
        return;
    Unplug();
    try {
        PlugIn();
    } catch (const std::exception& error) { // there is no more to be done about it: an unplugged line
        std::fprintf(stderr, "tessaro-twin: %s\n", error.what());
    }
}

} // namespace tessaro
