#include "camera/exposure_mean.h"

#include "camera/bayer_reduction.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace tessaro {
namespace {

constexpr std::size_t cellRowSamples = std::size_t{2} * sensorWidth;

template<std::size_t exposures>
using RowsOfSamples = std::array<const std::uint8_t*, exposures>;

/// Sums and means of two rows of samples.
template<std::size_t exposures>
void AverageCellRow(const RowsOfSamples<exposures>& rows, std::uint16_t* __restrict sums,
                    std::uint8_t* __restrict means) {
    for (std::size_t i = 0; i < cellRowSamples; ++i) {
        unsigned sum = rows[0][i];
        if constexpr (exposures > 1)
            sum += rows[1][i];
        if constexpr (exposures > 2)
            sum += rows[2][i];
        if constexpr (exposures > 3)
            sum += rows[3][i];
        sums[i] = static_cast<std::uint16_t>(sum);
        means[i] = static_cast<std::uint8_t>(static_cast<std::uint16_t>(sum) / exposures);
    }
}

/// Cell row by cell row, so that everything between samples and pixels stays in the cache.
template<std::size_t exposures>
void AverageAndConvert(CameraSession& session, std::span<const GrabResult* const> images) {
    static_assert(exposures <= exposuresAtOnce);
    std::uint8_t* raw = session.rawFrame.data();
    for (int y = 0; y < sensorHeight; y += 2) {
        const int offset = y * sensorWidth;
        RowsOfSamples<exposures> rows;
        for (std::size_t k = 0; k < exposures; ++k)
            rows[k] = images[k]->GetBuffer().data() + offset;
        AverageCellRow<exposures>(rows, session.accumulator.data() + offset, raw + offset);
        if (y == lowestCellRow)
            break;
        std::uint8_t* pixels = session.convertedFrame.Data() + TargetRowOffset(y);
        ConvertBayerRow(raw + offset, raw + offset + sensorWidth, pixels);
        std::memcpy(session.workingFrame.Data() + TargetRowOffset(y), pixels, cellRowSamples);
    }
}

void ConvertLowestCellRow(CameraSession& session) {
    std::uint8_t* converted = session.convertedFrame.Data();
    for (int x = 0; x < sensorWidth; x += 2)
        ConvertBayerCell(session, x, lowestCellRow, session.rawFrame.data(), converted);
    const int offset = TargetRowOffset(lowestCellRow);
    std::memcpy(session.workingFrame.Data() + offset, converted + offset, cellRowSamples);
}

} // namespace

std::int32_t SampleCount(const GrabResult& image) {
    const std::int64_t size =
        static_cast<std::int64_t>(std::max(0, image.GetWidth())) * std::max(0, image.GetHeight());
    const auto sent = static_cast<std::int64_t>(image.GetBuffer().size());
    return static_cast<std::int32_t>(std::min({size, sent, static_cast<std::int64_t>(sensorByteCount)}));
}

void AddExposure(CameraSession& session, const GrabResult& image, bool first) {
    const auto count = static_cast<std::size_t>(SampleCount(image));
    const std::uint8_t* samples = image.GetBuffer().data();
    for (std::size_t i = 0; i < count; ++i) {
        const unsigned sum = first ? 0U : session.accumulator[i];
        session.accumulator[i] = static_cast<std::uint16_t>(sum + samples[i]);
    }
}

void ShowMean(CameraSession& session, int frames) {
    const auto count = static_cast<std::size_t>(session.byteCount);
    for (std::size_t i = 0; i < count; ++i)
        session.rawFrame[i] = static_cast<std::uint8_t>(session.accumulator[i] / frames);
    ConvertBayerFrame(session, session.rawFrame.data(), session.convertedFrame.Data());
    std::copy_n(session.convertedFrame.Data(), count, session.workingFrame.Data());
}

void ShowMeanOf(CameraSession& session, std::span<const GrabResult* const> exposures) {
    session.width = sensorWidth;
    session.height = sensorHeight;
    session.byteCount = sensorByteCount;
    switch (exposures.size()) {
    case 1:
        AverageAndConvert<1>(session, exposures);
        break;
    case 2:
        AverageAndConvert<2>(session, exposures);
        break;
    case 3:
        AverageAndConvert<3>(session, exposures);
        break;
    default:
        AverageAndConvert<4>(session, exposures);
        break;
    }
    ConvertLowestCellRow(session);
}

} // namespace tessaro
