#include "scan/report_lines.h"

#include <cstddef>
#include <cstdio>
#include <ios>
#include <streambuf>

namespace tessaro {

bool ReportLines::Write(std::string_view line) {
    std::string text = m_torn ? "\n" : "";
    text += line;
    text += '\n';
    if (WriteAll(text))
        return true;
    if (m_missing++ == 0)
        std::fprintf(stderr, "tessaro: a line of the report cannot be written\n");
    return false;
}

/// By way of the stream's buffer, which knows how much it has taken. One that takes it all and cannot pass it
/// on may have passed on any part of it.
bool ReportLines::WriteAll(const std::string& text) {
    std::streambuf& buffer = *m_out.rdbuf();
    const std::streamsize taken = buffer.sputn(text.data(), static_cast<std::streamsize>(text.size()));
    const bool passedOn = buffer.pubsync() == 0;
    const auto length = static_cast<std::size_t>(taken > 0 ? taken : 0);
    if (!passedOn)
        m_torn = true;
    else if (length > 0)
        m_torn = text[length - 1] != '\n';
    return passedOn && length == text.size();
}

} // namespace tessaro
