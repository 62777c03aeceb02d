#include "camera/camera.h"

#include "camera/Basler_camera.h"
#include "camera/camera_features.h"
#include "camera/exposure_mean.h"
#include "camera/frame_grabber.h"
#include "camera/test_pattern.h"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <utility>

namespace tessaro {
namespace {

constexpr const char* pixelFormat = "PixelFormat";
constexpr const char* bayerRggb8 = "BayerRG8";
constexpr const char* gainAuto = "GainAuto";
constexpr const char* exposureAuto = "ExposureAuto";

constexpr std::uint32_t waitBeforeExposureMs = 100;
constexpr std::uint32_t singleFrameTimeoutMs = 5000;
constexpr int bufferCount = 10;

} // namespace

int Camera::InitializeCamera() {
    try {
        m_runtime.Initialize();
        std::unique_ptr<CameraDevice> camera = m_runtime.CreateFirstDevice();
        m_session.grabResult = GrabResult(); // before the camera that it came from
        m_session.camera = std::move(camera);
        m_session.present = m_session.camera != nullptr ? 1 : 0;
        return 1;
    } catch (const std::exception&) {
        SayThatThereIsNone();
        return 0;
    }
}

int Camera::ControlCamera(int mode) {
    if (m_session.present == 0) {
        SayThatThereIsNone();
        return 0;
    }
    try {
        RunMode(mode);
    } catch (const std::exception&) {
        SayThatThereIsNone();
    }
    return 0;
}

void Camera::RunMode(int mode) {
    switch (mode) {
    case camera_mode::openAndAdjust:
        OpenAndAdjust();
        break;
    case camera_mode::adjustOnce:
        AdjustOnce();
        break;
    case camera_mode::takeSingleFrame:
        TakeSingleFrame();
        break;
    case camera_mode::applyStored:
        ApplyStored();
        break;
    default:
        break;
    }
}

/// The device is asked for anew at each step, since anything may happen during the wait.
void Camera::OpenAndAdjust() {
    m_status.ShowInformation("Camera Opening");
    Device().Open();
    if (Device().GetEnumeration(pixelFormat) != bayerRggb8)
        Device().SetEnumeration(pixelFormat, bayerRggb8);
    m_status.ShowInformation("Camera Auto Gain Control");
    AdjustGainContinuously(Device(), m_report);
    m_status.ShowInformation("Camera Auto Exposure ");
    m_pump.PumpMessages(waitBeforeExposureMs);
    AdjustExposureContinuously(Device(), m_report);
    Device().SetMaxNumBuffer(bufferCount);
}

void Camera::AdjustOnce() {
    Device().SetEnumeration(gainAuto, "Once");
    AdjustGainOnce(Device(), m_clock, m_report);
    Device().SetEnumeration(exposureAuto, "Once");
    AdjustExposureOnce(Device(), m_clock, m_report);
    m_session.storedGain = ReadGain(Device());
    m_session.storedExposureTimeUs = ReadExposureTime(Device());
}

void Camera::TakeSingleFrame() {
    if (m_session.grabResult.GrabSucceeded()) {
        m_session.width = m_session.grabResult.GetWidth();
        m_session.height = m_session.grabResult.GetHeight();
    }
    Device().RegisterConfiguration(Acquisition::SingleFrame);
    m_session.grabResult = Device().GrabOne(singleFrameTimeoutMs);
    if (m_session.grabResult.GrabSucceeded())
        AddExposure(m_session, m_session.grabResult, true);
    Device().RegisterConfiguration(Acquisition::Continuous);
}

void Camera::ApplyStored() {
    Device().SetEnumeration(gainAuto, "Off");
    Device().SetEnumeration(exposureAuto, "Off");
    WriteGain(Device(), m_session.storedGain);
    WriteExposureTime(Device(), m_session.storedExposureTimeUs);
    std::snprintf(m_session.statusText.data(), m_session.statusText.size(), "exposure time: %.1f",
                  m_session.storedExposureTimeUs);
    m_status.ShowInformation(m_session.statusText.data());
}

int Camera::GrabFrame(int frames) {
    try {
        if (m_session.present != 0) {
            FrameGrabber(m_session, m_clock, frames).Grab();
            m_session.patternStandsIn = 0;
            return 0;
        }
    } catch (const std::exception&) {
        // The moving pattern is how it shows; nothing is reported.
    }
    DrawTestPattern(m_session);
    m_session.patternStandsIn = 1;
    return 0;
}

bool Camera::IsColorCamera() {
    try {
        const std::vector<std::string> formats = Device().SettableValues(pixelFormat);
        return std::any_of(formats.begin(), formats.end(), [](const std::string& format) {
            return format.find("Bayer") != std::string::npos;
        });
    } catch (const std::exception&) {
        return false;
    }
}

CameraDevice& Camera::Device() {
    if (m_session.camera == nullptr)
        throw CameraError("there is no camera");
    return *m_session.camera;
}

void Camera::SayThatThereIsNone() {
    m_status.ShowInformation("No camera detected");
}

} // namespace tessaro
