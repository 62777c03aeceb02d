#pragma once

#include "platform/aravis/aravis_stream.h"
#include "platform/aravis/library_calls.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace tessaro {

/// A camera as the library has it open. Made, used and destroyed on the library's thread, but for what is
/// said otherwise.
class AravisSession {
public:
    AravisSession() = default;
    ~AravisSession();
    AravisSession(const AravisSession&) = delete;
    AravisSession& operator=(const AravisSession&) = delete;

    /// Finds the camera, takes control of it and prepares it to send whole frames.
    void Open(const std::string& name);

    void SelectWholeSensor();

    ArvCamera* Camera() const { return m_camera.get(); }
    ArvDevice* Device() const { return arv_camera_get_device(m_camera.get()); }
    AravisStream& Stream() { return *m_stream; }

    using Flag = std::atomic<bool>;
    /// Set by whoever finds out that the camera is lost, which it remains.
    std::shared_ptr<Flag> LossFlag() const { return m_lost; }

private:
    // The steps of opening, in this order.
    void SetPolicies();
    void WatchControl();
    void TakeControl();
    void StopSending();
    void LetItSendByItself();
    void ChoosePacketSize();
    void CreateStream();

    std::shared_ptr<Flag> m_lost = std::make_shared<Flag>(false);
    gulong m_watch = 0;
    ObjectPointer<ArvCamera> m_camera;
    std::unique_ptr<AravisStream> m_stream;
};

} // namespace tessaro
