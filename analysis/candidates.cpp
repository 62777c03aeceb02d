#include "analysis/candidates.h"

#include "analysis/contrast.h"
#include "analysis/contrast_table.h"
#include "analysis/pixel_access.h"

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>

namespace tessaro {
namespace {

constexpr int fewestMarksAround = 4; // the candidate and three neighbours

constexpr int firstColumn = candidateMarginColumns;
constexpr int lastColumn = reducedWidth - 1 - candidateMarginColumns;
constexpr int firstRow = candidateMarginRows;
constexpr int lastRow = reducedHeight - 1 - candidateMarginRows;

/// Matching pixels of one reduced row, bit x4 % 64 of word x4 / 64.
using RowMatches = std::array<std::uint64_t, (reducedWidth + 63) / 64>;
using FrameMatches = std::array<RowMatches, reducedHeight>;

void Mark(FrameMatches& matches, int x4, int y4) {
    matches[static_cast<std::size_t>(y4)][static_cast<std::size_t>(x4 / 64)] |= std::uint64_t{1} << (x4 % 64);
}

/// A strip is what one block row of the grid holds of a reduced column.
constexpr int stripRows = gridBlockHeight / reduction;
static_assert(gridBlockHeight % reduction == 0 && lastRow < gridSize * stripRows,
              "the strips cover every row that is searched");

struct Bounds {
    float low = 0.0F;
    float high = 0.0F;
};
using ChannelBounds = std::array<Bounds, channelCount>; // contrast in percent, both ends included

/// Tests one strip; returns whether any row of it matches. Written for the compiler to vectorise.
bool MatchStrip(const ReducedImage& reduced, int x4, int gy, float alongX, const float* alongY,
                const ChannelBounds& bounds, std::array<std::int32_t, stripRows>& matched) {
    std::array<float, stripRows> background{};
    for (std::size_t row = 0; row < stripRows; ++row)
        background[row] = std::trunc((alongX + alongY[row]) / 2);
    matched.fill(1);
    for (int channel = 0; channel < channelCount; ++channel) {
        const float* intensity = reduced.Column(channel, x4) + static_cast<std::ptrdiff_t>(gy) * stripRows;
        const Bounds within = bounds[static_cast<std::size_t>(channel)];
        for (std::size_t row = 0; row < stripRows; ++row) {
            const float contrast = Contrast(intensity[row], background[row]);
            matched[row] &= static_cast<std::int32_t>(within.low <= contrast) &
                            static_cast<std::int32_t>(contrast <= within.high);
        }
    }
    std::int32_t any = 0;
    for (const std::int32_t match : matched)
        any |= match;
    return any != 0;
}

/// The test against the interpolated background for the whole frame.
void MatchInterpolated(FieldAnalysis& field, FrameMatches& matches) {
    ContrastTable& table = field.scratch.contrastTable;
    table.Prepare(field.settings, field.measured.background);
    ChannelBounds bounds{};
    for (std::size_t channel = 0; channel < channelCount; ++channel) {
        const float target = field.settings.targetContrast[channel];
        bounds[channel] = {target - field.settings.contrastTolerance,
                           target + field.settings.contrastTolerance};
    }
    std::array<std::int32_t, stripRows> matched{};
    for (int x4 = firstColumn; x4 <= lastColumn; ++x4) {
        const float* alongY = table.AlongY(reduction * x4 / gridBlockWidth).data();
        for (int gy = 0; gy < gridSize; ++gy) {
            if (!MatchStrip(field.measured.reduced, x4, gy, table.AlongX(x4, gy), alongY + gy * stripRows,
                            bounds, matched))
                continue;
            for (int row = 0; row < stripRows; ++row) {
                if (matched[static_cast<std::size_t>(row)] != 0)
                    Mark(matches, x4, gy * stripRows + row);
            }
        }
    }
}

void MatchByBlock(const FieldAnalysis& field, FrameMatches& matches) {
    for (int x4 = firstColumn; x4 <= lastColumn; ++x4) {
        for (int y4 = firstRow; y4 <= lastRow; ++y4) {
            if (ClassifyReducedPixelByBlock(field, x4, y4) == ContrastClass::Match)
                Mark(matches, x4, y4);
        }
    }
}

/// Clears as many bytes of each column as it has cells. A cell has four bytes, so this is the first quarter
/// of the column; that is meant: the marks that stay take part in the noise rejection of later fields.
void ClearMapPartly(CandidateMap& map) {
    constexpr int clearedCells = (reducedHeight + 3) / 4; // the last by its lowest byte, where its mark lies
    for (int x4 = 0; x4 < reducedWidth; ++x4) {
        for (int y4 = 0; y4 < clearedCells; ++y4)
            map.Set(x4, y4, 0);
    }
}

/// Appends a candidate. Returns false when the list is full with it; this last one is neither marked nor
/// painted.
bool AddCandidate(FieldAnalysis& field, int x4, int y4, bool paint) {
    FlakeAnalyzer& analyzer = field.analyzer;
    analyzer.candidates[static_cast<std::size_t>(analyzer.candidateCount)] = {
        1, static_cast<std::int16_t>(x4), static_cast<std::int16_t>(y4)};
    if (++analyzer.candidateCount == candidateCapacity)
        return false;
    analyzer.candidateMap.Set(x4, y4, 1);
    if (paint && field.surface != nullptr)
        field.surface->SetPixel(reduction * x4 + 2, WindowRow(reduction * y4 + 2), pureRed);
    return true;
}

void AddInRowOrder(FieldAnalysis& field, const FrameMatches& matches, bool paint) {
    for (int y4 = firstRow; y4 <= lastRow; ++y4) {
        int x4 = 0;
        for (std::uint64_t word : matches[static_cast<std::size_t>(y4)]) {
            for (; word != 0; word &= word - 1) {
                if (!AddCandidate(field, x4 + std::countr_zero(word), y4, paint))
                    return;
            }
            x4 += 64;
        }
    }
}

} // namespace

void FindCandidates(FieldAnalysis& field, bool paint) {
    field.analyzer.candidateCount = 0;
    field.analyzer.secondCounter = 0;
    field.analyzer.candidates[0] = {};
    ClearMapPartly(field.analyzer.candidateMap);

    FrameMatches matches{};
    if (field.analyzer.useInterpolatedBackground != 0)
        MatchInterpolated(field, matches);
    else
        MatchByBlock(field, matches);
    AddInRowOrder(field, matches, paint);
}

void RejectNoise(FlakeAnalyzer& analyzer) {
    RejectIsolated(analyzer.candidates.data(), analyzer.candidateCount, analyzer.candidateMap,
                   fewestMarksAround);
}

int LiveCandidates(const FlakeAnalyzer& analyzer) {
    int live = 0;
    for (int i = 0; i < analyzer.candidateCount; ++i)
        live += analyzer.candidates[static_cast<std::size_t>(i)].live != 0 ? 1 : 0;
    return live;
}

} // namespace tessaro
