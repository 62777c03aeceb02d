#pragma once

#include "twin/stage/stage_axes.h"
#include "twin/stage/stage_command.h"

#include <array>
#include <cstddef>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace tessaro {

/// What the controller says at a time.
struct StageReply {
    enum class Kind { Answer, Progress, Arrival };
    Kind kind = Kind::Answer;
    std::string letters;               // what stands before the number; of arrivals, one for each axis
    std::string number;                // empty: none
    std::string numberOfNextAxis = {}; // of an answer
};

/// The axes whose progress is told on the way: [X, Y, Z]. Answers and arrivals of the others are told all the
/// same.
using ProgressAxes = std::array<bool, stageAxisCount>;

/// Z goes in silence: the host's wait for an arrival lasts as long as progress comes, and a search for the
/// focus looks at frames while Z still travels.
inline constexpr ProgressAxes usualProgressAxes = {true, true, false};

/// The controller of the stage. It is given the bytes that come, is asked what it has to say when the line is
/// free, and tells when that may be. Times are seconds, never going back.
class StageController {
public:
    /// Told of the text of each command that came, whatever it is.
    using Log = std::function<void(std::string_view text, double now)>;

    StageController(StageAxes& axes, Log log, const ProgressAxes& progressAxes = usualProgressAxes);

    void Receive(char byte, double now);

    /// One reply, or nothing yet.
    std::optional<StageReply> Say(double now);

    /// When it will have something to say if nothing comes meanwhile; infinity: never.
    double NextSayTime() const;

    /// Nobody is there any more who began a command, or waits for an answer.
    void ForgetHost();

    /// The stage was put somewhere by hand: no move goes on, and none is reported.
    void ForgetMoves();

    static constexpr double progressSeconds = 0.05;
    static constexpr double earliestArrivalSeconds = 0.05; // after the command
    static constexpr double powerOnSpeed = 2400.0;         // steps/s: 1500 um/s

private:
    struct Axis {
        double speed = powerOnSpeed;
        std::optional<double> owedSince; // the time of the move whose arrival is to be reported
        double progressDue = 0.0;
    };

    void Obey(const StageCommand& command, double now);
    void Move(std::size_t axis, std::int64_t step, double now);
    double ArrivalTime(std::size_t axis) const;
    double ArrivalsDue() const;
    std::optional<std::size_t> NextProgress() const;
    StageReply TakeArrivals();
    StageReply Progress(std::size_t axis, double now);

    StageAxes& m_axes;
    Log m_log;
    ProgressAxes m_progressAxes;
    StageCommandReader m_reader;
    std::array<Axis, stageAxisCount> m_state;
    std::deque<std::size_t> m_asked; // axes whose position is to be answered
};

} // namespace tessaro
