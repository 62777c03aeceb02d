#include "analysis/grouping.h"

#include "analysis/grain_edges.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <span>

namespace tessaro {
namespace {

constexpr int pixelsPerReducedPixel = reduction * reduction;
constexpr int mostJoined = grainCapacity - 1; // a grain that holds this many takes no further candidate
constexpr int touchDistance = 3;              // city-block distance below which two pixels touch
constexpr int touchesToMerge = 2;

int TruncateToInt(double value) {
    constexpr double lowest = std::numeric_limits<int>::min();
    constexpr double highest = std::numeric_limits<int>::max();
    return static_cast<int>(std::clamp(value, lowest, highest));
}

bool Touch(PixelPosition a, PixelPosition b) {
    return std::abs(a.x - b.x) + std::abs(a.y - b.y) < touchDistance;
}

std::span<const PixelPosition> Pixels(const Grain& grain) {
    return {grain.pixels.data(), static_cast<std::size_t>(grain.count)};
}

void AddPixel(Grain& grain, PixelPosition pixel) {
    grain.pixels[static_cast<std::size_t>(grain.count++)] = pixel;
}

/// One run of GroupCandidates. The map stands in for the search through all pixels of all grains: the first
/// grain in order that touches a candidate is the lowest around it.
class Grouping {
public:
    Grouping(GroupingScratch& scratch, std::span<const Candidate> candidates, GrainTable& grains)
        : m_map(scratch.map), m_touches(scratch.touches), m_owner(scratch.owner), m_candidates(candidates),
          m_grains(grains.grains) {
        for (Grain& grain : m_grains)
            grain.count = 0;
    }

    ~Grouping() {
        for (const Candidate& candidate : m_candidates) {
            if (Counts(candidate))
                m_map.Free({candidate.x, candidate.y});
        }
    }

    Grouping(const Grouping&) = delete;
    Grouping& operator=(const Grouping&) = delete;

    /// Returns false when a candidate found no slot for a new grain; the rest is left ungathered.
    bool Gather() {
        for (const Candidate& candidate : m_candidates) {
            if (!Counts(candidate))
                continue;
            const PixelPosition pixel{candidate.x, candidate.y};
            std::uint16_t grain = m_map.LowestAround(pixel);
            if (grain == GrainMap::none) {
                if (m_grainCount >= MAX_GRAIN)
                    return false;
                grain = static_cast<std::uint16_t>(m_grainCount++);
            } else if (m_grains[grain].count >= mostJoined) {
                continue;
            }
            m_repeats = m_repeats || m_map.Get(pixel) != GrainMap::none;
            AddPixel(m_grains[grain], pixel);
            m_map.Set(pixel, grain);
        }
        return true;
    }

    void Merge(int maxSize) {
        if (m_repeats) {
            // A position listed twice has one entry for several pixels, which the touch counts would miss.
            MergeTwice(maxSize,
                       [this](std::size_t a, std::size_t b) { MergeIfTouching(m_grains[a], m_grains[b]); });
        } else {
            CountTouches();
            MergeTwice(maxSize, [this](std::size_t a, std::size_t b) {
                if (m_touches.Touching(a, b))
                    MoveGrain(a, b);
            });
        }
    }

    void DropBySize(int minSize, int maxSize) {
        for (Grain& grain : Used()) {
            if (grain.count < minSize || grain.count > maxSize)
                grain.count = 0;
        }
    }

    int GrainCount() const { return m_grainCount; }

private:
    std::span<Grain> Used() { return {m_grains.data(), static_cast<std::size_t>(m_grainCount)}; }

    static bool Counts(const Candidate& candidate) {
        return candidate.live != 0 && GrainMap::InFrame(candidate.x, candidate.y);
    }

    template<typename MergePair>
    void MergeTwice(int maxSize, MergePair mergePair) {
        MergePass(maxSize, mergePair);
        MergePass(maxSize, mergePair);
    }

    template<typename MergePair>
    void MergePass(int maxSize, MergePair mergePair) {
        const auto count = static_cast<std::size_t>(m_grainCount);
        for (std::size_t a = 0; a < count; ++a) {
            if (m_grains[a].count > maxSize)
                m_grains[a].count = 0;
            if (m_grains[a].count == 0)
                continue;
            for (std::size_t b = a + 1; b < count; ++b) {
                if (m_grains[b].count > maxSize)
                    m_grains[b].count = 0;
                else if (m_grains[b].count != 0)
                    mergePair(a, b);
            }
        }
    }

    void CountTouches() {
        m_touches.Reset(m_grainCount);
        for (std::size_t grain = 0; grain < static_cast<std::size_t>(m_grainCount); ++grain) {
            m_owner[grain] = static_cast<std::uint16_t>(grain);
            for (const PixelPosition pixel : Pixels(m_grains[grain])) {
                m_map.VisitHalfAround(pixel, [&](std::uint16_t other) {
                    if (other != grain)
                        m_touches.AddPair(grain, other);
                });
            }
        }
    }

    /// AppendGrain, with the touch counts kept true. Pixels of b that are lost stay b's in the map,
    /// which is empty from now on and never asked for.
    void MoveGrain(std::size_t a, std::size_t b) {
        const std::span<const PixelPosition> source = Pixels(m_grains[b]);
        const auto moved = static_cast<std::size_t>(AppendGrain(m_grains[a], m_grains[b]));
        if (moved == source.size()) {
            m_touches.Absorb(a, b);
            std::replace(m_owner.begin(), m_owner.end(), static_cast<std::uint16_t>(b),
                         static_cast<std::uint16_t>(a));
        } else if (moved > 0) {
            for (const PixelPosition pixel : source.first(moved))
                m_map.Set(pixel, static_cast<std::uint16_t>(a));
            RecountTouches(a);
        }
    }

    void RecountTouches(std::size_t grain) {
        m_touches.Clear(grain);
        for (const PixelPosition pixel : Pixels(m_grains[grain])) {
            m_map.VisitAround(pixel, [&](std::uint16_t other) {
                if (m_owner[other] != grain)
                    m_touches.AddPair(grain, m_owner[other]);
            });
        }
    }

    GrainMap& m_map;
    TouchCounts& m_touches;
    std::array<std::uint16_t, grainTableSize>& m_owner;
    std::span<const Candidate> m_candidates;
    std::array<Grain, grainTableSize>& m_grains;
    int m_grainCount = 0;
    bool m_repeats = false;
};

} // namespace

int MinimumReducedPixels(std::int32_t areaUm2) {
    return TruncateToInt(areaUm2 / reducedPixelUm2);
}

int MinimumFullPixels(std::int32_t areaUm2) {
    return TruncateToInt(static_cast<double>(areaUm2) * pixelsPerReducedPixel / reducedPixelUm2);
}

void GroupCandidates(FieldAnalysis& field, const Candidate* candidates, int candidateCount,
                     GrainTable& grains, std::int32_t& groupCount, int minSize, int maxSize) {
    assert(candidateCount >= 0);
    Grouping grouping(field.scratch.grouping, {candidates, static_cast<std::size_t>(candidateCount)}, grains);
    if (!grouping.Gather() && field.status != nullptr)
        field.status->ShowInformation(grainOverflowText);
    grouping.Merge(maxSize);
    grouping.DropBySize(minSize, maxSize);
    groupCount = grouping.GrainCount();
}

void GroupGrains(FieldAnalysis& field) {
    GroupCandidates(field, field.analyzer.candidates.data(), field.analyzer.candidateCount, field.grains,
                    field.findings.groupCount, MinimumReducedPixels(field.settings.minimumFlakeArea),
                    maximumGrainPixels);
    ComputeGrainEdges(field.grains, field.findings.groupCount, field.findings.edges);
}

void MergeIfTouching(Grain& a, Grain& b) {
    int touches = 0;
    for (const PixelPosition pixel : Pixels(a)) {
        for (const PixelPosition other : Pixels(b)) {
            if (Touch(pixel, other) && ++touches == touchesToMerge) {
                AppendGrain(a, b);
                return;
            }
        }
    }
}

int AppendGrain(Grain& a, Grain& b) {
    const int moved = std::min(b.count, grainCapacity - a.count);
    std::copy_n(b.pixels.begin(), moved, a.pixels.begin() + a.count);
    a.count += moved;
    b.count = 0;
    return moved;
}

int LargestGrain(const GrainTable& grains, int count) {
    int largest = 0;
    for (int grain = 1; grain < count; ++grain) {
        if (grains.grains[static_cast<std::size_t>(grain)].count > grains.grains[0].count)
            largest = grain;
    }
    return largest;
}

} // namespace tessaro
