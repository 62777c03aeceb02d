#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace tessaro {

/// A serial line that is open, or was. A handle is never used again after its line is closed.
enum class SerialHandle : std::int64_t {
    None = 0,    // nobody has tried to open a line, or it was closed
    Invalid = -1 // opening it has failed
};

/// What the two ends of a line have to agree on. The numbers are those of the driver.
struct SerialSettings {
    std::int32_t baudRate = 0;
    std::int32_t byteSize = 0; // data bits
    std::int32_t parity = 0;   // 0 none, 1 odd, 2 even, 3 mark, 4 space
    std::int32_t stopBits = 0; // 0 one stop bit, 1 one and a half, 2 two

    friend bool operator==(const SerialSettings&, const SerialSettings&) = default;
};

/// Milliseconds. A read or write of n bytes ends at the latest after n times its multiplier plus its
/// constant. All zero, as on a line that has just been opened: reads take what is there, writes wait for
/// nothing.
struct SerialTimeouts {
    std::uint32_t readInterval = 0; // silence after a byte that ends a read
    std::uint32_t readMultiplier = 0;
    std::uint32_t readConstant = 0;
    std::uint32_t writeMultiplier = 0;
    std::uint32_t writeConstant = 0;

    friend bool operator==(const SerialTimeouts&, const SerialTimeouts&) = default;
};

/// The serial lines of the machine. Every call returns within the time-outs and runs nothing else meanwhile,
/// no event of the user interface for instance. What fails returns false and leaves a number in LastError; so
/// does every call with a handle whose line is not open.
class SerialPorts {
public:
    virtual ~SerialPorts() = default;

    /// The name of the line that operators know by this number; whether it is there shows when it is opened.
    /// Empty: no line is wanted.
    virtual std::string PortName(std::int32_t portNumber) = 0;

    /// Opens a line for reading and writing, for this program alone. Invalid when it is not there, is no
    /// serial line, is in use, or may not be used.
    virtual SerialHandle Open(const std::string& name) = 0;

    /// Lets the line go, whatever state it is in.
    virtual void Close(SerialHandle line) = 0;

    virtual bool GetSettings(SerialHandle line, SerialSettings& settings) = 0;

    /// Whatever else the driver keeps of the line stays as it is.
    virtual bool SetSettings(SerialHandle line, const SerialSettings& settings) = 0;

    virtual bool SetTimeouts(SerialHandle line, const SerialTimeouts& timeouts) = 0;
    virtual bool GetTimeouts(SerialHandle line, SerialTimeouts& timeouts) = 0;

    /// Sends the bytes; `written` counts those that went out, fewer where the time was up, which is no
    /// failure: the rest is dropped. False when the line is broken: unplugged, hung up.
    virtual bool Write(SerialHandle line, std::span<const std::uint8_t> bytes, std::uint32_t& written) = 0;

    /// Takes bytes that came or come, at most as many as there is room for. Ends early when the line falls
    /// silent after a byte, or when the time is up: `count` may be 0, which is no failure. False when the
    /// line is broken and all that came before has been taken.
    virtual bool Read(SerialHandle line, std::span<std::uint8_t> bytes, std::uint32_t& count) = 0;

    /// The system's number for the last failure.
    virtual std::int32_t LastError() const = 0;
};

} // namespace tessaro
