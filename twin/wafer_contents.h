#pragma once

#include "simulated_field/planar_geometry.h"
#include "simulated_field/simulated_field.h"
#include "twin/materials.h"

#include <cstdint>
#include <vector>

namespace tessaro {

/// What the truth gives for flakes so thick that nobody counts their layers.
inline constexpr int bulkWaferLayers = 100;

/// A square wafer whose lower left corner lies at the stage's (0, 0), and how it lies under the objective.
struct WaferOptions {
    std::uint64_t seed = 1;
    double sideMm = 4.0;
    double flakesPerMm2 = 60.0;
    Material material = Material::graphene;
    Substrate substrate = Substrate::sio2;
    Vertex tiltUmPerUm = {}; // by how much the focus rises along X and Y
    double focusZUm = 0.0;   // the focus at the stage's (0, 0)
    double residuesPerMm2 = 14.0;
    double dustSpecksPerMm2 = 70.0;
    double scratchesPerMm2 = 6.0;
};

// Positions and lengths on a wafer are micrometres of the stage.

struct WaferFlake {
    Outline outline;
    int layers = 1; // bulkWaferLayers for bulk

    double AreaUm2() const { return OutlineArea(outline); }
};

/// Glue residue or a speck of dust: discs that show as one patch.
struct WaferStain {
    std::vector<Disc> discs;
    ChannelValues contrastPercent = {};
    double edgeWidthUm = 0.0; // from bare to full
};

struct WaferScratch {
    Vertex from;
    Vertex to;
    double widthUm = 0.0;
};

struct WaferContents {
    std::vector<WaferFlake> flakes;
    std::vector<WaferStain> stains;
    std::vector<WaferScratch> scratches;
};

/// Flakes of 40 um^2 or more, small ones more often than large ones, then large thick pieces, which count as
/// flakes too, and what else lies on a wafer. Nothing touches a flake or comes near it, but what else there
/// is may lie on or under a thick piece. What finds no room is left out. The same options, the same contents.
WaferContents RandomContents(const WaferOptions& options);

} // namespace tessaro
