#include "platform/aravis/gvcp_probe.h"

#include <arpa/inet.h>
#include <array>
#include <cerrno>
#include <chrono>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace tessaro {

namespace {

// The control protocol of GigE Vision. All numbers are big-endian.
constexpr std::uint16_t controlPort = 3956;
constexpr int questions = 3;
constexpr std::chrono::milliseconds answerTime(250);

using Question = std::array<std::uint8_t, 12>;
using Answer = std::array<std::uint8_t, 12>;

// Read the register of control channel privileges (0x0A00), with an acknowledge. Reading is open to everyone,
// unless somebody has taken the camera for himself alone.
constexpr Question QuestionNumber(std::uint8_t number) {
    return {0x42, 0x01, 0x00, 0x80, 0x00, 0x04, 0x00, number, 0x00, 0x00, 0x0A, 0x00};
}

constexpr std::size_t headerSize = 8;

bool Answers(std::span<const std::uint8_t> datagram, std::uint8_t number) {
    return datagram.size() >= headerSize && datagram[2] == 0x00 && datagram[3] == 0x81 &&
           datagram[6] == 0x00 && datagram[7] == number;
}

class Socket {
public:
    explicit Socket(std::uint32_t address)
        : m_descriptor(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)) {
        sockaddr_in target{};
        target.sin_family = AF_INET;
        target.sin_port = htons(controlPort);
        target.sin_addr.s_addr = address;
        // Connected, it hears of a refusal, and takes answers from that address alone.
        m_usable = m_descriptor >= 0 &&
                   connect(m_descriptor, reinterpret_cast<const sockaddr*>(&target), sizeof(target)) == 0;
    }
    ~Socket() {
        if (m_descriptor >= 0)
            close(m_descriptor);
    }
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;

    bool IsUsable() const { return m_usable; }

    bool Send(const Question& question) {
        return send(m_descriptor, question.data(), question.size(), MSG_NOSIGNAL) >= 0 ||
               errno != ECONNREFUSED;
    }

    /// The size of what came; nothing when the time is over, or the other side refused.
    std::optional<std::size_t> Receive(Answer& answer, std::chrono::steady_clock::time_point limit) {
        const auto left =
            std::chrono::ceil<std::chrono::milliseconds>(limit - std::chrono::steady_clock::now());
        pollfd wait{m_descriptor, POLLIN, 0};
        if (left.count() <= 0 || poll(&wait, 1, static_cast<int>(left.count())) == 0)
            return std::nullopt;
        const ssize_t size = recv(m_descriptor, answer.data(), answer.size(), 0);
        if (size >= 0)
            return static_cast<std::size_t>(size);
        m_usable = errno != ECONNREFUSED;
        return m_usable ? std::optional<std::size_t>(0) : std::nullopt;
    }

private:
    int m_descriptor;
    bool m_usable = false;
};

} // namespace

std::optional<std::uint32_t> ParseAddress(const std::string& text) {
    in_addr address{};
    if (inet_pton(AF_INET, text.c_str(), &address) != 1)
        return std::nullopt;
    return address.s_addr;
}

CameraAnswer MeaningOf(std::span<const std::uint8_t> datagram, std::uint8_t number) {
    constexpr unsigned success = 0x0000;
    constexpr unsigned accessDenied = 0x8006;
    constexpr std::uint8_t exclusiveOrControl = 0x03;
    if (!Answers(datagram, number))
        return CameraAnswer::None;
    const unsigned status = unsigned{datagram[0]} << 8U | datagram[1];
    if (status == accessDenied)
        return CameraAnswer::Controlled;
    if (status != success || datagram.size() < std::tuple_size_v<Answer>)
        return CameraAnswer::Unclear;
    return (datagram[11] & exclusiveOrControl) != 0 ? CameraAnswer::Controlled : CameraAnswer::Free;
}

CameraAnswer AskCamera(std::uint32_t address) {
    Socket socket(address);
    for (std::uint8_t number = 1; number <= questions && socket.IsUsable(); ++number) {
        if (!socket.Send(QuestionNumber(number)))
            return CameraAnswer::None;
        const auto limit = std::chrono::steady_clock::now() + answerTime;
        Answer answer{};
        while (const auto size = socket.Receive(answer, limit))
            if (const auto meaning = MeaningOf(std::span(answer).first(*size), number);
                meaning != CameraAnswer::None)
                return meaning;
    }
    return CameraAnswer::None;
}

} // namespace tessaro
