#include "analysis/labels.h"

#include "imaging/frame_buffer.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <string_view>

namespace tessaro {
namespace {

constexpr int scoreAboveGrain = 14; // window rows
constexpr int scoreHalfWidth = 10;
constexpr int framePen = 2;

/// A line of labelled numbers without decimals; a score that is no number reads "nan" on every platform.
class LabelLine {
public:
    LabelLine& Add(const char* label, float value) {
        if (std::isfinite(value))
            Append("%s%.0f", label, static_cast<double>(value));
        else
            Append("%s%s", label, std::isnan(value) ? "nan" : value > 0 ? "inf" : "-inf");
        return *this;
    }

    std::string_view Text() const { return {m_text.data(), m_length}; }

private:
    template<typename... Values>
    void Append(const char* format, Values... values) {
        const int written =
            std::snprintf(m_text.data() + m_length, m_text.size() - m_length, format, values...);
        m_length = std::min(m_text.size() - 1, m_length + static_cast<std::size_t>(std::max(0, written)));
    }

    std::array<char, 160> m_text{};
    std::size_t m_length = 0;
};

} // namespace

void DrawScoreLabels(DrawingSurface& surface, const GrainEdges& edges, int grain, const SubScores& scores) {
    const auto g = static_cast<std::size_t>(grain);
    const int x = edges.EdgeLeft[g].x;
    const int top = WindowRow(edges.EdgeMaxRow[g].y);
    const auto draw = [&](int offset, const LabelLine& line) {
        surface.DrawText(line.Text(), {x, top + offset, x, top + offset}, TextAlignment::Right, black);
    };
    draw(-1, LabelLine().Add("EgSp", scores.EgSp).Add(" DfNx", scores.DfNx));
    draw(11, LabelLine().Add("BG", scores.BG).Add(" Cont", scores.Cont));
    draw(22, LabelLine().Add("Size", scores.Size).Add(" HST", scores.HST));
    draw(34, LabelLine().Add("PR", scores.PR));
}

void DrawScore(DrawingSurface& surface, const GrainEdges& edges, int grain, float score) {
    const auto g = static_cast<std::size_t>(grain);
    const int centre = (edges.EdgeRight[g].x + edges.EdgeLeft[g].x) / 2;
    const int row = WindowRow(edges.EdgeMaxRow[g].y) - scoreAboveGrain;
    surface.DrawText(LabelLine().Add("Score:", score).Text(),
                     {centre - scoreHalfWidth, row, centre + scoreHalfWidth, row}, TextAlignment::Centre,
                     black);
}

void DrawSingleLayerFrame(DrawingSurface& surface, const GrainEdges& edges, int grain) {
    const auto g = static_cast<std::size_t>(grain);
    surface.DrawFrame({edges.EdgeLeft[g].x, WindowRow(edges.EdgeMinRow[g].y), edges.EdgeRight[g].x,
                       WindowRow(edges.EdgeMaxRow[g].y)},
                      framePen, pureRed);
}

} // namespace tessaro
