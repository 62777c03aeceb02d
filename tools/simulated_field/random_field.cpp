#include "simulated_field/random_field.h"

#include "simulated_field/reproducible_random.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <optional>
#include <utility>

namespace tessaro {

namespace {

// Wide enough that two flakes stay two when the frame is reduced, and that bare substrate surrounds each.
constexpr double clearancePixels = 16.0;

constexpr int triesToPlace = 2000;

// Residue is darkest in blue, where a single layer is brightest: not even its soft edge has a single layer's
// colour.
constexpr ChannelValues residueContrastPercent = {-18.0, -23.0, -31.0};
constexpr ChannelValues dustContrastPercent = {-65.0, -65.0, -62.0};
constexpr ChannelValues scratchContrastPercent = {14.0, 14.0, 13.0};
constexpr double residueEdgePixels = 7.0;
constexpr double dustEdgePixels = 2.5;

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

Vertex RandomDirection(ReproducibleRandom& random) {
    return DirectionAfter(random.Uniform());
}

void Stretch(Outline& outline, Vertex axis, double factor) {
    for (Vertex& corner : outline) {
        const double along = corner.x * axis.x + corner.y * axis.y;
        corner.x += (factor - 1.0) * along * axis.x;
        corner.y += (factor - 1.0) * along * axis.y;
    }
}

void ScaleToArea(Outline& outline, double areaPixels) {
    const double factor = std::sqrt(areaPixels / OutlineArea(outline));
    for (Vertex& corner : outline) {
        corner.x *= factor;
        corner.y *= factor;
    }
}

/// Corners around the origin, in turning order with less than half a turn between neighbours: the edges
/// cannot cross.
Outline RandomOutline(double areaPixels, ReproducibleRandom& random) {
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
    ScaleToArea(outline, areaPixels);
    return outline;
}

double RandomAreaPixels(const AreaRangeUm2& range, ReproducibleRandom& random) {
    const double share = random.Uniform();
    const double areaUm2 = range.minimum + (range.maximum - range.minimum) * share * share;
    return areaUm2 * framePixelsPerUm * framePixelsPerUm;
}

int RandomThickLayers(ReproducibleRandom& random) {
    const double kind = random.Uniform();
    if (kind < 0.35)
        return 2;
    if (kind < 0.55)
        return 3;
    return kind < 0.8 ? random.WholeBetween(4, 8) : bulkLayers;
}

double Reach(const Outline& outline) {
    double reach = 0.0;
    for (const Vertex& corner : outline)
        reach = std::max(reach, Distance({}, corner));
    return reach;
}

/// Where in the field flakes are looked for, and what has been put there.
class Ground {
public:
    explicit Ground(ReproducibleRandom& random) : m_random(random) {}

    /// A free place for a disc of this radius, not yet taken; none when the place that was drawn is not free.
    std::optional<Vertex> DrawPlace(double radiusPixels) {
        const double marginX = detectionMarginXPixels + radiusPixels;
        const double marginY = detectionMarginYPixels + radiusPixels;
        if (2.0 * marginX > frameWidth || 2.0 * marginY > frameHeight)
            return std::nullopt;
        const Vertex centre = {m_random.Between(marginX, frameWidth - marginX),
                               m_random.Between(marginY, frameHeight - marginY)};
        const auto clashes = [&](const Disc& other) {
            return Distance(centre, other.centre) < radiusPixels + other.radiusPixels + clearancePixels;
        };
        return std::ranges::any_of(m_taken, clashes) ? std::nullopt : std::optional(centre);
    }

    void Take(const Disc& disc) { m_taken.push_back(disc); }

    bool IsFreeAlong(const SimulatedScratch& scratch) const {
        return std::ranges::none_of(m_taken, [&](const Disc& disc) {
            const double reach = disc.radiusPixels + scratch.widthPixels + clearancePixels;
            return DistanceToSegment(disc.centre, scratch.from, scratch.to) < reach;
        });
    }

private:
    ReproducibleRandom& m_random;
    std::vector<Disc> m_taken;
};

/// Every try draws a new outline, so that a crowded field takes the small ones.
std::optional<Outline> PlaceOutline(const AreaRangeUm2& range, Ground& ground, ReproducibleRandom& random) {
    for (int attempt = 0; attempt < triesToPlace; ++attempt) {
        Outline outline = RandomOutline(RandomAreaPixels(range, random), random);
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

/// Up to this many flakes; layersOfNext() says how many layers each has.
template<typename LayersOfNext>
void PlaceFlakes(int count, const AreaRangeUm2& range, LayersOfNext layersOfNext, Ground& ground,
                 ReproducibleRandom& random, SimulatedField& field) {
    for (int flake = 0; flake < count; ++flake) {
        const int layers = layersOfNext();
        std::optional<Outline> outline = PlaceOutline(range, ground, random);
        if (!outline)
            return;
        field.flakes.push_back({.outline = std::move(*outline), .layers = layers});
    }
}

/// Drops that have run into one another, within a disc of this radius.
std::vector<Disc> RandomDrops(Vertex centre, double radiusPixels, ReproducibleRandom& random) {
    const int count = random.WholeBetween(3, 6);
    std::vector<Disc> drops;
    for (int drop = 0; drop < count; ++drop) {
        const Vertex direction = RandomDirection(random);
        const double share = random.Between(0.1, 0.5);
        drops.push_back({.centre = {centre.x + direction.x * share * radiusPixels,
                                    centre.y + direction.y * share * radiusPixels},
                         .radiusPixels = random.Between(0.25, 1.0 - share) * radiusPixels});
    }
    return drops;
}

void PlaceResidues(int count, Ground& ground, ReproducibleRandom& random, SimulatedField& field) {
    for (int attempt = 0; attempt < triesToPlace && std::ssize(field.residues) < count; ++attempt) {
        const double radius = random.Between(18.0, 46.0);
        const std::optional<Vertex> centre = ground.DrawPlace(radius + residueEdgePixels);
        if (!centre)
            continue;
        ground.Take({*centre, radius + residueEdgePixels});
        field.residues.push_back({.discs = RandomDrops(*centre, radius, random),
                                  .contrastPercent = residueContrastPercent,
                                  .edgeWidthPixels = residueEdgePixels});
    }
}

void PlaceDustSpecks(int count, Ground& ground, ReproducibleRandom& random, SimulatedField& field) {
    for (int attempt = 0; attempt < triesToPlace && std::ssize(field.dustSpecks) < count; ++attempt) {
        const double radius = random.Between(1.2, 4.5);
        const std::optional<Vertex> centre = ground.DrawPlace(radius + dustEdgePixels);
        if (!centre)
            continue;
        ground.Take({*centre, radius + dustEdgePixels});
        field.dustSpecks.push_back({.discs = {{*centre, radius}},
                                    .contrastPercent = dustContrastPercent,
                                    .edgeWidthPixels = dustEdgePixels});
    }
}

SimulatedScratch RandomScratch(ReproducibleRandom& random) {
    const Vertex from = {random.Between(0.0, frameWidth), random.Between(0.0, frameHeight)};
    const Vertex direction = RandomDirection(random);
    const double length = random.Between(120.0, 500.0);
    return {.from = from,
            .to = {from.x + direction.x * length, from.y + direction.y * length},
            .widthPixels = random.Between(1.2, 2.6),
            .contrastPercent = scratchContrastPercent};
}

void PlaceScratches(int count, const Ground& ground, ReproducibleRandom& random, SimulatedField& field) {
    for (int attempt = 0; attempt < triesToPlace && std::ssize(field.scratches) < count; ++attempt) {
        const SimulatedScratch scratch = RandomScratch(random);
        if (ground.IsFreeAlong(scratch))
            field.scratches.push_back(scratch);
    }
}

} // namespace

SimulatedField RandomField(std::uint64_t seed, int singleLayers, int otherFlakes,
                           const RandomFieldOptions& options) {
    ReproducibleRandom random(seed);
    Ground ground(random);
    SimulatedField field;
    const auto oneLayer = [] { return 1; };
    const auto severalLayers = [&random] { return RandomThickLayers(random); };
    PlaceFlakes(singleLayers, options.singleLayerArea, oneLayer, ground, random, field);
    PlaceFlakes(otherFlakes, options.otherArea, severalLayers, ground, random, field);
    PlaceResidues(options.residues, ground, random, field);
    PlaceDustSpecks(options.dustSpecks, ground, random, field);
    PlaceScratches(options.scratches, ground, random, field);
    return field;
}

} // namespace tessaro
