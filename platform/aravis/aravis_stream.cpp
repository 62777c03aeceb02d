#include "platform/aravis/aravis_stream.h"

#include "platform/aravis/aravis_features.h"

#include <algorithm>
#include <memory>
#include <new>

namespace tessaro {

namespace {

using std::chrono::duration_cast;
using std::chrono::microseconds;
using std::chrono::nanoseconds;
using std::chrono::steady_clock;

// One that is being filled and one that comes next, besides those that wait or are held.
constexpr int buffersInFlight = 2;
constexpr gint socketBufferBytes = 1 << 25;
constexpr std::size_t largestPayload = std::size_t{1} << 28;
// No image is longer on its way. One that comes later is of this grab, whatever its time says.
constexpr std::chrono::seconds longestTransfer(1);
constexpr std::uint64_t nanosecondsPerSecond = 1'000'000'000;

std::atomic<std::uint64_t> lastGeneration = 0;

struct FrameMemory {
    std::uint64_t generation;
    std::unique_ptr<std::uint8_t[]> samples;
};

ArvBuffer* NewBuffer(std::size_t size, std::uint64_t generation) {
    auto memory = std::make_unique<FrameMemory>();
    memory->generation = generation;
    memory->samples.reset(new (std::nothrow) std::uint8_t[size]);
    if (memory->samples == nullptr)
        throw CameraError("There is no memory for the camera's images");
    std::uint8_t* samples = memory->samples.get();
    return arv_buffer_new_full(size, samples, memory.release(),
                               [](gpointer data) { delete static_cast<FrameMemory*>(data); });
}

// When its first packet arrived. The library notes that by the clock on the wall, which may be set in
// between.
steady_clock::time_point ArrivalOf(ArvBuffer* buffer) {
    const auto arrival = static_cast<std::int64_t>(arv_buffer_get_system_timestamp(buffer));
    const std::int64_t now = g_get_real_time() * 1000;
    return steady_clock::now() - duration_cast<steady_clock::duration>(nanoseconds(now - arrival));
}

bool IsCommandAvailable(ArvDevice* device, const char* command, const char* value) {
    return IsFeatureWritable(device, command) && IsFeatureReadable(device, value);
}

} // namespace

AravisStream::AravisStream(ArvCamera* camera) : m_camera(camera), m_device(arv_camera_get_device(camera)) {
    if (IsCommandAvailable(m_device, "TimestampLatch", "TimestampLatchValue"))
        m_clock = DeviceClock::Standard;
    else if (IsCommandAvailable(m_device, "GevTimestampControlLatch", "GevTimestampValue") &&
             IsFeatureReadable(m_device, "GevTimestampTickFrequency")) {
        m_tickFrequency =
            static_cast<std::uint64_t>(GetIntegerFeature(m_device, "GevTimestampTickFrequency"));
        m_clock = m_tickFrequency > 0 ? DeviceClock::Ticks : DeviceClock::None;
    }
    if (m_clock != DeviceClock::None && !DoesClockRun())
        m_clock = DeviceClock::None;
    m_stream =
        Checked([&](GError** error) { return arv_camera_create_stream(camera, &OnEvent, this, error); });
    if (m_stream == nullptr)
        throw CameraError("The camera has no stream");
    NoteSize();
    if (ARV_IS_GV_STREAM(m_stream)) // as much as the system allows; by itself it asks for one image's samples
        g_object_set(m_stream, "socket-buffer", ARV_GV_STREAM_SOCKET_BUFFER_FIXED, "socket-buffer-size",
                     socketBufferBytes, nullptr);
}

AravisStream::~AravisStream() {
    g_object_unref(m_stream); // waits for the stream's thread
}

void AravisStream::NoteSize() {
    m_width = static_cast<int>(GetIntegerFeature(m_device, "Width"));
    m_height = static_cast<int>(GetIntegerFeature(m_device, "Height"));
}

void AravisStream::Start(int maxWaiting) {
    Stop();
    PrepareBuffers(maxWaiting);
    m_exposure = microseconds(0);
    if (Checked([&](GError** error) { return arv_camera_is_exposure_time_available(m_camera, error); }) !=
        FALSE)
        m_exposure = microseconds(static_cast<std::int64_t>(
            std::clamp(Checked([&](GError** error) { return arv_camera_get_exposure_time(m_camera, error); }),
                       0.0, 1e9)));
    Forget();
    NoteStart();
    AskForNext();
}

void AravisStream::Stop() {
    if (!m_sending)
        return;
    Checked([&](GError** error) { arv_camera_stop_acquisition(m_camera, error); });
    m_sending = false;
}

void AravisStream::AskForNext() {
    m_sending = true; // perhaps even if this fails
    Checked([&](GError** error) { arv_camera_start_acquisition(m_camera, error); });
}

ArvBuffer* AravisStream::Take(microseconds limit) {
    const auto end = steady_clock::now() + limit;
    while (true) {
        const auto left = duration_cast<microseconds>(end - steady_clock::now());
        ArvBuffer* buffer = left.count() > 0
                                ? arv_stream_timeout_pop_buffer(m_stream, static_cast<guint64>(left.count()))
                                : arv_stream_try_pop_buffer(m_stream);
        if (buffer == nullptr)
            return nullptr;
        ++m_held;
        NoteWhetherImagesCarryTime(buffer);
        if (IsOfThisGrab(buffer))
            return buffer;
        Recycle(buffer);
    }
}

bool AravisStream::Owns(ArvBuffer* buffer) const {
    return static_cast<const FrameMemory*>(arv_buffer_get_user_data(buffer))->generation == m_generation;
}

void AravisStream::Recycle(ArvBuffer* buffer) {
    --m_held;
    arv_buffer_set_timestamp(buffer, 0);
    arv_buffer_set_system_timestamp(buffer, 0);
    arv_stream_push_buffer(m_stream, buffer);
}

void AravisStream::OnEvent(void* stream, ArvStreamCallbackType type, ArvBuffer*) {
    if (type == ARV_STREAM_CALLBACK_TYPE_BUFFER_DONE)
        static_cast<AravisStream*>(stream)->LetOldestGiveWay();
}

void AravisStream::LetOldestGiveWay() {
    gint waiting = 0;
    arv_stream_get_n_buffers(m_stream, nullptr, &waiting);
    for (int allowed = std::max(0, m_maxWaiting - m_held); waiting > allowed; --waiting) {
        ArvBuffer* oldest = arv_stream_try_pop_buffer(m_stream);
        if (oldest == nullptr)
            return;
        arv_stream_push_buffer(m_stream, oldest);
    }
}

void AravisStream::PrepareBuffers(int maxWaiting) {
    const std::size_t payload =
        Checked([&](GError** error) { return arv_camera_get_payload(m_camera, error); });
    if (payload == 0 || payload > largestPayload)
        throw CameraError("The camera's images have an impossible size");
    if (payload == m_payload && maxWaiting == m_maxWaiting)
        return;
    m_payload = 0; // until all are there
    arv_stream_stop_thread(m_stream, TRUE);
    arv_stream_start_thread(m_stream);
    m_generation = ++lastGeneration;
    m_held = 0;
    m_maxWaiting = maxWaiting;
    for (int count = 0; count < maxWaiting + buffersInFlight; ++count)
        arv_stream_push_buffer(m_stream, NewBuffer(payload, m_generation));
    m_payload = payload;
}

void AravisStream::Forget() {
    while (ArvBuffer* buffer = arv_stream_try_pop_buffer(m_stream))
        arv_stream_push_buffer(m_stream, buffer);
}

void AravisStream::NoteStart() {
    m_startOfProgram = steady_clock::now();
    if (m_clock != DeviceClock::None)
        m_startOfDevice = LatchDeviceTime();
}

bool AravisStream::DoesClockRun() const {
    try {
        return LatchDeviceTime() > 0;
    } catch (const CameraLostError&) {
        throw;
    } catch (const CameraError&) {
        return false;
    }
}

// Compared with the clock, images without a time would all be held for earlier ones.
void AravisStream::NoteWhetherImagesCarryTime(ArvBuffer* buffer) {
    if (arv_buffer_get_status(buffer) == ARV_BUFFER_STATUS_SUCCESS && arv_buffer_get_timestamp(buffer) == 0)
        m_clock = DeviceClock::None;
}

std::uint64_t AravisStream::LatchDeviceTime() const {
    if (m_clock == DeviceClock::Standard) {
        ExecuteCommandFeature(m_device, "TimestampLatch");
        return static_cast<std::uint64_t>(GetIntegerFeature(m_device, "TimestampLatchValue"));
    }
    ExecuteCommandFeature(m_device, "GevTimestampControlLatch");
    const auto ticks = static_cast<std::uint64_t>(GetIntegerFeature(m_device, "GevTimestampValue"));
    return ticks / m_tickFrequency * nanosecondsPerSecond +
           ticks % m_tickFrequency * nanosecondsPerSecond / m_tickFrequency;
}

bool AravisStream::IsOfThisGrab(ArvBuffer* buffer) const {
    if (arv_buffer_get_system_timestamp(buffer) == 0)
        return arv_buffer_get_status(buffer) !=
               ARV_BUFFER_STATUS_SUCCESS; // its first packet got lost: no picture
    const auto arrival = ArrivalOf(buffer);
    if (arrival < m_startOfProgram)
        return false;
    if (m_clock != DeviceClock::None && arv_buffer_get_timestamp(buffer) >= m_startOfDevice)
        return true;
    // Without a clock to compare with, an image of this grab cannot arrive before it was exposed. That is
    // less sure: an earlier one that was held up for as long as that is taken for a new one.
    const auto allowance = m_clock == DeviceClock::None ? microseconds(0) : microseconds(longestTransfer);
    return arrival >= m_startOfProgram + m_exposure + allowance;
}

} // namespace tessaro
