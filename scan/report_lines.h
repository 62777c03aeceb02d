#pragma once

#include <ostream>
#include <string>
#include <string_view>

namespace tessaro {

/// Lines on a stream, each handed over at once and flushed, so that a crash tears none. One that cannot be
/// written whole is told on standard error, the first time; the next one begins a line of its own whatever
/// stands before it.
class ReportLines {
public:
    explicit ReportLines(std::ostream& out) : m_out(out) {}

    /// Whether all of the line, which has no line feed, was written.
    bool Write(std::string_view line);

    /// How many were not.
    int Missing() const { return m_missing; }

private:
    bool WriteAll(const std::string& text);

    std::ostream& m_out;
    bool m_torn = false; // the stream ends, or may end, in the middle of a line
    int m_missing = 0;
};

} // namespace tessaro
