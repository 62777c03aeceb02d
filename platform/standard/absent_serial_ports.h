#pragma once

#include "platform/serial_port.h"

namespace tessaro {

/// No serial line at all, and none is wanted: for running without a stage.
class AbsentSerialPorts : public SerialPorts {
public:
    std::string PortName(std::int32_t) override { return {}; }
    SerialHandle Open(const std::string&) override { return SerialHandle::Invalid; }
    void Close(SerialHandle) override {}
    bool GetSettings(SerialHandle, SerialSettings&) override { return false; }
    bool SetSettings(SerialHandle, const SerialSettings&) override { return false; }
    bool SetTimeouts(SerialHandle, const SerialTimeouts&) override { return false; }
    bool GetTimeouts(SerialHandle, SerialTimeouts&) override { return false; }
    bool Write(SerialHandle, std::span<const std::uint8_t>, std::uint32_t&) override { return false; }
    bool Read(SerialHandle, std::span<std::uint8_t>, std::uint32_t&) override { return false; }
    std::int32_t LastError() const override { return noLineError; }

    static constexpr std::int32_t noLineError = 2; // of whatever was called: it is not there
};

} // namespace tessaro
