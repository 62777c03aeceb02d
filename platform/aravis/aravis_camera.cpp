#include "platform/aravis/aravis_camera.h"

#include "platform/aravis/aravis_features.h"
#include "platform/aravis/aravis_session.h"
#include "platform/aravis/image_of_buffer.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace tessaro {

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

// How long the end of the program, and a camera that is opened again, wait for a tear-down.
constexpr milliseconds tearDownTime(1'500);
// From when it is known where the camera is until it is open. One that cannot be asked whether it is there
// gets longer: a call that takes its time cannot be told from one that hangs.
constexpr milliseconds openingTime(2'250);
constexpr milliseconds openingTimeOfSilentCamera(5'000);
// An image that has not come by then makes the camera's presence questionable.
constexpr milliseconds transferTime(1'000);
constexpr milliseconds slice(100);
constexpr int mostBuffers = 100;

} // namespace

AravisCamera::AravisCamera(CameraSearch search) : m_search(std::move(search)) {}

AravisCamera::~AravisCamera() {
    LetGo();
    WaitForTearDown(steady_clock::now() + tearDownTime);
}

template<typename Use>
auto AravisCamera::Connected(Use use) {
    if (m_connection == nullptr && m_wasLost)
        throw CameraLostError(m_reason);
    if (m_connection == nullptr)
        throw CameraError(m_reason);
    try {
        return use(*m_connection);
    } catch (const CameraLostError& error) {
        m_reason = error.what();
        m_wasLost = true;
        LetGo();
        throw;
    }
}

template<typename Call>
auto AravisCamera::OnDevice(Call call) {
    return Connected([&](AravisConnection& connection) {
        return connection.Ask(
            [call = std::move(call)](AravisSession& session) { return call(session.Device()); });
    });
}

template<typename Use>
auto AravisCamera::OrEndGrab(Use use) {
    return Connected([&](AravisConnection& connection) {
        try {
            return use(connection);
        } catch (...) {
            EndGrab(connection);
            throw;
        }
    });
}

template<typename Question>
bool AravisCamera::Answers(Question question) {
    try {
        return OnDevice(std::move(question));
    } catch (const CameraLostError&) {
        throw;
    } catch (const CameraError&) {
        return false;
    }
}

void AravisCamera::LetGo() noexcept {
    m_remaining = 0;
    if (m_connection == nullptr)
        return;
    m_tearingDown.push_back(m_connection->End());
    m_connection.reset();
}

void AravisCamera::ForgetTornDown() {
    std::erase_if(m_tearingDown, [](const LibraryThread::Ending& ending) { return ending.HasEnded(); });
}

void AravisCamera::WaitForTearDown(steady_clock::time_point limit) {
    for (const LibraryThread::Ending& ending : m_tearingDown)
        ending.WaitUntil(limit);
    ForgetTornDown();
}

void AravisCamera::Open() {
    if (IsOpen()) {
        m_remaining = 0;
        Connected([](AravisConnection& connection) {
            connection.Ask([](AravisSession& session) {
                session.Stream().Stop(); // a camera that sends keeps its size
                session.SelectWholeSensor();
            });
        });
        return;
    }
    LetGo();
    ForgetTornDown();
    const CameraPlace place = m_search.Find();
    const auto limit = steady_clock::now() + (place.address ? openingTime : openingTimeOfSilentCamera);
    if (place.address)
        CheckThatNobodyControls(*place.address, limit);
    Connect(place, limit);
    m_wasLost = false;
    m_acquisition = Acquisition::Continuous;
}

void AravisCamera::CheckThatNobodyControls(std::uint32_t address, steady_clock::time_point limit) {
    if (AskCamera(address) != CameraAnswer::Controlled)
        return;
    WaitForTearDown(std::min(limit, steady_clock::now() + tearDownTime)); // it may be under our own control
    if (AskCamera(address) == CameraAnswer::Controlled)
        throw CameraError("The camera is controlled by another program");
}

void AravisCamera::Connect(const CameraPlace& place, steady_clock::time_point limit) {
    m_connection = std::make_unique<AravisConnection>(place.address);
    try {
        m_connection->Open(place.name, limit);
    } catch (...) {
        LetGo(); // what has been done so far is undone behind the scenes
        throw;
    }
}

bool AravisCamera::IsOpen() const {
    return m_connection != nullptr && !m_connection->IsLost();
}

bool AravisCamera::IsReadable(std::string_view feature) {
    return Answers(
        [name = std::string(feature)](ArvDevice* device) { return IsFeatureReadable(device, name); });
}

bool AravisCamera::IsWritable(std::string_view feature) {
    return Answers(
        [name = std::string(feature)](ArvDevice* device) { return IsFeatureWritable(device, name); });
}

std::string AravisCamera::GetEnumeration(std::string_view feature) {
    return OnDevice(
        [name = std::string(feature)](ArvDevice* device) { return GetEnumerationFeature(device, name); });
}

void AravisCamera::SetEnumeration(std::string_view feature, std::string_view value) {
    OnDevice([name = std::string(feature), text = std::string(value)](ArvDevice* device) {
        SetEnumerationFeature(device, name, text);
    });
}

std::vector<std::string> AravisCamera::SettableValues(std::string_view feature) {
    return OnDevice(
        [name = std::string(feature)](ArvDevice* device) { return SettableFeatureValues(device, name); });
}

double AravisCamera::GetFloat(std::string_view feature) {
    return OnDevice(
        [name = std::string(feature)](ArvDevice* device) { return GetFloatFeature(device, name); });
}

void AravisCamera::SetFloat(std::string_view feature, double value) {
    OnDevice(
        [name = std::string(feature), value](ArvDevice* device) { SetFloatFeature(device, name, value); });
}

std::int64_t AravisCamera::GetInteger(std::string_view feature) {
    return OnDevice(
        [name = std::string(feature)](ArvDevice* device) { return GetIntegerFeature(device, name); });
}

void AravisCamera::SetInteger(std::string_view feature, std::int64_t value) {
    Connected([&](AravisConnection& connection) {
        connection.Ask([name = std::string(feature), value](AravisSession& session) {
            SetIntegerFeature(session.Device(), name, value);
            session.Stream().NoteSize();
        });
    });
}

IntegerRange AravisCamera::GetIntegerRange(std::string_view feature) {
    return OnDevice(
        [name = std::string(feature)](ArvDevice* device) { return GetIntegerFeatureRange(device, name); });
}

void AravisCamera::SetBoolean(std::string_view feature, bool value) {
    OnDevice(
        [name = std::string(feature), value](ArvDevice* device) { SetBooleanFeature(device, name, value); });
}

void AravisCamera::SetMaxNumBuffer(int count) {
    if (count < 1 || count > mostBuffers)
        throw CameraError("The number of buffers is out of range");
    Connected([](AravisConnection& connection) { connection.ThrowIfLost(); });
    m_maxNumBuffer = count;
}

void AravisCamera::StartGrabbing(int count) {
    if (count < 1)
        throw CameraError("There is nothing to grab");
    m_remaining = 0;
    OrEndGrab([&](AravisConnection& connection) {
        connection.Ask(
            [maxWaiting = m_maxNumBuffer](AravisSession& session) { session.Stream().Start(maxWaiting); });
    });
    m_remaining = count;
}

GrabResult AravisCamera::RetrieveResult(std::uint32_t timeoutMilliseconds) {
    Connected([&](AravisConnection& connection) {
        if (!IsGrabbing())
            throw CameraError("No grab is running");
        if (connection.Session().Stream().AreAllHeld())
            throw CameraError("All images that the camera may have are held");
    });
    auto result = OrEndGrab([&](AravisConnection& connection) -> std::optional<GrabResult> {
        if (ArvBuffer* buffer = WaitForImage(connection, timeoutMilliseconds))
            return Deliver(connection, buffer);
        return std::nullopt;
    });
    if (!result)
        throw CameraError("No image came in time"); // it may come yet
    return std::move(*result);
}

ArvBuffer* AravisCamera::WaitForImage(AravisConnection& connection, std::uint32_t timeoutMilliseconds) {
    const auto begin = steady_clock::now();
    const bool unlimited = timeoutMilliseconds == waitWithoutLimit;
    const auto limit = begin + milliseconds(timeoutMilliseconds);
    AravisStream& stream = connection.Session().Stream();
    auto questionable = begin + stream.ExposureTime() + transferTime;
    while (true) {
        const auto now = steady_clock::now();
        const auto left =
            unlimited ? slice
                      : std::clamp(std::chrono::ceil<milliseconds>(limit - now), milliseconds(0), slice);
        if (ArvBuffer* buffer = stream.Take(left))
            return buffer;
        connection.ThrowIfLost();
        if (!unlimited && steady_clock::now() >= limit)
            return nullptr;
        if (steady_clock::now() >= questionable) {
            connection.CheckPresence();
            questionable = steady_clock::now() + transferTime;
        }
    }
}

GrabResult AravisCamera::Deliver(AravisConnection& connection, ArvBuffer* buffer) {
    AravisStream& stream = connection.Session().Stream();
    GrabResult::Image image;
    try {
        image = ImageOf(buffer, stream.Width(), stream.Height());
    } catch (...) {
        stream.Recycle(buffer);
        throw;
    }
    GrabResult result(image, this, buffer);
    CountRetrieved(connection);
    return result;
}

void AravisCamera::CountRetrieved(AravisConnection& connection) {
    --m_remaining;
    if (m_remaining == 0)
        connection.StopSending();
    else if (m_acquisition == Acquisition::SingleFrame)
        connection.Ask([](AravisSession& session) { session.Stream().AskForNext(); });
}

void AravisCamera::EndGrab(AravisConnection& connection) {
    m_remaining = 0;
    if (!connection.IsLost())
        connection.StopSending();
}

GrabResult AravisCamera::GrabOne(std::uint32_t timeoutMilliseconds) {
    StartGrabbing(1);
    try {
        return RetrieveResult(timeoutMilliseconds);
    } catch (const CameraError&) {
        if (IsGrabbing())
            EndGrab(*m_connection);
        throw;
    }
}

void AravisCamera::RegisterConfiguration(Acquisition acquisition) {
    const bool single = acquisition == Acquisition::SingleFrame;
    OnDevice([single](ArvDevice* device) {
        SetEnumerationFeature(device, "AcquisitionMode", single ? "SingleFrame" : "Continuous");
    });
    m_acquisition = acquisition;
}

void AravisCamera::Release(void* buffer) noexcept {
    auto* image = static_cast<ArvBuffer*>(buffer);
    // What a lost camera's stream owned may be gone already.
    if (IsOpen() && m_connection->Session().Stream().Owns(image))
        m_connection->Session().Stream().Recycle(image);
    else
        g_object_unref(image);
}

} // namespace tessaro
