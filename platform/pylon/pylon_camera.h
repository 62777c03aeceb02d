#pragma once

#include "platform/camera_device.h"

#include <deque>
#include <memory>
#include <pylon/BaslerUniversalInstantCamera.h>
#include <pylon/PylonIncludes.h>
#include <string>

namespace tessaro {

/// A camera of the vendor's runtime. Images are to be destroyed on the thread that uses the camera.
class PylonCamera : public CameraDevice, private GrabResult::BufferOwner {
public:
    /// Creates the camera with this serial number, or the first one for an empty text.
    PylonCamera(std::shared_ptr<void> library, std::string camera);

    void Open() override;
    bool IsOpen() const override;

    bool IsReadable(std::string_view feature) override;
    bool IsWritable(std::string_view feature) override;

    std::string GetEnumeration(std::string_view feature) override;
    void SetEnumeration(std::string_view feature, std::string_view value) override;
    std::vector<std::string> SettableValues(std::string_view feature) override;
    double GetFloat(std::string_view feature) override;
    void SetFloat(std::string_view feature, double value) override;
    std::int64_t GetInteger(std::string_view feature) override;
    void SetInteger(std::string_view feature, std::int64_t value) override;
    IntegerRange GetIntegerRange(std::string_view feature) override;
    void SetBoolean(std::string_view feature, bool value) override;

    void SetMaxNumBuffer(int count) override;
    void StartGrabbing(int count) override;
    bool IsGrabbing() const override;
    GrabResult RetrieveResult(std::uint32_t timeoutMilliseconds) override;
    GrabResult GrabOne(std::uint32_t timeoutMilliseconds) override;
    void RegisterConfiguration(Acquisition acquisition) override;

private:
    using Image = Pylon::CGrabResultPtr; // shares a buffer of the runtime's

    template<class Question>
    bool AskAbout(std::string_view feature, const Question& question);
    void SelectWholeSensor();
    void RememberSize();
    void RequireNotRemoved() const;
    void RequireOpen() const;
    void PrepareGrab();
    Image& FreeImage();
    bool WaitForImage(Image& image, std::uint32_t timeoutMilliseconds);
    GrabResult::Image Describe(const Image& image) const;
    void Release(void* buffer) noexcept override;

    const std::shared_ptr<void> m_library; // outlives the members below
    const std::string m_wanted;            // serial number or address; empty: the first one
    Pylon::CBaslerUniversalInstantCamera m_camera;
    std::int64_t m_width = 0; // of the images that it was set to
    std::int64_t m_height = 0;
    int m_maxNumBuffer = 10;
    std::deque<Image> m_images; // those that are held; never shrinks, and grows only before a grab
};

} // namespace tessaro
