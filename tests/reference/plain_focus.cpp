#include "reference/plain_focus.h"

#include <cmath>

namespace tessaro::reference {

float PlaneDeviation(const float* plane) {
    const int n = planeRows * planeCols;
    double sum = 0;
    for (int i = 0; i < n; ++i)
        sum += static_cast<double>(plane[i]);
    const double mean = sum / n;
    double squares = 0;
    for (int i = 0; i < n; ++i)
        squares += (static_cast<double>(plane[i]) - mean) * (static_cast<double>(plane[i]) - mean);
    const double variance = squares / n;
    return static_cast<float>(std::sqrt(variance));
}

float PlaneLaplacian(const float* plane, int d) {
    const auto p = [plane](int r, int c) { return plane[r * planeCols + c]; };
    double sum = 0;
    int count = 0;
    for (int r = d; r < planeRows - d; ++r) {
        for (int c = d; c < planeCols - d; ++c) {
            const float v = p(r, c);
            const float a = p(r - d, c);
            const float b = p(r + d, c);
            const float l = p(r, c - d);
            const float q = p(r, c + d);
            if (std::fabs(v - a) > 2.0F || std::fabs(v - b) > 2.0F) {
                sum += static_cast<double>(std::fabs(2 * v - a - b)) +
                       static_cast<double>(std::fabs(2 * v - l - q));
                count += 1;
            }
        }
    }
    if (count < 11)
        return 0.0001F;
    return static_cast<float>(sum / count / 100.0);
}

FocusMeasures MeasurePlanes(const float* planes) {
    const float* p0 = planes;
    const float* p1 = planes + planeRows * planeCols;
    const float* p2 = planes + 2 * planeRows * planeCols;
    FocusMeasures m;
    m.deviation = (PlaneDeviation(p0) + PlaneDeviation(p1) + PlaneDeviation(p2)) / 3.0F;
    m.laplaceS = (PlaneLaplacian(p0, 1) + PlaneLaplacian(p1, 1) + PlaneLaplacian(p2, 1)) / 3.0F;
    m.laplaceM = (PlaneLaplacian(p0, 5) + PlaneLaplacian(p1, 5) + PlaneLaplacian(p2, 5)) / 3.0F;
    if (m.deviation > 0.1F)
        m.focusValue = m.laplaceM * 300.0F / m.deviation;
    else
        m.focusValue = m.laplaceM * 10.0F;
    return m;
}

float MeasureScore(const float* planes) {
    const float* p0 = planes;
    const float* p1 = planes + planeRows * planeCols;
    const float* p2 = planes + 2 * planeRows * planeCols;
    return (PlaneLaplacian(p0, 5) + PlaneLaplacian(p1, 5) + PlaneLaplacian(p2, 5)) / 3.0F;
}

} // namespace tessaro::reference
