#pragma once

#include "platform/serial_port.h"

#include <map>
#include <memory>
#include <string>

namespace tessaro {

/// The serial lines of a Linux machine by Qt SerialPort. It opens them raw and without waiting for a carrier
/// but otherwise as the driver has them, keeps other programs from them by a lock file and by the driver, and
/// never makes one the controlling terminal. Bytes that nobody reads wait in the driver. Errors are numbers
/// of <cerrno>; EBADF is a handle whose line is not open. Why a line cannot be opened is also told on
/// standard error.
class QtSerialPorts : public SerialPorts {
public:
    /// A path that is given stands for every number.
    explicit QtSerialPorts(std::string path = {}, std::string deviceFolder = "/dev");
    ~QtSerialPorts() override;
    QtSerialPorts(const QtSerialPorts&) = delete;
    QtSerialPorts& operator=(const QtSerialPorts&) = delete;

    /// The first that exists of ttyUSB, ttyACM and ttyS with this number; ttyUSB where none does.
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

private:
    struct Line;

    Line* Find(SerialHandle line);
    bool Fail(std::int32_t error);

    std::string m_path;
    std::string m_deviceFolder;
    std::map<SerialHandle, std::unique_ptr<Line>> m_lines;
    std::int64_t m_handles = 0; // given out so far
    std::int32_t m_lastError = 0;
};

} // namespace tessaro
