#pragma once

#include "app/services.h"

#include <functional>
#include <utility>

namespace tessaro {

/// Lets the live view run until the camera has adjusted itself: until its image has been as bright as before
/// several times in a row. What the first fields of a scan look like depends on it.
class CameraSettling {
public:
    /// `isOver`: asked time and again, whether it is to be given up.
    CameraSettling(Services& services, std::function<bool()> isOver)
        : m_services(services), m_isOver(std::move(isOver)) {}

    /// At most ten seconds. A camera that is not done by then goes on adjusting itself, as it does at any
    /// time.
    void Wait();

    /// Takes an image, or a few when it fails; false when it comes to none.
    bool GivesImages();

private:
    bool HasSettled() const;
    void LookAtFrame();
    double Brightness() const;

    Services& m_services;
    std::function<bool()> m_isOver;
    double m_brightness = 0.0;
    int m_alike = 0; // frames in a row, each like the one before
    std::uint32_t m_patternPhase = 0;
};

} // namespace tessaro
