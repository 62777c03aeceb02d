#include "tests/platform/pseudo_terminal.h"

#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <poll.h>
#include <stop_token>
#include <sys/ioctl.h>
#include <unistd.h>

namespace tessaro {
namespace {

constexpr int shortMs = 10;
constexpr int longMs = 10'000;

/// False when it was stopped before.
bool Pass(std::uint32_t ms, const std::stop_token& stopped) {
    std::mutex mutex;
    std::condition_variable_any never;
    std::unique_lock lock(mutex);
    never.wait_for(lock, stopped, std::chrono::milliseconds(ms), [] { return false; });
    return !stopped.stop_requested();
}

bool Await(int device, short wanted, int ms) {
    pollfd state = {device, wanted, 0};
    return poll(&state, 1, ms) == 1 && (state.revents & wanted) != 0;
}

} // namespace

PseudoTerminal::PseudoTerminal() {
    ComeBack();
}

PseudoTerminal::~PseudoTerminal() {
    m_later.clear();
    HangUp();
}

void PseudoTerminal::ComeBack() {
    HangUp();
    m_device = posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (m_device == -1 || grantpt(m_device) != 0 || unlockpt(m_device) != 0)
        return;
    m_program = open(ptsname(m_device), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    std::filesystem::remove(Name());
    std::filesystem::create_symlink(ptsname(m_device), Name());
}

void PseudoTerminal::HangUp() {
    const std::lock_guard lock(m_access);
    for (int* descriptor : {&m_device, &m_program}) {
        if (*descriptor != -1)
            close(*descriptor);
        *descriptor = -1;
    }
}

void PseudoTerminal::HangUpAfter(std::uint32_t ms) {
    m_later.emplace_back([this, ms](const std::stop_token& stopped) {
        if (Pass(ms, stopped))
            HangUp();
    });
}

bool PseudoTerminal::SendPiece(const std::string& bytes, std::size_t& sent) {
    const std::lock_guard lock(m_access);
    const ssize_t moved =
        Await(m_device, POLLOUT, shortMs) ? write(m_device, bytes.data() + sent, bytes.size() - sent) : 0;
    if (moved > 0)
        sent += static_cast<std::size_t>(moved);
    return sent < bytes.size() && m_device != -1;
}

void PseudoTerminal::SendAll(const std::string& bytes, const std::stop_token& stopped) {
    std::size_t sent = 0;
    while (SendPiece(bytes, sent) && !stopped.stop_requested()) {
    }
}

void PseudoTerminal::SendNow(const std::string& bytes) {
    int before = 0;
    ioctl(m_program, FIONREAD, &before);
    SendAll(bytes, {});
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(longMs);
    for (int there = before; there < before + static_cast<int>(bytes.size());) {
        ASSERT_LT(std::chrono::steady_clock::now(), end) << there << " of " << bytes.size() << " came over";
        std::this_thread::yield();
        ASSERT_EQ(ioctl(m_program, FIONREAD, &there), 0);
    }
}

void PseudoTerminal::SendAfter(std::uint32_t ms, std::string bytes) {
    m_later.emplace_back([this, ms, sent = std::move(bytes)](const std::stop_token& stopped) {
        if (Pass(ms, stopped))
            SendAll(sent, stopped);
    });
}

std::string PseudoTerminal::Taken(std::size_t count) {
    std::string all;
    while (all.size() < count && Await(m_device, POLLIN, longMs)) {
        std::string bytes(count - all.size(), '\0');
        const ssize_t taken = read(m_device, bytes.data(), bytes.size());
        if (taken <= 0)
            break;
        all.append(bytes, 0, static_cast<std::size_t>(taken));
    }
    return all;
}

} // namespace tessaro
