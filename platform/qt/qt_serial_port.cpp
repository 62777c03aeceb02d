#include "platform/qt/qt_serial_port.h"

#include "platform/posix/line_transfer.h"
#include "platform/qt/serial_driver.h"

#include <QSerialPort>
#include <QSocketNotifier>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <optional>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace tessaro {
namespace {

constexpr std::array deviceKinds = {"ttyUSB", "ttyACM", "ttyS"};

constexpr std::array parities = {QSerialPort::NoParity, QSerialPort::OddParity, QSerialPort::EvenParity,
                                 QSerialPort::MarkParity, QSerialPort::SpaceParity};

/// Drivers here know one stop bit and two, and not the one and a half between them.
bool AreKnown(const SerialSettings& settings) {
    return settings.baudRate > 0 && settings.byteSize >= 5 && settings.byteSize <= 8 &&
           settings.parity >= 0 && settings.parity < static_cast<std::int32_t>(parities.size()) &&
           (settings.stopBits == 0 || settings.stopBits == 2);
}

/// What can be told before a device is touched; 0 when nothing is against opening it.
int ReasonAgainst(const char* path) {
    struct stat status = {};
    if (stat(path, &status) == -1)
        return errno;
    if (S_ISDIR(status.st_mode))
        return EISDIR;
    if (!S_ISCHR(status.st_mode))
        return ENOTTY;
    return faccessat(AT_FDCWD, path, R_OK | W_OK, AT_EACCESS) == -1 ? errno : 0;
}

/// Why a port could not be opened that nothing was against.
int ErrorOfOpening(const QSerialPort& port, int systemError) {
    switch (port.error()) {
    case QSerialPort::DeviceNotFoundError:
        return ENOENT;
    case QSerialPort::PermissionError: // permissions were looked at: somebody else's lock
        return EBUSY;
    default:
        return systemError != 0 ? systemError : EIO;
    }
}

/// A device that is held open beside its port.
class HeldDevice {
public:
    explicit HeldDevice(const char* path)
        : m_descriptor(open(path, O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC)) {}
    ~HeldDevice() {
        if (m_descriptor != -1)
            close(m_descriptor);
    }
    HeldDevice(const HeldDevice&) = delete;
    HeldDevice& operator=(const HeldDevice&) = delete;

    std::optional<termios2> State() const {
        return m_descriptor == -1 ? std::nullopt : StateOfDriver(m_descriptor);
    }

private:
    int m_descriptor;
};

/// Of a port that is not open yet: what it will set its device to as it opens it.
void Prepare(QSerialPort& port, const SerialSettings& settings) {
    if (!AreKnown(settings))
        return;
    port.setBaudRate(settings.baudRate);
    port.setDataBits(static_cast<QSerialPort::DataBits>(settings.byteSize));
    port.setParity(parities.at(static_cast<std::size_t>(settings.parity)));
    port.setStopBits(settings.stopBits == 0 ? QSerialPort::OneStop : QSerialPort::TwoStop);
}

/// The port sets its device to more than it was told as it opens it, so the driver gets its own state back.
/// The device is held open meanwhile, or its control lines would drop once more.
int OpenKeepingSettings(QSerialPort& port, const std::string& device) {
    const HeldDevice held(device.c_str());
    const std::optional<termios2> state = held.State();
    if (!state.has_value())
        return errno;
    port.setPortName(QString::fromStdString(device));
    Prepare(port, SettingsOf(*state));
    errno = 0;
    if (!port.open(QIODevice::ReadWrite))
        return ErrorOfOpening(port, errno);
    return RestoreForRawTransfer(static_cast<int>(port.handle()), *state) ? 0 : errno;
}

/// Opens the device that a path leads to, so that all its names share one lock.
int OpenPort(QSerialPort& port, const std::string& path) {
    if (const int reason = ReasonAgainst(path.c_str()); reason != 0)
        return reason;
    std::error_code unresolved;
    const std::filesystem::path device = std::filesystem::canonical(path, unresolved);
    if (unresolved)
        return unresolved.value();
    if (const int error = OpenKeepingSettings(port, device.string()); error != 0)
        return error;
    // Nothing is to be read behind our back, and a line that hung up is not to keep the event loop turning.
    for (QSocketNotifier* notifier : port.findChildren<QSocketNotifier*>())
        notifier->setEnabled(false);
    ShareIfPseudoTerminal(static_cast<int>(port.handle())); // its lock file remains
    return 0;
}

/// A driver takes the speed of its clock that comes nearest; the rest it takes as it is told, or leaves.
bool AreInForce(int device, const SerialSettings& wanted) {
    constexpr std::int32_t toleratedPart = 33; // 3 %, which the other side still reads
    const std::optional<termios2> state = StateOfDriver(device);
    if (!state.has_value())
        return false;
    SerialSettings inForce = SettingsOf(*state);
    if (std::abs(std::int64_t{inForce.baudRate} - wanted.baudRate) <= wanted.baudRate / toleratedPart)
        inForce.baudRate = wanted.baudRate;
    return inForce == wanted;
}

/// 0, or the number of what went wrong.
int Apply(QSerialPort& port, const SerialSettings& settings) {
    errno = 0;
    const int device = static_cast<int>(port.handle());
    if (!port.setBaudRate(settings.baudRate) || !SetFrame(device, settings))
        return errno != 0 ? errno : EINVAL;
    return AreInForce(device, settings) ? 0 : EINVAL; // a driver leaves out in silence what it cannot do
}

} // namespace

struct QtSerialPorts::Line {
    int Device() const { return static_cast<int>(port.handle()); }

    QSerialPort port;
    SerialTimeouts timeouts;
};

QtSerialPorts::QtSerialPorts(std::string path, std::string deviceFolder)
    : m_path(std::move(path)), m_deviceFolder(std::move(deviceFolder)) {}

QtSerialPorts::~QtSerialPorts() = default;

std::string QtSerialPorts::PortName(std::int32_t portNumber) {
    if (!m_path.empty())
        return m_path;
    const auto device = [&](const char* kind) {
        return m_deviceFolder + '/' + kind + std::to_string(portNumber);
    };
    std::error_code ignored;
    for (const char* kind : deviceKinds)
        if (std::filesystem::exists(device(kind), ignored))
            return device(kind);
    return device(deviceKinds.front());
}

SerialHandle QtSerialPorts::Open(const std::string& name) {
    auto line = std::make_unique<Line>();
    if (const int error = OpenPort(line->port, name); error != 0) {
        Fail(error);
        std::fprintf(stderr, "tessaro: %s: %s\n", name.c_str(),
                     std::generic_category().message(error).c_str());
        return SerialHandle::Invalid;
    }
    const SerialHandle handle{++m_handles};
    m_lines.emplace(handle, std::move(line));
    return handle;
}

void QtSerialPorts::Close(SerialHandle line) {
    m_lines.erase(line);
}

bool QtSerialPorts::GetSettings(SerialHandle line, SerialSettings& settings) {
    const Line* found = Find(line);
    if (found == nullptr)
        return false;
    const std::optional<termios2> state = StateOfDriver(found->Device());
    if (!state.has_value())
        return Fail(errno);
    settings = SettingsOf(*state);
    return true;
}

bool QtSerialPorts::SetSettings(SerialHandle line, const SerialSettings& settings) {
    Line* found = Find(line);
    SerialSettings inForce;
    if (found == nullptr || !GetSettings(line, inForce)) // a broken line has an error of its own
        return false;
    if (!AreKnown(settings))
        return Fail(EINVAL);
    const int error = Apply(found->port, settings);
    return error == 0 || Fail(error);
}

bool QtSerialPorts::SetTimeouts(SerialHandle line, const SerialTimeouts& timeouts) {
    Line* found = Find(line);
    if (found != nullptr)
        found->timeouts = timeouts;
    return found != nullptr;
}

bool QtSerialPorts::GetTimeouts(SerialHandle line, SerialTimeouts& timeouts) {
    const Line* found = Find(line);
    if (found != nullptr)
        timeouts = found->timeouts;
    return found != nullptr;
}

bool QtSerialPorts::Write(SerialHandle line, std::span<const std::uint8_t> bytes, std::uint32_t& written) {
    written = 0;
    const Line* found = Find(line);
    if (found == nullptr)
        return false;
    const LineTransfer done = WriteToLine(found->Device(), bytes, found->timeouts);
    written = done.count;
    return done.error == 0 || Fail(done.error);
}

bool QtSerialPorts::Read(SerialHandle line, std::span<std::uint8_t> bytes, std::uint32_t& count) {
    count = 0;
    const Line* found = Find(line);
    if (found == nullptr)
        return false;
    const LineTransfer done = ReadFromLine(found->Device(), bytes, found->timeouts);
    count = done.count;
    return done.error == 0 || Fail(done.error);
}

QtSerialPorts::Line* QtSerialPorts::Find(SerialHandle line) {
    const auto found = m_lines.find(line);
    if (found != m_lines.end())
        return found->second.get();
    Fail(EBADF);
    return nullptr;
}

bool QtSerialPorts::Fail(std::int32_t error) {
    m_lastError = error;
    return false;
}

} // namespace tessaro
