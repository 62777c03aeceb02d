#pragma once

#include <string>

namespace tessaro {

/// A symbolic link to a terminal, as long as the object lasts.
class LineLink {
public:
    /// One to another terminal, which a process that is gone may have left, is replaced. Throws
    /// std::runtime_error for anything else that is there, and when the link cannot be made.
    LineLink(std::string path, const std::string& terminal);
    LineLink(const LineLink&) = delete;
    LineLink& operator=(const LineLink&) = delete;
    ~LineLink(); // leaves one that somebody else made meanwhile

private:
    std::string m_path;
    std::string m_terminal;
};

} // namespace tessaro
