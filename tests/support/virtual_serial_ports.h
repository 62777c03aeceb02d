#pragma once

#include "platform/fake/virtual_clock.h"
#include "platform/serial_port.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace tessaro {

/// What is at the other end of a serial line, in virtual time. It is called with times that never go back.
class SerialFarEnd {
public:
    virtual ~SerialFarEnd() = default;

    /// Takes bytes; how many of them there is room for.
    virtual std::size_t Receive(std::string_view bytes, std::uint64_t nowMs) = 0;

    /// What has come out at the host's end since the last call.
    virtual std::string Run(std::uint64_t nowMs) = 0;

    virtual bool HasHungUp([[maybe_unused]] std::uint64_t nowMs) { return false; }
};

/// One serial line, "line 3" for the number 3 and so on, whose other end acts by itself. Waiting moves the
/// clock by a millisecond at a time and lets the other end act meanwhile.
class VirtualSerialPorts : public SerialPorts {
public:
    VirtualSerialPorts(VirtualClock& clock, SerialFarEnd& farEnd) : m_clock(clock), m_farEnd(farEnd) {}

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

    bool present = true; // otherwise no line can be opened

private:
    bool Fail(std::int32_t error);
    bool IsOpen(SerialHandle line) { return line != SerialHandle::None && line == m_open; }
    bool IsUsable(SerialHandle line);
    void Collect() { m_arrived += m_farEnd.Run(m_clock.now); }
    std::uint32_t Take(std::span<std::uint8_t> bytes);

    VirtualClock& m_clock;
    SerialFarEnd& m_farEnd;
    SerialHandle m_open = SerialHandle::None;
    std::int64_t m_opened = 0;
    SerialSettings m_settings;
    SerialTimeouts m_timeouts;
    std::string m_arrived;
    std::size_t m_taken = 0; // of them
    std::int32_t m_lastError = 0;
};

} // namespace tessaro
