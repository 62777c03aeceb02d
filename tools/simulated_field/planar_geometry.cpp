#include "simulated_field/planar_geometry.h"

#include "imaging/frame_buffer.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

namespace tessaro {

namespace {

const Vertex& Following(const Outline& outline, std::size_t corner) {
    return outline[corner + 1 == outline.size() ? 0 : corner + 1];
}

int ClampedToInt(double value, int maximum) {
    return static_cast<int>(std::clamp(value, 0.0, static_cast<double>(maximum)));
}

/// Whether the ray from the point along x crosses the edge.
bool RayCrosses(Vertex point, Vertex from, Vertex to) {
    if ((from.y > point.y) == (to.y > point.y))
        return false;
    return point.x < from.x + (to.x - from.x) * (point.y - from.y) / (to.y - from.y);
}

} // namespace

double OutlineArea(const Outline& outline) {
    double twiceArea = 0.0;
    for (std::size_t corner = 0; corner < outline.size(); ++corner) {
        const Vertex& a = outline[corner];
        const Vertex& b = Following(outline, corner);
        twiceArea += a.x * b.y - b.x * a.y;
    }
    return std::abs(twiceArea) / 2.0;
}

Vertex OutlineCentre(const Outline& outline) {
    const Vertex origin = outline.empty() ? Vertex() : outline.front(); // near by: nothing cancels
    double twiceArea = 0.0;
    Vertex sum;
    for (std::size_t corner = 0; corner < outline.size(); ++corner) {
        const Vertex a = {outline[corner].x - origin.x, outline[corner].y - origin.y};
        const Vertex b = {Following(outline, corner).x - origin.x, Following(outline, corner).y - origin.y};
        const double cross = a.x * b.y - b.x * a.y;
        twiceArea += cross;
        sum = {sum.x + cross * (a.x + b.x), sum.y + cross * (a.y + b.y)};
    }
    if (twiceArea == 0.0)
        return origin;
    return {origin.x + sum.x / (3.0 * twiceArea), origin.y + sum.y / (3.0 * twiceArea)};
}

PixelBox PixelsBetween(Vertex low, Vertex high) {
    return {.left = ClampedToInt(std::floor(low.x), frameWidth),
            .right = ClampedToInt(std::ceil(high.x), frameWidth) - 1,
            .minRow = ClampedToInt(std::floor(low.y), frameHeight),
            .maxRow = ClampedToInt(std::ceil(high.y), frameHeight) - 1};
}

PixelBox PixelsAround(const Outline& outline) {
    if (outline.empty())
        return {};
    Extent extent;
    for (const Vertex& corner : outline)
        extent.Add(corner);
    return PixelsBetween(extent.low, extent.high);
}

double Distance(Vertex a, Vertex b) {
    // Not std::hypot, whose last bit differs between libraries.
    return std::sqrt((a.x - b.x) * (a.x - b.x) + (a.y - b.y) * (a.y - b.y));
}

double DistanceToSegment(Vertex point, Vertex from, Vertex to) {
    const double alongX = to.x - from.x;
    const double alongY = to.y - from.y;
    const double squaredLength = alongX * alongX + alongY * alongY;
    if (squaredLength == 0.0)
        return Distance(point, from);
    const double dot = (point.x - from.x) * alongX + (point.y - from.y) * alongY;
    const double share = std::clamp(dot / squaredLength, 0.0, 1.0);
    return Distance(point, {from.x + share * alongX, from.y + share * alongY});
}

double SignedDistance(Vertex point, const Outline& outline) {
    double nearest = std::numeric_limits<double>::infinity();
    bool inside = false;
    for (std::size_t corner = 0; corner < outline.size(); ++corner) {
        const Vertex& from = outline[corner];
        const Vertex& to = Following(outline, corner);
        nearest = std::min(nearest, DistanceToSegment(point, from, to));
        if (RayCrosses(point, from, to))
            inside = !inside;
    }
    return inside ? -nearest : nearest;
}

double SignedDistance(Vertex point, const std::vector<Disc>& discs) {
    double nearest = std::numeric_limits<double>::infinity();
    for (const Disc& disc : discs)
        nearest = std::min(nearest, Distance(point, disc.centre) - disc.radius);
    return nearest;
}

void Extent::Add(Vertex point) {
    low = {std::min(low.x, point.x), std::min(low.y, point.y)};
    high = {std::max(high.x, point.x), std::max(high.y, point.y)};
}

void Extent::Add(const Disc& disc) {
    Add(Vertex{disc.centre.x - disc.radius, disc.centre.y - disc.radius});
    Add(Vertex{disc.centre.x + disc.radius, disc.centre.y + disc.radius});
}

} // namespace tessaro
