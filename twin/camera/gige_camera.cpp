#include "twin/camera/gige_camera.h"

#include "twin/camera/automatic_functions.h"
#include "twin/camera/camera_description.h"
#include "twin/camera/camera_registers.h"
#include "twin/camera/camera_settings_registers.h"
#include "twin/camera/idle_priority.h"
#include "twin/camera/pixel_formats.h"

#include <algorithm>
#include <arv.h>
#include <atomic>
#include <cstddef>
#include <glib/gstdio.h>
#include <optional>
#include <stdexcept>
#include <utility>
#include <vector>

namespace tessaro {
namespace {

namespace reg = camera_register;

/// A file that lasts as long as the object: the server takes its description from one.
class DescriptionFile {
public:
    DescriptionFile() {
        GError* error = nullptr;
        const int file = g_file_open_tmp("tessaro-twin-XXXXXX.xml", &m_path, &error);
        if (file >= 0)
            g_close(file, nullptr);
        const std::string_view text = CameraDescription();
        if (file < 0 ||
            g_file_set_contents(m_path, text.data(), static_cast<gssize>(text.size()), &error) == 0) {
            const std::string reason = error->message;
            g_error_free(error);
            Remove();
            throw std::runtime_error("cannot write the camera's description: " + reason);
        }
    }
    DescriptionFile(const DescriptionFile&) = delete;
    DescriptionFile& operator=(const DescriptionFile&) = delete;
    ~DescriptionFile() { Remove(); }

    const char* Path() const { return m_path; }

private:
    void Remove() {
        if (m_path != nullptr)
            g_remove(m_path);
        g_free(m_path);
    }

    char* m_path = nullptr;
};

constexpr guint16 controlPort = 3956; // of GigE Vision

/// The server would share the port with another without a word.
bool IsPortFree(const std::string& address) {
    GInetAddress* const host = g_inet_address_new_from_string(address.c_str());
    if (host == nullptr)
        return false;
    GSocketAddress* const place = g_inet_socket_address_new(host, controlPort);
    GSocket* socket =
        g_socket_new(g_inet_address_get_family(host), G_SOCKET_TYPE_DATAGRAM, G_SOCKET_PROTOCOL_UDP, nullptr);
    const bool isFree = socket != nullptr && g_socket_bind(socket, place, FALSE, nullptr) != 0;
    g_clear_object(&socket);
    g_object_unref(place);
    g_object_unref(host);
    return isFree;
}

ArvGvFakeCamera* Serve(const std::string& address, const std::string& serialNumber) {
    const DescriptionFile description;
    ArvGvFakeCamera* server = nullptr;
    if (IsPortFree(address))
        server = arv_gv_fake_camera_new_full(address.c_str(), serialNumber.c_str(), description.Path());
    if (server != nullptr && arv_gv_fake_camera_is_running(server) != 0 &&
        arv_gv_fake_camera_get_fake_camera(server) != nullptr)
        return server;
    g_clear_object(&server);
    throw std::runtime_error("cannot serve a camera at " + address +
                             ": no address of this machine, or taken");
}

} // namespace

class GigECamera::Server {
public:
    Server(const std::string& address, const std::string& serialNumber, const Scene& scene,
           const SensorSize& sensor)
        : m_scene(scene), m_sensor(sensor), m_mosaic(twinMosaicBytes), m_server(Serve(address, serialNumber)),
          m_camera(arv_gv_fake_camera_get_fake_camera(m_server)), m_registers(m_camera) {
        WritePowerUpState(m_registers, sensor);
        arv_fake_camera_set_fill_pattern(m_camera, Fill, this);
    }
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;
    ~Server() { g_object_unref(m_server); } // joins its thread

    void SetLostPackets(double ratio) { g_object_set(m_server, "gvsp-lost-ratio", ratio, nullptr); }
    void SetEndlessAutomatic(bool endless) { m_endlessAutomatic = endless; }
    /// No size: what clients have set.
    void SetFrameSize(FrameSize size) { m_forcedSize = size; }

private:
    static void Fill(ArvBuffer* buffer, void* server, guint32 /*exposureTimeUs*/, guint32 /*gain*/,
                     ArvPixelFormat format) {
        RunWhenIdle(); // this thread sends as well
        static_cast<Server*>(server)->TakeFrame(buffer, format);
    }

    /// Clients' writes are taken by this thread, between two frames.
    void TakeFrame(ArvBuffer* buffer, ArvPixelFormat format) {
        StampFrame(buffer);
        CameraSettings settings = ReadSettings(m_registers);
        m_scene(settings.exposure, ++m_frames, m_mosaic);
        const bool sound = CopyImage(buffer, format);
        AdjustAutomatically(settings, m_mosaic, m_endlessAutomatic);
        WriteSettings(m_registers, settings);
        KeepWithinBounds(m_registers, m_sensor);
        // The server made room for what clients had asked for. It makes room anew at the next start only.
        if (!sound || !HasSizeOf(buffer) ||
            m_registers.Read(reg::acquisitionMode) == reg::acquisitionModeSingleFrame)
            m_registers.Write(reg::acquisition, 0);
        ForceFrameSize();
    }

    bool HasSizeOf(ArvBuffer* buffer) const {
        return m_registers.ReadLength(reg::width, 0, twinSensorWidth) == arv_buffer_get_image_width(buffer) &&
               m_registers.ReadLength(reg::height, 0, twinSensorHeight) ==
                   arv_buffer_get_image_height(buffer);
    }

    /// As long as a size is forced, another one in the registers is what a client has set meanwhile.
    void ForceFrameSize() {
        const FrameSize present = {m_registers.ReadLength(reg::width, 0, m_sensor.width),
                                   m_registers.ReadLength(reg::height, 0, m_sensor.height)};
        if (present != m_writtenSize)
            m_clientSize = present;
        const FrameSize forced = m_forcedSize;
        m_writtenSize = {std::min(forced.width, m_sensor.width), std::min(forced.height, m_sensor.height)};
        const FrameSize size = forced == FrameSize() ? m_clientSize : m_writtenSize;
        m_registers.Write(reg::width, static_cast<std::uint32_t>(size.width));
        m_registers.Write(reg::height, static_cast<std::uint32_t>(size.height));
    }

    /// The clock that clients can latch stands just behind the frame that was begun last. What they latch
    /// therefore tells the frames that were begun before from those that were begun after.
    void StampFrame(ArvBuffer* buffer) {
        m_registers.WriteLong(reg::timestampLatchValue64, arv_buffer_get_timestamp(buffer) + 1);
    }

    /// The buffer tells no size before it is filled. It has room for the image that it is to hold, but only
    /// where the size of that image is no larger than ours can be: the server multiplies in 32 bits. False
    /// when nothing was written.
    bool CopyImage(ArvBuffer* buffer, ArvPixelFormat arvFormat) {
        const std::optional<PixelFormat> format = PixelFormatOf(arvFormat);
        const ImageRegion region = {m_registers.ReadLength(reg::offsetX, 0, twinSensorWidth),
                                    m_registers.ReadLength(reg::offsetY, 0, twinSensorHeight),
                                    arv_buffer_get_image_width(buffer), arv_buffer_get_image_height(buffer)};
        if (!format || region.width < 0 || region.width > twinSensorWidth || region.height < 0 ||
            region.height > twinSensorHeight)
            return false;
        std::size_t received = 0;
        auto* const data =
            static_cast<std::uint8_t*>(const_cast<void*>(arv_buffer_get_data(buffer, &received)));
        CopyRegion(m_mosaic, region, *format, {data, ImageBytes(region, *format)});
        return true;
    }

    const Scene& m_scene;
    const SensorSize m_sensor;
    std::vector<std::uint8_t> m_mosaic;
    std::uint64_t m_frames = 0;
    std::atomic<bool> m_endlessAutomatic = false;
    std::atomic<FrameSize> m_forcedSize = FrameSize();
    FrameSize m_writtenSize; // by us: the forced size of the last frame
    FrameSize m_clientSize;
    ArvGvFakeCamera* m_server;
    ArvFakeCamera* m_camera;
    CameraRegisters m_registers;
};

GigECamera::GigECamera(std::string address, std::string serialNumber, Scene scene, SensorSize sensor)
    : m_address(std::move(address)), m_serialNumber(std::move(serialNumber)), m_scene(std::move(scene)),
      m_sensor(sensor) {
    PlugIn();
}

GigECamera::~GigECamera() = default;

void GigECamera::SetLostPackets(double ratio) {
    m_lostPackets = std::clamp(ratio, 0.0, 1.0);
    if (m_server != nullptr)
        m_server->SetLostPackets(m_lostPackets);
}

void GigECamera::SetFrameSize(int width, int height) {
    ForceFrameSize({std::clamp(width, smallestImageSide, twinSensorWidth),
                    std::clamp(height, smallestImageSide, twinSensorHeight)});
}

void GigECamera::ClearFrameSize() {
    ForceFrameSize({});
}

void GigECamera::ForceFrameSize(const FrameSize& size) {
    m_frameSize = size;
    if (m_server != nullptr)
        m_server->SetFrameSize(size);
}

void GigECamera::SetEndlessAutomatic(bool endless) {
    m_endlessAutomatic = endless;
    if (m_server != nullptr)
        m_server->SetEndlessAutomatic(endless);
}

void GigECamera::Unplug() {
    m_server.reset();
}

void GigECamera::PlugIn() {
    if (m_server != nullptr)
        return;
    m_server = std::make_unique<Server>(m_address, m_serialNumber, m_scene, m_sensor);
    m_server->SetLostPackets(m_lostPackets);
    m_server->SetFrameSize(m_frameSize);
    m_server->SetEndlessAutomatic(m_endlessAutomatic);
}

} // namespace tessaro
