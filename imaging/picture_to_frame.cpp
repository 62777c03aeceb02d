#include "imaging/picture_to_frame.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <numeric>

namespace tessaro {
namespace {

constexpr int weightBits = 14;

/// The source pixels that one target pixel along an axis is made of, and their weights, which add up to one
/// exactly: an even picture stays even.
struct Taps {
    int first = 0;
    std::vector<std::int32_t> weights; // in 2^-weightBits
};

/// How much of a source pixel goes into a target pixel, in units that are whole along the axis. A shrinking
/// picture gives each source pixel the weight of the length that falls into the target pixel; a growing one
/// is interpolated between the two nearest centres.
std::int64_t Share(std::int64_t source, std::int64_t target, std::int64_t sourceSize,
                   std::int64_t targetSize) {
    if (sourceSize >= targetSize) {
        const std::int64_t start = std::max(source * targetSize, target * sourceSize);
        const std::int64_t end = std::min((source + 1) * targetSize, (target + 1) * sourceSize);
        return end - start;
    }
    const std::int64_t distance = std::abs((2 * source + 1) * targetSize - (2 * target + 1) * sourceSize);
    return 2 * targetSize - distance;
}

Taps TapsOf(int target, int targetSize, int sourceSize) {
    const std::int64_t start = std::int64_t{target} * sourceSize / targetSize;
    const std::int64_t end = (std::int64_t{target} + 1) * sourceSize / targetSize;
    std::vector<std::int64_t> shares;
    Taps taps;
    for (std::int64_t source = std::max<std::int64_t>(0, start - 1);
         source <= std::min<std::int64_t>(sourceSize - 1, end + 1); ++source) {
        const std::int64_t share = Share(source, target, sourceSize, targetSize);
        if (share <= 0)
            continue;
        if (shares.empty())
            taps.first = static_cast<int>(source);
        shares.push_back(share);
    }
    const std::int64_t whole = std::accumulate(shares.begin(), shares.end(), std::int64_t{0});
    for (const std::int64_t share : shares)
        taps.weights.push_back(static_cast<std::int32_t>((share << weightBits) / whole));
    const std::int32_t missing =
        (1 << weightBits) - std::accumulate(taps.weights.begin(), taps.weights.end(), std::int32_t{0});
    *std::max_element(taps.weights.begin(), taps.weights.end()) += missing;
    return taps;
}

std::vector<Taps> TapsOfAxis(int targetSize, int sourceSize) {
    std::vector<Taps> taps;
    taps.reserve(static_cast<std::size_t>(targetSize));
    for (int target = 0; target < targetSize; ++target)
        taps.push_back(TapsOf(target, targetSize, sourceSize));
    return taps;
}

/// Four bytes mixed from pixels that lie `stride` bytes apart.
void Mix(const Taps& taps, const std::uint8_t* source, std::ptrdiff_t stride, std::uint8_t* target) {
    constexpr std::int32_t half = 1 << (weightBits - 1);
    std::int32_t sums[bytesPerPixel] = {half, half, half, half};
    for (const std::int32_t weight : taps.weights) {
        for (int byte = 0; byte < bytesPerPixel; ++byte)
            sums[byte] += weight * source[byte];
        source += stride;
    }
    for (int byte = 0; byte < bytesPerPixel; ++byte)
        target[byte] = static_cast<std::uint8_t>(sums[byte] >> weightBits);
}

Picture StretchAlongX(const Picture& picture, int width) {
    Picture stretched(width, picture.height);
    const std::vector<Taps> taps = TapsOfAxis(width, picture.width);
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < width; ++x) {
            const Taps& column = taps[static_cast<std::size_t>(x)];
            Mix(column, picture.Pixel(column.first, y), bytesPerPixel, stretched.Pixel(x, y));
        }
    }
    return stretched;
}

Picture StretchAlongY(const Picture& picture, int height) {
    Picture stretched(picture.width, height);
    const std::vector<Taps> taps = TapsOfAxis(height, picture.height);
    const std::ptrdiff_t rowBytes = std::ptrdiff_t{picture.width} * bytesPerPixel;
    for (int y = 0; y < height; ++y) {
        const Taps& row = taps[static_cast<std::size_t>(y)];
        for (int x = 0; x < picture.width; ++x)
            Mix(row, picture.Pixel(x, row.first), rowBytes, stretched.Pixel(x, y));
    }
    return stretched;
}

bool HasFrameSize(const Picture& picture) {
    return picture.width == frameWidth && picture.height == frameHeight;
}

void CopyRows(const Picture& picture, FrameBuffer& frame) {
    for (int row = 0; row < frameHeight; ++row) {
        std::memcpy(frame.Data() + PixelOffset(0, StoredRow(row)), picture.Pixel(0, row),
                    std::size_t{frameWidth} * bytesPerPixel);
    }
}

} // namespace

Picture StretchedToFrame(const Picture& picture) {
    if (HasFrameSize(picture))
        return picture;
    return StretchAlongY(StretchAlongX(picture, frameWidth), frameHeight);
}

void PictureToFrame(const Picture& picture, FrameBuffer& frame) {
    if (HasFrameSize(picture))
        CopyRows(picture, frame);
    else
        CopyRows(StretchedToFrame(picture), frame);
}

Picture FrameToPicture(const FrameBuffer& frame) {
    Picture picture(frameWidth, frameHeight);
    for (int row = 0; row < frameHeight; ++row) {
        std::memcpy(picture.Pixel(0, row), frame.Data() + PixelOffset(0, StoredRow(row)),
                    std::size_t{frameWidth} * bytesPerPixel);
    }
    return picture;
}

} // namespace tessaro
