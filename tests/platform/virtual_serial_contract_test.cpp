#include "support/virtual_serial_ports.h"
#include "tests/platform/serial_port_contract.h"

#include <limits>
#include <map>

// A line whose other end acts by itself keeps the promises of real ones, too.

namespace tessaro {
namespace {

/// Takes what is written, and says what the test wants at its time.
class ToldFarEnd : public SerialFarEnd {
public:
    std::size_t Receive(std::string_view bytes, std::uint64_t) override {
        const std::size_t fitting = std::min(room, bytes.size());
        room -= fitting;
        received += bytes.substr(0, fitting);
        return fitting;
    }
    std::string Run(std::uint64_t nowMs) override {
        std::string said;
        while (!toSay.empty() && toSay.begin()->first <= nowMs) {
            said += toSay.begin()->second;
            toSay.erase(toSay.begin());
        }
        return said;
    }
    bool HasHungUp(std::uint64_t nowMs) override { return nowMs >= hangsUpAtMs; }

    static constexpr std::size_t anyNumber = std::numeric_limits<std::size_t>::max();

    std::size_t room = anyNumber;
    std::string received;
    std::multimap<std::uint64_t, std::string> toSay;
    std::uint64_t hangsUpAtMs = std::numeric_limits<std::uint64_t>::max();
};

class VirtualSerialMachine {
public:
    SerialPorts& Ports() { return m_ports; }
    std::string Name() { return m_ports.PortName(3); }
    static std::string MissingName() { return "nowhere"; }
    std::uint64_t NowMs() const { return m_clock.now; }

    void SendNow(const std::string& bytes) { SendAfter(0, bytes); }
    void SendAfter(std::uint32_t ms, const std::string& bytes) {
        m_farEnd.toSay.insert({m_clock.now + ms, bytes});
    }
    void HangUp() { HangUpAfter(0); }
    void HangUpAfter(std::uint32_t ms) { m_farEnd.hangsUpAtMs = m_clock.now + ms; }
    void ComeBack() { m_farEnd.hangsUpAtMs = std::numeric_limits<std::uint64_t>::max(); }

    std::string Taken(std::size_t count) {
        m_taken += count;
        return m_farEnd.received.substr(m_taken - count, count);
    }

    void TakeNothing() { m_farEnd.room = 4096; }
    void TakeAgain() { m_farEnd.room = ToldFarEnd::anyNumber; }

private:
    VirtualClock m_clock;
    ToldFarEnd m_farEnd;
    VirtualSerialPorts m_ports{m_clock, m_farEnd};
    std::size_t m_taken = 0;
};

INSTANTIATE_TYPED_TEST_SUITE_P(Virtual, SerialPortContract, VirtualSerialMachine);

} // namespace
} // namespace tessaro
