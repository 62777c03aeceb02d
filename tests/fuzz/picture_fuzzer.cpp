#include "analyze/picture_analysis.h"
#include "analyze/report_json.h"
#include "analyze/white_balance.h"
#include "imaging/picture_to_frame.h"
#include "platform/qt/qt_drawing_surface.h"
#include "platform/qt/qt_picture_files.h"
#include "platform/qt/qt_runtime.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

// A picture file, whatever its bytes, to its line of JSON and the annotated picture.

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tessaro;
    static const QtRuntime runtime;
    static QtPictureFiles files;
    const auto decoded = files.Decode({data, size});
    const Picture* picture = std::get_if<Picture>(&decoded);
    if (picture == nullptr)
        return 0;
    if (picture->pixels.size() !=
        static_cast<std::size_t>(picture->width) * static_cast<std::size_t>(picture->height) * 4)
        std::abort();
    FrameBuffer frame;
    if (size % 2 == 0)
        PictureToFrame(*picture, frame);
    else
        BalancedFrame(*picture, frame);
    Picture annotated = FrameToPicture(frame);
    QtDrawingSurface surface(annotated);
    if (ReportJson(AnalyzeFrame(frame, Settings{}, &surface)).empty())
        std::abort();
    return 0;
}
