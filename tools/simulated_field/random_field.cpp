#include "simulated_field/random_field.h"

#include "simulated_field/random_shapes.h"
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

constexpr double residueEdgePixels = 7.0;
constexpr double dustEdgePixels = 2.5;

double RandomAreaPixels(const AreaRangeUm2& range, ReproducibleRandom& random) {
    return RandomArea(range, random) * framePixelsPerUm * framePixelsPerUm;
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
            return Distance(centre, other.centre) < radiusPixels + other.radius + clearancePixels;
        };
        return std::ranges::any_of(m_taken, clashes) ? std::nullopt : std::optional(centre);
    }

    void Take(const Disc& disc) { m_taken.push_back(disc); }

    bool IsFreeAlong(const SimulatedScratch& scratch) const {
        return std::ranges::none_of(m_taken, [&](const Disc& disc) {
            const double reach = disc.radius + scratch.widthPixels + clearancePixels;
            return DistanceToSegment(disc.centre, scratch.from, scratch.to) < reach;
        });
    }

private:
    ReproducibleRandom& m_random;
    std::vector<Disc> m_taken;
};

/// Up to this many flakes; layersOfNext() says how many layers each has.
template<typename LayersOfNext>
void PlaceFlakes(int count, const AreaRangeUm2& range, LayersOfNext layersOfNext, Ground& ground,
                 ReproducibleRandom& random, SimulatedField& field) {
    for (int flake = 0; flake < count; ++flake) {
        const int layers = layersOfNext();
        std::optional<Outline> outline = PlacedOutline(
            triesToPlace, [&] { return RandomOutline(RandomAreaPixels(range, random), random); }, ground);
        if (!outline)
            return;
        field.flakes.push_back({.outline = std::move(*outline), .layers = layers});
    }
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
    const auto severalLayers = [&random] { return RandomThickLayers(bulkLayers, random); };
    PlaceFlakes(singleLayers, options.singleLayerArea, oneLayer, ground, random, field);
    PlaceFlakes(otherFlakes, options.otherArea, severalLayers, ground, random, field);
    PlaceResidues(options.residues, ground, random, field);
    PlaceDustSpecks(options.dustSpecks, ground, random, field);
    PlaceScratches(options.scratches, ground, random, field);
    return field;
}

} // namespace tessaro
