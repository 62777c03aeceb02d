#pragma once

#include <arv.h>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace tessaro {

struct ReceivedFrame {
    bool received = false; // something came in time
    bool complete = false;
    int width = 0;
    int height = 0;
    std::uint64_t timestampNs = 0; // the camera's clock
    std::vector<std::uint8_t> bytes;
};

/// A client of the camera library as anybody would write it. Keeps the text of the last error.
class ArvClient {
public:
    explicit ArvClient(const char* address) { m_camera = arv_camera_new(address, Errors()); }
    ArvClient(const ArvClient&) = delete;
    ArvClient& operator=(const ArvClient&) = delete;
    ~ArvClient() {
        Stop();
        g_clear_object(&m_camera);
        g_clear_error(&m_error);
    }

    bool IsOpen() const { return m_camera != nullptr; }
    std::string Error() const { return m_error == nullptr ? std::string() : m_error->message; }

    std::string GetText(const char* feature) {
        const char* const text = arv_device_get_string_feature_value(Device(), feature, Errors());
        return text == nullptr ? std::string() : text;
    }
    std::int64_t GetInteger(const char* feature) {
        return arv_device_get_integer_feature_value(Device(), feature, Errors());
    }
    double GetFloat(const char* feature) {
        return arv_device_get_float_feature_value(Device(), feature, Errors());
    }
    bool GetBoolean(const char* feature) {
        return arv_device_get_boolean_feature_value(Device(), feature, Errors()) != 0;
    }
    void SetText(const char* feature, const char* value) {
        arv_device_set_string_feature_value(Device(), feature, value, Errors());
    }
    void SetInteger(const char* feature, std::int64_t value) {
        arv_device_set_integer_feature_value(Device(), feature, value, Errors());
    }
    void SetFloat(const char* feature, double value) {
        // The library checks bounds only where it is told to.
        arv_device_set_range_check_policy(Device(), ARV_RANGE_CHECK_POLICY_ENABLE);
        arv_device_set_float_feature_value(Device(), feature, value, Errors());
    }
    void Execute(const char* command) { arv_device_execute_command(Device(), command, Errors()); }

    /// Past all features and their bounds.
    std::uint32_t ReadRegister(std::uint32_t address) {
        guint32 value = 0;
        arv_device_read_register(Device(), address, &value, Errors());
        return value;
    }
    void WriteRegister(std::uint32_t address, std::uint32_t value) {
        arv_device_write_register(Device(), address, value, Errors());
    }
    void WriteMemory(std::uint32_t address, std::string bytes) {
        arv_device_write_memory(Device(), address, static_cast<guint32>(bytes.size()), bytes.data(),
                                Errors());
    }

    void Start() { Start(static_cast<std::size_t>(arv_camera_get_payload(m_camera, Errors()))); }
    void Start(std::size_t payload) {
        m_stream = arv_camera_create_stream(m_camera, nullptr, nullptr, Errors());
        for (int buffer = 0; buffer < 4; ++buffer)
            arv_stream_push_buffer(m_stream, arv_buffer_new(payload, nullptr));
        arv_camera_start_acquisition(m_camera, Errors());
    }

    void Stop() {
        if (m_stream != nullptr)
            arv_camera_stop_acquisition(m_camera, nullptr);
        g_clear_object(&m_stream);
    }

    ReceivedFrame Next(std::uint64_t timeoutUs = 5'000'000) {
        ReceivedFrame frame;
        ArvBuffer* const buffer = arv_stream_timeout_pop_buffer(m_stream, timeoutUs);
        if (buffer == nullptr)
            return frame;
        frame.received = true;
        frame.complete = arv_buffer_get_status(buffer) == ARV_BUFFER_STATUS_SUCCESS;
        if (frame.complete) {
            frame.width = arv_buffer_get_image_width(buffer);
            frame.height = arv_buffer_get_image_height(buffer);
            frame.timestampNs = arv_buffer_get_timestamp(buffer);
            std::size_t size = 0;
            const auto* data = static_cast<const std::uint8_t*>(arv_buffer_get_data(buffer, &size));
            frame.bytes.assign(data, data + size);
        }
        arv_stream_push_buffer(m_stream, buffer);
        return frame;
    }

private:
    ArvDevice* Device() const { return arv_camera_get_device(m_camera); }
    GError** Errors() {
        g_clear_error(&m_error);
        return &m_error;
    }

    ArvCamera* m_camera = nullptr;
    ArvStream* m_stream = nullptr;
    GError* m_error = nullptr;
};

} // namespace tessaro
