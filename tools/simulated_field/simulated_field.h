#pragma once

#include "imaging/frame_buffer.h"
#include "simulated_field/planar_geometry.h"

#include <array>
#include <cstdint>
#include <vector>

namespace tessaro {

/// Layers of a flake so thick that one more changes nothing that matters.
inline constexpr int bulkLayers = 20;

/// One number for each channel: [red, green, blue].
using ChannelValues = std::array<double, channelCount>;

struct SimulatedFlake {
    Outline outline; // frame pixels, at least three corners
    int layers = 1;
};

/// Something round that is no flake: discs that show as one patch.
struct SimulatedBlob {
    std::vector<Disc> discs;
    ChannelValues contrastPercent = {};
    double edgeWidthPixels = 1.0;
};

struct SimulatedScratch {
    Vertex from;
    Vertex to;
    double widthPixels = 0.0;
    ChannelValues contrastPercent = {};
};

/// What the microscope sees at one place of a wafer. A fresh object is bare, white-balanced substrate.
struct SimulatedField {
    ChannelValues substrate = {140.0, 140.0, 140.0}; // intensity at the frame's centre, 0 to 255
    double cornerFalloff = 0.04;                     // share of the light that the corners lack
    double noiseSigma = 1.2;                         // intensity, each pixel and channel by itself
    ChannelValues singleLayerContrastPercent = {-12.0, -8.0,
                                                -2.0}; // against the substrate; negative is darker
    double edgeWidthPixels = 1.0;                      // of flakes and scratches, from bare to full
    std::vector<SimulatedFlake> flakes;
    std::vector<SimulatedBlob> residues; // of glue
    std::vector<SimulatedBlob> dustSpecks;
    std::vector<SimulatedScratch> scratches;
};

/// Draws every pixel of the frame. The same field and seed make the same frame on every machine; the seed
/// decides the noise only. Where things overlap, each dims what the others leave.
void DrawField(const SimulatedField& field, std::uint64_t seed, FrameBuffer& frame);

/// Every layer takes the same share of what reaches it: 1 - (1 - c)^layers for a single layer that takes c.
ChannelValues LayerContrastPercent(const ChannelValues& singleLayerContrastPercent, int layers);

/// Share of the light that is left where there is this contrast.
ChannelValues Transmission(const ChannelValues& contrastPercent);

/// How much of a shape is there, 0 to 1, at a point so far from its edge; half of it on the edge.
double Coverage(double signedDistance, double edgeWidth);

/// Share of the light of the frame's centre that reaches a point, 1 - cornerFalloff at the corners.
double Illumination(const SimulatedField& field, Vertex point);

double FlakeAreaUm2(const SimulatedFlake& flake);

/// The pixels of the frame that the flake's bounding box touches.
PixelBox FlakeBox(const SimulatedFlake& flake);

} // namespace tessaro
