#include "camera/bayer_reduction.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace tessaro {
namespace {

/// 0 where there are too few samples for any upper limit.
constexpr std::int32_t Limited(std::int32_t index, std::int32_t upperLimit) {
    return std::max(0, std::min(index, upperLimit));
}

void ConvertCells(CameraSession& session, int y, const std::uint8_t* source, std::uint8_t* target) {
    for (int x = 0; x < sensorWidth; x += 2)
        ConvertBayerCell(session, x, y, source, target);
}

// Samples are taken in pairs and pixels in words, which vectorises.
constexpr bool littleEndian = std::endian::native == std::endian::little;
static_assert(littleEndian || std::endian::native == std::endian::big);

/// Where byte b of a word of so many bytes is.
constexpr unsigned Shift(unsigned b, unsigned bytes) {
    return 8U * (littleEndian ? b : bytes - 1U - b);
}

template<class Word>
Word Load(const std::uint8_t* bytes) {
    Word word;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

} // namespace

void ConvertBayerCell(CameraSession& session, int x, int y, const std::uint8_t* source,
                      std::uint8_t* target) {
    session.sourceIndex = Limited(y * sensorWidth + x, session.byteCount - 2 * sensorWidth - 1);
    const std::uint8_t* upper = source + session.sourceIndex;
    const std::uint8_t* lower = upper + sensorWidth;
    session.p00 = upper[0];
    session.p01 = upper[1];
    session.p10 = lower[0];
    session.p11 = lower[1];
    session.targetIndex = Limited(TargetRowOffset(y) + 2 * x, session.byteCount);
    std::uint8_t* pixel = target + session.targetIndex;
    pixel[0] = static_cast<std::uint8_t>(session.p11);
    pixel[1] = static_cast<std::uint8_t>((session.p10 + session.p01) >> 1);
    pixel[2] = static_cast<std::uint8_t>(session.p00);
}

void ConvertBayerRow(const std::uint8_t* __restrict upper, const std::uint8_t* __restrict lower,
                     std::uint8_t* __restrict pixels) {
    for (std::size_t x = 0; x < frameWidth; ++x) {
        const std::uint32_t above = Load<std::uint16_t>(upper + 2 * x);
        const std::uint32_t below = Load<std::uint16_t>(lower + 2 * x);
        const std::uint32_t red = (above >> Shift(0, 2)) & 0xFFU;
        const std::uint32_t green =
            (((above >> Shift(1, 2)) & 0xFFU) + ((below >> Shift(0, 2)) & 0xFFU)) >> 1U;
        const std::uint32_t blue = (below >> Shift(1, 2)) & 0xFFU;
        const std::uint32_t kept = Load<std::uint32_t>(pixels + 4 * x) & (0xFFU << Shift(3, 4));
        const std::uint32_t pixel = kept | blue << Shift(0, 4) | green << Shift(1, 4) | red << Shift(2, 4);
        std::memcpy(pixels + 4 * x, &pixel, sizeof pixel);
    }
}

void ConvertBayerFrame(CameraSession& session, const std::uint8_t* source, std::uint8_t* target) {
    session.width = sensorWidth; // whatever the grab reported
    session.height = sensorHeight;
    const int firstLimitedRow = session.byteCount == sensorByteCount ? lowestCellRow : 0;
    for (int y = 0; y < firstLimitedRow; y += 2) {
        const std::uint8_t* upper = source + y * sensorWidth;
        ConvertBayerRow(upper, upper + sensorWidth, target + TargetRowOffset(y));
    }
    for (int y = firstLimitedRow; y < sensorHeight; y += 2)
        ConvertCells(session, y, source, target);
}

} // namespace tessaro
