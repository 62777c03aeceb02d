#include "reference/plain_analysis.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <limits>

namespace tessaro::reference {
namespace {

constexpr int joinLimit = 9'999; // a grain with this many pixels takes no further candidate
constexpr int mergePasses = 2;
constexpr int fewestTouchingPairs = 2;

int TruncateToInt(double value) {
    const double low = std::numeric_limits<int>::min();
    const double high = std::numeric_limits<int>::max();
    return static_cast<int>(std::trunc(std::clamp(value, low, high)));
}

Grain& At(GrainTable& grains, int g) {
    return grains.grains[static_cast<std::size_t>(g)];
}

PixelPosition PixelAt(const Grain& grain, int i) {
    return grain.pixels[static_cast<std::size_t>(i)];
}

bool Touch(PixelPosition first, PixelPosition second) {
    return std::abs(first.x - second.x) + std::abs(first.y - second.y) < 3;
}

bool LiesInFrame(PixelPosition position) {
    return position.x >= 0 && position.x < frameWidth && position.y >= 0 && position.y < frameHeight;
}

bool TouchesGrain(const Grain& grain, PixelPosition position) {
    for (int i = 0; i < grain.count; ++i)
        if (Touch(PixelAt(grain, i), position))
            return true;
    return false;
}

/// The first grain that touches the position, or -1.
int FirstTouchingGrain(GrainTable& grains, int n, PixelPosition position) {
    for (int g = 0; g < n; ++g)
        if (TouchesGrain(At(grains, g), position))
            return g;
    return -1;
}

void AppendPixel(Grain& grain, PixelPosition position) {
    grain.pixels[static_cast<std::size_t>(grain.count)] = position;
    ++grain.count;
}

/// Sorts the candidates into grains; returns the number of grains opened.
int CollectGrains(const PlainAnalysis& analysis, const Candidate* candidates, int candidateCount,
                  GrainTable& grains) {
    int n = 0;
    for (int i = 0; i < candidateCount; ++i) {
        const PixelPosition position = {candidates[i].x, candidates[i].y};
        if (candidates[i].live == 0 || !LiesInFrame(position))
            continue;
        const int touching = FirstTouchingGrain(grains, n, position);
        if (touching >= 0) {
            // A full grain swallows the candidate: it is lost even where it touches a later grain.
            if (At(grains, touching).count < joinLimit)
                AppendPixel(At(grains, touching), position);
            continue;
        }
        if (n >= MAX_GRAIN) {
            if (analysis.status != nullptr)
                analysis.status->ShowInformation("MAX_GRAIN overflow: group counting stopped");
            break;
        }
        AppendPixel(At(grains, n), position);
        ++n;
    }
    return n;
}

void MergeLaterGrains(GrainTable& grains, int n, int a, int maxSize) {
    for (int b = a + 1; b < n; ++b) {
        if (At(grains, b).count > maxSize)
            At(grains, b).count = 0;
        if (At(grains, b).count != 0)
            MergeIfTouching(At(grains, a), At(grains, b));
    }
}

void MergePass(GrainTable& grains, int n, int maxSize) {
    for (int a = 0; a < n; ++a)
        if (At(grains, a).count > maxSize)
            At(grains, a).count = 0;
        else if (At(grains, a).count != 0)
            MergeLaterGrains(grains, n, a, maxSize);
}

void FilterBySize(GrainTable& grains, int n, int minSize, int maxSize) {
    for (int g = 0; g < n; ++g) {
        if (At(grains, g).count < minSize)
            At(grains, g).count = 0;
        if (At(grains, g).count > maxSize)
            At(grains, g).count = 0;
    }
}

} // namespace

int MinimumReducedPixels(int area) {
    return TruncateToInt(area / 2.56);
}

int MinimumFullPixels(int area) {
    return TruncateToInt(area * 16.0 / 2.56);
}

void GroupCandidates(PlainAnalysis& analysis, const Candidate* candidates, int candidateCount,
                     GrainTable& grains, std::int32_t& groupCount, int minSize, int maxSize) {
    for (Grain& grain : grains.grains)
        grain.count = 0;
    const int n = CollectGrains(analysis, candidates, candidateCount, grains);
    for (int pass = 0; pass < mergePasses; ++pass)
        MergePass(grains, n, maxSize);
    FilterBySize(grains, n, minSize, maxSize);
    groupCount = n;
}

void MergeIfTouching(Grain& grainA, Grain& grainB) {
    int pairs = 0;
    for (int i = 0; i < grainA.count; ++i) {
        for (int j = 0; j < grainB.count; ++j)
            if (Touch(PixelAt(grainA, i), PixelAt(grainB, j)))
                ++pairs;
    }
    if (pairs >= fewestTouchingPairs)
        AppendGrain(grainA, grainB);
}

void AppendGrain(Grain& grainA, Grain& grainB) {
    int copied = 0;
    while (copied < grainB.count && grainA.count + copied < grainCapacity) {
        grainA.pixels[static_cast<std::size_t>(grainA.count + copied)] = PixelAt(grainB, copied);
        ++copied;
    }
    grainA.count += copied;
    grainB.count = 0;
}

// Not the largest grain, on purpose: the reference stays that of grain 0, so the last grain above it wins.
int LargestGrain(const GrainTable& grains, int count) {
    const std::int32_t reference = grains.grains[0].count;
    int result = 0;
    for (int g = 0; g < count; ++g)
        if (grains.grains[static_cast<std::size_t>(g)].count > reference)
            result = g;
    return result;
}

} // namespace tessaro::reference
