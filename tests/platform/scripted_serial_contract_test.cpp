#include "platform/fake/scripted_serial_port.h"
#include "tests/platform/serial_port_contract.h"

// The scripted lines keep the promises of real ones, so that tests with them mean something.

namespace tessaro {
namespace {

class ScriptedSerialMachine {
public:
    ScriptedSerialMachine() { m_ports.TakeAnyWrite(); }

    SerialPorts& Ports() { return m_ports; }
    std::string Name() { return m_ports.PortName(3); }
    static std::string MissingName() { return "nowhere"; }
    std::uint64_t NowMs() const { return m_clock.now; }

    void SendNow(const std::string& bytes) { SendAfter(0, bytes); }
    void SendAfter(std::uint32_t ms, const std::string& bytes) { m_ports.Arrive(m_clock.now + ms, bytes); }
    void HangUp() { m_ports.HangUp(); }
    void HangUpAfter(std::uint32_t ms) { m_ports.HangUpAt(m_clock.now + ms); }
    void ComeBack() {}

    std::string Taken(std::size_t count) {
        std::string all;
        for (const std::string& write : m_ports.writes)
            all += write;
        m_taken += count;
        return all.substr(m_taken - count, count);
    }

    void TakeNothing() { m_ports.room = 4096; }
    void TakeAgain() { m_ports.room = ScriptedSerialPorts::anyNumber; }

private:
    VirtualClock m_clock;
    ScriptedSerialPorts m_ports{m_clock, [](const std::string& breach) { ADD_FAILURE() << breach; }};
    std::size_t m_taken = 0;
};

INSTANTIATE_TYPED_TEST_SUITE_P(Scripted, SerialPortContract, ScriptedSerialMachine);

} // namespace
} // namespace tessaro
