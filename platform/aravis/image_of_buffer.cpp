#include "platform/aravis/image_of_buffer.h"

#include <string>

namespace tessaro {

namespace {

bool HoldsAnImage(ArvBuffer* buffer) {
    switch (arv_buffer_get_payload_type(buffer)) {
    case ARV_BUFFER_PAYLOAD_TYPE_IMAGE:
    case ARV_BUFFER_PAYLOAD_TYPE_EXTENDED_CHUNK_DATA:
        return true;
    case ARV_BUFFER_PAYLOAD_TYPE_MULTIPART:
        return arv_buffer_get_n_parts(buffer) > 0 &&
               arv_buffer_get_part_data_type(buffer, 0) == ARV_BUFFER_PART_DATA_TYPE_2D_IMAGE;
    default:
        return false;
    }
}

std::string SizeText(int width, int height) {
    return std::to_string(width) + " x " + std::to_string(height);
}

void CheckSize(ArvBuffer* buffer, int width, int height) {
    const int sentWidth = arv_buffer_get_image_width(buffer);
    const int sentHeight = arv_buffer_get_image_height(buffer);
    if (sentWidth != width || sentHeight != height)
        throw CameraError("The camera sent an image of " + SizeText(sentWidth, sentHeight) +
                          " pixels instead of " + SizeText(width, height));
}

void CheckSamples(ArvBuffer* buffer) {
    if (arv_buffer_get_image_pixel_format(buffer) != ARV_PIXEL_FORMAT_BAYER_RG_8)
        throw CameraError("The camera sent an image that is not BayerRG8");
    gint paddingX = 0;
    gint paddingY = 0;
    arv_buffer_get_image_padding(buffer, &paddingX, &paddingY);
    if (paddingX != 0)
        throw CameraError("The camera sent an image with padded rows");
}

} // namespace

GrabResult::Image ImageOf(ArvBuffer* buffer, int width, int height) {
    const ArvBufferStatus status = arv_buffer_get_status(buffer);
    if (status == ARV_BUFFER_STATUS_SIZE_MISMATCH)
        throw CameraError("The camera sent more than an image of " + SizeText(width, height) + " pixels");
    if (status != ARV_BUFFER_STATUS_SUCCESS)
        return {};
    if (!HoldsAnImage(buffer))
        throw CameraError("The camera sent something that is no image");
    CheckSize(buffer, width, height);
    CheckSamples(buffer);
    std::size_t size = 0;
    const auto* samples = static_cast<const std::uint8_t*>(arv_buffer_get_image_data(buffer, &size));
    const std::size_t needed = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    if (samples == nullptr || width <= 0 || height <= 0 || size < needed)
        throw CameraError("The camera sent less than an image of " + SizeText(width, height) + " pixels");
    return {true, width, height, {samples, needed}};
}

} // namespace tessaro
