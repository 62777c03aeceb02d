#pragma once

#include "platform/pylon/pylon_cameras.h"
#include "tests/pylon_standin/pylon_standin.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace tessaro {

using pylon_standin::Camera;
using pylon_standin::Enumeration;
using pylon_standin::Frame;
using pylon_standin::Integer;
using pylon_standin::TheRuntime;

inline constexpr std::uint32_t frameWidth = 6;
inline constexpr std::uint32_t frameHeight = 4;
inline constexpr std::size_t frameBytes = 24;

inline Frame WholeFrame(std::uint8_t first) {
    Frame frame{frameWidth, frameHeight, {}};
    for (std::size_t i = 0; i < frameBytes; ++i)
        frame.bytes.push_back(static_cast<std::uint8_t>(first + i));
    return frame;
}

inline std::shared_ptr<Camera> PlugIn(const std::string& serialNumber) {
    auto camera = std::make_shared<Camera>();
    camera->serialNumber = serialNumber;
    camera->features = {
        {"PixelFormat", {Enumeration{"BayerRG8", {"Mono8", "BayerRG8", "BayerRG12"}}}},
        {"AcquisitionMode", {Enumeration{"MultiFrame", {"SingleFrame", "Continuous"}}}},
        {"Gain", {1.5}},
        {"ExposureTime", {5000.0}},
        {"OffsetX", {Integer{2, 0, 4}}},
        {"OffsetY", {Integer{2, 1, 2}}},
        {"Width", {Integer{2, 2, frameWidth}}}, // a part of the sensor
        {"Height", {Integer{2, 2, frameHeight}}},
        {"AutoFunctionROIUseBrightness", {false}},
    };
    for (const char* feature : {"PixelFormat", "AcquisitionMode", "OffsetX", "OffsetY", "Width", "Height"})
        camera->features[feature].lockedByGrabs = true;
    TheRuntime().cameras.push_back(camera);
    return camera;
}

/// A fresh runtime that knows one camera.
struct PylonMachine {
    PylonMachine() {
        TheRuntime() = {};
        camera = PlugIn("40000001");
    }

    CameraRuntime& Runtime() { return cameras; }
    void ExpectImages(int count) {
        for (int image = 0; image < count; ++image)
            camera->frames.push_back(WholeFrame(++m_sent));
    }
    void FallSilent() { camera->frames.clear(); }
    void Disappear() { camera->removed = true; }

    std::shared_ptr<Camera> camera;
    PylonCameras cameras;

private:
    std::uint8_t m_sent = 0;
};

class PylonCameraTest : public testing::Test {
protected:
    PylonCameraTest() {
        m_machine.cameras.Initialize();
        m_device = m_machine.cameras.CreateFirstDevice();
        m_device->Open();
        TheRuntime().calls.clear();
    }

    using Calls = std::vector<std::string>;

    static std::string ErrorOf(const std::function<void()>& action) {
        try {
            action();
        } catch (const CameraError& error) {
            return error.what();
        }
        return "no error";
    }

    /// The error of an image that the camera sends.
    std::string ErrorOfFrame(const Frame& frame) {
        m_machine.camera->frames.push_back(frame);
        m_device->StartGrabbing(1);
        return ErrorOf([this] { m_device->RetrieveResult(100); });
    }

    Camera& OnCable() { return *m_machine.camera; }

    PylonMachine m_machine;
    std::unique_ptr<CameraDevice> m_device;
};

} // namespace tessaro
