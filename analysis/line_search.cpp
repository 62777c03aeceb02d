#include "analysis/line_search.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace tessaro {
namespace {

double Square(double value) {
    return value * value;
}

} // namespace

/// Hands out the trials of a range strip by strip.
class LineSearch::Trials {
public:
    explicit Trials(const TrialRange& range) : m_range(range), m_next(range.first) {}

    /// False when there are no more. A last strip is filled up with the last trial: no trial is better than
    /// itself.
    bool Next(Strip& strip) {
        if (!(m_range.end > m_next))
            return false;
        for (double& trial : strip) {
            trial = m_next;
            m_next = m_next + m_range.step;
        }
        if (!(m_range.end > strip.back()))
            RepeatLast(strip);
        return true;
    }

private:
    void RepeatLast(Strip& strip) const {
        for (std::size_t lane = 1; lane < laneCount; ++lane) {
            if (!(m_range.end > strip[lane]))
                strip[lane] = strip[lane - 1];
        }
    }

    TrialRange m_range;
    double m_next;
};

/// The best of the trials that were not passed over, which must be added in ascending order.
class LineSearch::Best {
public:
    /// `limit` is the error of some trial.
    Best(const LineSearch& search, double limit) : m_search(search), m_limit(limit) {}

    /// Trials whose error is certainly above this need not be added.
    double Limit() const { return m_limit; }

    void Add(double trial) {
        m_waiting[m_waitingCount++] = trial;
        if (m_waitingCount == laneCount)
            Evaluate();
    }

    double Value() {
        if (m_waitingCount > 0) {
            std::fill(m_waiting.begin() + static_cast<std::ptrdiff_t>(m_waitingCount), m_waiting.end(),
                      m_waiting[m_waitingCount - 1]);
            Evaluate();
        }
        return m_value;
    }

private:
    void Evaluate() {
        const Strip errors = m_search.ErrorsAt(m_waiting, m_limit);
        for (std::size_t lane = 0; lane < laneCount; ++lane) {
            if (m_error > errors[lane]) {
                m_error = errors[lane];
                m_value = m_waiting[lane];
            }
        }
        m_limit = std::min(m_limit, m_error);
        m_waitingCount = 0;
    }

    const LineSearch& m_search;
    double m_limit;
    double m_error = std::numeric_limits<double>::infinity();
    double m_value = 0;
    Strip m_waiting = {};
    std::size_t m_waitingCount = 0;
};

LineSearch::LineSearch(const ChannelParameters& parameters, const BackgroundGrid& background, int channel,
                       ModelParameter searched)
    : m_parameters(parameters), m_searched(searched) {
    for (int gx = 0; gx < gridSize; ++gx) {
        for (int gy = 0; gy < gridSize; ++gy) {
            const double measured = background.Measured(channel, gx, gy);
            m_measured[static_cast<std::size_t>(gx)][static_cast<std::size_t>(gy)] = measured;
            AddBlock(gx, gy, measured);
        }
    }
}

double LineSearch::BestOf(const TrialRange& range) const {
    if (!(range.end > range.first))
        return range.first;
    if (!EstimatesHold(range))
        return BestOfAll(range);

    Best best(*this, ErrorAt(LeastEstimated(range)));
    const double present = m_parameters[m_searched];
    Trials trials(range);
    for (Strip strip; trials.Next(strip);) {
        Strip atLeast;
        for (std::size_t lane = 0; lane < laneCount; ++lane) {
            const double t = strip[lane] - present;
            atLeast[lane] = m_estimate.At(t) - m_slack.At(std::fabs(t));
        }
        for (std::size_t lane = 0; lane < laneCount; ++lane) {
            if (!(atLeast[lane] > best.Limit()))
                best.Add(strip[lane]);
        }
    }
    return best.Value();
}

/// Adds (p0 + p1 t + p2 t^2) (q0 + q1 t + q2 t^2).
void LineSearch::Quartic::AddProduct(const Quadratic& p, const Quadratic& q) {
    c[0] += p[0] * q[0];
    c[1] += p[0] * q[1] + p[1] * q[0];
    c[2] += p[0] * q[2] + p[1] * q[1] + p[2] * q[0];
    c[3] += p[1] * q[2] + p[2] * q[1];
    c[4] += p[2] * q[2];
}

/// Adds a block's squared residual to the estimate and what rounding can make of it to the slack.
///
/// With u = 2^-53, r a bound of the block's residual and m the sum of its terms' absolute values, of which
/// the level, being added last, needs but an eighth: the model's value is off by at most 6 u m in ModelError
/// and by 11 u m here. The squares therefore differ by at most 2 r (17 u m) + (17 u m)^2. Adding up 256
/// squares there and 256 coefficients here, and working out the polynomial, is good to 540 u r^2. All of it
/// is below 1024 u (r + m / 16) (r + m / 2^48), which is also proof against the rounding of the slack itself.
void LineSearch::AddBlock(double gx, double gy, double measured) {
    const ChannelParameters& P = m_parameters;
    const double dx = gx - P[centreX];
    const double dy = gy - P[centreY];
    const double alongX = P[curvatureX] * Square(dx);
    const double alongY = P[curvatureY] * Square(dy);

    Quadratic residual = {measured - (alongX + alongY + P[level]), 0, 0};
    switch (m_searched) {
    case curvatureX:
        residual[1] = -Square(dx);
        break;
    case centreX:
        residual[1] = 2 * P[curvatureX] * dx;
        residual[2] = -P[curvatureX];
        break;
    case curvatureY:
        residual[1] = -Square(dy);
        break;
    case centreY:
        residual[1] = 2 * P[curvatureY] * dy;
        residual[2] = -P[curvatureY];
        break;
    case level:
        residual[1] = -1;
        break;
    }
    const Quadratic r = {std::fabs(residual[0]), std::fabs(residual[1]), std::fabs(residual[2])};
    const Quadratic m = {std::fabs(alongX) + std::fabs(alongY) + std::fabs(P[level]) / 8, r[1], r[2]};

    constexpr double most = 0x1p-43; // 1024 u
    Quadratic coarse;
    Quadratic fine;
    for (std::size_t i = 0; i < r.size(); ++i) {
        coarse[i] = most * (r[i] + 0x1p-4 * m[i]);
        fine[i] = r[i] + 0x1p-48 * m[i];
    }
    m_estimate.AddProduct(residual, residual);
    m_slack.AddProduct(coarse, fine);
}

/// Whether all numbers of the search are far from where doubles end, so that only rounding parts estimate and
/// error. The slack holds every number's square.
bool LineSearch::EstimatesHold(const TrialRange& range) const {
    constexpr double farFromTheEnd = 1e200;
    const double present = m_parameters[m_searched];
    return m_slack.At(std::max(std::fabs(range.first - present), std::fabs(range.end - present))) <
           farFromTheEnd;
}

double LineSearch::LeastEstimated(const TrialRange& range) const {
    const double present = m_parameters[m_searched];
    double least = std::numeric_limits<double>::infinity();
    double value = range.first;
    Trials trials(range);
    for (Strip strip; trials.Next(strip);) {
        Strip estimates;
        for (std::size_t lane = 0; lane < laneCount; ++lane)
            estimates[lane] = m_estimate.At(strip[lane] - present);
        for (std::size_t lane = 0; lane < laneCount; ++lane) {
            if (estimates[lane] < least) {
                least = estimates[lane];
                value = strip[lane];
            }
        }
    }
    return value;
}

/// The search by its definition. An error that is no number is never beaten and never beats another.
double LineSearch::BestOfAll(const TrialRange& range) const {
    double best = range.first;
    double bestError = ErrorAt(best);
    double trial = range.first;
    while (range.end > trial) {
        const double error = ErrorAt(trial);
        if (bestError > error) {
            bestError = error;
            best = trial;
        }
        trial = trial + range.step;
    }
    return best;
}

double LineSearch::ErrorAt(double trial) const {
    Strip trials;
    trials.fill(trial);
    return ErrorsAt(trials, std::numeric_limits<double>::infinity())[0];
}

/// ModelError at each of the trials, with its order of operations. Once all sums are above the limit they are
/// left as they are: squares are never negative, so a sum that has passed the limit stays above it.
LineSearch::Strip LineSearch::ErrorsAt(const Strip& trials, double limit) const {
    std::array<Strip, modelParameterCount> P;
    for (std::size_t k = 0; k < P.size(); ++k)
        P[k].fill(m_parameters[k]);
    P[m_searched] = trials;

    std::array<Strip, gridSize> alongX;
    std::array<Strip, gridSize> alongY;
    for (std::size_t g = 0; g < gridSize; ++g) {
        for (std::size_t lane = 0; lane < laneCount; ++lane) {
            alongX[g][lane] = P[curvatureX][lane] * Square(static_cast<double>(g) - P[centreX][lane]);
            alongY[g][lane] = P[curvatureY][lane] * Square(static_cast<double>(g) - P[centreY][lane]);
        }
    }

    Strip sums = {};
    for (std::size_t gx = 0; gx < gridSize; ++gx) {
        for (std::size_t gy = 0; gy < gridSize; ++gy) {
            const double measured = m_measured[gx][gy];
            for (std::size_t lane = 0; lane < laneCount; ++lane)
                sums[lane] += Square(measured - (alongX[gx][lane] + alongY[gy][lane] + P[level][lane]));
        }
        if (std::all_of(sums.begin(), sums.end(), [limit](double sum) { return sum > limit; }))
            break;
    }
    return sums;
}

} // namespace tessaro
