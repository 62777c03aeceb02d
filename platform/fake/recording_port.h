#pragma once

#include "platform/serial_port.h"

#include <string>
#include <vector>

namespace tessaro {

/// One serial line that takes everything and says nothing, until it is broken.
class RecordingPort : public SerialPorts {
public:
    static constexpr SerialHandle line{1};

    std::string PortName(std::int32_t) override { return {}; }
    SerialHandle Open(const std::string&) override { return line; }
    void Close(SerialHandle) override {}
    bool GetSettings(SerialHandle, SerialSettings&) override { return !broken; }
    bool SetSettings(SerialHandle, const SerialSettings&) override { return !broken; }
    bool SetTimeouts(SerialHandle, const SerialTimeouts&) override { return !broken; }
    bool GetTimeouts(SerialHandle, SerialTimeouts&) override { return !broken; }

    bool Write(SerialHandle handle, std::span<const std::uint8_t> bytes, std::uint32_t& written) override {
        if (broken || handle != line)
            return false;
        written = static_cast<std::uint32_t>(bytes.size());
        writes.emplace_back(bytes.begin(), bytes.end());
        return true;
    }

    bool Read(SerialHandle handle, std::span<std::uint8_t>, std::uint32_t& count) override {
        count = 0;
        return !broken && handle == line;
    }

    std::int32_t LastError() const override { return error; }

    std::vector<std::string> writes; // with the terminator
    bool broken = false;
    std::int32_t error = 0;
};

} // namespace tessaro
