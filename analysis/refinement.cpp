#include "analysis/refinement.h"

#include "analysis/candidates.h"
#include "analysis/contrast.h"
#include "analysis/grain_box.h"
#include "analysis/grouping.h"
#include "analysis/pixel_access.h"

#include <algorithm>

namespace tessaro {
namespace {

constexpr int fewestMarksAround = 5; // the candidate and four neighbours

/// The grain's candidates at full resolution: an empty list at first, filled until it is full.
class PixelCandidates {
public:
    PixelCandidates(FieldAnalysis& field)
        : m_field(field), m_list(field.scratch.pixelCandidates), m_map(field.analyzer.pixelMap) {
        field.scratch.contrastTable.Prepare(field.settings, field.measured.background);
    }

    /// Tests the 16 pixels of a reduced pixel. Returns false when the list is full.
    bool AddBlock(PixelPosition reducedPixel) {
        // A grain that was refined before holds pixels of the frame, not of the reduced image; taken four
        // times they may lie outside the frame, where there is nothing to test.
        if (!GrainMap::InFrame(reduction * reducedPixel.x, reduction * reducedPixel.y))
            return true;
        return m_field.analyzer.useInterpolatedBackground != 0 ? AddBlockInterpolated(reducedPixel)
                                                               : AddBlockByBlock(reducedPixel);
    }

    void RejectNoise() { RejectIsolated(m_list.data(), m_count, m_map, fewestMarksAround); }

    const Candidate* Data() const { return m_list.data(); }
    int Count() const { return m_count; }

private:
    template<typename Matches>
    bool AddMatching(PixelPosition reducedPixel, Matches matches) {
        for (int y = reduction * reducedPixel.y; y < reduction * (reducedPixel.y + 1); ++y) {
            for (int x = reduction * reducedPixel.x; x < reduction * (reducedPixel.x + 1); ++x) {
                if (matches(x, y) && !Add(x, y))
                    return false;
            }
        }
        return true;
    }

    bool AddBlockInterpolated(PixelPosition reducedPixel) {
        const ContrastTable::Matches& matches =
            m_field.scratch.contrastTable.MatchesAt(reducedPixel.x, reducedPixel.y);
        return AddMatching(reducedPixel, [&](int x, int y) {
            return ContrastTable::Match(matches, m_field.frame.pixels + PixelOffset(x, y));
        });
    }

    bool AddBlockByBlock(PixelPosition reducedPixel) {
        return AddMatching(reducedPixel, [&](int x, int y) {
            return ClassifyPixelByBlock(m_field, x, y) == ContrastClass::Match;
        });
    }

    /// Returns false when the list is full with this candidate, which then is not marked.
    bool Add(int x, int y) {
        m_list[static_cast<std::size_t>(m_count)] = {1, static_cast<std::int16_t>(x),
                                                     static_cast<std::int16_t>(y)};
        if (++m_count == candidateCapacity)
            return false;
        m_map.Set(x, y, 1);
        return true;
    }

    FieldAnalysis& m_field;
    std::array<Candidate, candidateCapacity>& m_list;
    PixelMap& m_map;
    int m_count = 0;
};

} // namespace

bool RefineGrain(FieldAnalysis& field, int g) {
    Grain& grain = field.grains.grains[static_cast<std::size_t>(g)];
    const GrainBox box = BoxOf(field.findings.edges, g);
    field.analyzer.pixelMap.ClearBox(box.left, box.low, box.width, box.height);

    PixelCandidates candidates(field);
    for (int i = 0; i < grain.count; ++i) {
        if (!candidates.AddBlock(grain.pixels[static_cast<std::size_t>(i)]))
            break;
    }
    candidates.RejectNoise();

    GrainTable& local = field.scratch.localGrains;
    std::int32_t nGroupLocal = 0;
    GroupCandidates(field, candidates.Data(), candidates.Count(), local, nGroupLocal,
                    MinimumFullPixels(field.settings.minimumFlakeArea), maximumGrainPixels);
    const Grain& chosen = local.grains[static_cast<std::size_t>(LargestGrain(local, nGroupLocal))];
    grain.count = chosen.count;
    std::copy_n(chosen.pixels.begin(), chosen.count, grain.pixels.begin());
    return grain.count != 0;
}

} // namespace tessaro
