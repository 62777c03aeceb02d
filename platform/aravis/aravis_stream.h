#pragma once

#include "platform/aravis/library_calls.h"

#include <atomic>
#include <chrono>
#include <cstdint>

namespace tessaro {

/// The images of one camera. There is one stream for as long as the camera is open, because making one takes
/// longer than an image. Calls marked (library) are made on the library's thread, the others on that of the
/// program, which waits meanwhile.
class AravisStream {
public:
    /// (library) `camera` must outlive it.
    explicit AravisStream(ArvCamera* camera);
    ~AravisStream(); // (library)
    AravisStream(const AravisStream&) = delete;
    AravisStream& operator=(const AravisStream&) = delete;

    /// (library) Takes the size that the camera is set to for the one that images must have. Whoever sets it
    /// through us means it; otherwise it is that of the opening, and images of another would be wrong
    /// pictures.
    void NoteSize();
    /// (library) Forgets all images and lets the camera send, as its features are now. At most `maxWaiting`
    /// images wait or are held at a time; the oldest that waits gives way.
    void Start(int maxWaiting);
    /// (library)
    void Stop();
    /// (library) Asks a camera that sends single images for the next one.
    void AskForNext();

    /// The oldest image that waits and is no older than the last Start; null when none comes in time.
    /// Belongs to the caller, who gives it back to Recycle.
    ArvBuffer* Take(std::chrono::microseconds limit);
    /// Whether `buffer` is of this stream; if not, it may be destroyed at any time.
    bool Owns(ArvBuffer* buffer) const;
    void Recycle(ArvBuffer* buffer);
    /// No image can come until one is given back.
    bool AreAllHeld() const { return m_held >= m_maxWaiting; }

    int Width() const { return m_width; }
    int Height() const { return m_height; }
    /// At the last Start.
    std::chrono::microseconds ExposureTime() const { return m_exposure; }

private:
    enum class DeviceClock { None, Standard, Ticks };

    static void OnEvent(void* stream, ArvStreamCallbackType type, ArvBuffer* buffer);
    void LetOldestGiveWay();
    void PrepareBuffers(int maxWaiting);
    void PushNewBuffer(std::size_t size);
    void Forget();
    void NoteStart();
    bool DoesClockRun() const;
    std::uint64_t LatchDeviceTime() const;
    void NoteWhetherImagesCarryTime(ArvBuffer* buffer);
    bool IsOfThisGrab(ArvBuffer* buffer) const;

    ArvCamera* m_camera;
    ArvDevice* m_device;
    DeviceClock m_clock = DeviceClock::None;
    std::uint64_t m_tickFrequency = 0;

    std::uint64_t m_generation = 0; // of the buffers
    std::size_t m_payload = 0;
    bool m_sending = false;
    int m_width = 0;
    int m_height = 0;
    std::chrono::microseconds m_exposure{0};
    std::uint64_t m_startOfDevice = 0;                      // nanoseconds of the device's clock
    std::chrono::steady_clock::time_point m_startOfProgram; // of the last grab
    std::atomic<int> m_maxWaiting = 0;
    std::atomic<int> m_held = 0;

    ArvStream* m_stream = nullptr; // its thread reads this until the stream is gone
};

} // namespace tessaro
