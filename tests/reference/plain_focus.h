#pragma once

namespace tessaro::reference {

inline constexpr int planeRows = 308;
inline constexpr int planeCols = 257;

/// `plane` holds planeRows x planeCols values, row after row.
float PlaneDeviation(const float* plane);
float PlaneLaplacian(const float* plane, int d);

struct FocusMeasures {
    float deviation = 0.0F;
    float laplaceS = 0.0F;
    float laplaceM = 0.0F;
    float focusValue = 0.0F;
};

/// Of three planes, one after another.
FocusMeasures MeasurePlanes(const float* planes);
float MeasureScore(const float* planes);

} // namespace tessaro::reference
