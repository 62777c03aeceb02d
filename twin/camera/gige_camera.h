#pragma once

#include "twin/camera/automatic_functions.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>

namespace tessaro {

/// A colour camera that speaks GigE Vision at an address of this machine: 2464 x 2056 pixels, with the
/// features of camera_description.xml. Any client can find, set and grab from it.
class GigECamera {
public:
    /// Takes one picture: twinSensorWidth x twinSensorHeight samples, RGGB. Called on the camera's own
    /// thread.
    using Scene =
        std::function<void(const ExposureSettings&, std::uint64_t noiseSeed, std::span<std::uint8_t> mosaic)>;

    /// Serves at once. Throws std::runtime_error when the address cannot be used, or another camera is served
    /// there.
    GigECamera(std::string address, std::string serialNumber, Scene scene, SensorSize sensor = {});
    ~GigECamera();

    /// Faults. Each stays until it is taken back.
    void SetLostPackets(double ratio); // share of the packets, 0 to 1
    /// Frames have this size, within the sensor, whatever clients set; after a start one of theirs may come
    /// first. A stream that was begun in a smaller size has to be begun anew.
    void SetFrameSize(int width, int height);
    void ClearFrameSize();                  // what clients have set holds again, after the next frame
    void SetEndlessAutomatic(bool endless); // "Once" never goes back to "Off"
    void Unplug();                          // nobody answers at the address any more
    void PlugIn();                          // as after switching it on

private:
    class Server;
    struct alignas(8) FrameSize { // as one word, which is exchanged without a lock
        int width = 0;            // 0: none
        int height = 0;
        bool operator==(const FrameSize&) const = default;
    };

    void ForceFrameSize(const FrameSize& size);

    std::string m_address;
    std::string m_serialNumber;
    Scene m_scene;
    SensorSize m_sensor;
    std::unique_ptr<Server> m_server; // none while unplugged
    double m_lostPackets = 0.0;
    FrameSize m_frameSize;
    bool m_endlessAutomatic = false;
};

} // namespace tessaro
