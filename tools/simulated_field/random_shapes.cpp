#include "simulated_field/random_shapes.h"

#include <algorithm>
#include <cmath>

namespace tessaro {

namespace {

/// Unit vector after a share 0 to 1 of a full turn. The quarter circle is walked by its rational form, which
/// needs no sine: the pace along it is uneven by a quarter, which is nothing to a random outline.
Vertex DirectionAfter(double turn) {
    const double quarters = turn * 4.0;
    const double whole = std::floor(quarters);
    const double t = quarters - whole;
    const double along = (1.0 - t * t) / (1.0 + t * t);
    const double across = 2.0 * t / (1.0 + t * t);
    switch (static_cast<int>(whole) % 4) {
    case 0:
        return {along, across};
    case 1:
        return {-across, along};
    case 2:
        return {-along, -across};
    default:
        return {across, -along};
    }
}

void Stretch(Outline& outline, Vertex axis, double factor) {
    for (Vertex& corner : outline) {
        const double along = corner.x * axis.x + corner.y * axis.y;
        corner.x += (factor - 1.0) * along * axis.x;
        corner.y += (factor - 1.0) * along * axis.y;
    }
}

void ScaleToArea(Outline& outline, double area) {
    const double factor = std::sqrt(area / OutlineArea(outline));
    for (Vertex& corner : outline) {
        corner.x *= factor;
        corner.y *= factor;
    }
}

} // namespace

double RandomArea(const AreaRangeUm2& range, ReproducibleRandom& random) {
    const double share = random.Uniform();
    return range.minimum + (range.maximum - range.minimum) * share * share;
}

int RandomThickLayers(int bulk, ReproducibleRandom& random) {
    const double kind = random.Uniform();
    if (kind < 0.35)
        return 2;
    if (kind < 0.55)
        return 3;
    return kind < 0.8 ? random.WholeBetween(4, 8) : bulk;
}

Vertex RandomDirection(ReproducibleRandom& random) {
    return DirectionAfter(random.Uniform());
}

Outline RandomOutline(double area, ReproducibleRandom& random) {
    const int corners = random.WholeBetween(5, 9);
    const double start = random.Uniform();
    Outline outline;
    for (int corner = 0; corner < corners; ++corner) {
        const double step = corner + random.Between(-0.3, 0.3);
        const double turn = start + step / corners + 1.0; // the jitter may go below the start
        const Vertex direction = DirectionAfter(turn);
        const double radius = random.Between(0.62, 1.0);
        outline.push_back({direction.x * radius, direction.y * radius});
    }
    const Vertex axis = RandomDirection(random); // drawn one by one: the order of arguments is the compiler's
    Stretch(outline, axis, random.Between(1.0, 2.0));
    ScaleToArea(outline, area);
    return outline;
}

double Reach(const Outline& outline) {
    double reach = 0.0;
    for (const Vertex& corner : outline)
        reach = std::max(reach, Distance({}, corner));
    return reach;
}

std::vector<Disc> RandomDrops(Vertex centre, double radius, ReproducibleRandom& random) {
    const int count = random.WholeBetween(3, 6);
    std::vector<Disc> drops;
    for (int drop = 0; drop < count; ++drop) {
        const Vertex direction = RandomDirection(random);
        const double share = random.Between(0.1, 0.5);
        drops.push_back(
            {.centre = {centre.x + direction.x * share * radius, centre.y + direction.y * share * radius},
             .radius = random.Between(0.25, 1.0 - share) * radius});
    }
    return drops;
}

} // namespace tessaro
