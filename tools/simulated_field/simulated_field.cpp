#include "simulated_field/simulated_field.h"

#include "simulated_field/reproducible_random.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <functional>

namespace tessaro {

namespace {

constexpr double hardEdgeWidth = 1e-6; // stands for "no smoothing", which would divide by zero

using FrameRow = std::array<ChannelValues, frameWidth>;

/// Anything that lies on the substrate: a shape and the share of each channel that it lets through.
struct Tint {
    PixelBox reach;
    ChannelValues transmission = {};
    double edgeWidthPixels = 1.0;
    std::function<double(Vertex)> signedDistance; // negative inside; the shape outlives the tint
};

ChannelValues LayerTransmission(const ChannelValues& singleLayerContrastPercent, int layers) {
    const ChannelValues single = Transmission(singleLayerContrastPercent);
    ChannelValues transmission = {1.0, 1.0, 1.0};
    for (int layer = 0; layer < layers; ++layer)
        for (std::size_t c = 0; c < channelCount; ++c)
            transmission[c] *= single[c];
    return transmission;
}

PixelBox Widened(PixelBox box, double edgeWidthPixels) {
    const double margin = edgeWidthPixels / 2.0;
    return PixelsBetween({box.left - margin, box.minRow - margin},
                         {box.right + 1 + margin, box.maxRow + 1 + margin});
}

Tint FlakeTint(const SimulatedField& field, const SimulatedFlake& flake) {
    return {.reach = Widened(FlakeBox(flake), field.edgeWidthPixels),
            .transmission = LayerTransmission(field.singleLayerContrastPercent, flake.layers),
            .edgeWidthPixels = field.edgeWidthPixels,
            .signedDistance = [&flake](Vertex point) { return SignedDistance(point, flake.outline); }};
}

PixelBox BlobBox(const SimulatedBlob& blob) {
    Extent extent;
    for (const Disc& disc : blob.discs)
        extent.Add(disc);
    return PixelsBetween(extent.low, extent.high);
}

Tint BlobTint(const SimulatedBlob& blob) {
    return {.reach = Widened(BlobBox(blob), blob.edgeWidthPixels),
            .transmission = Transmission(blob.contrastPercent),
            .edgeWidthPixels = blob.edgeWidthPixels,
            .signedDistance = [&blob](Vertex point) { return SignedDistance(point, blob.discs); }};
}

Tint ScratchTint(const SimulatedField& field, const SimulatedScratch& scratch) {
    return {.reach = Widened(PixelsAround({scratch.from, scratch.to}),
                             scratch.widthPixels + field.edgeWidthPixels),
            .transmission = Transmission(scratch.contrastPercent),
            .edgeWidthPixels = field.edgeWidthPixels,
            .signedDistance = [&scratch](Vertex point) {
                return DistanceToSegment(point, scratch.from, scratch.to) - scratch.widthPixels / 2.0;
            }};
}

std::vector<Tint> TintsOf(const SimulatedField& field) {
    std::vector<Tint> tints;
    for (const SimulatedScratch& scratch : field.scratches)
        tints.push_back(ScratchTint(field, scratch));
    for (const SimulatedFlake& flake : field.flakes)
        tints.push_back(FlakeTint(field, flake));
    for (const SimulatedBlob& residue : field.residues)
        tints.push_back(BlobTint(residue));
    for (const SimulatedBlob& speck : field.dustSpecks)
        tints.push_back(BlobTint(speck));
    return tints;
}

Vertex PixelCentre(int x, int y) {
    return {x + 0.5, y + 0.5};
}

void LayBareSubstrate(const SimulatedField& field, int y, FrameRow& row) {
    for (int x = 0; x < frameWidth; ++x) {
        const double light = Illumination(field, PixelCentre(x, y));
        for (std::size_t c = 0; c < channelCount; ++c)
            row[static_cast<std::size_t>(x)][c] = field.substrate[c] * light;
    }
}

void TintRow(const Tint& tint, int y, FrameRow& row) {
    if (y < tint.reach.minRow || y > tint.reach.maxRow)
        return;
    for (int x = tint.reach.left; x <= tint.reach.right; ++x) {
        const double coverage = Coverage(tint.signedDistance(PixelCentre(x, y)), tint.edgeWidthPixels);
        for (std::size_t c = 0; c < channelCount; ++c)
            row[static_cast<std::size_t>(x)][c] *= 1.0 + coverage * (tint.transmission[c] - 1.0);
    }
}

void AddNoise(double sigma, ReproducibleRandom& random, FrameRow& row) {
    for (ChannelValues& pixel : row)
        for (double& intensity : pixel)
            intensity += sigma * random.Normal();
}

std::uint8_t Quantized(double intensity) {
    return static_cast<std::uint8_t>(std::clamp(std::floor(intensity + 0.5), 0.0, 255.0));
}

void StoreRow(const FrameRow& row, int y, FrameBuffer& frame) {
    for (int x = 0; x < frameWidth; ++x) {
        const ChannelValues& pixel = row[static_cast<std::size_t>(x)];
        frame.SetPixel(x, y, Quantized(pixel[0]), Quantized(pixel[1]), Quantized(pixel[2]));
    }
}

} // namespace

void DrawField(const SimulatedField& field, std::uint64_t seed, FrameBuffer& frame) {
    const std::vector<Tint> tints = TintsOf(field);
    ReproducibleRandom random(seed);
    FrameRow row;
    for (int y = 0; y < frameHeight; ++y) {
        LayBareSubstrate(field, y, row);
        for (const Tint& tint : tints)
            TintRow(tint, y, row);
        AddNoise(field.noiseSigma, random, row);
        StoreRow(row, y, frame);
    }
}

double Coverage(double signedDistance, double edgeWidth) {
    return std::clamp(0.5 - signedDistance / std::max(edgeWidth, hardEdgeWidth), 0.0, 1.0);
}

ChannelValues Transmission(const ChannelValues& contrastPercent) {
    ChannelValues transmission = {};
    for (std::size_t c = 0; c < channelCount; ++c)
        transmission[c] = 1.0 + contrastPercent[c] / 100.0;
    return transmission;
}

ChannelValues LayerContrastPercent(const ChannelValues& singleLayerContrastPercent, int layers) {
    ChannelValues contrast = LayerTransmission(singleLayerContrastPercent, layers);
    for (double& channel : contrast)
        channel = (channel - 1.0) * 100.0;
    return contrast;
}

double Illumination(const SimulatedField& field, Vertex point) {
    constexpr double centreX = frameWidth / 2.0;
    constexpr double centreY = frameHeight / 2.0;
    constexpr double squaredCornerDistance = centreX * centreX + centreY * centreY;
    const double x = point.x - centreX;
    const double y = point.y - centreY;
    return 1.0 - field.cornerFalloff * (x * x + y * y) / squaredCornerDistance;
}

double FlakeAreaUm2(const SimulatedFlake& flake) {
    return OutlineArea(flake.outline) / (framePixelsPerUm * framePixelsPerUm);
}

PixelBox FlakeBox(const SimulatedFlake& flake) {
    return PixelsAround(flake.outline);
}

} // namespace tessaro
