#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <variant>
#include <vector>

// What a test says to the stand-in of the pylon camera runtime.

namespace tessaro::pylon_standin {

struct Enumeration {
    std::string value;
    std::vector<std::string> settable;
};

struct Integer {
    std::int64_t value = 0;
    std::int64_t minimum = 0;
    std::int64_t maximum = 0;
};

/// A feature of a camera; its kind is that of its value.
struct Feature {
    std::variant<Enumeration, double, Integer, bool> value;
    bool readable = true;
    bool writable = true;
    bool lockedByGrabs = false;
    bool locked = false; // by a grab
};

/// An image that a camera sends.
struct Frame {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::vector<std::uint8_t> bytes;
    bool succeeded = true;
    std::string pixelFormat = "BayerRG8";
    std::size_t paddingX = 0; // bytes after each row
};

/// A camera on its cable.
struct Camera {
    std::string serialNumber;
    std::string ipAddress;
    std::map<std::string, Feature> features;
    std::deque<Frame> frames; // one goes to each call that waits for an image; none is left: it is silent
    bool removed = false;     // for good: a camera that is plugged in again is another one
};

struct Runtime {
    std::vector<std::shared_ptr<Camera>> cameras;
    int started = 0;                           // how often it was, less how often it was ended
    int devices = 0;                           // that were created and not destroyed
    int images = 0;                            // whose buffers were not handed back
    std::vector<std::string> calls;            // with what they were told
    std::map<std::string, std::string> faults; // by call: it throws this text, once
    std::function<void()> onWait;              // called when a wait finds no image

    /// Called for everything that the adapter calls and a test may ask for.
    void Note(const std::string& call, const std::string& arguments = {});
};

Runtime& TheRuntime();

} // namespace tessaro::pylon_standin
