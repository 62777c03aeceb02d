#pragma once

#include "analysis/background_grid.h"
#include "analysis/background_parameters.h"

#include <array>
#include <cstddef>

namespace tessaro {

/// The values that a search tries: first, first + step, ... as long as they lie below `end`. The sum is
/// carried on in double precision, so its rounding decides on the last trial.
struct TrialRange {
    double first = 0;
    double end = 0;
    double step = 0; // above 0
};

/// The search for the best value of one parameter of the background model, the others held.
///
/// The result is that of evaluating ModelError at every trial, to the last bit, but few are evaluated. The
/// error is a polynomial of fourth degree in the searched parameter, cheap to work out though not with the
/// same rounding. A second polynomial says how far the two may be apart. A trial that cannot come near an
/// error already known is passed over; what is left is evaluated exactly, some trials side by side.
class LineSearch {
public:
    using ChannelParameters = std::array<double, modelParameterCount>;

    LineSearch(const ChannelParameters& parameters, const BackgroundGrid& background, int channel,
               ModelParameter searched);

    /// The trial with the least error, the lowest of equals; the first value when there is no trial.
    double BestOf(const TrialRange& range) const;

private:
    static constexpr std::size_t laneCount = 8;
    using Strip = std::array<double, laneCount>; // of trials, or one number for each

    /// c[0] + c[1] t + c[2] t^2
    using Quadratic = std::array<double, 3>;

    struct Quartic {
        void AddProduct(const Quadratic& p, const Quadratic& q);
        double At(double t) const { return c[0] + t * (c[1] + t * (c[2] + t * (c[3] + t * c[4]))); }

        std::array<double, 5> c = {}; // of t^0 .. t^4
    };

    class Trials;
    class Best;

    void AddBlock(double gx, double gy, double measured);
    double LeastEstimated(const TrialRange& range) const;
    bool EstimatesHold(const TrialRange& range) const;
    double BestOfAll(const TrialRange& range) const;
    double ErrorAt(double trial) const;
    Strip ErrorsAt(const Strip& trials, double limit) const;

    ChannelParameters m_parameters;
    ModelParameter m_searched;
    std::array<std::array<double, gridSize>, gridSize> m_measured = {}; // [gx 0..15][gy 0..15]

    // Of t, the distance of a trial from the parameter's present value, and of |t|.
    Quartic m_estimate;
    Quartic m_slack;
};

} // namespace tessaro
