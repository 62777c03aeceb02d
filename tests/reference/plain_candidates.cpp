#include "reference/plain_analysis.h"

#include <cstddef>

namespace tessaro::reference {
namespace {

constexpr int sideMargin = 25; // reduced columns left and right that are not searched
constexpr int rowMargin = 1;   // reduced rows at top and bottom
constexpr int fewestMarks = 4; // a candidate with fewer marks in its 3 x 3 surroundings is noise

/// Clears as many bytes of each column as the column has cells, on purpose: of a cell's four bytes the lowest
/// comes first, so the upper three quarters of the map keep the marks of earlier fields and later noise
/// rejections count them.
void ClearStartOfColumns(CandidateMap& map) {
    for (int x4 = 0; x4 < frameWidth / reduction; ++x4) {
        for (int byte = 0; byte < frameHeight / reduction; ++byte) {
            const int y4 = byte / 4;
            const std::uint32_t mask = std::uint32_t{0xFF} << (8 * (byte % 4));
            const auto cell = static_cast<std::uint32_t>(map.Get(x4, y4));
            map.Set(x4, y4, static_cast<std::int32_t>(cell & ~mask));
        }
    }
}

int ClassifyReducedSelected(const PlainAnalysis& analysis, int x4, int y4) {
    if (analysis.analyzer.useInterpolatedBackground != 0)
        return ClassifyReducedPixel(analysis, x4, y4);
    return ClassifyReducedPixelByBlock(analysis, x4, y4);
}

int MarksAround(const CandidateMap& map, int x4, int y4) {
    int sum = 0;
    for (int x = x4 - 1; x <= x4 + 1; ++x)
        for (int y = y4 - 1; y <= y4 + 1; ++y)
            sum += map.Get(x, y);
    return sum;
}

} // namespace

void FindCandidates(PlainAnalysis& analysis, bool paint) {
    FlakeAnalyzer& analyzer = analysis.analyzer;
    analyzer.candidateCount = 0;
    analyzer.secondCounter = 0;
    analyzer.candidates[0] = Candidate{};
    ClearStartOfColumns(analyzer.candidateMap);

    for (int y4 = rowMargin; y4 <= frameHeight / reduction - 1 - rowMargin; ++y4) {
        for (int x4 = sideMargin; x4 <= frameWidth / reduction - 1 - sideMargin; ++x4) {
            if (ClassifyReducedSelected(analysis, x4, y4) != 1)
                continue;
            analyzer.candidates[static_cast<std::size_t>(analyzer.candidateCount)] =
                Candidate{1, static_cast<std::int16_t>(x4), static_cast<std::int16_t>(y4)};
            ++analyzer.candidateCount;
            // The candidate that fills the list is neither marked in the map nor painted; this is meant.
            if (analyzer.candidateCount == candidateCapacity)
                return;
            analyzer.candidateMap.Set(x4, y4, 1);
            if (paint && analysis.surface != nullptr)
                analysis.surface->SetPixel(4 * x4 + 2, WindowRow(4 * y4 + 2), pureRed);
        }
    }
}

void RejectNoise(PlainAnalysis& analysis) {
    FlakeAnalyzer& analyzer = analysis.analyzer;
    for (int i = 0; i < analyzer.candidateCount; ++i) {
        Candidate& candidate = analyzer.candidates[static_cast<std::size_t>(i)];
        if (candidate.live == 0)
            continue;
        const int x4 = candidate.x;
        const int y4 = candidate.y;
        if (MarksAround(analyzer.candidateMap, x4, y4) < fewestMarks) {
            candidate = Candidate{};
            analyzer.candidateMap.Set(x4, y4, 0);
        }
    }
}

} // namespace tessaro::reference
