#include "twin/wafer_contents.h"

#include "simulated_field/random_shapes.h"
#include "simulated_field/reproducible_random.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <optional>
#include <utility>

namespace tessaro {
namespace {

constexpr double umPerMm = 1000.0;

// Bare substrate surrounds each flake, and two flakes stay two when the analysis reduces the frame.
constexpr double clearanceUm = 7.0;

// Single layers larger than about half a background block of the analysis (31 x 26 um) may be taken for
// substrate. Tape leaves few single layers of that size; thick pieces come larger.
constexpr AreaRangeUm2 singleLayerAreaUm2 = {40.0, 380.0};
constexpr AreaRangeUm2 thickAreaUm2 = {60.0, 1500.0};
constexpr AreaRangeUm2 bulkAreaUm2 = {200.0, 6000.0};
constexpr AreaRangeUm2 thickPieceAreaUm2 = {3000.0, 16000.0};
constexpr double singleLayerShare = 0.4;
constexpr double thickPiecesPerFlake = 8.0 / 60.0; // beside the flakes

constexpr double residueEdgeUm = 2.8;
constexpr double dustEdgeUm = 1.0;

constexpr int triesToPlace = 40;
constexpr int failuresWhenFull = 100; // so many in a row, and the wafer counts as full

std::size_t Count(double perMm2, double sideMm) {
    return static_cast<std::size_t>(std::floor(perMm2 * sideMm * sideMm + 0.5));
}

/// Which places of the wafer are taken. A grid of cells, each wider than two things may reach together, keeps
/// the search short.
class Ground {
public:
    Ground(double sideUm, ReproducibleRandom& random)
        : m_sideUm(sideUm), m_random(random),
          m_cellsPerSide(static_cast<std::size_t>(std::max(1.0, std::floor(sideUm / cellUm)))),
          m_cells(m_cellsPerSide * m_cellsPerSide) {}

    /// A free place for a disc of this radius, not yet taken; none when the place that was drawn is not free.
    std::optional<Vertex> DrawPlace(double radius) {
        if (2.0 * radius > m_sideUm || 2.0 * radius > largestReachUm)
            return std::nullopt;
        const double x = m_random.Between(radius, m_sideUm - radius);
        const double y = m_random.Between(radius, m_sideUm - radius);
        return IsFree({{x, y}, radius}) ? std::optional(Vertex{x, y}) : std::nullopt;
    }

    void Take(const Disc& disc) {
        m_cells[Cell(disc.centre.x) + m_cellsPerSide * Cell(disc.centre.y)].push_back(disc);
    }

    bool IsFree(const Disc& disc) const {
        const std::size_t column = Cell(disc.centre.x);
        const std::size_t row = Cell(disc.centre.y);
        const std::size_t last = m_cellsPerSide - 1;
        for (std::size_t r = row == 0 ? 0 : row - 1; r <= std::min(row + 1, last); ++r)
            for (std::size_t c = column == 0 ? 0 : column - 1; c <= std::min(column + 1, last); ++c)
                if (Clashes(m_cells[c + m_cellsPerSide * r], disc))
                    return false;
        return true;
    }

private:
    static constexpr double largestReachUm = 200.0; // diameter of whatever lies on the wafer
    static constexpr double cellUm = largestReachUm + clearanceUm;

    static bool Clashes(const std::vector<Disc>& taken, const Disc& disc) {
        return std::ranges::any_of(taken, [&](const Disc& other) {
            return Distance(disc.centre, other.centre) < disc.radius + other.radius + clearanceUm;
        });
    }

    std::size_t Cell(double position) const {
        const double cell = position / m_sideUm * static_cast<double>(m_cellsPerSide);
        return static_cast<std::size_t>(std::clamp(cell, 0.0, static_cast<double>(m_cellsPerSide - 1)));
    }

    double m_sideUm;
    ReproducibleRandom& m_random;
    std::size_t m_cellsPerSide;
    std::vector<std::vector<Disc>> m_cells;
};

const AreaRangeUm2& AreasOf(int layers) {
    if (layers == 1)
        return singleLayerAreaUm2;
    return layers == bulkWaferLayers ? bulkAreaUm2 : thickAreaUm2;
}

/// False when it finds no room.
bool PlaceFlake(const AreaRangeUm2& areas, int layers, Ground& ground, ReproducibleRandom& random,
                WaferContents& contents) {
    std::optional<Outline> outline = PlacedOutline(
        triesToPlace, [&] { return RandomOutline(RandomArea(areas, random), random); }, ground);
    if (outline)
        contents.flakes.push_back({.outline = std::move(*outline), .layers = layers});
    return outline.has_value();
}

void PlaceFlakes(std::size_t count, Ground& ground, ReproducibleRandom& random, WaferContents& contents) {
    int failures = 0;
    for (std::size_t flake = 0; flake < count && failures < failuresWhenFull; ++flake) {
        const int layers = random.Chance(singleLayerShare) ? 1 : RandomThickLayers(bulkWaferLayers, random);
        failures = PlaceFlake(AreasOf(layers), layers, ground, random, contents) ? 0 : failures + 1;
    }
}

/// What tape leaves besides flakes. Without such pieces a field would be little but bare substrate: the
/// deviation, by which the focus value is measured, would be far below that of a real field.
void PlaceThickPieces(std::size_t count, Ground& ground, ReproducibleRandom& random,
                      WaferContents& contents) {
    int failures = 0;
    for (std::size_t piece = 0; piece < count && failures < failuresWhenFull; ++piece)
        failures =
            PlaceFlake(thickPieceAreaUm2, bulkWaferLayers, ground, random, contents) ? 0 : failures + 1;
}

void PlaceResidues(std::size_t count, Ground& ground, ReproducibleRandom& random, WaferContents& contents) {
    for (std::size_t residue = 0; residue < count; ++residue) {
        const double radius = random.Between(7.0, 19.0);
        const std::optional<Vertex> centre = ground.DrawPlace(radius + residueEdgeUm);
        if (!centre)
            continue;
        ground.Take({*centre, radius + residueEdgeUm});
        contents.stains.push_back({.discs = RandomDrops(*centre, radius, random),
                                   .contrastPercent = residueContrastPercent,
                                   .edgeWidthUm = residueEdgeUm});
    }
}

void PlaceDustSpecks(std::size_t count, Ground& ground, ReproducibleRandom& random, WaferContents& contents) {
    for (std::size_t speck = 0; speck < count; ++speck) {
        const double radius = random.Between(0.5, 1.8);
        const std::optional<Vertex> centre = ground.DrawPlace(radius + dustEdgeUm);
        if (!centre)
            continue;
        ground.Take({*centre, radius + dustEdgeUm});
        contents.stains.push_back({.discs = {{*centre, radius}},
                                   .contrastPercent = dustContrastPercent,
                                   .edgeWidthUm = dustEdgeUm});
    }
}

/// Whether discs of the clearance all along the scratch are free.
bool IsFreeAlong(const WaferScratch& scratch, const Ground& ground) {
    constexpr double stepUm = clearanceUm / 2.0;
    const double length = Distance(scratch.from, scratch.to);
    const int steps = static_cast<int>(length / stepUm) + 1;
    for (int step = 0; step <= steps; ++step) {
        const double share = static_cast<double>(step) / steps;
        const Vertex point = {scratch.from.x + share * (scratch.to.x - scratch.from.x),
                              scratch.from.y + share * (scratch.to.y - scratch.from.y)};
        if (!ground.IsFree({point, scratch.widthUm}))
            return false;
    }
    return true;
}

WaferScratch RandomScratch(double sideUm, ReproducibleRandom& random) {
    const double x = random.Between(0.0, sideUm);
    const double y = random.Between(0.0, sideUm);
    const Vertex direction = RandomDirection(random);
    const double length = random.Between(50.0, 200.0);
    const auto onWafer = [sideUm](double position) { return std::clamp(position, 0.0, sideUm); };
    return {.from = {x, y},
            .to = {onWafer(x + direction.x * length), onWafer(y + direction.y * length)},
            .widthUm = random.Between(0.5, 1.05)};
}

void PlaceScratches(std::size_t count, double sideUm, const Ground& ground, ReproducibleRandom& random,
                    WaferContents& contents) {
    for (std::size_t place = 0; place < count; ++place) {
        for (int attempt = 0; attempt < triesToPlace; ++attempt) {
            const WaferScratch scratch = RandomScratch(sideUm, random);
            if (!IsFreeAlong(scratch, ground))
                continue;
            contents.scratches.push_back(scratch);
            break;
        }
    }
}

} // namespace

WaferContents RandomContents(const WaferOptions& options) {
    ReproducibleRandom random(options.seed);
    const double sideUm = options.sideMm * umPerMm;
    Ground ground(sideUm, random);
    WaferContents contents;
    PlaceFlakes(Count(options.flakesPerMm2, options.sideMm), ground, random, contents);
    Ground flakesOnly = ground;
    PlaceResidues(Count(options.residuesPerMm2, options.sideMm), ground, random, contents);
    PlaceDustSpecks(Count(options.dustSpecksPerMm2, options.sideMm), ground, random, contents);
    PlaceScratches(Count(options.scratchesPerMm2, options.sideMm), sideUm, ground, random, contents);
    PlaceThickPieces(Count(options.flakesPerMm2 * thickPiecesPerFlake, options.sideMm), flakesOnly, random,
                     contents);
    return contents;
}

} // namespace tessaro
