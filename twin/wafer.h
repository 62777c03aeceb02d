#pragma once

#include "twin/wafer_contents.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tessaro {

/// Anything on the wafer that takes or gives light: an outline with hard edges, or, if that is empty, discs.
struct WaferMark {
    Outline outline = {};
    std::vector<Disc> discs = {};
    double edgeWidthUm = 0.0;        // of the discs
    ChannelValues transmission = {}; // share of the substrate's light
    Extent extent = {};              // with the soft edges
};

/// The simulated sample, which does not change once it is made. Positions are micrometres of the stage.
class Wafer {
public:
    explicit Wafer(const WaferOptions& options) : Wafer(options, RandomContents(options)) {}
    Wafer(const WaferOptions& options, const WaferContents& contents);

    const std::vector<WaferFlake>& Flakes() const { return m_flakes; }

    double SideUm() const { return m_sideUm; }

    /// The stage's Z at which this place is sharp: options.focusZUm at (0, 0) and tilted from there.
    double FocusZ(double x, double y) const;
    Vertex Tilt() const { return m_tilt; } // by how much that rises along a um of X and of Y

    /// All marks that may reach between the two corners, in the order in which they lie on one another.
    std::vector<const WaferMark*> MarksBetween(Vertex low, Vertex high) const;

private:
    struct CellRange {
        std::size_t firstColumn, lastColumn, firstRow, lastRow;
    };
    CellRange CellsBetween(Vertex low, Vertex high) const;
    void AddMark(WaferMark mark);

    double m_sideUm;
    Vertex m_tilt;
    double m_focusZUm;
    std::vector<WaferFlake> m_flakes;
    std::vector<WaferMark> m_marks;
    std::size_t m_cellsPerSide;
    std::vector<std::vector<std::uint32_t>> m_cells; // marks of each cell of a grid over the wafer
};

} // namespace tessaro
