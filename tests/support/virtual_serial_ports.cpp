#include "support/virtual_serial_ports.h"

#include <algorithm>

namespace tessaro {
namespace {

constexpr std::string_view namePrefix = "line ";
constexpr std::int32_t missingError = 2;
constexpr std::int32_t inUseError = 5;
constexpr std::int32_t notOpenError = 6;
constexpr std::int32_t brokenError = 31;

std::uint64_t LongestMs(std::size_t bytes, std::uint32_t multiplier, std::uint32_t constant) {
    return std::uint64_t{bytes} * multiplier + constant;
}

} // namespace

bool VirtualSerialPorts::Fail(std::int32_t error) {
    m_lastError = error;
    return false;
}

bool VirtualSerialPorts::IsUsable(SerialHandle line) {
    if (!IsOpen(line))
        return Fail(notOpenError);
    return m_farEnd.HasHungUp(m_clock.now) ? Fail(brokenError) : true;
}

std::string VirtualSerialPorts::PortName(std::int32_t portNumber) {
    return std::string(namePrefix) + std::to_string(portNumber);
}

SerialHandle VirtualSerialPorts::Open(const std::string& name) {
    if (!present || !name.starts_with(namePrefix))
        Fail(missingError);
    else if (m_open != SerialHandle::None)
        Fail(inUseError);
    else {
        m_timeouts = {};
        return m_open = SerialHandle{++m_opened};
    }
    return SerialHandle::Invalid;
}

/// What nobody has taken is gone.
void VirtualSerialPorts::Close(SerialHandle line) {
    if (!IsOpen(line)) {
        Fail(notOpenError);
        return;
    }
    m_open = SerialHandle::None;
    Collect();
    m_arrived.clear();
    m_taken = 0;
}

bool VirtualSerialPorts::GetSettings(SerialHandle line, SerialSettings& settings) {
    if (!IsUsable(line))
        return false;
    settings = m_settings;
    return true;
}

bool VirtualSerialPorts::SetSettings(SerialHandle line, const SerialSettings& settings) {
    if (!IsUsable(line))
        return false;
    m_settings = settings;
    return true;
}

bool VirtualSerialPorts::SetTimeouts(SerialHandle line, const SerialTimeouts& timeouts) {
    if (!IsOpen(line))
        return Fail(notOpenError);
    m_timeouts = timeouts;
    return true;
}

bool VirtualSerialPorts::GetTimeouts(SerialHandle line, SerialTimeouts& timeouts) {
    if (!IsOpen(line))
        return Fail(notOpenError);
    timeouts = m_timeouts;
    return true;
}

bool VirtualSerialPorts::Write(SerialHandle line, std::span<const std::uint8_t> bytes,
                               std::uint32_t& written) {
    written = 0;
    if (!IsUsable(line))
        return false;
    std::string left(bytes.begin(), bytes.end());
    const std::uint64_t timeIsUp =
        m_clock.now + LongestMs(left.size(), m_timeouts.writeMultiplier, m_timeouts.writeConstant);
    for (;;) {
        Collect();
        const std::size_t fitting = m_farEnd.Receive(left, m_clock.now);
        left.erase(0, fitting);
        written += static_cast<std::uint32_t>(fitting);
        if (left.empty() || m_clock.now >= timeIsUp)
            return true;
        ++m_clock.now;
    }
}

bool VirtualSerialPorts::Read(SerialHandle line, std::span<std::uint8_t> bytes, std::uint32_t& count) {
    count = 0;
    if (!IsOpen(line))
        return Fail(notOpenError);
    std::uint64_t end =
        m_clock.now + LongestMs(bytes.size(), m_timeouts.readMultiplier, m_timeouts.readConstant);
    const std::uint64_t timeIsUp = end;
    for (;;) {
        Collect();
        const std::uint32_t taken = Take(bytes.subspan(count));
        count += taken;
        if (taken > 0)
            end = std::min(timeIsUp, m_clock.now + m_timeouts.readInterval);
        if (count == bytes.size())
            return true;
        if (m_farEnd.HasHungUp(m_clock.now))
            return count > 0 ? true : Fail(brokenError);
        if (m_clock.now >= end)
            return true;
        ++m_clock.now;
    }
}

std::uint32_t VirtualSerialPorts::Take(std::span<std::uint8_t> bytes) {
    const std::size_t count = std::min(bytes.size(), m_arrived.size() - m_taken);
    std::copy_n(m_arrived.data() + m_taken, count, bytes.data());
    m_taken += count;
    if (m_taken == m_arrived.size()) {
        m_arrived.clear();
        m_taken = 0;
    }
    return static_cast<std::uint32_t>(count);
}

} // namespace tessaro
