#pragma once

#include "platform/aravis/gvcp_probe.h"
#include "platform/aravis/library_thread.h"
#include "platform/camera_device.h"

#include <arv.h>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace tessaro {

class AravisSession;

/// The way to an open camera from the program's thread: everything is done on a library thread, and given up
/// when the camera does not answer. Once a call has thrown CameraLostError, all that can be done is to
/// destroy it.
class AravisConnection {
public:
    /// Not open yet. `address`: where to ask whether the camera is there; nothing when it cannot be asked.
    explicit AravisConnection(std::optional<std::uint32_t> address);
    ~AravisConnection();
    AravisConnection(const AravisConnection&) = delete;
    AravisConnection& operator=(const AravisConnection&) = delete;

    /// Before all else, and once. Throws CameraLostError, too, when it is not done by `limit`.
    void Open(const std::string& name, std::chrono::steady_clock::time_point limit);

    /// Not after a call has thrown CameraLostError.
    AravisSession& Session() { return *m_session; }
    bool IsLost() const { return *m_lost; }

    /// `work(AravisSession&)` on the library's thread. It must own what it needs besides.
    template<typename Work>
    auto Ask(Work work) {
        using Result = decltype(work(std::declval<AravisSession&>()));
        AravisSession* session = m_session;
        if constexpr (std::is_void_v<Result>) {
            Run([session, work = std::move(work)] { work(*session); }, LimitOfCall());
        } else {
            const auto result = std::make_shared<Result>();
            Run([session, result, work = std::move(work)] { *result = work(*session); }, LimitOfCall());
            return std::move(*result);
        }
    }

    /// Lets the camera stop sending, and waits for nothing. What goes wrong is met by the next call.
    void StopSending();

    /// Throws CameraLostError when the camera does not answer, or answers to nobody.
    void CheckPresence();
    void ThrowIfLost() const;

    /// Takes it down behind the scenes. The last call.
    LibraryThread::Ending End() { return m_thread.End(); }

private:
    explicit AravisConnection(std::shared_ptr<AravisSession> session, std::optional<std::uint32_t> address);
    std::chrono::steady_clock::time_point LimitOfCall() const;
    void Run(std::function<void()> work, std::chrono::steady_clock::time_point limit);
    bool IsWorthWaiting();
    /// Nobody controls an open camera but us: where it is free, it was switched off and on, or gave us up.
    bool IsPresent(CameraAnswer answer) const;

    std::optional<std::uint32_t> m_address;
    AravisSession* m_session;                  // the thread's
    std::shared_ptr<std::atomic<bool>> m_lost; // outlives the session
    bool m_open = false;
    LibraryThread m_thread;
    std::chrono::steady_clock::time_point m_limit; // of the call that runs
};

} // namespace tessaro
