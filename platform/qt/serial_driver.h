#pragma once

#include "platform/serial_port.h"

#include <asm/termbits.h> // has the speed as a number, and cannot be had beside <termios.h>
#include <optional>

namespace tessaro {

/// All that the driver of an open device keeps of its line; nothing and errno when it tells none.
std::optional<termios2> StateOfDriver(int device);

SerialSettings SettingsOf(const termios2& state);

/// Puts a state back but for what would not let every byte through as it is: no echo, no editing of lines, no
/// signals, no characters that are changed or taken away (start and stop bytes among them), no waiting for a
/// carrier or for a number of bytes. False and errno when the driver does not take it.
bool RestoreForRawTransfer(int device, termios2 state);

/// Data bits, parity and stop bits of an open device, and nothing else. What the driver makes of them is to
/// be seen in its state.
bool SetFrame(int device, const SerialSettings& settings);

/// A pseudo-terminal that a program opened for itself alone stays closed to everybody when that program is
/// killed, for as long as its other end lives; other devices are free then. This lets others open it again.
void ShareIfPseudoTerminal(int device);

} // namespace tessaro
