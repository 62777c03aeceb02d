#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tessaro {

enum class StageVerb { Wake, Query, Move, SetSpeed, Stop };

struct StageCommand {
    StageVerb verb = StageVerb::Wake;
    std::size_t axis = 0;    // 0 X, 1 Y, 2 Z
    std::int64_t number = 0; // Move: the target's step; SetSpeed: steps/s
};

/// A command without the NUL that ends it; nothing for what is none.
std::optional<StageCommand> ParseStageCommand(std::string_view text);

/// Puts commands together out of the bytes that come.
class StageCommandReader {
public:
    /// The text of a command when this byte, a NUL, ends one, whatever it says; an empty one after a bare
    /// NUL. "z" begins anew, whatever was begun before. Of longer ones than there are, the beginning.
    std::optional<std::string> Take(char byte);

    void ForgetBegun() { m_begun.clear(); }

    static constexpr std::size_t longestText = 24;

private:
    std::string m_begun;
};

} // namespace tessaro
