#include "app/camera_choice.h"

#include "platform/aravis/aravis_cameras.h"
#include "platform/standard/absent_cameras.h"

#ifdef TESSARO_HAS_PYLON
#include "platform/pylon/pylon_cameras.h"
#endif

namespace tessaro {
namespace {

#ifdef TESSARO_HAS_PYLON
constexpr std::string_view usualRuntime = "pylon";
#else
constexpr std::string_view usualRuntime = "aravis";
#endif

using Choice = std::variant<std::unique_ptr<CameraRuntime>, OptionError>;

Choice PylonCamerasFor([[maybe_unused]] const std::string& camera) {
#ifdef TESSARO_HAS_PYLON
    return std::make_unique<PylonCameras>(camera);
#else
    return OptionError{"--camera-runtime: 'pylon' is not built into this program, only 'aravis'"};
#endif
}

} // namespace

Choice ChooseCameras(const ProgramOptions& options) {
    const std::string_view runtime =
        options.cameraRuntime.empty() ? usualRuntime : std::string_view(options.cameraRuntime);
    if (options.camera == noDevice)
        return std::make_unique<AbsentCameras>();
    if (runtime == "pylon")
        return PylonCamerasFor(options.camera);
    return std::make_unique<AravisCameras>(options.camera);
}

} // namespace tessaro
