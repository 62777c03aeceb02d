#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tessaro {

/// Whatever a camera, or the library that speaks to it, could not do; what() is the library's text.
class CameraError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// One image that a camera sent, or failed to send whole. Holds on to the camera's buffer until it is
/// destroyed, which hands the buffer back; the device must outlive it. Costs no allocation.
class GrabResult {
public:
    /// What a buffer is handed back to.
    class BufferOwner {
    public:
        virtual ~BufferOwner() = default;
        virtual void Release(void* buffer) noexcept = 0;
    };

    struct Image {
        bool succeeded = false; // false: packets are missing, and the samples mean nothing
        int width = 0;
        int height = 0;
        std::span<const std::uint8_t> samples; // width x height, from the upper left corner on, row by row
    };

    GrabResult() = default;
    GrabResult(const Image& image, BufferOwner* owner, void* buffer)
        : m_image(image), m_owner(owner), m_buffer(buffer) {}
    GrabResult(GrabResult&& other) noexcept { Swap(other); }
    GrabResult& operator=(GrabResult&& other) noexcept {
        GrabResult(std::move(other)).Swap(*this);
        return *this;
    }
    GrabResult(const GrabResult&) = delete;
    GrabResult& operator=(const GrabResult&) = delete;
    ~GrabResult() {
        if (m_owner != nullptr)
            m_owner->Release(m_buffer);
    }

    bool GrabSucceeded() const { return m_image.succeeded; }
    int GetWidth() const { return m_image.width; }
    int GetHeight() const { return m_image.height; }
    std::span<const std::uint8_t> GetBuffer() const { return m_image.samples; }

private:
    void Swap(GrabResult& other) noexcept {
        std::swap(m_image, other.m_image);
        std::swap(m_owner, other.m_owner);
        std::swap(m_buffer, other.m_buffer);
    }

    Image m_image;
    BufferOwner* m_owner = nullptr;
    void* m_buffer = nullptr;
};

struct IntegerRange {
    std::int64_t minimum = 0;
    std::int64_t maximum = 0;
};

/// How a camera is told to acquire.
enum class Acquisition { SingleFrame, Continuous };

/// Wait for as long as it takes.
inline constexpr std::uint32_t waitWithoutLimit = 0xFFFFFFFF; // milliseconds

/// A colour camera with features after the GenICam standard, called by their names there (SFNC). Every call
/// but IsOpen and IsGrabbing throws CameraError when the camera is gone, and every call but the questions
/// about features that may be missing when it cannot do it: it can do nothing before it is open.
class CameraDevice {
public:
    virtual ~CameraDevice() = default;

    /// A camera that is open already stays so, and only its image is set to the whole sensor again, which may
    /// end a grab. One that was lost is looked for anew.
    virtual void Open() = 0;
    virtual bool IsOpen() const = 0;

    /// False where there is no such feature, where it cannot be read (written) now, and before the camera is
    /// open. Throws when the camera is gone: whoever asks would else take it for one without the feature.
    virtual bool IsReadable(std::string_view feature) = 0;
    virtual bool IsWritable(std::string_view feature) = 0;

    virtual std::string GetEnumeration(std::string_view feature) = 0;
    virtual void SetEnumeration(std::string_view feature, std::string_view value) = 0;
    /// The values that can be set now.
    virtual std::vector<std::string> SettableValues(std::string_view feature) = 0;
    virtual double GetFloat(std::string_view feature) = 0;
    virtual void SetFloat(std::string_view feature, double value) = 0;
    virtual std::int64_t GetInteger(std::string_view feature) = 0;
    virtual void SetInteger(std::string_view feature, std::int64_t value) = 0;
    virtual IntegerRange GetIntegerRange(std::string_view feature) = 0;
    virtual void SetBoolean(std::string_view feature, bool value) = 0;

    /// How many images may wait or be held at a time; takes effect with the next grab.
    virtual void SetMaxNumBuffer(int count) = 0;

    /// Begins to take `count` images, one at least, and forgets those of an earlier grab: no image that is
    /// retrieved is older than this call. Images that nobody fetches in time give way to later ones.
    virtual void StartGrabbing(int count) = 0;

    /// True from StartGrabbing until `count` images were retrieved, whole or not, or the grab failed
    /// otherwise than for lack of time.
    virtual bool IsGrabbing() const = 0;

    /// Waits for the next image. Throws when none comes in time.
    virtual GrabResult RetrieveResult(std::uint32_t timeoutMilliseconds) = 0;

    /// Takes one image by itself. Throws when none comes in time.
    virtual GrabResult GrabOne(std::uint32_t timeoutMilliseconds) = 0;

    virtual void RegisterConfiguration(Acquisition acquisition) = 0;
};

/// The library that knows the cameras.
class CameraRuntime {
public:
    virtual ~CameraRuntime() = default;

    /// Once, before any other call. Throws CameraError.
    virtual void Initialize() = 0;

    /// The first camera found, or the one that the runtime was told to use; not open yet. Throws CameraError
    /// when there is none. Outlives the runtime.
    virtual std::unique_ptr<CameraDevice> CreateFirstDevice() = 0;
};

} // namespace tessaro
