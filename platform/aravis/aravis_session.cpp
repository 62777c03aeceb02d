#include "platform/aravis/aravis_session.h"

#include "platform/aravis/aravis_features.h"

#include <algorithm>

namespace tessaro {

namespace {

// With its headers and the system's own it fits into 16 KiB: a byte more, and it would take up 32 KiB of the
// socket's buffer. Cameras on the loopback interface are simulated and mostly cannot send the test packets by
// which the size is negotiated elsewhere.
constexpr std::int64_t loopbackPacketSize = 15'000;
constexpr const char* packetSize = "GevSCPSPacketSize";

bool IsOnLoopback(ArvGvDevice* device) {
    const GInetAddress* address =
        g_inet_socket_address_get_address(G_INET_SOCKET_ADDRESS(arv_gv_device_get_interface_address(device)));
    return g_inet_address_get_is_loopback(const_cast<GInetAddress*>(address)) != FALSE;
}

// The one that is selected.
void SwitchTriggerOff(ArvDevice* device) {
    if (IsFeatureWritable(device, "TriggerMode"))
        SetEnumerationFeature(device, "TriggerMode", "Off");
}

} // namespace

AravisSession::~AravisSession() {
    if (m_stream != nullptr && !*m_lost) { // a lost camera would only keep us waiting
        try {
            m_stream->Stop();
        } catch (const CameraError&) { // it is over anyway
        }
    }
    m_stream.reset();
    if (m_watch != 0)
        g_signal_handler_disconnect(Device(), m_watch);
}

void AravisSession::Open(const std::string& name) {
    m_camera.reset(Checked([&](GError** error) { return arv_camera_new(name.c_str(), error); }));
    if (m_camera == nullptr)
        throw CameraError("Can't open camera '" + name + "'");
    using Step = void (AravisSession::*)();
    for (const Step step :
         {&AravisSession::SetPolicies, &AravisSession::WatchControl, &AravisSession::TakeControl,
          &AravisSession::StopSending, &AravisSession::LetItSendByItself, &AravisSession::ChoosePacketSize,
          &AravisSession::SelectWholeSensor, &AravisSession::CreateStream}) {
        if (*m_lost) // nobody waits for it any more
            throw CameraLostError("The camera was lost while it was opened");
        (this->*step)();
    }
}

void AravisSession::SetPolicies() {
    arv_device_set_range_check_policy(Device(), ARV_RANGE_CHECK_POLICY_ENABLE);
    arv_device_set_access_check_policy(Device(), ARV_ACCESS_CHECK_POLICY_ENABLE);
}

void AravisSession::WatchControl() {
    using SharedFlag = std::shared_ptr<Flag>;
    const auto lost = +[](ArvDevice*, gpointer flag) { **static_cast<SharedFlag*>(flag) = true; };
    const auto forget = +[](gpointer flag, GClosure*) { delete static_cast<SharedFlag*>(flag); };
    m_watch = g_signal_connect_data(Device(), "control-lost", G_CALLBACK(lost), new SharedFlag(m_lost),
                                    forget, GConnectFlags{});
}

void AravisSession::TakeControl() {
    if (arv_camera_is_gv_device(m_camera.get()) == FALSE ||
        arv_gv_device_is_controller(ARV_GV_DEVICE(Device())) != FALSE)
        return;
    Checked([&](GError** error) { return arv_gv_device_take_control(ARV_GV_DEVICE(Device()), error); });
    if (arv_gv_device_is_controller(ARV_GV_DEVICE(Device())) == FALSE)
        throw CameraError("The camera is controlled by another program");
}

// Whoever had it before may have left it sending.
void AravisSession::StopSending() {
    Checked([&](GError** error) { arv_camera_stop_acquisition(m_camera.get(), error); });
}

// And it may have been left taking single images, or waiting for a trigger.
void AravisSession::LetItSendByItself() {
    if (IsFeatureWritable(Device(), "AcquisitionMode"))
        SetEnumerationFeature(Device(), "AcquisitionMode", "Continuous");
    if (!IsFeatureWritable(Device(), "TriggerSelector")) {
        SwitchTriggerOff(Device());
        return;
    }
    for (const std::string& trigger : SettableFeatureValues(Device(), "TriggerSelector")) {
        SetEnumerationFeature(Device(), "TriggerSelector", trigger);
        SwitchTriggerOff(Device());
    }
}

void AravisSession::ChoosePacketSize() {
    if (arv_camera_is_gv_device(m_camera.get()) == FALSE)
        return;
    if (!IsOnLoopback(ARV_GV_DEVICE(Device()))) {
        arv_camera_gv_set_packet_size_adjustment(m_camera.get(), ARV_GV_PACKET_SIZE_ADJUSTMENT_ONCE);
        return;
    }
    arv_camera_gv_set_packet_size_adjustment(m_camera.get(), ARV_GV_PACKET_SIZE_ADJUSTMENT_NEVER);
    if (IsFeatureWritable(Device(), packetSize)) {
        const IntegerRange range = GetIntegerFeatureRange(Device(), packetSize);
        SetIntegerFeature(Device(), packetSize, std::clamp(loopbackPacketSize, range.minimum, range.maximum));
    }
}

void AravisSession::CreateStream() {
    m_stream = std::make_unique<AravisStream>(m_camera.get());
}

void AravisSession::SelectWholeSensor() {
    for (const char* offset : {"OffsetX", "OffsetY"})
        if (IsFeatureWritable(Device(), offset))
            SetIntegerFeature(Device(), offset, GetIntegerFeatureRange(Device(), offset).minimum);
    for (const char* size : {"Width", "Height"})
        if (IsFeatureWritable(Device(), size))
            SetIntegerFeature(Device(), size, GetIntegerFeatureRange(Device(), size).maximum);
    if (m_stream != nullptr)
        m_stream->NoteSize();
}

} // namespace tessaro
