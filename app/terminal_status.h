#pragma once

#include "app/status_listener.h"

#include <functional>
#include <string>
#include <string_view>
#include <utility>

namespace tessaro {

/// Takes text that is to be seen at once.
using WriteText = std::function<void(std::string_view)>;

/// The columns that a terminal has now, asked for each line; empty where there is no terminal.
using TerminalWidth = std::function<int()>;

/// The status lines for who follows the program on a terminal, or reads it afterwards in a log. On a terminal
/// both stand on one line that is written over; a log gets one line for each information text that is not
/// the one before, and no progress, which changes with every move.
class TerminalStatus : public StatusListener {
public:
    TerminalStatus(WriteText write, TerminalWidth width)
        : m_write(std::move(write)), m_width(std::move(width)) {}

    void InformationShown(std::string_view text) override;
    void ProgressShown(std::string_view text) override;

    /// A line that stays.
    void Say(std::string_view line);

    /// What is written next, by whomever, begins a line.
    void EndLine();

private:
    void Redraw();

    WriteText m_write;
    TerminalWidth m_width;
    std::string m_information;
    std::string m_progress;
    std::string m_drawn; // on the terminal's last line
};

} // namespace tessaro
