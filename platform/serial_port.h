#pragma once

#include <cstdint>
#include <span>

namespace tessaro {

/// An open serial line to the stage controller.
class SerialPort {
public:
    virtual ~SerialPort() = default;

    /// Writes all of the bytes; `written` counts those that have gone out. False when the line is broken.
    virtual bool Write(std::span<const std::uint8_t> bytes, std::uint32_t& written) = 0;

    /// The system's number for the last failure.
    virtual std::int32_t LastError() const = 0;
};

} // namespace tessaro
