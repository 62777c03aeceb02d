// A camera at an address of this machine, as a process of its own that tests may stop and kill:
// camera_server ADDRESS. Prints "ready", then takes one command a line and prints "done" after each:
//   mark N          frames that are taken from now on are filled with N
//   size W H        what is sent from now on, whatever the client has set
//   lost RATIO      share of the packets that get lost
//   silent 0|1      whether frames are withheld
//   wait N          until so many more frames were begun
// Ends when its input does.

#include "twin/camera/idle_priority.h"

#include <arv.h>
#include <atomic>
#include <cstring>
#include <iostream>
#include <poll.h>
#include <sstream>
#include <string>

namespace {

// A few packets: no receiver is too slow for them.
constexpr int sensorWidth = 320;
constexpr int sensorHeight = 240;
constexpr unsigned framePeriodUs = 10'000;
constexpr unsigned exposureTimeUs = 1'000;

std::atomic<int> mark = 1;
std::atomic<unsigned> framesBegun = 0;

void Fill(ArvBuffer* buffer, void* camera, guint32, guint32, ArvPixelFormat) {
    tessaro::RunWhenIdle();
    ++framesBegun;
    std::size_t size = 0; // of what was received, which is nothing on this side
    void* data = const_cast<void*>(arv_buffer_get_data(buffer, &size));
    std::memset(data, mark, arv_fake_camera_get_payload(static_cast<ArvFakeCamera*>(camera)));
}

void SetSize(ArvFakeCamera* camera, unsigned width, unsigned height) {
    arv_fake_camera_write_register(camera, ARV_FAKE_CAMERA_REGISTER_WIDTH, width);
    arv_fake_camera_write_register(camera, ARV_FAKE_CAMERA_REGISTER_HEIGHT, height);
}

void Prepare(ArvFakeCamera* camera) {
    arv_fake_camera_write_register(camera, ARV_FAKE_CAMERA_REGISTER_SENSOR_WIDTH, sensorWidth);
    arv_fake_camera_write_register(camera, ARV_FAKE_CAMERA_REGISTER_SENSOR_HEIGHT, sensorHeight);
    arv_fake_camera_write_register(camera, ARV_FAKE_CAMERA_REGISTER_ACQUISITION_FRAME_PERIOD_US,
                                   framePeriodUs);
    arv_fake_camera_write_register(camera, ARV_FAKE_CAMERA_REGISTER_EXPOSURE_TIME_US, exposureTimeUs);
    arv_fake_camera_write_register(camera, ARV_FAKE_CAMERA_REGISTER_PIXEL_FORMAT,
                                   ARV_PIXEL_FORMAT_BAYER_RG_8);
    arv_fake_camera_set_fill_pattern(camera, Fill, camera);
}

void WaitForFrames(unsigned count) {
    constexpr int pauseMs = 1;
    for (const unsigned begin = framesBegun; framesBegun - begin < count;)
        poll(nullptr, 0, pauseMs);
}

void Obey(ArvGvFakeCamera* server, const std::string& line) {
    ArvFakeCamera* camera = arv_gv_fake_camera_get_fake_camera(server);
    std::istringstream words(line);
    std::string command;
    double first = 0.0;
    unsigned second = 0;
    words >> command >> first >> second;
    const auto number = static_cast<unsigned>(first);
    if (command == "mark")
        mark = static_cast<int>(number);
    if (command == "size")
        SetSize(camera, number, second);
    if (command == "lost")
        g_object_set(server, "gvsp-lost-ratio", first, nullptr);
    if (command == "silent")
        arv_fake_camera_write_register(camera, ARV_FAKE_CAMERA_REGISTER_TRIGGER_MODE, number);
    if (command == "wait")
        WaitForFrames(number);
}

} // namespace

int main(int count, char** arguments) {
    ArvGvFakeCamera* server = arv_gv_fake_camera_new(count > 1 ? arguments[1] : "127.0.0.1", "TEST01");
    if (server == nullptr || arv_gv_fake_camera_is_running(server) == FALSE)
        return 1;
    Prepare(arv_gv_fake_camera_get_fake_camera(server));
    std::cout << "ready" << std::endl;
    for (std::string line; std::getline(std::cin, line);) {
        Obey(server, line);
        std::cout << "done" << std::endl;
    }
    g_object_unref(server);
    return 0;
}
