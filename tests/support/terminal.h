#pragma once

#include <cstddef>
#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <unistd.h>

namespace tessaro {

/// A terminal that programs may write to and that remembers a few thousand bytes of it.
class Terminal {
public:
    Terminal() : m_master(posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK)) {
        if (m_master == -1 || grantpt(m_master) != 0 || unlockpt(m_master) != 0)
            return;
        m_name = ptsname(m_master);
        m_slave =
            open(m_name.c_str(), O_RDWR | O_NOCTTY); // open, so that nothing is lost when a program ends
    }
    ~Terminal() {
        close(m_slave);
        close(m_master);
    }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    bool Works() const { return m_slave != -1; }

    /// The file that programs open.
    const std::string& Name() const { return m_name; }

    /// What was written since the last call.
    std::string Read() const {
        std::string text;
        char bytes[1000];
        for (ssize_t length = read(m_master, bytes, sizeof bytes); length > 0;
             length = read(m_master, bytes, sizeof bytes))
            text.append(bytes, static_cast<std::size_t>(length));
        return text;
    }

private:
    int m_master = -1;
    int m_slave = -1;
    std::string m_name;
};

} // namespace tessaro
