#pragma once

#include "simulated_field/planar_geometry.h"
#include "simulated_field/reproducible_random.h"
#include "simulated_field/simulated_field.h"

#include <optional>
#include <vector>

// What lies on a simulated wafer, drawn at random in whatever unit of length the caller has.

namespace tessaro {

// Residue is darkest in blue, where a single layer is brightest: not even its soft edge has a single layer's
// colour.
inline constexpr ChannelValues residueContrastPercent = {-18.0, -23.0, -31.0};
inline constexpr ChannelValues dustContrastPercent = {-65.0, -65.0, -62.0};
inline constexpr ChannelValues scratchContrastPercent = {14.0, 14.0, 13.0};
struct AreaRangeUm2 {
    double minimum = 0.0;
    double maximum = 0.0;
};

/// Small areas more often than large ones.
double RandomArea(const AreaRangeUm2& range, ReproducibleRandom& random);

/// Two layers or more, for bulk so many as the caller has it.
int RandomThickLayers(int bulk, ReproducibleRandom& random);

/// A unit vector.
Vertex RandomDirection(ReproducibleRandom& random);

/// A flake: an irregular polygon of 5 to 9 corners around the origin, in turning order with less than half a
/// turn between neighbours, so that the edges cannot cross.
Outline RandomOutline(double area, ReproducibleRandom& random);

/// Distance of the farthest corner from the origin.
double Reach(const Outline& outline);

/// An outline on a free place of the ground, which it takes then. Every try draws a new one, so that crowded
/// ground takes the small ones; nothing when none of them finds room.
template<typename Ground, typename DrawOutline>
std::optional<Outline> PlacedOutline(int tries, DrawOutline drawOutline, Ground& ground) {
    for (int attempt = 0; attempt < tries; ++attempt) {
        Outline outline = drawOutline();
        const double reach = Reach(outline);
        const std::optional<Vertex> centre = ground.DrawPlace(reach);
        if (!centre)
            continue;
        ground.Take({*centre, reach});
        for (Vertex& corner : outline)
            corner = {corner.x + centre->x, corner.y + centre->y};
        return outline;
    }
    return std::nullopt;
}

/// Drops that have run into one another, within a disc of this radius.
std::vector<Disc> RandomDrops(Vertex centre, double radius, ReproducibleRandom& random);

} // namespace tessaro
