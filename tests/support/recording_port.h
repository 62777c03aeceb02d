#pragma once

#include "platform/serial_port.h"

#include <string>
#include <vector>

namespace tessaro {

/// A serial line that takes everything, until it is broken.
class RecordingPort : public SerialPort {
public:
    bool Write(std::span<const std::uint8_t> bytes, std::uint32_t& written) override {
        if (broken)
            return false;
        written = static_cast<std::uint32_t>(bytes.size());
        writes.emplace_back(bytes.begin(), bytes.end());
        return true;
    }

    std::int32_t LastError() const override { return error; }

    std::vector<std::string> writes; // with the terminator
    bool broken = false;
    std::int32_t error = 0;
};

} // namespace tessaro
