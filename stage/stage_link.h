#pragma once

#include "platform/serial_port.h"

#include <array>
#include <cstdint>
#include <string_view>

namespace tessaro {

inline constexpr int axisX = 0;
inline constexpr int axisY = 1;
inline constexpr int axisZ = 2;

inline constexpr std::size_t stageTextCapacity = 100; // bytes of a command or reply, terminator included

/// The serial line to the stage controller, and the program's single record of where the stage is.
/// Commands are short texts, each followed by a NUL.
struct StageLink {
    SerialPort* hComm = nullptr; // null until a port is open
    std::uint32_t bytesTransferred = 0;
    std::int32_t lastResult = 0;                            // of the last call of the line, 1 = success
    std::array<char, stageTextCapacity> commandText = {};   // the last command, or why it was not sent
    std::uint8_t offline = 0;                               // 1 = no usable line: motion is simulated
    std::array<double, 3> position = {0.0, 0.0, 0.0};       // um, [X, Y, Z]
    std::array<std::int32_t, 3> speed = {1500, 1500, 1500}; // um/s
    std::int32_t portNumber = 3;
    std::array<char, stageTextCapacity> ioBuffer = {};

    /// Sends the text with its terminator; 1 = sent. A line that does not take it is offline from then on,
    /// and commandText says "Error for %s: %d".
    int WriteText(std::string_view text);

    /// WriteText by way of ioBuffer.
    void SendCommand(std::string_view text);

    /// "n", "N" or "O"; nothing for an axis that does not exist.
    void StopAxis(int axis);
};

} // namespace tessaro
