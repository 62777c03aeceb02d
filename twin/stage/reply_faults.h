#pragma once

#include "simulated_field/reproducible_random.h"
#include "twin/stage/stage_controller.h"

#include <cstddef>
#include <optional>
#include <string>

namespace tessaro {

/// What goes wrong with the controller's replies.
struct ReplyFaultSettings {
    bool silent = false;
    bool noArrival = false;
    bool garbled = false;
    bool otherAxis = false;
    bool impossible = false;
    double lateSeconds = 0.0;
    std::optional<std::size_t> piece; // so many bytes first, then a pause; 0: every place in turn
};

/// A reply as it goes over the line.
struct LineReply {
    std::string bytes;
    std::size_t pauseAfter = 0; // so many bytes; 0: no pause
};

/// Turns replies into bytes, each ended by a NUL, with what is wrong with them. The same replies and settings
/// give the same bytes.
class ReplyFaults {
public:
    ReplyFaultSettings settings;

    /// Nothing for a reply that is not sent.
    std::optional<LineReply> Send(StageReply reply);

private:
    void Garble(std::string& bytes);
    std::size_t PauseIn(const std::string& bytes);

    ReproducibleRandom m_random{1};
    std::size_t m_replies = 0;
};

} // namespace tessaro
