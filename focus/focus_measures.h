#pragma once

#include "analysis/frame_measurements.h"

namespace tessaro {

/// Population standard deviation of one channel plane [column 0..307][row 0..256] of the reduced image.
float PlaneDeviation(const float* plane);

/// Mean of |2v - a - b| + |2v - l - q| / 100 over the cells that differ by more than 2 from a neighbour at
/// this distance along the column index; 0.0001 when fewer than 11 do. `distance` in cells, at least 1.
float PlaneLaplacian(const float* plane, int distance);

/// Sharpness of a frame, each the mean of the three channel planes.
struct FocusFigures {
    float deviation = 0.0F;
    float laplaceS = 0.0F; // neighbours at 1 cell
    float laplaceM = 0.0F; // neighbours at 5 cells
    float focusValue = 0.0F;
};

/// Measures the reduced image of the last statistics pass.
FocusFigures MeasureFocus(const ReducedImage& reduced);

/// The laplaceM of the same image alone: what a search for the focus asks for at every step.
float MeasureFocusScore(const ReducedImage& reduced);

} // namespace tessaro
