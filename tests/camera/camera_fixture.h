#pragma once

#include "camera/camera.h"
#include "platform/fake/scripted_camera.h"
#include "support/shell_fixture.h"

#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace tessaro {

using Texts = std::vector<std::string>;
using Samples = ScriptedCamera::Samples;

/// All features that adjusting uses, under their names in the current standard.
inline void AddStandardFeatures(ScriptedCamera& camera) {
    using Enumeration = ScriptedFeature::Enumeration;
    using Integer = ScriptedFeature::Integer;
    auto& features = camera.features;
    features["PixelFormat"] = {Enumeration{"Mono8", {"Mono8", "BayerRG8", "RGB8"}}};
    for (const char* function : {"GainAuto", "ExposureAuto", "BalanceWhiteAuto"})
        features[function] = {Enumeration{"Off", {"Off", "Once", "Continuous"}}};
    features["Gain"] = {1.5};
    features["ExposureTime"] = {5000.0};
    features["BalanceRatioSelector"] = {Enumeration{"Red", {"Red", "Green", "Blue"}}};
    features["BalanceRatio"] = {1.0};
    features["AutoFunctionROISelector"] = {Enumeration{"ROI2", {"ROI1", "ROI2"}}};
    features["AutoFunctionROIUseBrightness"] = {false};
    features["AutoFunctionROIOffsetX"] = {Integer{100, {0, 2000}}};
    features["AutoFunctionROIOffsetY"] = {Integer{50, {2, 2000}}};
    features["AutoFunctionROIWidth"] = {Integer{64, {16, 2464}}};
    features["AutoFunctionROIHeight"] = {Integer{64, {16, 2054}}};
    features["AutoTargetBrightness"] = {0.5};
}

/// A camera session on a scripted camera, with pump and control panel.
class CameraFixture : public ShellFixture {
protected:
    CameraFixture() { AddStandardFeatures(scripted); }

    /// Found and open; the calls up to here are forgotten.
    void Connect() {
        ASSERT_EQ(camera.InitializeCamera(), 1);
        session->camera->Open();
        scripted.calls.clear();
    }

    void ThenEvenImage(std::uint8_t level) {
        scripted.ThenImage(sensorWidth, sensorHeight, Samples(sensorByteCount, level));
    }

    int WorkingByte(int x, int storedRow, int byte) const {
        return session->workingFrame.Data()[PixelOffset(x, storedRow) + static_cast<std::size_t>(byte)];
    }

    ScriptedCamera scripted{[](const std::string& breach) { ADD_FAILURE() << breach; }};
    std::unique_ptr<CameraSession> session = std::make_unique<CameraSession>(); // goes before the camera
    std::ostringstream report;
    Camera camera{*session, scripted, status, pump, ui.clock, report};
};

} // namespace tessaro
