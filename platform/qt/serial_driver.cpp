#include "platform/qt/serial_driver.h"

#include <asm/termbits.h> // has the speed as a number, and cannot be had beside <termios.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

namespace tessaro {
namespace {

/// The kernel's numbers of the drivers of pseudo-terminals, on the side of programs.
constexpr unsigned firstPseudoTerminal = 136;
constexpr unsigned lastPseudoTerminal = 143;

std::int32_t DataBitsOf(tcflag_t flags) {
    switch (flags & CSIZE) {
    case CS5:
        return 5;
    case CS6:
        return 6;
    case CS7:
        return 7;
    default:
        return 8;
    }
}

std::int32_t ParityOf(tcflag_t flags) {
    const bool odd = (flags & PARODD) != 0;
    if ((flags & PARENB) == 0)
        return 0;
    if ((flags & CMSPAR) != 0)
        return odd ? 3 : 4;
    return odd ? 1 : 2;
}

} // namespace

bool SettingsOfDriver(int device, SerialSettings& settings) {
    termios2 driver = {};
    if (ioctl(device, TCGETS2, &driver) == -1)
        return false;
    settings.baudRate = static_cast<std::int32_t>(driver.c_ospeed);
    settings.byteSize = DataBitsOf(driver.c_cflag);
    settings.parity = ParityOf(driver.c_cflag);
    settings.stopBits = (driver.c_cflag & CSTOPB) != 0 ? 2 : 0;
    return true;
}

void ShareIfPseudoTerminal(int device) {
    struct stat status = {};
    if (fstat(device, &status) == -1)
        return;
    const unsigned driver = major(status.st_rdev);
    if (driver >= firstPseudoTerminal && driver <= lastPseudoTerminal)
        ioctl(device, TIOCNXCL);
}

} // namespace tessaro
