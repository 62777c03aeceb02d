#include "twin/coverage.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace tessaro {
namespace {

/// What is left of a polygon where inside(corner) is true; where edges cross the line, crossing(a, b) gives
/// the point.
template<typename Inside, typename Crossing>
Outline Clipped(const Outline& outline, Inside inside, Crossing crossing) {
    Outline clipped;
    for (std::size_t corner = 0; corner < outline.size(); ++corner) {
        const Vertex& from = outline[corner];
        const Vertex& to = outline[corner + 1 == outline.size() ? 0 : corner + 1];
        if (inside(from))
            clipped.push_back(from);
        if (inside(from) != inside(to))
            clipped.push_back(crossing(from, to));
    }
    return clipped;
}

Vertex CrossingAtX(Vertex a, Vertex b, double x) {
    return {x, a.y + (b.y - a.y) * (x - a.x) / (b.x - a.x)};
}

Vertex CrossingAtY(Vertex a, Vertex b, double y) {
    return {a.x + (b.x - a.x) * (y - a.y) / (b.y - a.y), y};
}

Outline ClippedTo(Outline outline, double width, double height) {
    outline = Clipped(
        outline, [](Vertex v) { return v.x >= 0.0; },
        [](Vertex a, Vertex b) { return CrossingAtX(a, b, 0.0); });
    outline = Clipped(
        outline, [=](Vertex v) { return v.x <= width; },
        [=](Vertex a, Vertex b) { return CrossingAtX(a, b, width); });
    outline = Clipped(
        outline, [](Vertex v) { return v.y >= 0.0; },
        [](Vertex a, Vertex b) { return CrossingAtY(a, b, 0.0); });
    return Clipped(
        outline, [=](Vertex v) { return v.y <= height; },
        [=](Vertex a, Vertex b) { return CrossingAtY(a, b, height); });
}

/// First and last sample that the extent touches, within the grid.
PixelBox SamplesIn(const Extent& extent, const SampleGrid& grid) {
    const auto first = [](double value, int count) {
        return static_cast<int>(std::clamp(std::floor(value), 0.0, static_cast<double>(count)));
    };
    const auto last = [](double value, int count) {
        return static_cast<int>(std::clamp(std::ceil(value), 0.0, static_cast<double>(count))) - 1;
    };
    return {.left = first(extent.low.x, grid.width),
            .right = last(extent.high.x, grid.width),
            .minRow = first(extent.low.y, grid.height),
            .maxRow = last(extent.high.y, grid.height)};
}

float* RowOf(LightPlane& plane, int row) {
    return plane.samples.data() + static_cast<std::size_t>(row) * static_cast<std::size_t>(plane.grid.width);
}

void Tint(float& light, double coverage, double transmission) {
    light *= static_cast<float>(1.0 + coverage * (transmission - 1.0));
}

/// Mean of the discs' soft coverage over points within one sample.
class DiscSampler {
public:
    DiscSampler(const WaferMark& mark, const SampleGrid& grid)
        : m_mark(mark), m_grid(grid),
          m_pointsPerSide(
              static_cast<int>(std::clamp(framePixelsPerUm / grid.samplesPerUm, 1.0, maximumPoints))),
          m_edgeWidthUm(std::max(mark.edgeWidthUm, 1.0 / (grid.samplesPerUm * m_pointsPerSide))) {}

    double At(int column, int row) const {
        double sum = 0.0;
        for (int i = 0; i < m_pointsPerSide; ++i)
            for (int j = 0; j < m_pointsPerSide; ++j)
                sum += AtPoint(column + (i + 0.5) / m_pointsPerSide, row + (j + 0.5) / m_pointsPerSide);
        return sum / (m_pointsPerSide * m_pointsPerSide);
    }

private:
    static constexpr double maximumPoints = 8.0; // a side

    double AtPoint(double column, double row) const {
        const Vertex um = {m_grid.topLeft.x + column / m_grid.samplesPerUm,
                           m_grid.topLeft.y - row / m_grid.samplesPerUm};
        return Coverage(SignedDistance(um, m_mark.discs), m_edgeWidthUm);
    }

    const WaferMark& m_mark;
    const SampleGrid& m_grid;
    int m_pointsPerSide;
    double m_edgeWidthUm;
};

void PaintDiscs(const WaferMark& mark, double transmission, LightPlane& plane) {
    Extent extent;
    extent.Add(plane.grid.Place(mark.extent.low));
    extent.Add(plane.grid.Place(mark.extent.high));
    const PixelBox box = SamplesIn(extent, plane.grid);
    const DiscSampler sampler(mark, plane.grid);
    for (int row = box.minRow; row <= box.maxRow; ++row)
        for (int column = box.left; column <= box.right; ++column)
            Tint(RowOf(plane, row)[column], sampler.At(column, row), transmission);
}

/// The share of a sample that lies between two places along one axis.
double Overlap(int sample, double low, double high) {
    return std::max(0.0, std::min(high, sample + 1.0) - std::max(low, static_cast<double>(sample)));
}

} // namespace

void MarkPainter::PaintWafer(double sideUm, double groundLight, LightPlane& plane) {
    const Vertex low = plane.grid.Place({0.0, sideUm}); // top left on the sensor
    const Vertex high = plane.grid.Place({sideUm, 0.0});
    plane.samples.resize(plane.grid.SampleCount());
    std::vector<float> across;
    for (int column = 0; column < plane.grid.width; ++column)
        across.push_back(static_cast<float>((1.0 - groundLight) * Overlap(column, low.x, high.x)));
    for (int row = 0; row < plane.grid.height; ++row) {
        const auto down = static_cast<float>(Overlap(row, low.y, high.y));
        float* const samples = RowOf(plane, row);
        for (std::size_t column = 0; column < across.size(); ++column)
            samples[column] = static_cast<float>(groundLight) + across[column] * down;
    }
}

void MarkPainter::Paint(const WaferMark& mark, double transmission, LightPlane& plane) {
    if (mark.outline.empty())
        PaintDiscs(mark, transmission, plane);
    else
        PaintOutline(mark.outline, transmission, plane);
}

void MarkPainter::PaintOutline(const Outline& outline, double transmission, LightPlane& plane) {
    Outline placed;
    for (const Vertex& corner : outline)
        placed.push_back(plane.grid.Place(corner));
    placed = ClippedTo(std::move(placed), plane.grid.width, plane.grid.height);
    if (placed.size() < 3)
        return;
    MeasureChanges(placed, plane.grid);
    for (int row = m_box.minRow; row <= m_box.maxRow; ++row) {
        const double* change = m_change.data() + m_stride * static_cast<std::size_t>(row - m_box.minRow);
        double covered = 0.0;
        for (int column = m_box.left; column <= m_box.right; ++column) {
            covered += *change++;
            Tint(RowOf(plane, row)[column], std::min(1.0, std::abs(covered)), transmission);
        }
    }
}

void MarkPainter::MeasureChanges(const Outline& placed, const SampleGrid& grid) {
    Extent extent;
    for (const Vertex& corner : placed)
        extent.Add(corner);
    m_box = SamplesIn(extent, grid);
    m_stride = static_cast<std::size_t>(std::max(0, m_box.right - m_box.left + 1)) + 2;
    m_change.assign(m_stride * static_cast<std::size_t>(std::max(0, m_box.maxRow - m_box.minRow + 1)), 0.0);
    for (std::size_t corner = 0; corner < placed.size(); ++corner)
        AddEdge(placed[corner], placed[corner + 1 == placed.size() ? 0 : corner + 1]);
}

/// What lies to the right of the edge is covered once more, or once less when the edge runs upward; over all
/// edges of an outline that leaves what is inside.
void MarkPainter::AddEdge(Vertex from, Vertex to) {
    const double sign = from.y < to.y ? 1.0 : -1.0;
    const Vertex& top = from.y < to.y ? from : to;
    const Vertex& bottom = from.y < to.y ? to : from;
    if (top.y == bottom.y)
        return;
    const double slope = (bottom.x - top.x) / (bottom.y - top.y);
    const double width = m_box.right + 1 - m_box.left;
    const auto xAt = [&](double y) {
        return std::clamp(top.x + (y - top.y) * slope - m_box.left, 0.0, width);
    };
    const int lastRow = std::min(m_box.maxRow, static_cast<int>(std::ceil(bottom.y)) - 1);
    for (int row = std::max(m_box.minRow, static_cast<int>(std::floor(top.y))); row <= lastRow; ++row) {
        const double high = std::max(top.y, static_cast<double>(row));
        const double low = std::min(bottom.y, row + 1.0);
        AddRowPiece(m_change.data() + m_stride * static_cast<std::size_t>(row - m_box.minRow), xAt(high),
                    xAt(low), sign * (low - high));
    }
}

/// A piece of an edge within one row: each column to its right is covered by `height`, each that it crosses
/// by what lies to the right of it there.
void MarkPainter::AddRowPiece(double* row, double x, double nextX, double height) const {
    const double left = std::min(x, nextX);
    const double right = std::max(x, nextX);
    const auto first = static_cast<std::size_t>(left);
    const auto last = static_cast<std::size_t>(right);
    if (first == last) {
        const double share = 0.5 * (left + right) - static_cast<double>(first);
        row[first] += height * (1.0 - share);
        row[first + 1] += height * share;
        return;
    }
    const double perColumn = height / (right - left);
    double before = 0.0; // coverage of the column before this one
    for (std::size_t column = first; column <= last; ++column) {
        const double columnLeft = static_cast<double>(column);
        const double from = std::max(left, columnLeft);
        const double to = std::min(right, columnLeft + 1.0);
        // The piece in this column covers its own triangle or strip; what passed in columns before covers it
        // all.
        const double covered =
            perColumn * ((to - from) * (columnLeft + 1.0 - 0.5 * (from + to)) + (from - left));
        row[column] += covered - before;
        before = covered;
    }
    row[last + 1] += height - before;
}

} // namespace tessaro
