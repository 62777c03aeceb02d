#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tessaro {

/// A line of this machine that programs open like a serial port: raw, without echo. Nothing here blocks.
class PseudoTerminal {
public:
    /// Throws std::runtime_error when the system has none.
    PseudoTerminal();
    PseudoTerminal(const PseudoTerminal&) = delete;
    PseudoTerminal& operator=(const PseudoTerminal&) = delete;
    ~PseudoTerminal(); // who has it open is hung up on

    /// What programs open.
    const std::string& Name() const { return m_name; }

    /// A file that is readable when bytes came, or the line was closed, since the last call of TakeEvent;
    /// quiet as long as nobody has the line open.
    int Events() const { return m_events; }
    bool TakeEvent() const; // false: nothing happened

    bool IsOpened() const;

    /// What was written at the other end, up to so many bytes.
    std::string Read(std::size_t most) const;

    /// All that is there.
    std::string ReadAll() const;

    /// What nobody is there to fetch, or does not fetch in time, is lost.
    void Write(std::string_view bytes) const;

    /// Makes a line that was closed as new: nothing is left to be read there, and it is raw again. False when
    /// it cannot be opened any more, as one whose last user was killed while he had it for himself alone.
    bool Renew() const;

private:
    void Open();
    void Close();

    int m_master = -1;
    int m_events = -1;
    std::string m_name;
};

} // namespace tessaro
