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
    void SetFrameSize(int width,
                      int height);          // what is sent, whatever clients have set; clamped to the sensor
    void SetEndlessAutomatic(bool endless); // "Once" never goes back to "Off"
    void Unplug();                          // nobody answers at the address any more
    void PlugIn();                          // as after switching it on

private:
    class Server;

    std::string m_address;
    std::string m_serialNumber;
    Scene m_scene;
    SensorSize m_sensor;
    std::unique_ptr<Server> m_server; // none while unplugged
    double m_lostPackets = 0.0;
    bool m_endlessAutomatic = false;
};

} // namespace tessaro
