#include "twin/stage/reply_faults.h"

#include <array>
#include <string_view>

namespace tessaro {
namespace {

constexpr std::uint64_t garbledOneIn = 4; // bytes
constexpr std::array<std::string_view, 3> impossibleNumbers = {"2147483647", "99999999999", "-2147483648"};

char LetterOfNextAxis(char letter) {
    constexpr std::string_view axes = "pPQpXYZX";
    return axes[axes.find(letter) + 1];
}

void SpeakOfNextAxis(StageReply& reply) {
    for (char& letter : reply.letters)
        letter = LetterOfNextAxis(letter);
    if (reply.kind == StageReply::Kind::Answer)
        reply.number = reply.numberOfNextAxis;
}

std::string BytesOf(const StageReply& reply) {
    if (reply.kind != StageReply::Kind::Arrival)
        return reply.letters + reply.number + '\0';
    std::string bytes;
    for (const char letter : reply.letters) {
        bytes += letter;
        bytes += '\0';
    }
    return bytes;
}

} // namespace

std::optional<LineReply> ReplyFaults::Send(StageReply reply) {
    if (settings.silent || (settings.noArrival && reply.kind == StageReply::Kind::Arrival))
        return std::nullopt;
    ++m_replies;
    if (settings.otherAxis)
        SpeakOfNextAxis(reply);
    if (settings.impossible && !reply.number.empty())
        reply.number = impossibleNumbers[m_replies % impossibleNumbers.size()];
    LineReply line = {BytesOf(reply)};
    if (settings.garbled)
        Garble(line.bytes);
    line.pauseAfter = PauseIn(line.bytes);
    return line;
}

void ReplyFaults::Garble(std::string& bytes) {
    for (char& byte : bytes)
        if (m_random.Next() % garbledOneIn == 0)
            byte = static_cast<char>(m_random.Next() & 0xFF);
}

std::size_t ReplyFaults::PauseIn(const std::string& bytes) {
    if (!settings.piece)
        return 0;
    const std::size_t places = bytes.size() - 1;
    const std::size_t place = *settings.piece != 0 ? *settings.piece : 1 + m_replies % places;
    return place <= places ? place : 0;
}

} // namespace tessaro
