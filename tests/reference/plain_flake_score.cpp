#include "reference/plain_analysis.h"

#include <cmath>
#include <cstddef>
#include <cstdlib>

namespace tessaro::reference {
namespace {

/// What the scans over a grain's rows and columns add up.
struct ScanSums {
    int edges = 0;
    int bgHits = 0; // pixels just outside an edge that look like background
    float sumA = 0.0F;
    float sumB = 0.0F;
    float sumC = 0.0F;
    int inside = 0;
    int match = 0;
};

Grain& GrainAt(PlainAnalysis& analysis, int g) {
    return analysis.grains.grains[static_cast<std::size_t>(g)];
}

bool InMask(const PlainAnalysis& analysis, int x, int y) {
    return analysis.analyzer.pixelMap.Get(x, y) == 1;
}

/// Marks the pixels of a grain, nothing else inside its box; returns their number.
int DrawMask(PixelMap& mask, const GrainBox& box, const Grain& grain) {
    for (int x = box.x0; x < box.x0 + box.width; ++x)
        for (int y = box.y0; y < box.y0 + box.height; ++y)
            mask.Set(x, y, 0);
    int size = 0;
    for (int i = 0; i < grain.count; ++i) {
        const PixelPosition pixel = grain.pixels[static_cast<std::size_t>(i)];
        mask.Set(pixel.x, pixel.y, 1);
        ++size;
    }
    return size;
}

/// One edge pixel; (outX, outY) is the step that leads away from the grain.
void AddEdge(const PlainAnalysis& analysis, int x, int y, int direction, int outX, int outY, ScanSums& sums) {
    const float t = analysis.settings.contrastTolerance / 100.0F;
    EdgeContrast(analysis, x, y, direction, sums.sumA, sums.sumB, sums.sumC);
    ++sums.edges;
    for (int k = 3; k >= 1; --k)
        if (t > BackgroundDeviation(analysis, x + k * outX, y + k * outY))
            ++sums.bgHits;
}

void ScanRow(const PlainAnalysis& analysis, const GrainBox& box, int r, ScanSums& sums) {
    int left = 0;
    for (int c = 0; c < box.width; ++c) {
        if (InMask(analysis, box.x0 + c, box.y0 + r)) {
            left = c;
            AddEdge(analysis, box.x0 + c, box.y0 + r, 0, -1, 0, sums);
            break;
        }
    }
    int right = 0;
    for (int c = box.width - 1; c >= 0; --c) {
        if (InMask(analysis, box.x0 + c, box.y0 + r)) {
            right = c;
            AddEdge(analysis, box.x0 + c, box.y0 + r, 1, 1, 0, sums);
            break;
        }
    }
    for (int c = 0; c < box.width; ++c) {
        if (left <= c && c < right) {
            ++sums.inside;
            // Box-relative coordinates, on purpose: the pixels tested lie at the frame's corner, not in the
            // grain.
            if (ClassifySelected(analysis, c, r) == 1)
                ++sums.match;
        }
    }
}

void ScanColumn(const PlainAnalysis& analysis, const GrainBox& box, int c, ScanSums& sums) {
    for (int r = 0; r < box.height; ++r) {
        if (InMask(analysis, box.x0 + c, box.y0 + r)) {
            AddEdge(analysis, box.x0 + c, box.y0 + r, 2, 0, -1, sums);
            break;
        }
    }
    for (int r = box.height - 1; r >= 0; --r) {
        if (InMask(analysis, box.x0 + c, box.y0 + r)) {
            AddEdge(analysis, box.x0 + c, box.y0 + r, 3, 0, 1, sums);
            break;
        }
    }
}

ScanSums ScanBox(const PlainAnalysis& analysis, const GrainBox& box) {
    ScanSums sums;
    for (int r = 0; r < box.height; ++r)
        ScanRow(analysis, box, r, sums);
    for (int c = 0; c < box.width; ++c)
        ScanColumn(analysis, box, c, sums);
    return sums;
}

SubScores RateGrain(PlainAnalysis& analysis, int g, const ScanSums& sums, int size) {
    SubScores scores;
    scores.BG = static_cast<float>(sums.bgHits) / static_cast<float>(3 * sums.edges) * 20.0F;
    if (sums.edges != 0)
        scores.EgSp = ((sums.sumA + sums.sumB) + sums.sumC) / static_cast<float>(sums.edges);
    scores.HST = 10.0F - ColourSpread(analysis, g);
    scores.Cont = 20.0F - 40.0F * InteriorTexture(analysis, g, scores.DfNx);
    scores.Size = size <= 1000 ? static_cast<float>(size) / 100.0F : 10.0F;
    scores.PR = static_cast<float>(sums.match) / static_cast<float>(sums.inside) * 40.0F - 20.0F;
    return scores;
}

void DrawLabels(PlainAnalysis& analysis, int g, const SubScores& scores) {
    if (analysis.surface == nullptr)
        return;
    const auto slot = static_cast<std::size_t>(g);
    const int x = analysis.findings.edges.EdgeLeft[slot].x;
    const int top = WindowRow(analysis.findings.edges.EdgeMaxRow[slot].y);
    const auto draw = [&](int offset, const std::string& text) {
        const int row = top + offset;
        analysis.surface->DrawText(text, SurfaceRectangle{x, row, x, row}, TextAlignment::Right, black);
    };
    draw(-1, "EgSp" + LabelNumber(scores.EgSp) + " DfNx" + LabelNumber(scores.DfNx));
    draw(11, "BG" + LabelNumber(scores.BG) + " Cont" + LabelNumber(scores.Cont));
    draw(22, "Size" + LabelNumber(scores.Size) + " HST" + LabelNumber(scores.HST));
    draw(34, "PR" + LabelNumber(scores.PR));
}

int StepBetween(const FrameRecord& frame, int channel, int x1, int y1, int x2, int y2) {
    return std::abs(GetChannel(frame, channel, x1, y1) - GetChannel(frame, channel, x2, y2));
}

} // namespace

float InteriorTexture(PlainAnalysis& analysis, int g, float& DfNx) {
    const PixelMap& mask = analysis.analyzer.pixelMap;
    const Grain& grain = GrainAt(analysis, g);
    std::uint32_t total = 0;
    int interiorCount = 0;
    int boundaryCount = 0;
    for (int i = 0; i < grain.count; ++i) {
        const int x = grain.pixels[static_cast<std::size_t>(i)].x;
        const int y = grain.pixels[static_cast<std::size_t>(i)].y;
        if (mask.Get(x - 1, y) + mask.Get(x + 1, y) + mask.Get(x, y - 1) + mask.Get(x, y + 1) >= 4) {
            for (int c = 0; c < 3; ++c) {
                const int steps = StepBetween(analysis.frame, c, x, y, x + 1, y) +
                                  StepBetween(analysis.frame, c, x, y, x, y + 1);
                total += static_cast<std::uint32_t>(steps);
            }
            ++interiorCount;
        } else {
            ++boundaryCount;
            if (analysis.surface != nullptr)
                analysis.surface->SetPixel(x, WindowRow(y), black);
        }
    }
    DfNx = 10.0F - static_cast<float>(total) / static_cast<float>(interiorCount);
    return static_cast<float>(boundaryCount) / static_cast<float>(grain.count);
}

// The mean of one channel is held against the next one, on purpose: green about the mean of red, blue about
// the mean of green, and blue about its own.
float ColourSpread(const PlainAnalysis& analysis, int g) {
    const Grain& grain = analysis.grains.grains[static_cast<std::size_t>(g)];
    float spread[4] = {};
    for (int i = 1; i <= 3; ++i) {
        int sum = 0;
        for (int p = 0; p < grain.count; ++p) {
            const PixelPosition pixel = grain.pixels[static_cast<std::size_t>(p)];
            sum += GetChannel(analysis.frame, i - 1, pixel.x, pixel.y);
        }
        const int mean = sum / grain.count;

        std::int64_t sumSquares = 0;
        for (int p = 0; p < grain.count; ++p) {
            const PixelPosition pixel = grain.pixels[static_cast<std::size_t>(p)];
            const std::int64_t deviation = GetChannel(analysis.frame, i, pixel.x, pixel.y) - mean;
            sumSquares += deviation * deviation;
        }
        const double variance = static_cast<double>(sumSquares) / static_cast<double>(grain.count);
        spread[i] = static_cast<float>(std::sqrt(variance));
    }
    return ((spread[1] + spread[2]) + spread[3]) / 3.0F;
}

float FlakeScore(PlainAnalysis& analysis, int g) {
    const GrainBox box = BoxOfGrain(analysis.findings.edges, g);
    const int size = DrawMask(analysis.analyzer.pixelMap, box, GrainAt(analysis, g));
    const ScanSums sums = ScanBox(analysis, box);
    const SubScores scores = RateGrain(analysis, g, sums, size);
    DrawLabels(analysis, g, scores);
    analysis.findings.subScores[static_cast<std::size_t>(g)] = scores;
    return scores.BG + scores.Cont + scores.Size + scores.EgSp + scores.PR + scores.HST;
}

} // namespace tessaro::reference
