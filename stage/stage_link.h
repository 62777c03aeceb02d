#pragma once

#include "platform/clock.h"
#include "platform/message_boxes.h"
#include "platform/serial_port.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace tessaro {

inline constexpr int axisX = 0;
inline constexpr int axisY = 1;
inline constexpr int axisZ = 2;
inline constexpr std::size_t axisCount = 3;

inline constexpr std::size_t stageTextCapacity = 100; // bytes of a command or reply, terminator included
inline constexpr std::size_t stageReadSize = 10;      // bytes of one read at most

constexpr bool IsAxis(int axis) {
    return axis >= axisX && axis <= axisZ;
}

/// What the link needs of the machine: all of it, before anything is sent or opened.
struct StageMachine {
    SerialPorts* serial = nullptr;
    MessageBoxes* boxes = nullptr;
    Clock* clock = nullptr;
};

/// What StageLink::Open has come to.
namespace stage_open {
inline constexpr int failed = 0;
inline constexpr int ready = 1;
inline constexpr int noSettings = 2; // the line is there, and does not say how it is set
} // namespace stage_open

/// The serial line to the stage controller, and the program's single record of where the stage is. Commands
/// are short texts, each followed by a NUL; replies are short texts too. Offline, nothing is written, and a
/// move sets the position to its target at once: the program works without a stage.
struct StageLink {
    SerialHandle hComm = SerialHandle::None;
    std::uint32_t bytesTransferred = 0;                   // of the last write or position query
    std::int32_t lastResult = 0;                          // of the last call of the line, 1 = success
    std::array<char, stageTextCapacity> commandText = {}; // the last command, or why it was not sent
    std::uint8_t offline = 0;                             // 1 = no usable line: motion is simulated
    std::array<double, axisCount> position = {};          // um, [X, Y, Z]
    std::array<std::int32_t, axisCount> speed = {1500, 1500, 1500}; // um/s
    std::int32_t portNumber = 3;
    std::array<char, stageTextCapacity> ioBuffer = {}; // what is sent, and what was read last

    StageMachine machine; // set once, before anything is opened

    /// Opens the line of portNumber and brings the controller into a known state; see stage_open. A port that
    /// cannot be opened is told in a message box and leaves the link offline. The only way back online.
    int Open(WindowHandle owner);

    /// Lets the line go; offline from then on. Nothing where opening has failed or the link is offline
    /// already. Returns 0.
    int Close();

    /// Sends the text with its terminator; 1 = sent. A line that does not take it is offline from then on,
    /// and commandText says "Error for %s: %d".
    int WriteText(std::string_view text);

    /// WriteText by way of ioBuffer.
    void SendCommand(std::string_view text);

    /// Asks the controller where an axis is, and returns it in um; it waits 150 ms at most. Offline, or
    /// without an answer that begins with a number, the stored position; 0 when the line cannot be read. A
    /// read without any bytes leaves the reply before it in place, which then counts once more. For an axis
    /// that does not exist nothing is asked or stored.
    double QueryPosition(int axis);

    /// um/s, clamped to 1 to 5000. Nothing for an axis that does not exist.
    void SetSpeed(int axis, std::int32_t umPerSecond);

    /// Sends an axis to a target in um and does not wait. An axis that does not exist sends the last command
    /// once more.
    void StartMove(int axis, double target);

    /// "n", "N" or "O"; nothing for an axis that does not exist.
    void StopAxis(int axis);

    void SetStoredPosition(int axis, double um);

    /// Says on standard output how a line is set.
    static void PrintCommSettings(const SerialSettings& settings);

    /// Up to stageReadSize bytes into ioBuffer; what is behind them there stays. False when the line is
    /// broken.
    bool ReadReply(std::uint32_t& count);

    /// The number in ioBuffer that begins at this byte; nothing where none does, or none that fits.
    std::optional<std::int32_t> ReceivedSteps(std::size_t first) const;

private:
    double StoredPosition(int axis) const;
    bool OpenLine(WindowHandle owner);
    int SetUpLine();
    void WakeController();
};

} // namespace tessaro
