#pragma once

#include "app/status_listener.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace tessaro {

/// Takes text that is to be seen at once.
using WriteText = std::function<void(std::string_view)>;

/// The status lines for who follows the program on a terminal, or reads it afterwards in a log. On a terminal
/// both stand on one line that is written over; a log gets one line for each information text that is not
/// the one before, and no progress, which changes with every move.
class TerminalStatus : public StatusListener {
public:
    /// `columns` of the terminal; nothing: it is none.
    TerminalStatus(WriteText write, std::optional<int> columns)
        : m_write(std::move(write)), m_columns(columns) {}

    void InformationShown(std::string_view text) override;
    void ProgressShown(std::string_view text) override;

    /// A line that stays.
    void Say(std::string_view line);

    /// What is written next, by whomever, begins a line.
    void EndLine();

private:
    void Redraw();

    WriteText m_write;
    std::optional<int> m_columns;
    std::string m_information;
    std::string m_progress;
    std::string m_drawn; // on the terminal's last line
};

} // namespace tessaro
