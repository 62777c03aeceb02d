#include "twin/operator_view.h"

#include "twin/sensor_renderer.h"

#include <cstddef>

namespace tessaro {

void MosaicToFrame(std::span<const std::uint8_t> mosaic, FrameBuffer& frame) {
    if (mosaic.size() != twinMosaicBytes)
        return;
    for (int row = 0; row < frameHeight; ++row) {
        const std::uint8_t* upper = mosaic.data() + static_cast<std::size_t>(row) * 2 * twinSensorWidth;
        const std::uint8_t* lower = upper + twinSensorWidth;
        for (int x = 0; x < frameWidth; ++x, upper += 2, lower += 2)
            frame.SetPixel(x, StoredRow(row), upper[0], static_cast<std::uint8_t>((upper[1] + lower[0]) >> 1),
                           lower[1]);
    }
}

} // namespace tessaro
