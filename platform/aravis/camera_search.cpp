#include "platform/aravis/camera_search.h"

#include "platform/aravis/library_calls.h"
#include "platform/aravis/library_thread.h"

#include <chrono>
#include <utility>

namespace tessaro {

namespace {

using std::chrono::steady_clock;

// The library listens for one second.
constexpr std::chrono::seconds longestDiscovery(2);

std::string Text(const char* text) {
    return text != nullptr ? text : "";
}

bool IsWanted(unsigned index, const std::string& wanted) {
    return wanted.empty() || wanted == Text(arv_get_device_id(index)) ||
           wanted == Text(arv_get_device_physical_id(index)) ||
           wanted == Text(arv_get_device_address(index)) || wanted == Text(arv_get_device_serial_nbr(index));
}

// On the library's thread.
CameraPlace PlaceOfFirst(const std::string& wanted) {
    arv_update_device_list();
    for (unsigned index = 0; index < arv_get_n_devices(); ++index) {
        if (!IsWanted(index, wanted))
            continue;
        const bool hasAddress = Text(arv_get_device_protocol(index)) == "GigEVision";
        const std::string address = Text(arv_get_device_address(index));
        if (const auto place = ParseAddress(address); hasAddress && place)
            return {address, place};
        return {Text(arv_get_device_id(index)), std::nullopt};
    }
    throw CameraError(wanted.empty() ? "No camera found" : "Camera '" + wanted + "' not found");
}

} // namespace

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
    const auto place = std::make_shared<CameraPlace>();
    const auto limit = steady_clock::now() + longestDiscovery;
    if (!thread.Run([place, wanted] { *place = PlaceOfFirst(wanted); },
                    [limit] { return steady_clock::now() < limit; }))
        throw CameraError("The search for cameras does not come to an end");
    return *place;
}

} // namespace tessaro
