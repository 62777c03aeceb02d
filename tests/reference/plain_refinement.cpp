#include "reference/plain_analysis.h"

#include <cstddef>
#include <memory>
#include <vector>

namespace tessaro::reference {
namespace {

constexpr int fewestFullMarks =
    5; // a full-resolution candidate with fewer marks in its 3 x 3 surroundings is noise

void ClearMap(PixelMap& map, const GrainBox& box) {
    for (int x = box.x0; x < box.x0 + box.width; ++x)
        for (int y = box.y0; y < box.y0 + box.height; ++y)
            map.Set(x, y, 0);
}

/// Appends the matching pixels of one reduced pixel; false when the list is full.
bool CollectBlock(PlainAnalysis& analysis, PixelPosition reduced, std::vector<Candidate>& list) {
    for (int y = reduction * reduced.y; y <= reduction * reduced.y + 3; ++y) {
        for (int x = reduction * reduced.x; x <= reduction * reduced.x + 3; ++x) {
            // A grain that is refined a second time points outside the frame; there is no pixel to test.
            if (x < 0 || x >= frameWidth || y < 0 || y >= frameHeight)
                continue;
            if (ClassifySelected(analysis, x, y) != 1)
                continue;
            list.push_back(Candidate{1, static_cast<std::int16_t>(x), static_cast<std::int16_t>(y)});
            // The candidate that fills the list is not marked; this is meant.
            if (list.size() == static_cast<std::size_t>(candidateCapacity))
                return false;
            analysis.analyzer.pixelMap.Set(x, y, 1);
        }
    }
    return true;
}

std::vector<Candidate> CollectFullCandidates(PlainAnalysis& analysis, const Grain& grain) {
    std::vector<Candidate> list;
    for (int i = 0; i < grain.count; ++i)
        if (!CollectBlock(analysis, grain.pixels[static_cast<std::size_t>(i)], list))
            break;
    return list;
}

int MarksAround(const PixelMap& map, int centreX, int centreY) {
    int sum = 0;
    for (int x = centreX - 1; x <= centreX + 1; ++x)
        for (int y = centreY - 1; y <= centreY + 1; ++y)
            sum += map.Get(x, y);
    return sum;
}

void RejectFullNoise(PixelMap& map, std::vector<Candidate>& list) {
    for (Candidate& candidate : list) {
        if (candidate.live == 0)
            continue;
        const int x = candidate.x;
        const int y = candidate.y;
        if (MarksAround(map, x, y) < fewestFullMarks) {
            candidate = Candidate{};
            map.Set(x, y, 0);
        }
    }
}

void ReplacePixels(Grain& grain, const Grain& source) {
    grain.count = source.count;
    for (int i = 0; i < source.count; ++i)
        grain.pixels[static_cast<std::size_t>(i)] = source.pixels[static_cast<std::size_t>(i)];
}

} // namespace

bool RefineGrain(PlainAnalysis& analysis, int g) {
    Grain& grain = analysis.grains.grains[static_cast<std::size_t>(g)];
    PixelMap& map = analysis.analyzer.pixelMap;

    ClearMap(map, BoxOfGrain(analysis.findings.edges, g));
    std::vector<Candidate> list = CollectFullCandidates(analysis, grain);
    RejectFullNoise(map, list);

    const auto localGrains = std::make_unique<GrainTable>();
    std::int32_t localGroupCount = 0;
    GroupCandidates(analysis, list.data(), static_cast<int>(list.size()), *localGrains, localGroupCount,
                    MinimumFullPixels(analysis.settings.minimumFlakeArea), grainCapacity);

    const int k = LargestGrain(*localGrains, localGroupCount);
    ReplacePixels(grain, localGrains->grains[static_cast<std::size_t>(k)]);
    return grain.count != 0;
}

} // namespace tessaro::reference
