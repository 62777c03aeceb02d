#pragma once

#include "simulated_field/planar_geometry.h"
#include "twin/wafer.h"

#include <cstddef>
#include <vector>

namespace tessaro {

/// How samples of light lie on the wafer: sample (column, row) is the mean over a square, rows from the top
/// down, against the stage's Y.
struct SampleGrid {
    Vertex topLeft; // um of the stage: the outer corner of the first sample's square
    double samplesPerUm = 1.0;
    int width = 0;
    int height = 0;

    /// A place on the wafer in samples from the top left corner.
    Vertex Place(Vertex um) const {
        return {(um.x - topLeft.x) * samplesPerUm, (topLeft.y - um.y) * samplesPerUm};
    }

    std::size_t SampleCount() const {
        return static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    }
};

/// Light of one channel on a grid, row after row; bare substrate under even light is 1.
struct LightPlane {
    SampleGrid grid;
    std::vector<float> samples;
};

/// The share of each sample that marks cover, to fractions of a sample, and what that does to its light.
class MarkPainter {
public:
    /// Dims or brightens what the mark covers to `transmission` of its light.
    void Paint(const WaferMark& mark, double transmission, LightPlane& plane);

    /// Fills the plane with what shows a square from (0, 0) to (side, side) on bare ground of this light.
    static void PaintWafer(double sideUm, double groundLight, LightPlane& plane);

private:
    void PaintOutline(const Outline& outline, double transmission, LightPlane& plane);
    void MeasureChanges(const Outline& placed, const SampleGrid& grid);
    void AddEdge(Vertex from, Vertex to);
    void AddRowPiece(double* row, double x, double nextX, double height) const;

    PixelBox m_box;               // samples that the outline touches
    std::size_t m_stride = 0;     // of the buffer, with room beyond the box
    std::vector<double> m_change; // by how much the coverage changes from one sample of the box to the next
};

} // namespace tessaro
