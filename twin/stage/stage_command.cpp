#include "twin/stage/stage_command.h"

#include "text/number_reading.h"

#include <array>
#include <utility>

namespace tessaro {
namespace {

constexpr char wakeLetter = 'z';
constexpr std::int64_t largestNumber = 999'999'999'999; // beyond any stage, and within any arithmetic

struct Letter {
    char letter;
    StageVerb verb;
    std::size_t axis;
};
constexpr std::array letters = {Letter{wakeLetter, StageVerb::Wake, 0}, Letter{'p', StageVerb::Query, 0},
                                Letter{'P', StageVerb::Query, 1},       Letter{'Q', StageVerb::Query, 2},
                                Letter{'m', StageVerb::Move, 0},        Letter{'M', StageVerb::Move, 1},
                                Letter{'L', StageVerb::Move, 2},        Letter{'s', StageVerb::SetSpeed, 0},
                                Letter{'S', StageVerb::SetSpeed, 1},    Letter{'T', StageVerb::SetSpeed, 2},
                                Letter{'n', StageVerb::Stop, 0},        Letter{'N', StageVerb::Stop, 1},
                                Letter{'O', StageVerb::Stop, 2}};

bool HasNumber(StageVerb verb) {
    return verb == StageVerb::Move || verb == StageVerb::SetSpeed;
}

} // namespace

std::optional<StageCommand> ParseStageCommand(std::string_view text) {
    if (text.empty() || text.size() >= StageCommandReader::longestText)
        return std::nullopt;
    const std::string_view rest = text.substr(1);
    for (const Letter& known : letters) {
        if (known.letter != text.front())
            continue;
        StageCommand command = {known.verb, known.axis};
        const bool sound = HasNumber(known.verb)
                               ? ReadNumber(rest, -largestNumber, largestNumber, command.number)
                               : rest.empty();
        return sound ? std::optional(command) : std::nullopt;
    }
    return std::nullopt;
}

std::optional<std::string> StageCommandReader::Take(char byte) {
    if (byte == '\0')
        return std::exchange(m_begun, {});
    if (byte == wakeLetter)
        m_begun.clear();
    if (m_begun.size() < longestText)
        m_begun += byte;
    return std::nullopt;
}

} // namespace tessaro
