#include "analysis/flake_score.h"

#include "analysis/contrast.h"
#include "analysis/grain_box.h"
#include "analysis/labels.h"
#include "analysis/pixel_access.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>

namespace tessaro {
namespace {

constexpr int edgeRun = 3; // pixels on either side of an edge
constexpr float fullEdge = 10.0F;
constexpr float weakTarget = 1.0F; // percent; a weaker target is not scaled up

constexpr float scoreBG = 20.0F;
constexpr float spanCont = 40.0F;
constexpr float bestCont = 20.0F;
constexpr float spanPR = 40.0F;
constexpr float worstPR = 20.0F;
constexpr float bestHST = 10.0F;
constexpr float bestDfNx = 10.0F;
constexpr float bestSize = 10.0F;
constexpr int fullSize = 1000; // pixels
constexpr float pixelsPerSizePoint = 100.0F;

float Measured(const FieldAnalysis& field, int channel, int x, int y) {
    return field.measured.background.Measured(channel, gridSize * x / frameWidth, gridSize * y / frameHeight);
}

/// Inside minus outside of one channel at an edge pixel.
int EdgeStep(const FrameRecord& frame, int channel, int x, int y, EdgeDirection direction) {
    const bool alongX = direction == EdgeDirection::Left || direction == EdgeDirection::Right;
    const bool insideAbove = direction == EdgeDirection::Left || direction == EdgeDirection::LowRow;
    const int above = alongX ? AverageAlongX(frame, channel, x + 1, y, edgeRun)
                             : AverageAlongY(frame, channel, x, y + 1, edgeRun);
    const int below = alongX ? AverageAlongX(frame, channel, x - edgeRun, y, edgeRun)
                             : AverageAlongY(frame, channel, x, y - edgeRun, edgeRun);
    return insideAbove ? above - below : below - above;
}

/// What the walk around a grain counts.
struct EdgeTally {
    int edges = 0;
    int bgHits = 0; // pixels just outside an edge that look like background
    int inside = 0; // pixels between the edges of a row
    int match = 0;  // those among them that match the target
    EdgeSums sums;
};

/// Walks the rows, then the columns, of a grain's box and tallies what it finds at both ends of each.
class EdgeWalk {
public:
    explicit EdgeWalk(FieldAnalysis& field)
        : m_field(field), m_tolerance(field.settings.contrastTolerance / 100.0F) {}

    EdgeTally Walk(const GrainOutline& outline, const GrainBox& box) {
        for (int y = outline.Rows().first; y <= outline.Rows().last; ++y) {
            const PixelSpan span = outline.AlongRow(y);
            if (span.Empty())
                continue;
            VisitEdge(span.first, y, EdgeDirection::Left, -1, 0);
            VisitEdge(span.last, y, EdgeDirection::Right, 1, 0);
            CountInside(y - box.low, span.first - box.left, span.last - box.left);
        }
        for (int x = outline.Columns().first; x <= outline.Columns().last; ++x) {
            const PixelSpan span = outline.AlongColumn(x);
            if (span.Empty())
                continue;
            VisitEdge(x, span.first, EdgeDirection::LowRow, 0, -1);
            VisitEdge(x, span.last, EdgeDirection::HighRow, 0, 1);
        }
        return m_tally;
    }

private:
    /// (outX, outY) is the step that leads out of the grain.
    void VisitEdge(int x, int y, EdgeDirection direction, int outX, int outY) {
        EdgeContrast(m_field, x, y, direction, m_tally.sums);
        ++m_tally.edges;
        for (int k = edgeRun; k >= 1; --k) {
            if (m_tolerance > BackgroundDeviation(m_field, x + k * outX, y + k * outY))
                ++m_tally.bgHits;
        }
    }

    /// Pixels left <= c < right of a row are inside. They are tested where the box's own coordinates point in
    /// the frame, not where the grain lies. That is meant: PR compares with the frame's corner, and the score
    /// threshold is chosen with it.
    void CountInside(int row, int left, int right) {
        m_tally.inside += right - left;
        if (row >= 0 && row < frameHeight && left >= 0 && right <= frameWidth) {
            m_tally.match += m_field.scratch.matchCounts.Between(m_field, row, left, right);
            return;
        }
        for (int column = left; column < right; ++column) {
            const ContrastClass found = m_field.analyzer.useInterpolatedBackground != 0
                                            ? ClassifyPixel(m_field, column, row)
                                            : ClassifyPixelByBlock(m_field, column, row);
            m_tally.match += found == ContrastClass::Match ? 1 : 0;
        }
    }

    FieldAnalysis& m_field;
    float m_tolerance; // fraction
    EdgeTally m_tally;
};

int MarkGrain(PixelMap& map, const Grain& grain, const GrainBox& box) {
    map.ClearBox(box.left, box.low, box.width, box.height);
    for (int i = 0; i < grain.count; ++i) {
        const PixelPosition pixel = grain.pixels[static_cast<std::size_t>(i)];
        map.Set(pixel.x, pixel.y, 1);
    }
    return grain.count;
}

float SizeScore(int size) {
    return size <= fullSize ? static_cast<float>(size) / pixelsPerSizePoint : bestSize;
}

float Total(const SubScores& scores) {
    return scores.BG + scores.Cont + scores.Size + scores.EgSp + scores.PR + scores.HST;
}

} // namespace

float BackgroundDeviation(const FieldAnalysis& field, int x, int y) {
    float sum = 0.0F;
    for (int channel = 0; channel < channelCount; ++channel) {
        const float background = Measured(field, channel, x, y);
        sum +=
            std::fabs(static_cast<float>(GetChannel(field.frame, channel, x, y)) - background) / background;
    }
    return sum / channelCount;
}

void ClampEdgeContrast(float& value, float target) {
    const float strongest = std::fabs(target);
    if (value > strongest)
        value = strongest;
    else if (value < -strongest)
        value = -strongest;
    if (strongest > weakTarget)
        value = value * fullEdge / strongest;
}

void EdgeContrast(const FieldAnalysis& field, int x, int y, EdgeDirection direction, EdgeSums& sums) {
    std::array<float, channelCount> RGB_Diff{};
    for (int channel = 0; channel < channelCount; ++channel) {
        const auto c = static_cast<std::size_t>(channel);
        const float target = field.settings.targetContrast[c];
        const int step = EdgeStep(field.frame, channel, x, y, direction) * (target >= 0 ? 1 : -1);
        RGB_Diff[c] = static_cast<float>(step) / Measured(field, channel, x, y) * 100;
        ClampEdgeContrast(RGB_Diff[c], target);
    }
    sums.sumA += RGB_Diff[red];
    sums.sumB += RGB_Diff[green];
    sums.sumC += RGB_Diff[blue];
}

float InteriorTexture(FieldAnalysis& field, int g, float& dfNx) {
    const Grain& grain = field.grains.grains[static_cast<std::size_t>(g)];
    const PixelMap& map = field.analyzer.pixelMap;
    std::uint32_t total = 0;
    int interiorCount = 0;
    int boundaryCount = 0;
    for (int i = 0; i < grain.count; ++i) {
        const auto [x, y] = grain.pixels[static_cast<std::size_t>(i)];
        if (map.Get(x - 1, y) + map.Get(x + 1, y) + map.Get(x, y - 1) + map.Get(x, y + 1) >= 4) {
            ++interiorCount;
            for (int channel = 0; channel < channelCount; ++channel) {
                const int here = GetChannel(field.frame, channel, x, y);
                total +=
                    static_cast<std::uint32_t>(std::abs(here - GetChannel(field.frame, channel, x + 1, y)) +
                                               std::abs(here - GetChannel(field.frame, channel, x, y + 1)));
            }
        } else {
            ++boundaryCount;
            if (field.surface != nullptr)
                field.surface->SetPixel(x, WindowRow(y), black);
        }
    }
    dfNx = bestDfNx - static_cast<float>(total) / static_cast<float>(interiorCount);
    return static_cast<float>(boundaryCount) / static_cast<float>(grain.count);
}

float ColourSpread(const FieldAnalysis& field, int g) {
    const Grain& grain = field.grains.grains[static_cast<std::size_t>(g)];
    if (grain.count == 0)
        return std::numeric_limits<float>::quiet_NaN(); // the mean of no pixels
    std::array<std::int64_t, channelCount> sums{};
    std::array<std::int64_t, channelCount> squares{};
    for (int i = 0; i < grain.count; ++i) {
        const auto [x, y] = grain.pixels[static_cast<std::size_t>(i)];
        for (int channel = 0; channel < channelCount; ++channel) {
            const std::int64_t intensity = GetChannel(field.frame, channel, x, y);
            sums[static_cast<std::size_t>(channel)] += intensity;
            squares[static_cast<std::size_t>(channel)] += intensity * intensity;
        }
    }
    float spread = 0.0F;
    for (std::size_t pass = 0; pass < channelCount; ++pass) {
        const std::size_t deviating = pass == red ? green : blue;
        const std::int64_t mean = sums[pass] / grain.count;
        const std::int64_t squared =
            squares[deviating] - 2 * mean * sums[deviating] + grain.count * mean * mean;
        spread += static_cast<float>(std::sqrt(static_cast<double>(squared) / grain.count));
    }
    return spread / channelCount;
}

FlakeScorer::FlakeScorer(FieldAnalysis& field) : m_field(field) {
    field.scratch.matchCounts.Forget(); // they are those of the field that was scored before
}

float FlakeScorer::Score(int g) {
    const Grain& grain = m_field.grains.grains[static_cast<std::size_t>(g)];
    const GrainBox box = BoxOf(m_field.findings.edges, g);
    const int size = MarkGrain(m_field.analyzer.pixelMap, grain, box);
    GrainOutline& outline = m_field.scratch.outline;
    outline.Trace(grain, box);
    const EdgeTally tally = EdgeWalk(m_field).Walk(outline, box);

    // Without edges BG, and without an inside PR, is 0 / 0: such a score compares false with every threshold.
    SubScores& scores = m_field.findings.subScores[static_cast<std::size_t>(g)];
    const EdgeSums& sums = tally.sums;
    scores.BG = static_cast<float>(tally.bgHits) / static_cast<float>(edgeRun * tally.edges) * scoreBG;
    scores.EgSp =
        tally.edges == 0 ? 0.0F : (sums.sumA + sums.sumB + sums.sumC) / static_cast<float>(tally.edges);
    scores.HST = bestHST - ColourSpread(m_field, g);
    scores.Cont = bestCont - spanCont * InteriorTexture(m_field, g, scores.DfNx);
    scores.Size = SizeScore(size);
    scores.PR = static_cast<float>(tally.match) / static_cast<float>(tally.inside) * spanPR - worstPR;
    if (m_field.surface != nullptr)
        DrawScoreLabels(*m_field.surface, m_field.findings.edges, g, scores);
    return Total(scores);
}

} // namespace tessaro
