#pragma once

#include "twin/sensor_renderer.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tessaro {

/// A mosaic to look at by sensor column and row, row 0 at the top.
class Mosaic {
public:
    std::vector<std::uint8_t> bytes = std::vector<std::uint8_t>(twinMosaicBytes);

    double At(int column, int row) const {
        return bytes[static_cast<std::size_t>(row) * twinSensorWidth + static_cast<std::size_t>(column)];
    }

    /// The mean of one sample of each cell, 0 red, 1 and 2 green, 3 blue, over a square of cells around a
    /// cell.
    double MeanAround(int cellColumn, int cellRow, int sample, int reach = 30) const {
        double sum = 0.0;
        int count = 0;
        for (int row = cellRow - reach; row <= cellRow + reach; ++row)
            for (int column = cellColumn - reach; column <= cellColumn + reach; ++column, ++count)
                sum += At(2 * column + sample % 2, 2 * row + sample / 2);
        return sum / count;
    }
};

inline constexpr int middleCellColumn = twinSensorWidth / 4;
inline constexpr int middleCellRow = twinSensorHeight / 4;
inline constexpr double sensorPixelsPerUm = 4.928;

inline Mosaic Rendered(const Wafer& wafer, const StagePosition& position,
                       const ExposureSettings& exposure = {}, std::uint64_t noiseSeed = 1) {
    Mosaic mosaic;
    SensorRenderer(wafer).Render(position, exposure, noiseSeed, mosaic.bytes);
    return mosaic;
}

inline Outline SquareAround(Vertex centre, double side) {
    const double half = side / 2.0;
    return {{centre.x - half, centre.y - half},
            {centre.x + half, centre.y - half},
            {centre.x + half, centre.y + half},
            {centre.x - half, centre.y + half}};
}

inline Wafer BareWafer() {
    return Wafer(WaferOptions(), WaferContents());
}

inline Wafer WaferWithSquare(Vertex centre, double side, int layers, const WaferOptions& options = {}) {
    WaferContents contents;
    contents.flakes.push_back({.outline = SquareAround(centre, side), .layers = layers});
    return Wafer(options, contents);
}

} // namespace tessaro
