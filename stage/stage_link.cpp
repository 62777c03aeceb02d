#include "stage/stage_link.h"

#include "app/number_text.h"
#include "stage/stage_units.h"

#include <algorithm>
#include <cstdio>
#include <string>

namespace tessaro {
namespace {

using AxisTexts = std::array<std::string_view, axisCount>;

constexpr AxisTexts queryCommands = {"p", "P", "Q"};
constexpr AxisTexts stopCommands = {"n", "N", "O"};
constexpr std::array<const char*, axisCount> moveFormats = {"m%d", "M%d", "L%d"};
constexpr std::array<const char*, axisCount> speedFormats = {"s%d", "S%d", "T%d"};
constexpr std::string_view wakeCommand = "z";

constexpr std::int32_t slowest = 1; // um/s
constexpr std::int32_t fastest = 5000;

constexpr std::int32_t baudRate = 9600;
constexpr std::int32_t dataBits = 8;
constexpr std::int32_t noParity = 0;
constexpr std::int32_t oneStopBit = 0;
constexpr SerialTimeouts timeouts = {10, 10, 50, 10, 50}; // reads and writes: 10 ms a byte and 50 ms
constexpr std::uint32_t settleMs = 100;                   // before the controller is spoken to

std::size_t Index(int axis) {
    return static_cast<std::size_t>(axis);
}

bool IsLine(SerialHandle handle) {
    return handle != SerialHandle::None && handle != SerialHandle::Invalid;
}

} // namespace

int StageLink::Open(WindowHandle owner) {
    if (offline == 0)
        Close();
    else if (IsLine(hComm))
        machine.serial->Close(hComm); // one that broke still keeps its device from being opened
    if (!OpenLine(owner))
        return stage_open::failed;
    if (const int result = SetUpLine(); result != stage_open::ready)
        return result;
    machine.clock->Sleep(settleMs);
    WakeController();
    return stage_open::ready;
}

/// Where no line is wanted, being offline is nothing to warn of.
bool StageLink::OpenLine(WindowHandle owner) {
    const std::string pcCommPort = machine.serial->PortName(portNumber);
    hComm = pcCommPort.empty() ? SerialHandle::Invalid : machine.serial->Open(pcCommPort);
    offline = hComm == SerialHandle::Invalid ? 1 : 0;
    if (offline == 1 && !pcCommPort.empty())
        machine.boxes->ShowWarning(owner, "Error in  opening serial port", "Warning");
    return offline == 0;
}

int StageLink::SetUpLine() {
    SerialPorts& serial = *machine.serial;
    SerialSettings dcb;
    lastResult = serial.GetSettings(hComm, dcb) ? 1 : 0;
    if (lastResult == 0) {
        std::printf("fail in GetCommState\n");
        return stage_open::noSettings;
    }
    PrintCommSettings(dcb);
    dcb = {baudRate, dataBits, noParity, oneStopBit};
    if (!serial.SetSettings(hComm, dcb))
        return stage_open::failed;
    lastResult = serial.GetSettings(hComm, dcb) ? 1 : 0;
    if (lastResult == 0)
        return stage_open::failed;
    SerialTimeouts CommTimeOuts = timeouts;
    if (!serial.SetTimeouts(hComm, CommTimeOuts)) {
        std::printf("Error to Setting Time outs\n");
        return stage_open::failed;
    }
    if (!serial.GetTimeouts(hComm, CommTimeOuts))
        std::printf("Error in Get Comm Timeout\n");
    return stage_open::ready;
}

/// The run over the axes 1 to 3 is meant: the controller keeps its own speed for X, and an axis 3 does not
/// exist.
void StageLink::WakeController() {
    WriteText(wakeCommand);
    for (const int axis : {axisX, axisY, axisZ})
        QueryPosition(axis);
    SetSpeed(axisY, speed[1]);
    SetSpeed(axisZ, speed[2]);
    SetSpeed(axisZ + 1, portNumber);
}

int StageLink::Close() {
    if (hComm == SerialHandle::Invalid || offline == 1)
        return 0;
    offline = 1;
    if (IsLine(hComm))
        machine.serial->Close(hComm);
    hComm = SerialHandle::None;
    return 0;
}

int StageLink::WriteText(std::string_view text) {
    if (offline == 1)
        return 0;
    const std::string line(text); // with the terminator that goes over the line
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(line.c_str());
    bytesTransferred = 0;
    const bool sent = machine.serial->Write(hComm, {bytes, line.size() + 1}, bytesTransferred);
    lastResult = sent ? 1 : 0;
    if (sent) {
        std::printf("\"%s\" was sent.\n", line.c_str());
        return 1;
    }
    offline = 1;
    std::snprintf(commandText.data(), commandText.size(), "Error for %s: %d", line.c_str(),
                  machine.serial->LastError());
    return 0;
}

void StageLink::SendCommand(std::string_view text) {
    const std::string_view fitting = text.substr(0, ioBuffer.size() - 1);
    *std::copy(fitting.begin(), fitting.end(), ioBuffer.begin()) = '\0';
    WriteText({ioBuffer.data(), fitting.size()});
}

bool StageLink::ReadReply(std::uint32_t& count) {
    count = 0;
    auto* bytes = reinterpret_cast<std::uint8_t*>(ioBuffer.data());
    return machine.serial->Read(hComm, {bytes, stageReadSize}, count);
}

double StageLink::QueryPosition(int axis) {
    if (offline == 1)
        return StoredPosition(axis);
    if (IsAxis(axis))
        WriteText(queryCommands[Index(axis)]);
    if (hComm == SerialHandle::Invalid)
        return 0.0;
    lastResult = ReadReply(bytesTransferred) ? 1 : 0;
    if (lastResult == 0)
        return 0.0;
    const auto temp = ReceivedSteps(0);
    if (!temp.has_value())
        return StoredPosition(axis);
    SetStoredPosition(axis, MicrometresOf(*temp));
    return MicrometresOf(*temp);
}

std::optional<std::int32_t> StageLink::ReceivedSteps(std::size_t first) const {
    return ParsedInteger({ioBuffer.data() + first, ioBuffer.size() - first});
}

void StageLink::SetSpeed(int axis, std::int32_t umPerSecond) {
    if (!IsAxis(axis))
        return;
    const std::int32_t clamped = std::clamp(umPerSecond, slowest, fastest);
    std::snprintf(commandText.data(), commandText.size(), speedFormats[Index(axis)], StepsOf(clamped));
    speed[Index(axis)] = clamped;
    SendCommand(commandText.data());
}

void StageLink::StartMove(int axis, double target) {
    if (IsAxis(axis))
        std::snprintf(commandText.data(), commandText.size(), moveFormats[Index(axis)], StepsOf(target));
    SendCommand(commandText.data());
    if (offline == 1)
        SetStoredPosition(axis, target);
}

void StageLink::StopAxis(int axis) {
    if (IsAxis(axis))
        SendCommand(stopCommands[Index(axis)]);
}

/// Nobody has stored where an axis is that does not exist.
double StageLink::StoredPosition(int axis) const {
    return IsAxis(axis) ? position[Index(axis)] : 0.0;
}

void StageLink::SetStoredPosition(int axis, double um) {
    if (IsAxis(axis))
        position[Index(axis)] = um;
}

void StageLink::PrintCommSettings(const SerialSettings& settings) {
    std::printf("\nBaudRate = %d, ByteSize = %d, Parity = %d, StopBits = %d\n", settings.baudRate,
                settings.byteSize, settings.parity, settings.stopBits);
}

} // namespace tessaro
