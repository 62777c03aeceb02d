#pragma once

#include "platform/fake/virtual_clock.h"
#include "platform/serial_port.h"

#include <cstddef>
#include <deque>
#include <functional>
#include <limits>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tessaro {

/// Serial lines whose other end is written down in advance, in virtual time: waiting for bytes moves the
/// clock. One of them can be open at a time. A write that the script does not expect is a breach; so is a
/// script that was not finished when the lines go.
class ScriptedSerialPorts : public SerialPorts {
public:
    /// Bytes that come so many milliseconds after the write that they answer.
    struct Piece {
        std::uint64_t afterMs = 0;
        std::string bytes;
    };
    using Reply = std::vector<Piece>;
    using Answer = std::function<Reply(const std::string& written)>;

    /// A test gives ADD_FAILURE here; by default a breach ends the program.
    using OnBreach = std::function<void(const std::string&)>;

    explicit ScriptedSerialPorts(VirtualClock& clock, OnBreach onBreach = EndProgram)
        : m_clock(clock), m_onBreach(std::move(onBreach)) {}
    ScriptedSerialPorts(const ScriptedSerialPorts&) = delete;
    ScriptedSerialPorts& operator=(const ScriptedSerialPorts&) = delete;
    ~ScriptedSerialPorts() override;

    /// A text as it goes over a line, with its terminator.
    static std::string Terminated(std::string text);

    /// What comes 5 ms after a command.
    static Reply Answered(std::string text) { return {{5, Terminated(std::move(text))}}; }

    /// The next write, byte for byte, and what it is answered.
    void ExpectBytes(std::string bytes, Reply reply = {});
    void Expect(std::string text, Reply reply = {}) {
        ExpectBytes(Terminated(std::move(text)), std::move(reply));
    }

    /// No write is a breach any more; each is answered so.
    void TakeAnyWrite(Answer answer = [](const std::string&) { return Reply{}; });

    /// Bytes that come by themselves when the clock says so.
    void Arrive(std::uint64_t atMs, std::string bytes);

    /// The open line breaks: what came before can still be read. A line that is opened afterwards is whole.
    void HangUp() { HangUpAt(m_clock.now); }
    void HangUpAt(std::uint64_t atMs) { m_hangUpAt = atMs; }
    void HangUpAfterWrites(std::size_t count) { m_writesBeforeHangUp = count; }

    /// The n-th call of "Open", "GetSettings", "SetSettings", "SetTimeouts", "GetTimeouts", "Write" or "Read"
    /// fails with this error number.
    void FailAt(const std::string& call, int occurrence = 1, std::int32_t error = brokenError);

    std::size_t WritesLeft() const { return m_script.size(); }

    /// "line 3" for the number 3.
    std::string PortName(std::int32_t portNumber) override;
    SerialHandle Open(const std::string& name) override;
    void Close(SerialHandle line) override;
    bool GetSettings(SerialHandle line, SerialSettings& settings) override;
    bool SetSettings(SerialHandle line, const SerialSettings& settings) override;
    bool SetTimeouts(SerialHandle line, const SerialTimeouts& timeouts) override;
    bool GetTimeouts(SerialHandle line, SerialTimeouts& timeouts) override;
    bool Write(SerialHandle line, std::span<const std::uint8_t> bytes, std::uint32_t& written) override;
    bool Read(SerialHandle line, std::span<std::uint8_t> bytes, std::uint32_t& count) override;
    std::int32_t LastError() const override { return m_lastError; }

    static constexpr std::int32_t missingError = 2;
    static constexpr std::int32_t inUseError = 5;
    static constexpr std::int32_t notOpenError = 6;
    static constexpr std::int32_t brokenError = 31;
    static constexpr std::size_t anyNumber = std::numeric_limits<std::size_t>::max();

    bool wanted = true;                              // otherwise no line has a name
    bool present = true;                             // otherwise none can be opened
    SerialSettings driverSettings = {1200, 7, 1, 2}; // as the driver has them
    SerialTimeouts timeoutsInForce;                  // zero again whenever a line is opened
    std::size_t room = anyNumber;                    // for bytes written; what does not fit waits in vain
    std::vector<std::string> writes;                 // with their terminators
    std::vector<std::string> calls;                  // with what they were told
    std::function<void(std::string_view)> onCall;    // before it is done
    bool remembersCalls = true;

private:
    static constexpr std::uint64_t never = std::numeric_limits<std::uint64_t>::max();

    struct Arrival {
        std::string bytes;
        std::size_t taken = 0; // of them
    };
    struct ExpectedWrite {
        std::string bytes;
        Reply reply;
    };

    static void EndProgram(const std::string& breach);
    bool Fail(std::int32_t error);
    bool Begin(const std::string& call, const std::string& told = {});
    bool BeginOn(SerialHandle line, const std::string& call, const std::string& told = {});
    bool IsBroken() const { return m_clock.now >= m_hangUpAt; }
    Reply ReplyTo(const std::string& written);
    void TakeArrived(std::span<std::uint8_t> bytes, std::uint32_t& count);
    std::uint64_t NextArrival() const;

    VirtualClock& m_clock;
    OnBreach m_onBreach;
    std::deque<ExpectedWrite> m_script;
    Answer m_answer; // none: the script
    std::multimap<std::uint64_t, Arrival> m_arrivals;
    std::map<std::string, int> m_callCounts;
    std::map<std::pair<std::string, int>, std::int32_t> m_faults;
    SerialHandle m_open = SerialHandle::None;
    std::int64_t m_opened = 0;
    std::uint64_t m_hangUpAt = never;
    std::size_t m_writesBeforeHangUp = anyNumber;
    std::int32_t m_lastError = 0;
};

} // namespace tessaro
