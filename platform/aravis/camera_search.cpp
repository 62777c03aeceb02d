#include "platform/aravis/camera_search.h"

#include "platform/aravis/library_calls.h"
#include "platform/aravis/library_thread.h"

#include <algorithm>
#include <chrono>
#include <memory>
#include <utility>
#include <vector>

namespace tessaro {

namespace {

using std::chrono::steady_clock;

// The library listens for one second.
constexpr std::chrono::seconds longestDiscovery(2);

std::string Text(const char* text) {
    return text != nullptr ? text : "";
}

bool IsWanted(const FoundCamera& camera, const std::string& wanted) {
    return wanted.empty() || wanted == camera.id || wanted == camera.physicalId || wanted == camera.address ||
           wanted == camera.serialNumber;
}

// On the library's thread.
std::vector<FoundCamera> FoundCameras() {
    arv_update_device_list();
    std::vector<FoundCamera> cameras;
    for (unsigned index = 0; index < arv_get_n_devices(); ++index)
        cameras.push_back({Text(arv_get_device_id(index)), Text(arv_get_device_physical_id(index)),
                           Text(arv_get_device_serial_nbr(index)), Text(arv_get_device_address(index)),
                           Text(arv_get_device_protocol(index))});
    return cameras;
}

} // namespace

std::optional<CameraPlace> PlaceOfFirst(std::span<const FoundCamera> cameras, const std::string& wanted) {
    const auto camera = std::ranges::find_if(
        cameras, [&](const FoundCamera& candidate) { return IsWanted(candidate, wanted); });
    if (camera == cameras.end())
        return std::nullopt;
    const auto address = ParseAddress(camera->address);
    if (camera->protocol == "GigEVision" && address)
        return CameraPlace{camera->address, address};
    return CameraPlace{camera->id, std::nullopt};
}

CameraSearch::CameraSearch(std::string wanted) : m_wanted(std::move(wanted)) {
    if (const auto address = ParseAddress(m_wanted))
        m_last = CameraPlace{m_wanted, address};
}

CameraPlace CameraSearch::Find() {
    if (m_last && m_last->address && AskCamera(*m_last->address) != CameraAnswer::None)
        return *m_last;
    if (ParseAddress(m_wanted))
        throw CameraError("Can't connect to device at address '" + m_wanted + "'");
    m_last = Discover(m_wanted);
    return *m_last;
}

CameraPlace CameraSearch::Discover(const std::string& wanted) {
    LibraryThread thread(nullptr);
    const auto found = std::make_shared<std::vector<FoundCamera>>();
    const auto limit = steady_clock::now() + longestDiscovery;
    if (!thread.Run([found] { *found = FoundCameras(); }, [limit] { return steady_clock::now() < limit; }))
        throw CameraError("The search for cameras does not come to an end");
    if (const auto place = PlaceOfFirst(*found, wanted))
        return *place;
    throw CameraError(wanted.empty() ? "No camera found" : "Camera '" + wanted + "' not found");
}

} // namespace tessaro
