#pragma once

#include <limits>
#include <vector>

namespace tessaro {

/// A point of the frame plane in frame pixels: pixel (x, y) covers x to x + 1 and y to y + 1, so its centre
/// lies at (x + 0.5, y + 0.5). y grows with the buffer row, upward in the picture.
struct Vertex {
    double x = 0.0;
    double y = 0.0;

    friend bool operator==(const Vertex&, const Vertex&) = default;
};

/// Corners of a simple polygon in order, either way round; the last is joined to the first.
using Outline = std::vector<Vertex>;

struct Disc {
    Vertex centre;
    double radius = 0.0;
};

/// Frame pixels, first and last inclusive; without pixels when a last is below its first.
struct PixelBox {
    int left = 0;
    int right = -1;
    int minRow = 0;
    int maxRow = -1;

    friend bool operator==(const PixelBox&, const PixelBox&) = default;
};

/// Square pixels; 0 for fewer than three corners.
double OutlineArea(const Outline& outline);

/// Centre of gravity of an outline that has an area.
Vertex OutlineCentre(const Outline& outline);

/// The pixels of the frame that a shape between these two corners touches.
PixelBox PixelsBetween(Vertex low, Vertex high);

/// The pixels of the frame that the outline's bounding box touches; none for an outline without corners.
PixelBox PixelsAround(const Outline& outline);

double Distance(Vertex a, Vertex b);

double DistanceToSegment(Vertex point, Vertex from, Vertex to);

/// Distance to the nearest edge, negative inside; infinite for an outline without corners.
double SignedDistance(Vertex point, const Outline& outline);

/// Distance to the edge of the discs' common patch, negative inside it; infinite without discs.
double SignedDistance(Vertex point, const std::vector<Disc>& discs);

/// Lower left and upper right corner of what is added; low lies above high as long as there is nothing.
struct Extent {
    Vertex low = {std::numeric_limits<double>::infinity(), std::numeric_limits<double>::infinity()};
    Vertex high = {-std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity()};

    void Add(Vertex point);
    void Add(const Disc& disc);
};

} // namespace tessaro
