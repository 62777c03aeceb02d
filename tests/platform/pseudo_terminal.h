#pragma once

#include "tests/support/temporary_folder.h"

#include <cstdint>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace tessaro {

/// A pseudo-terminal, seen from the end that a device has, under a name that stays when it is made anew. What
/// is to happen later happens in threads, which end with it.
class PseudoTerminal {
public:
    PseudoTerminal();
    ~PseudoTerminal();
    PseudoTerminal(const PseudoTerminal&) = delete;
    PseudoTerminal& operator=(const PseudoTerminal&) = delete;

    /// A link to the device that programs open.
    std::string Name() const { return (m_folder.Path() / "stage").string(); }

    /// Both ends have the settings of the one driver in common.
    int Descriptor() const { return m_device; }

    /// Back when all can be read on the other side, which has to be open: at most 4000 bytes.
    void SendNow(const std::string& bytes);
    void SendAfter(std::uint32_t ms, std::string bytes);

    void HangUp();
    void HangUpAfter(std::uint32_t ms);
    void ComeBack();

    /// The next so many bytes that were written; fewer when they do not come for a long time.
    std::string Taken(std::size_t count);

private:
    /// False when nothing is left to be sent, or nowhere to send it to.
    bool SendPiece(const std::string& bytes, std::size_t& sent);
    void SendAll(const std::string& bytes, const std::stop_token& stopped);

    TemporaryFolder m_folder;
    std::mutex m_access; // to the descriptors
    int m_device = -1;
    int m_program = -1; // held open: it tells what can be read there
    std::vector<std::jthread> m_later;
};

} // namespace tessaro
