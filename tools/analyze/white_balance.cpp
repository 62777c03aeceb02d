#include "analyze/white_balance.h"

#include "analysis/frame_measurements.h"
#include "analysis/frame_statistics.h"
#include "analysis/pixel_access.h"
#include "imaging/picture_to_frame.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <memory>

namespace tessaro {
namespace {

using ChannelGains = std::array<double, channelCount>; // [red, green, blue]

constexpr double trialStepLevels = 0.25;
constexpr int mostTrials = 16; // up to two levels either way

/// The substrate's intensity: the dominant one in whole levels, as the analysis sees it, and more finely the
/// mean of the reduced pixels near it.
struct SubstrateLevel {
    int peak = 0;
    double fine = 0.0;
};
using SubstrateLevels = std::array<SubstrateLevel, channelCount>;

constexpr int fineReachLevels = 4; // from the peak

class SubstrateMeter {
public:
    SubstrateLevels Measure(const FrameBuffer& frame) {
        FrameRecord record;
        record.pixels = frame.Data();
        ComputeFrameStatistics(record, record, *m_measured);
        SubstrateLevels levels;
        for (int channel = 0; channel < channelCount; ++channel) {
            const int peak = static_cast<int>(record.bgPeak[static_cast<std::size_t>(channel)]);
            levels[static_cast<std::size_t>(channel)] = {peak, MeanAround(channel, peak)};
        }
        return levels;
    }

private:
    double MeanAround(int channel, int peak) const {
        double sum = 0.0;
        int count = 0;
        const float* plane = m_measured->reduced.Plane(channel);
        for (int i = 0; i < reducedPixelCount; ++i) {
            if (std::abs(static_cast<int>(plane[i]) - peak) <= fineReachLevels) {
                sum += static_cast<double>(plane[i]);
                ++count;
            }
        }
        return sum / count; // the peak itself occurs
    }

    std::unique_ptr<FrameMeasurements> m_measured = std::make_unique<FrameMeasurements>();
};

Picture Scaled(const Picture& picture, const ChannelGains& gains) {
    std::array<std::array<std::uint8_t, 256>, channelCount> table{};
    for (std::size_t channel = 0; channel < channelCount; ++channel) {
        for (std::size_t intensity = 0; intensity < 256; ++intensity) {
            const double scaled = std::floor(static_cast<double>(intensity) * gains[channel] + 0.5);
            table[channel][intensity] = static_cast<std::uint8_t>(std::min(255.0, scaled));
        }
    }
    Picture scaled = picture;
    for (std::size_t pixel = 0; pixel < scaled.pixels.size(); pixel += bytesPerPixel) {
        for (int channel = 0; channel < channelCount; ++channel) {
            std::uint8_t& byte = scaled.pixels[pixel + static_cast<std::size_t>(ChannelByte(channel))];
            byte = table[static_cast<std::size_t>(channel)][byte];
        }
    }
    return scaled;
}

/// Gains to try for a channel, best guess first: the fine levels brought together, then ever farther off,
/// because a dominant intensity in whole levels can be one beside what the fine levels promise.
double TrialGain(const SubstrateLevel& level, const SubstrateLevel& target, int trial) {
    const int steps = trial % 2 == 0 ? trial / 2 : -(trial + 1) / 2;
    return std::max(0.0, target.fine + steps * trialStepLevels) / level.fine;
}

/// The gain that has brought a channel's dominant intensity nearest to the target's so far, the earliest of
/// equals.
class NearestGain {
public:
    void Offer(double gain, int distance) {
        if (distance < m_distance) {
            m_gain = gain;
            m_distance = distance;
        }
    }

    double Gain() const { return m_gain; }
    bool Hit() const { return m_distance == 0; }

private:
    double m_gain = 1.0;
    int m_distance = std::numeric_limits<int>::max();
};

} // namespace

void BalancedFrame(const Picture& picture, FrameBuffer& frame) {
    SubstrateMeter meter;
    PictureToFrame(picture, frame);
    const SubstrateLevels levels = meter.Measure(frame);
    const SubstrateLevel target = levels[green];
    ChannelGains gains = {1.0, 1.0, 1.0};
    std::array<NearestGain, channelCount> nearest;
    std::array<bool, channelCount> open = {levels[red].peak > 0, false, levels[blue].peak > 0};
    for (int trial = 0; trial <= mostTrials && (open[red] || open[blue]); ++trial) {
        for (const std::size_t channel : {std::size_t{red}, std::size_t{blue}}) {
            if (open[channel])
                gains[channel] = TrialGain(levels[channel], target, trial);
        }
        PictureToFrame(Scaled(picture, gains), frame);
        const SubstrateLevels scaled = meter.Measure(frame);
        for (const std::size_t channel : {std::size_t{red}, std::size_t{blue}}) {
            if (open[channel])
                nearest[channel].Offer(gains[channel], std::abs(scaled[channel].peak - target.peak));
            open[channel] = open[channel] && !nearest[channel].Hit();
        }
    }
    if (open[red] || open[blue])
        PictureToFrame(Scaled(picture, {nearest[red].Gain(), 1.0, nearest[blue].Gain()}), frame);
}

} // namespace tessaro
