#include "camera/Basler_camera.h"

#include "camera/camera_features.h"

#include <ostream>
#include <string>

namespace tessaro {
namespace {

constexpr std::uint32_t imageTimeoutMs = 5000;
constexpr std::uint32_t sleepAfterImageMs = 100;
constexpr int maximumImages = 100;

void WriteExposure(CameraDevice& camera, std::ostream& report) {
    report << " exposure time = " << ReadExposureTime(camera) << " us";
}

void WriteGainValue(CameraDevice& camera, std::ostream& report) {
    report << " Gain = " << ReadGain(camera);
}

void WriteBalance(CameraDevice& camera, std::ostream& report) {
    const auto [red, green, blue] = ReadBalanceRatios(camera);
    report << " balance ratio: R = " << red << " G = " << green << " B = " << blue;
}

/// One of the camera's automatic functions.
struct AutomaticFunction {
    std::string_view feature;
    std::string_view unsupported;
    std::string_view tryingContinuous;
    std::string_view tryingOnce;
    std::string_view unfinished;
    bool aimsAtBrightness;
    void (*writeValue)(CameraDevice&, std::ostream&);
};

constexpr AutomaticFunction exposure = {
    "ExposureAuto",
    "The camera does not support Exposure Auto.",
    "ExposureAuto 'GainAuto = Continuous'.", // the slip is meant: logs are compared with older ones
    "Trying 'ExposureAuto = Once'.",
    "The adjustment of auto exposure did not finish.",
    true,
    WriteExposure};

constexpr AutomaticFunction gain = {"GainAuto",
                                    "The camera does not support Gain Auto.",
                                    "Trying 'GainAuto = Continuous'.",
                                    "Trying 'GainAuto = Once'.",
                                    "The adjustment of auto gain did not finish.",
                                    true,
                                    WriteGainValue};

constexpr AutomaticFunction whiteBalance = {"BalanceWhiteAuto",
                                            "The camera does not support Balance White Auto.",
                                            "",
                                            "Trying 'BalanceWhiteAuto = Once'.",
                                            "The adjustment of auto white balance did not finish.",
                                            false,
                                            WriteBalance};

/// Flushed, so that whoever reads along sees how far it is.
void WriteValueLine(const AutomaticFunction& function, std::string_view which, CameraDevice& camera,
                    std::ostream& report) {
    report << which;
    function.writeValue(camera, report);
    report << '\n' << std::flush;
}

/// False where the camera has no such function.
bool Prepare(const AutomaticFunction& function, std::string_view trying, CameraDevice& camera,
             std::ostream& report) {
    if (!camera.IsWritable(function.feature)) {
        report << function.unsupported << '\n' << std::flush;
        return false;
    }
    MeasureWholePicture(camera);
    if (function.aimsAtBrightness)
        SetBrightnessTarget(camera);
    report << trying << '\n';
    WriteValueLine(function, "Initial", camera, report);
    return true;
}

void AdjustContinuously(const AutomaticFunction& function, CameraDevice& camera, std::ostream& report) {
    if (Prepare(function, function.tryingContinuous, camera, report))
        camera.SetEnumeration(function.feature, "Continuous");
}

/// A camera that is done at once still takes an image: none knows its light before.
int TakeImagesUntilOff(const AutomaticFunction& function, CameraDevice& camera, Clock& clock) {
    int n = 0;
    do {
        camera.GrabOne(imageTimeoutMs);
        ++n;
        clock.Sleep(sleepAfterImageMs);
        if (n > maximumImages)
            throw CameraError(std::string(function.unfinished));
    } while (camera.GetEnumeration(function.feature) != "Off");
    return n;
}

void AdjustOnce(const AutomaticFunction& function, CameraDevice& camera, Clock& clock, std::ostream& report) {
    if (!Prepare(function, function.tryingOnce, camera, report))
        return;
    camera.SetEnumeration(function.feature, "Once");
    const int n = TakeImagesUntilOff(function, camera, clock);
    report << function.feature << " went back to 'Off' after " << n << " frames.\n";
    WriteValueLine(function, "Final", camera, report);
}

} // namespace

void AdjustExposureContinuously(CameraDevice& camera, std::ostream& report) {
    AdjustContinuously(exposure, camera, report);
}

void AdjustExposureOnce(CameraDevice& camera, Clock& clock, std::ostream& report) {
    AdjustOnce(exposure, camera, clock, report);
}

void AdjustGainContinuously(CameraDevice& camera, std::ostream& report) {
    AdjustContinuously(gain, camera, report);
}

void AdjustGainOnce(CameraDevice& camera, Clock& clock, std::ostream& report) {
    AdjustOnce(gain, camera, clock, report);
}

void AdjustWhiteBalanceOnce(CameraDevice& camera, Clock& clock, std::ostream& report) {
    AdjustOnce(whiteBalance, camera, clock, report);
}

} // namespace tessaro
