#include "platform/qt/serial_driver.h"

#include <array>
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

tcflag_t DataBitFlags(std::int32_t byteSize) {
    constexpr std::array<tcflag_t, 4> flags = {CS5, CS6, CS7, CS8};
    return flags.at(static_cast<std::size_t>(byteSize - 5));
}

tcflag_t ParityFlags(std::int32_t parity) {
    constexpr std::array<tcflag_t, 5> flags = {0, PARENB | PARODD, PARENB, PARENB | PARODD | CMSPAR,
                                               PARENB | CMSPAR};
    return flags.at(static_cast<std::size_t>(parity));
}

} // namespace

std::optional<termios2> StateOfDriver(int device) {
    termios2 state = {};
    return ioctl(device, TCGETS2, &state) == -1 ? std::nullopt : std::optional(state);
}

SerialSettings SettingsOf(const termios2& state) {
    return {static_cast<std::int32_t>(state.c_ospeed), DataBitsOf(state.c_cflag), ParityOf(state.c_cflag),
            (state.c_cflag & CSTOPB) != 0 ? 2 : 0};
}

bool RestoreForRawTransfer(int device, termios2 state) {
    constexpr tcflag_t changesOfInput =
        IGNBRK | BRKINT | PARMRK | ISTRIP | INLCR | IGNCR | ICRNL | IUCLC | IXON;
    constexpr tcflag_t terminalOfAnOperator = ECHO | ECHONL | ICANON | ISIG | IEXTEN;
    state.c_iflag &= ~changesOfInput;
    state.c_oflag &= ~static_cast<tcflag_t>(OPOST);
    state.c_lflag &= ~terminalOfAnOperator;
    state.c_cflag |= CREAD | CLOCAL;
    state.c_cc[VMIN] = 0;
    state.c_cc[VTIME] = 0;
    return ioctl(device, TCSETS2, &state) != -1;
}

bool SetFrame(int device, const SerialSettings& settings) {
    auto state = StateOfDriver(device);
    if (!state.has_value())
        return false;
    state->c_cflag &= ~static_cast<tcflag_t>(CSIZE | PARENB | PARODD | CMSPAR | CSTOPB);
    state->c_cflag |= DataBitFlags(settings.byteSize) | ParityFlags(settings.parity);
    state->c_cflag |= settings.stopBits == 0 ? 0U : CSTOPB;
    return ioctl(device, TCSETS2, &*state) != -1;
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
