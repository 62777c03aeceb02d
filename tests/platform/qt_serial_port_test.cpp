#include "platform/qt/qt_serial_port.h"
#include "tests/platform/pseudo_terminal.h"
#include "tests/platform/serial_port_contract.h"

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QTimer>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <ctime>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/time.h>
#include <termios.h>
#include <unistd.h>

namespace tessaro {
namespace {

class QtSerialMachine {
public:
    SerialPorts& Ports() { return m_ports; }
    std::string Name() const { return m_terminal.Name(); }
    std::string MissingName() const { return Name() + "-not-there"; }
    static std::uint64_t NowMs() {
        using namespace std::chrono;
        return static_cast<std::uint64_t>(
            duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count());
    }

    void SendNow(const std::string& bytes) { m_terminal.SendNow(bytes); }
    void SendAfter(std::uint32_t ms, const std::string& bytes) { m_terminal.SendAfter(ms, bytes); }
    void HangUp() { m_terminal.HangUp(); }
    void HangUpAfter(std::uint32_t ms) { m_terminal.HangUpAfter(ms); }
    void ComeBack() { m_terminal.ComeBack(); }
    std::string Taken(std::size_t count) { return m_terminal.Taken(count); }
    void TakeNothing() {} // takes only what is asked for
    void TakeAgain() {}

private:
    PseudoTerminal m_terminal;
    QtSerialPorts m_ports;
};

INSTANTIATE_TYPED_TEST_SUITE_P(Qt, SerialPortContract, QtSerialMachine);

class QtSerialPortsTest : public testing::Test {
protected:
    static constexpr SerialTimeouts usual = {10, 10, 50, 10, 50};

    SerialHandle Opened() {
        const SerialHandle line = ports.Open(terminal.Name());
        EXPECT_TRUE(ports.SetTimeouts(line, usual));
        return line;
    }

    std::string Read(SerialHandle line) {
        std::array<std::uint8_t, 10> bytes = {};
        std::uint32_t count = 0;
        ports.Read(line, bytes, count);
        return {bytes.begin(), bytes.begin() + count};
    }

    termios Driver() const {
        termios driver = {};
        EXPECT_EQ(tcgetattr(terminal.Descriptor(), &driver), 0);
        return driver;
    }

    /// 1200 7O2 and a handshake, as far as a pseudo-terminal takes it; what it has made of that.
    termios SetAsAnotherProgram() const {
        termios driver = Driver();
        EXPECT_EQ(cfsetspeed(&driver, B1200), 0);
        driver.c_cflag = (driver.c_cflag & ~static_cast<tcflag_t>(CSIZE)) | CS7 | PARENB | PARODD | CSTOPB;
        driver.c_cflag |= CRTSCTS | CLOCAL;
        driver.c_iflag |= IXOFF;
        driver.c_cc[VSTART] = 0x31;
        EXPECT_EQ(tcsetattr(terminal.Descriptor(), TCSANOW, &driver), 0);
        return Driver();
    }

    /// What opening says on standard error.
    std::string Complaint(const std::string& path) {
        testing::internal::CaptureStderr();
        EXPECT_EQ(ports.Open(path), SerialHandle::Invalid);
        return testing::internal::GetCapturedStderr();
    }

    /// Lets the event loop turn for so long; how often it had something to do, but for the end.
    static int TurnsOfEventLoop(int ms) {
        int turns = 0;
        const auto counting = QObject::connect(QAbstractEventDispatcher::instance(),
                                               &QAbstractEventDispatcher::awake, [&] { ++turns; });
        QTimer::singleShot(ms, qApp, &QCoreApplication::quit);
        QCoreApplication::exec();
        QObject::disconnect(counting);
        return turns;
    }

    static double ProcessorSeconds() { return static_cast<double>(std::clock()) / CLOCKS_PER_SEC; }

    PseudoTerminal terminal;
    QtSerialPorts ports;
};

TEST_F(QtSerialPortsTest, RunNoEventInsideAReadOrAWrite) {
    const SerialHandle line = Opened();
    int events = 0;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&] { ++events; });
    timer.start(0);
    QMetaObject::invokeMethod(
        qApp, [&] { ++events; }, Qt::QueuedConnection);
    const std::uint64_t began = QtSerialMachine::NowMs();
    EXPECT_EQ(Read(line), "");
    EXPECT_GE(QtSerialMachine::NowMs() - began, 150u);
    const std::vector<std::uint8_t> tooMuch(1'000'000, 'z');
    std::uint32_t written = 0;
    EXPECT_TRUE(ports.SetTimeouts(line, {0, 0, 0, 0, 100}));
    EXPECT_TRUE(ports.Write(line, tooMuch, written));
    EXPECT_LT(written, tooMuch.size()) << "it had to wait";
    EXPECT_EQ(events, 0);
    QCoreApplication::processEvents();
    EXPECT_GE(events, 2) << "they were due";
}

/// Signals that come in every few milliseconds, while it lives.
class ManySignals {
public:
    ManySignals() {
        struct sigaction counting = {};
        counting.sa_handler = [](int) { count = count + 1; };
        sigaction(SIGALRM, &counting, nullptr);
        const itimerval often = {{0, 5000}, {0, 5000}};
        setitimer(ITIMER_REAL, &often, nullptr);
    }
    ~ManySignals() {
        const itimerval never = {};
        setitimer(ITIMER_REAL, &never, nullptr);
        std::signal(SIGALRM, SIG_DFL);
    }
    ManySignals(const ManySignals&) = delete;
    ManySignals& operator=(const ManySignals&) = delete;

    static inline volatile std::sig_atomic_t count = 0;
};

TEST_F(QtSerialPortsTest, GiveALineItsTimeThoughSignalsCome) {
    const SerialHandle line = Opened();
    const ManySignals interruptions;
    const std::uint64_t began = QtSerialMachine::NowMs();
    EXPECT_EQ(Read(line), "");
    EXPECT_GE(QtSerialMachine::NowMs() - began, 150u);
    EXPECT_GT(ManySignals::count, 0);
}

TEST_F(QtSerialPortsTest, LeaveTheEventLoopAloneWhenALineHangsUp) {
    const SerialHandle line = Opened();
    terminal.HangUp();
    const double before = ProcessorSeconds();
    EXPECT_LT(TurnsOfEventLoop(200), 20);
    EXPECT_LT(ProcessorSeconds() - before, 0.1) << "of 0.2 s";
    EXPECT_EQ(Read(line), "");
    EXPECT_LT(TurnsOfEventLoop(50), 20) << "nor after a call that failed";
}

TEST_F(QtSerialPortsTest, LeaveTheEventLoopAloneWhenNobodyReads) {
    const SerialHandle line = Opened();
    terminal.SendNow("P1234");
    EXPECT_LT(TurnsOfEventLoop(100), 20);
    EXPECT_EQ(Read(line), "P1234") << "nothing was taken away";
}

TEST_F(QtSerialPortsTest, TellInputOutputErrorWhenALineHangsUp) {
    const SerialHandle line = Opened();
    terminal.HangUp();
    std::array<std::uint8_t, 10> bytes = {};
    std::uint32_t count = 0;
    EXPECT_FALSE(ports.Read(line, bytes, count));
    EXPECT_EQ(ports.LastError(), EIO);
    EXPECT_FALSE(ports.Write(SerialHandle::None, bytes, count));
    EXPECT_EQ(ports.LastError(), EBADF);
    EXPECT_FALSE(ports.Write(line, bytes, count));
    EXPECT_EQ(ports.LastError(), EIO);
}

TEST_F(QtSerialPortsTest, TellWhatIsInForceAtTheDriver) {
    const SerialHandle line = Opened();
    termios driver = {};
    ASSERT_EQ(tcgetattr(terminal.Descriptor(), &driver), 0);
    ASSERT_EQ(cfsetspeed(&driver, B4800), 0);
    driver.c_cflag |= CSTOPB;
    ASSERT_EQ(tcsetattr(terminal.Descriptor(), TCSANOW, &driver), 0);
    SerialSettings settings;
    EXPECT_TRUE(ports.GetSettings(line, settings));
    EXPECT_EQ(settings, (SerialSettings{4800, 8, 0, 2}));
}

TEST_F(QtSerialPortsTest, OpenALineAsTheDriverHasIt) {
    const termios before = SetAsAnotherProgram();
    const SerialHandle line = Opened();
    SerialSettings settings;
    ASSERT_TRUE(ports.GetSettings(line, settings));
    EXPECT_EQ(settings, (SerialSettings{1200, 8, 0, 2})) << "no pseudo-terminal has 7 bits, or parity";
    const termios after = Driver();
    EXPECT_EQ(after.c_cflag, before.c_cflag);
    EXPECT_EQ(after.c_iflag & (IXOFF | IGNPAR | INPCK), static_cast<tcflag_t>(IXOFF));
    EXPECT_EQ(after.c_cc[VSTART], 0x31);
}

TEST_F(QtSerialPortsTest, KeepTheHandshakeOfALineThatIsSet) {
    const termios before = SetAsAnotherProgram();
    const SerialHandle line = Opened();
    ASSERT_TRUE(ports.SetSettings(line, {9600, 8, 0, 0}));
    const termios after = Driver();
    EXPECT_EQ(after.c_cflag & CRTSCTS, CRTSCTS);
    EXPECT_EQ(cfgetospeed(&after), static_cast<speed_t>(B9600));
    EXPECT_EQ(after.c_cflag & CSTOPB, 0u);
    ports.Close(line);
    EXPECT_EQ(Driver().c_cflag, before.c_cflag) << "as it was found";
}

TEST_F(QtSerialPortsTest, LetNothingOfATerminalBetweenTheBytes) {
    termios before = Driver();
    before.c_lflag |= ECHO | ICANON | ISIG;
    before.c_iflag |= ICRNL | IXON;
    before.c_oflag |= OPOST;
    ASSERT_EQ(tcsetattr(terminal.Descriptor(), TCSANOW, &before), 0);
    Opened();
    const termios after = Driver();
    EXPECT_EQ(after.c_lflag & (ECHO | ICANON | ISIG), 0u);
    EXPECT_EQ(after.c_iflag & (ICRNL | IXON), 0u);
    EXPECT_EQ(after.c_oflag & OPOST, 0u);
}

TEST_F(QtSerialPortsTest, FailToSetWhatTheDriverDoesNotTake) {
    const SerialHandle line = Opened();
    ASSERT_TRUE(ports.SetSettings(line, {9600, 8, 0, 0}));
    for (const SerialSettings refused : {SerialSettings{9600, 7, 0, 0}, SerialSettings{9600, 8, 1, 0}}) {
        EXPECT_FALSE(ports.SetSettings(line, refused)) << "a pseudo-terminal has neither";
        EXPECT_EQ(ports.LastError(), EINVAL);
    }
}

TEST_F(QtSerialPortsTest, ChangeTheFourSettingsOnly) {
    const SerialHandle line = Opened();
    termios before = {};
    ASSERT_EQ(tcgetattr(terminal.Descriptor(), &before), 0);
    before.c_iflag |= IXOFF;
    before.c_oflag |= OFILL;
    before.c_cc[VSTART] = 0x31;
    ASSERT_EQ(tcsetattr(terminal.Descriptor(), TCSANOW, &before), 0);
    ASSERT_TRUE(ports.SetSettings(line, {19200, 8, 0, 2}));
    termios after = {};
    ASSERT_EQ(tcgetattr(terminal.Descriptor(), &after), 0);
    EXPECT_EQ(after.c_iflag, before.c_iflag);
    EXPECT_EQ(after.c_oflag, before.c_oflag);
    EXPECT_EQ(after.c_lflag, before.c_lflag);
    EXPECT_EQ(after.c_cc[VSTART], before.c_cc[VSTART]);
    EXPECT_EQ(cfgetospeed(&after), static_cast<speed_t>(B19200));
    constexpr tcflag_t changed = CSIZE | CSTOPB | PARENB | PARODD | CBAUD;
    EXPECT_EQ(after.c_cflag & ~changed, before.c_cflag & ~changed);
}

TEST_F(QtSerialPortsTest, RefuseSettingsThatNoDriverHas) {
    const SerialHandle line = Opened();
    ASSERT_TRUE(ports.SetSettings(line, {9600, 8, 0, 0}));
    for (const SerialSettings odd :
         {SerialSettings{0, 8, 0, 0}, SerialSettings{-9600, 8, 0, 0}, SerialSettings{9600, 4, 0, 0},
          SerialSettings{9600, 9, 0, 0}, SerialSettings{9600, 8, -1, 0}, SerialSettings{9600, 8, 5, 0},
          SerialSettings{9600, 8, 0, 1}, SerialSettings{9600, 8, 0, 3}}) {
        EXPECT_FALSE(ports.SetSettings(line, odd));
        EXPECT_EQ(ports.LastError(), EINVAL);
    }
    SerialSettings settings;
    ASSERT_TRUE(ports.GetSettings(line, settings));
    EXPECT_EQ(settings, (SerialSettings{9600, 8, 0, 0}));
}

TEST_F(QtSerialPortsTest, SayWhyALineCannotBeOpened) {
    const TemporaryFolder folder;
    const std::string missing = (folder.Path() / "ttyUSB0").string();
    EXPECT_EQ(Complaint(missing), "tessaro: " + missing + ": No such file or directory\n");
    EXPECT_EQ(ports.LastError(), ENOENT);
    const std::string file = folder.Write("file", {'P'});
    EXPECT_EQ(Complaint(file), "tessaro: " + file + ": Inappropriate ioctl for device\n");
    EXPECT_EQ(ports.LastError(), ENOTTY);
    EXPECT_EQ(Complaint(folder.Path().string()), "tessaro: " + folder.Path().string() + ": Is a directory\n");
    EXPECT_EQ(ports.LastError(), EISDIR);
    EXPECT_EQ(Complaint("/dev/null"), "tessaro: /dev/null: Inappropriate ioctl for device\n");
    EXPECT_EQ(ports.LastError(), ENOTTY);
    EXPECT_EQ(Complaint(""), "tessaro: : No such file or directory\n");
    EXPECT_EQ(ports.LastError(), ENOENT);
}

TEST_F(QtSerialPortsTest, SayThatALineIsInUseWhateverItsName) {
    const SerialHandle line = Opened();
    const std::string device = std::filesystem::canonical(terminal.Name()).string();
    QtSerialPorts others;
    testing::internal::CaptureStderr();
    EXPECT_EQ(others.Open(device), SerialHandle::Invalid);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "tessaro: " + device + ": Device or resource busy\n");
    EXPECT_EQ(others.LastError(), EBUSY);
    ports.Close(line);
    EXPECT_NE(others.Open(device), SerialHandle::Invalid);
}

TEST_F(QtSerialPortsTest, LeaveAPseudoTerminalUsableWhenTheProgramIsKilled) {
    Opened();
    const int device = open(terminal.Name().c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK);
    ASSERT_NE(device, -1);
    int exclusive = 1;
    EXPECT_EQ(ioctl(device, TIOCGEXCL, &exclusive), 0);
    EXPECT_EQ(exclusive, 0) << "nobody would be left to give it back";
    close(device);
}

/// Of a program that leads a session of its own, as a daemon does: the first terminal that it opens without
/// care becomes its own, and ends it when it hangs up.
bool LosesALineUnharmed() {
    PseudoTerminal terminal;
    QtSerialPorts ports;
    const SerialHandle line = ports.Open(terminal.Name());
    const bool controlled = open("/dev/tty", O_RDWR) != -1;
    terminal.HangUp();
    std::uint32_t written = 0;
    const std::array<std::uint8_t, 2> wake = {'z', 0};
    const bool sent = ports.Write(line, wake, written);
    return line != SerialHandle::Invalid && !controlled && !sent;
}

[[noreturn]] void LoseALineAsSessionLeader() {
    setsid();
    std::signal(SIGHUP, SIG_DFL);
    std::signal(SIGPIPE, SIG_DFL);
    std::_Exit(LosesALineUnharmed() ? 0 : 1);
}

TEST(QtSerialPortSignals, DoNotReachTheProgram) {
    EXPECT_EXIT(LoseALineAsSessionLeader(), testing::ExitedWithCode(0), "");
}

TEST(QtSerialPortNames, AreThoseOfTheFirstDeviceThatExists) {
    const TemporaryFolder folder;
    const std::string devices = folder.Path().string();
    QtSerialPorts ports({}, devices);
    EXPECT_EQ(ports.PortName(3), devices + "/ttyUSB3") << "none is there";
    folder.Write("ttyS3", {});
    folder.Write("ttyACM33", {});
    EXPECT_EQ(ports.PortName(3), devices + "/ttyS3");
    folder.Write("ttyACM3", {});
    EXPECT_EQ(ports.PortName(3), devices + "/ttyACM3");
    folder.Write("ttyUSB3", {});
    EXPECT_EQ(ports.PortName(3), devices + "/ttyUSB3");
    EXPECT_EQ(ports.PortName(33), devices + "/ttyACM33");
    EXPECT_EQ(ports.PortName(-1), devices + "/ttyUSB-1");
}

TEST(QtSerialPortNames, GiveWayToAPath) {
    QtSerialPorts ports("/dev/serial/by-id/stage");
    EXPECT_EQ(ports.PortName(0), "/dev/serial/by-id/stage");
    EXPECT_EQ(ports.PortName(3), "/dev/serial/by-id/stage");
}

} // namespace
} // namespace tessaro

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    const QCoreApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
