#include "reference/plain_analysis.h"

#include <array>
#include <cstddef>
#include <cstdlib>

namespace tessaro::reference {
namespace {

constexpr int binCount = 256;
constexpr double peakWindow = 25.0; // half width of the search around the peak of the whole frame

using Histogram = std::array<int, binCount>;
using Histograms = std::array<Histogram, channelCount>;

int Count(const Histogram& histogram, int bin) {
    return histogram[static_cast<std::size_t>(bin)];
}

float MeasureNoise(const FrameRecord& frame) {
    std::uint32_t sum = 0;
    std::uint32_t count = 0;
    for (int x = 0; x < frameWidth; ++x) {
        for (int y = (frameHeight * 2) / 5; y < (frameHeight * 3) / 5; ++y) {
            const int step = GetChannel(frame, 0, x, y) - GetChannel(frame, 0, x, y + 1);
            sum += static_cast<std::uint32_t>(std::abs(step));
            ++count;
        }
    }
    return static_cast<float>(sum) / static_cast<float>(count);
}

int BlockSum(const FrameRecord& frame, int channel, int column, int row) {
    int sum = 0;
    for (int i = 0; i < reduction; ++i)
        for (int j = 0; j < reduction; ++j)
            sum += GetChannel(frame, channel, reduction * column + i, reduction * row + j);
    return sum;
}

/// Fills the reduced image and counts its truncated values.
void Reduce(const FrameRecord& frame, ReducedImage& reduced, Histograms& histograms) {
    for (int channel = 0; channel < channelCount; ++channel) {
        Histogram& histogram = histograms[static_cast<std::size_t>(channel)];
        for (int column = 0; column < frameWidth / reduction; ++column) {
            for (int row = 0; row < frameHeight / reduction; ++row) {
                const float mean = static_cast<float>(BlockSum(frame, channel, column, row)) / 4.0F / 4.0F;
                reduced.Set(channel, column, row, mean);
                ++histogram[static_cast<std::size_t>(mean)];
            }
        }
    }
}

/// The lowest of the fullest bins. The best count has 16 bits and forgets whole multiples of 65,536, on
/// purpose: on a frame of almost one colour a lesser bin of higher intensity may win.
int PeakOfFrame(const Histogram& histogram) {
    int bestIndex = 0;
    auto bestCount = static_cast<std::uint16_t>(histogram[0]);
    for (int bin = 0; bin < binCount; ++bin) {
        if (Count(histogram, bin) > bestCount) {
            bestCount = static_cast<std::uint16_t>(Count(histogram, bin));
            bestIndex = bin;
        }
    }
    return bestIndex;
}

Histograms CountBlock(const FrameRecord& frame, int gx, int gy) {
    Histograms histograms = {};
    for (int channel = 0; channel < channelCount; ++channel) {
        for (int x = gx * gridBlockWidth; x < (gx + 1) * gridBlockWidth; ++x)
            for (int y = gy * gridBlockHeight; y < (gy + 1) * gridBlockHeight; ++y)
                ++histograms[static_cast<std::size_t>(channel)][GetChannel(frame, channel, x, y)];
    }
    return histograms;
}

/// The fullest bin near the peak of the frame, or that peak itself when the block has no pixel near it.
int PeakOfBlock(const Histogram& histogram, double framePeak) {
    int low = static_cast<int>(framePeak - peakWindow);
    int high = static_cast<int>(framePeak + peakWindow);
    if (low < 0)
        low = 0;
    if (high > binCount)
        high = binCount;

    int bestCount = 0;
    int bestIndex = static_cast<int>(framePeak);
    for (int bin = low; bin < high; ++bin) {
        if (Count(histogram, bin) > bestCount) {
            bestCount = Count(histogram, bin);
            bestIndex = bin;
        }
    }
    return bestIndex;
}

void MeasureBackground(const FrameRecord& frame, BackgroundGrid& background) {
    for (int gx = 0; gx < gridSize; ++gx) {
        for (int gy = 0; gy < gridSize; ++gy) {
            const Histograms histograms = CountBlock(frame, gx, gy);
            for (int channel = 0; channel < channelCount; ++channel) {
                const auto c = static_cast<std::size_t>(channel);
                const int peak = PeakOfBlock(histograms[c], frame.bgPeak[c]);
                background.SetMeasured(channel, gx, gy, static_cast<float>(peak));
            }
        }
    }
}

} // namespace

int ComputeFrameStatistics(PlainAnalysis& analysis, FrameRecord& frame) {
    // The noise is that of the current frame, whichever record is measured otherwise; this is meant.
    analysis.measured.noiseLevel = MeasureNoise(analysis.frame);

    Histograms histograms = {};
    Reduce(frame, analysis.measured.reduced, histograms);

    for (std::size_t c = 0; c < channelCount; ++c)
        frame.bgPeak[c] = static_cast<double>(PeakOfFrame(histograms[c]));
    frame.bgPeakSum = frame.bgPeak[0] + frame.bgPeak[1] + frame.bgPeak[2];

    MeasureBackground(frame, analysis.measured.background);
    return 0;
}

} // namespace tessaro::reference
