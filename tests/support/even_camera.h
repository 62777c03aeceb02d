#pragma once

#include "camera/camera_session.h"
#include "platform/camera_device.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tessaro {

/// A camera whose images are even, as bright as the test wants, or striped.
class EvenCamera : public CameraRuntime, public GrabResult::BufferOwner {
public:
    void Initialize() override {}
    std::unique_ptr<CameraDevice> CreateFirstDevice() override { return std::make_unique<Device>(*this); }
    void Release(void*) noexcept override {}

    std::function<std::uint8_t(int)> levelOf = [](int) { return std::uint8_t{90}; }; // by image
    std::uint8_t stripes = 0; // by so much every other band of columns is brighter
    int images = 0;           // taken
    bool gone = false;

private:
    static constexpr std::size_t bandSamples = 112; // 22 in a row

    /// Knows no features but the one that says that its images are what the program needs.
    class Device : public CameraDevice {
    public:
        explicit Device(EvenCamera& camera) : m_camera(camera) {}

        void Open() override {}
        bool IsOpen() const override { return true; }
        bool IsReadable(std::string_view) override { return false; }
        bool IsWritable(std::string_view) override { return false; }
        std::string GetEnumeration(std::string_view) override { return "BayerRG8"; }
        void SetEnumeration(std::string_view, std::string_view) override {}
        std::vector<std::string> SettableValues(std::string_view) override { return {}; }
        double GetFloat(std::string_view) override { return 0.0; }
        void SetFloat(std::string_view, double) override {}
        std::int64_t GetInteger(std::string_view) override { return 0; }
        void SetInteger(std::string_view, std::int64_t) override {}
        IntegerRange GetIntegerRange(std::string_view) override { return {}; }
        void SetBoolean(std::string_view, bool) override {}
        void SetMaxNumBuffer(int) override {}
        void StartGrabbing(int count) override { m_left = count; }
        bool IsGrabbing() const override { return m_left > 0; }
        GrabResult RetrieveResult(std::uint32_t) override {
            --m_left;
            return m_camera.TakeImage();
        }
        GrabResult GrabOne(std::uint32_t) override { return m_camera.TakeImage(); }
        void RegisterConfiguration(Acquisition) override {}

    private:
        EvenCamera& m_camera;
        int m_left = 0;
    };

    GrabResult TakeImage() {
        if (gone)
            throw CameraError("it does not answer");
        Paint(levelOf(images++));
        return {{true, sensorWidth, sensorHeight, m_samples}, this, nullptr};
    }

    void Paint(std::uint8_t level) {
        const std::pair<std::uint8_t, std::uint8_t> wanted = {level, stripes};
        if (std::exchange(m_painted, wanted) == wanted)
            return;
        for (std::size_t i = 0; i < m_samples.size(); ++i)
            m_samples[i] = static_cast<std::uint8_t>(level + (i / bandSamples % 2 == 0 ? 0 : stripes));
    }

    std::optional<std::pair<std::uint8_t, std::uint8_t>> m_painted; // level and stripes
    std::vector<std::uint8_t> m_samples = std::vector<std::uint8_t>(sensorByteCount);
};

} // namespace tessaro
