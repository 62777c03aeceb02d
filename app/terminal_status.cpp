#include "app/terminal_status.h"

#include "platform/whole_characters.h"

#include <algorithm>
#include <cstddef>

namespace tessaro {
namespace {

constexpr const char* toLineStart = "\r";
constexpr const char* clearToLineEnd = "\x1b[K";

/// Whatever would leave the line is a blank.
std::string OnOneLine(std::string_view text) {
    std::string line(text);
    const auto isControl = [](char character) {
        constexpr unsigned char deleteCharacter = 0x7F;
        const auto code = static_cast<unsigned char>(character);
        return code < static_cast<unsigned char>(' ') || code == deleteCharacter;
    };
    std::replace_if(line.begin(), line.end(), isControl, ' ');
    return line;
}

} // namespace

void TerminalStatus::InformationShown(std::string_view text) {
    std::string line = OnOneLine(text);
    if (line == m_information)
        return;
    m_information = std::move(line);
    if (m_width)
        Redraw();
    else
        m_write(m_information + "\n");
}

void TerminalStatus::ProgressShown(std::string_view text) {
    m_progress = OnOneLine(text);
    if (m_width)
        Redraw();
}

void TerminalStatus::Say(std::string_view line) {
    EndLine();
    m_write(OnOneLine(line) + "\n");
}

void TerminalStatus::EndLine() {
    if (!m_drawn.empty())
        m_write("\n");
    m_drawn.clear();
}

/// In fewer bytes than the terminal has columns: a line that goes on below could not be written over.
void TerminalStatus::Redraw() {
    std::string line = m_information;
    if (!m_progress.empty())
        line += (line.empty() ? "" : "  |  ") + m_progress;
    line = WholeCharacters(std::move(line), static_cast<std::size_t>(std::max(1, m_width() - 1)));
    if (line == m_drawn)
        return;
    m_write(toLineStart + line + clearToLineEnd);
    m_drawn = std::move(line);
}

} // namespace tessaro
