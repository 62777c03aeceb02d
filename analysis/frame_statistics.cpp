#include "analysis/frame_statistics.h"

#include "analysis/pixel_access.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>

namespace tessaro {
namespace {

constexpr int binCount = 256;
constexpr int noiseFirstRow = frameHeight * 2 / 5;
constexpr int noiseEndRow = frameHeight * 3 / 5;
constexpr double peakReach = 25; // a block's background is looked for this far around the frame's

using ChannelHistogram = std::array<int, binCount>;
using FrameHistogram = std::array<ChannelHistogram, channelCount>;

const std::uint8_t* Row(const FrameRecord& frame, int y) {
    return frame.pixels + PixelOffset(0, y);
}

float MeasureNoise(const FrameRecord& frame) {
    constexpr int redByte = ChannelByte(red);
    std::uint32_t sum = 0;
    for (int y = noiseFirstRow; y < noiseEndRow; ++y) {
        const std::uint8_t* row = Row(frame, y) + redByte;
        const std::uint8_t* next = Row(frame, y + 1) + redByte;
        for (int x = 0; x < frameWidth; ++x)
            sum += static_cast<std::uint32_t>(std::abs(row[x * bytesPerPixel] - next[x * bytesPerPixel]));
    }
    constexpr std::uint32_t count = frameWidth * (noiseEndRow - noiseFirstRow);
    return static_cast<float>(sum) / static_cast<float>(count);
}

constexpr std::size_t rowByteCount = std::size_t{frameWidth} * bytesPerPixel;

/// Sums of four rows, byte by byte, which vectorises.
using RowSums = std::array<std::uint16_t, rowByteCount>;

void AddRows(const std::uint8_t* first, RowSums& sums) {
    for (std::size_t i = 0; i < rowByteCount; ++i) {
        const int sum =
            first[i] + first[i + rowByteCount] + first[i + 2 * rowByteCount] + first[i + 3 * rowByteCount];
        sums[i] = static_cast<std::uint16_t>(sum);
    }
}

/// Fills the reduced image and returns the histogram of its truncated values.
FrameHistogram ReduceFrame(const FrameRecord& frame, ReducedImage& reduced) {
    static_assert(reduction == 4, "rows and pixels are added up four at a time");
    constexpr int blockPixels = reduction * reduction;
    FrameHistogram histogram = {};
    RowSums sums;
    for (int by = 0; by < reducedHeight; ++by) {
        AddRows(Row(frame, by * reduction), sums);
        for (int bx = 0; bx < reducedWidth; ++bx) {
            const std::uint16_t* block = sums.data() + bx * reduction * bytesPerPixel;
            for (int channel = 0; channel < channelCount; ++channel) {
                const std::uint16_t* sum = block + ChannelByte(channel);
                const int total =
                    sum[0] + sum[bytesPerPixel] + sum[2 * bytesPerPixel] + sum[3 * bytesPerPixel];
                *(reduced.Column(channel, bx) + by) =
                    static_cast<float>(total) / blockPixels; // exact: a power of two
                ++histogram[static_cast<std::size_t>(channel)][static_cast<std::size_t>(total / blockPixels)];
            }
        }
    }
    return histogram;
}

/// The most frequent intensity, the lowest of equals. The best count is meant to be kept in 16 bits: a bin of
/// 65,536 blocks or more competes with its count modulo 65,536, which later bins then have to beat.
int PeakOf(const ChannelHistogram& bins) {
    int best = 0;
    auto bestCount = static_cast<std::uint16_t>(bins[0]);
    for (int intensity = 1; intensity < binCount; ++intensity) {
        const int count = bins[static_cast<std::size_t>(intensity)];
        if (count > bestCount) {
            best = intensity;
            bestCount = static_cast<std::uint16_t>(count);
        }
    }
    return best;
}

/// Histogram of one block of the background grid. Neighbouring pixels of a substrate mostly have the same
/// intensity; counting them into separate copies keeps one increment from waiting for the other.
class BlockHistogram {
public:
    void Count(const FrameRecord& frame, int gx, int gy) {
        m_bins = {};
        for (int y = gy * gridBlockHeight; y < (gy + 1) * gridBlockHeight; ++y) {
            const std::uint8_t* pixel =
                Row(frame, y) + static_cast<std::ptrdiff_t>(gx) * gridBlockWidth * bytesPerPixel;
            int x = 0;
            for (; x + copies <= gridBlockWidth; x += copies) {
                for (std::size_t copy = 0; copy < copies; ++copy, pixel += bytesPerPixel)
                    CountPixel(copy, pixel);
            }
            for (; x < gridBlockWidth; ++x, pixel += bytesPerPixel)
                CountPixel(0, pixel);
        }
    }

    /// The most frequent intensity of lo .. hi - 1, the lowest of equals; `otherwise` when none occurs.
    int PeakWithin(int channel, int lo, int hi, int otherwise) const {
        int best = otherwise;
        int bestCount = 0;
        for (int intensity = lo; intensity < hi; ++intensity) {
            const int count = CountOf(channel, intensity);
            if (count > bestCount) {
                best = intensity;
                bestCount = count;
            }
        }
        return best;
    }

private:
    static constexpr int copies = 4;

    void CountPixel(std::size_t copy, const std::uint8_t* pixel) {
        ++m_bins[copy][red][pixel[ChannelByte(red)]];
        ++m_bins[copy][green][pixel[ChannelByte(green)]];
        ++m_bins[copy][blue][pixel[ChannelByte(blue)]];
    }

    int CountOf(int channel, int intensity) const {
        int count = 0;
        for (const auto& copy : m_bins)
            count += copy[static_cast<std::size_t>(channel)][static_cast<std::size_t>(intensity)];
        return count;
    }

    // A block has fewer than 65,536 pixels.
    std::array<std::array<std::array<std::uint16_t, binCount>, channelCount>, copies> m_bins;
};

void MeasureBackground(const FrameRecord& frame, BackgroundGrid& background) {
    std::array<int, channelCount> lo{};
    std::array<int, channelCount> hi{};
    for (std::size_t channel = 0; channel < channelCount; ++channel) {
        lo[channel] = std::max(0, static_cast<int>(frame.bgPeak[channel] - peakReach));
        hi[channel] = std::min(binCount, static_cast<int>(frame.bgPeak[channel] + peakReach));
    }
    BlockHistogram histogram;
    for (int gx = 0; gx < gridSize; ++gx) {
        for (int gy = 0; gy < gridSize; ++gy) {
            histogram.Count(frame, gx, gy);
            for (int channel = 0; channel < channelCount; ++channel) {
                const auto c = static_cast<std::size_t>(channel);
                const int peak =
                    histogram.PeakWithin(channel, lo[c], hi[c], static_cast<int>(frame.bgPeak[c]));
                background.SetMeasured(channel, gx, gy, static_cast<float>(peak));
            }
        }
    }
}

} // namespace

int ComputeFrameStatistics(const FrameRecord& current, FrameRecord& frame, FrameMeasurements& measured) {
    measured.noiseLevel = MeasureNoise(current);
    const FrameHistogram histogram = ReduceFrame(frame, measured.reduced);
    frame.bgPeakSum = 0;
    for (std::size_t channel = 0; channel < channelCount; ++channel) {
        frame.bgPeak[channel] = PeakOf(histogram[channel]);
        frame.bgPeakSum += frame.bgPeak[channel];
    }
    MeasureBackground(frame, measured.background);
    return 0;
}

} // namespace tessaro
