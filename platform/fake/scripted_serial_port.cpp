#include "platform/fake/scripted_serial_port.h"

#include <algorithm>
#include <cstdlib>
#include <initializer_list>
#include <iostream>

namespace tessaro {
namespace {

constexpr std::string_view namePrefix = "line ";

std::string Joined(std::initializer_list<std::int64_t> numbers) {
    std::string text;
    for (const std::int64_t number : numbers)
        text += (text.empty() ? "" : " ") + std::to_string(number);
    return text;
}

std::uint64_t LongestMs(std::size_t bytes, std::uint32_t multiplier, std::uint32_t constant) {
    return std::uint64_t{bytes} * multiplier + constant;
}

} // namespace

ScriptedSerialPorts::~ScriptedSerialPorts() {
    if (WritesLeft() != 0)
        m_onBreach(std::to_string(WritesLeft()) + " writes of the line's script are left");
    for (const auto& [fault, error] : m_faults)
        m_onBreach("never called: " + fault.first + ", time " + std::to_string(fault.second));
}

std::string ScriptedSerialPorts::Terminated(std::string text) {
    text.push_back('\0');
    return text;
}

void ScriptedSerialPorts::ExpectBytes(std::string bytes, Reply reply) {
    m_script.push_back({std::move(bytes), std::move(reply)});
}

void ScriptedSerialPorts::TakeAnyWrite(Answer answer) {
    m_answer = std::move(answer);
}

void ScriptedSerialPorts::Arrive(std::uint64_t atMs, std::string bytes) {
    if (!bytes.empty())
        m_arrivals.emplace(atMs, Arrival{std::move(bytes)});
}

void ScriptedSerialPorts::FailAt(const std::string& call, int occurrence, std::int32_t error) {
    m_faults[{call, m_callCounts[call] + occurrence}] = error;
}

void ScriptedSerialPorts::EndProgram(const std::string& breach) {
    std::cerr << "scripted serial line: " << breach << '\n';
    std::abort();
}

bool ScriptedSerialPorts::Fail(std::int32_t error) {
    m_lastError = error;
    return false;
}

/// Notes the call; false when its time to fail has come.
bool ScriptedSerialPorts::Begin(const std::string& call, const std::string& told) {
    if (remembersCalls)
        calls.push_back(told.empty() ? call : call + " " + told);
    if (onCall)
        onCall(call);
    const auto fault = m_faults.find({call, ++m_callCounts[call]});
    if (fault == m_faults.end())
        return true;
    const std::int32_t error = fault->second;
    m_faults.erase(fault);
    return Fail(error);
}

bool ScriptedSerialPorts::BeginOn(SerialHandle line, const std::string& call, const std::string& told) {
    if (!Begin(call, told))
        return false;
    return line == m_open && m_open != SerialHandle::None ? true : Fail(notOpenError);
}

std::string ScriptedSerialPorts::PortName(std::int32_t portNumber) {
    return wanted ? std::string(namePrefix) + std::to_string(portNumber) : std::string();
}

SerialHandle ScriptedSerialPorts::Open(const std::string& name) {
    bool opens = Begin("Open", name);
    if (opens && (!present || !name.starts_with(namePrefix)))
        opens = Fail(missingError);
    if (opens && m_open != SerialHandle::None)
        opens = Fail(inUseError);
    if (!opens)
        return SerialHandle::Invalid;
    timeoutsInForce = {};
    m_hangUpAt = never;
    m_open = SerialHandle{++m_opened};
    return m_open;
}

void ScriptedSerialPorts::Close(SerialHandle line) {
    if (!BeginOn(line, "Close"))
        return;
    m_open = SerialHandle::None;
    m_arrivals.erase(m_arrivals.begin(), m_arrivals.upper_bound(m_clock.now)); // nobody has taken them
}

bool ScriptedSerialPorts::GetSettings(SerialHandle line, SerialSettings& settings) {
    if (!BeginOn(line, "GetSettings"))
        return false;
    if (IsBroken())
        return Fail(brokenError);
    settings = driverSettings;
    return true;
}

bool ScriptedSerialPorts::SetSettings(SerialHandle line, const SerialSettings& settings) {
    if (!BeginOn(line, "SetSettings",
                 Joined({settings.baudRate, settings.byteSize, settings.parity, settings.stopBits})))
        return false;
    if (IsBroken())
        return Fail(brokenError);
    driverSettings = settings;
    return true;
}

bool ScriptedSerialPorts::SetTimeouts(SerialHandle line, const SerialTimeouts& timeouts) {
    const std::string told = Joined({timeouts.readInterval, timeouts.readMultiplier, timeouts.readConstant,
                                     timeouts.writeMultiplier, timeouts.writeConstant});
    if (!BeginOn(line, "SetTimeouts", told))
        return false;
    timeoutsInForce = timeouts;
    return true;
}

bool ScriptedSerialPorts::GetTimeouts(SerialHandle line, SerialTimeouts& timeouts) {
    if (!BeginOn(line, "GetTimeouts"))
        return false;
    timeouts = timeoutsInForce;
    return true;
}

bool ScriptedSerialPorts::Write(SerialHandle line, std::span<const std::uint8_t> bytes,
                                std::uint32_t& written) {
    const std::string text(bytes.begin(), bytes.end());
    written = 0;
    if (!BeginOn(line, "Write", text.substr(0, text.find('\0'))))
        return false;
    if (IsBroken())
        return Fail(brokenError);
    const std::size_t fitting = std::min(room, text.size());
    if (room != anyNumber)
        room -= fitting;
    if (fitting < text.size())
        m_clock.Sleep(static_cast<std::uint32_t>(
            LongestMs(text.size(), timeoutsInForce.writeMultiplier, timeoutsInForce.writeConstant)));
    written = static_cast<std::uint32_t>(fitting);
    writes.push_back(text.substr(0, fitting));
    for (Piece& piece : ReplyTo(writes.back()))
        Arrive(m_clock.now + piece.afterMs, std::move(piece.bytes));
    if (m_writesBeforeHangUp != anyNumber && --m_writesBeforeHangUp == 0)
        HangUp();
    return true;
}

ScriptedSerialPorts::Reply ScriptedSerialPorts::ReplyTo(const std::string& written) {
    if (m_answer)
        return m_answer(written);
    if (m_script.empty() || m_script.front().bytes != written) {
        m_onBreach("a write that the script does not know: \"" + written + '"');
        return {};
    }
    Reply reply = std::move(m_script.front().reply);
    m_script.pop_front();
    return reply;
}

/// A broken line brings nothing any more.
std::uint64_t ScriptedSerialPorts::NextArrival() const {
    const std::uint64_t next = m_arrivals.empty() ? never : m_arrivals.begin()->first;
    return next > m_hangUpAt ? never : next;
}

void ScriptedSerialPorts::TakeArrived(std::span<std::uint8_t> bytes, std::uint32_t& count) {
    while (count < bytes.size() && NextArrival() <= m_clock.now) {
        Arrival& arrival = m_arrivals.begin()->second;
        const std::size_t taken = std::min(bytes.size() - count, arrival.bytes.size() - arrival.taken);
        std::copy_n(arrival.bytes.data() + arrival.taken, taken, bytes.data() + count);
        count += static_cast<std::uint32_t>(taken);
        arrival.taken += taken;
        if (arrival.taken == arrival.bytes.size())
            m_arrivals.erase(m_arrivals.begin());
    }
}

bool ScriptedSerialPorts::Read(SerialHandle line, std::span<std::uint8_t> bytes, std::uint32_t& count) {
    count = 0;
    if (!BeginOn(line, "Read", std::to_string(bytes.size())))
        return false;
    const std::uint64_t timeIsUp =
        m_clock.now + LongestMs(bytes.size(), timeoutsInForce.readMultiplier, timeoutsInForce.readConstant);
    for (;;) {
        TakeArrived(bytes, count);
        if (count == bytes.size())
            return true;
        if (IsBroken())
            return count > 0 ? true : Fail(brokenError);
        const std::uint64_t silent = count > 0 ? m_clock.now + timeoutsInForce.readInterval : never;
        const std::uint64_t end = std::min(timeIsUp, silent);
        const std::uint64_t event = std::min(NextArrival(), m_hangUpAt);
        m_clock.now = std::max(m_clock.now, std::min(event, end));
        if (event >= end)
            return true;
    }
}

} // namespace tessaro
