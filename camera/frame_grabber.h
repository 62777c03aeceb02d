#pragma once

#include "camera/camera_session.h"
#include "camera/exposure_mean.h"
#include "platform/clock.h"

#include <array>
#include <cstddef>

namespace tessaro {

/// Takes one frame as the mean of several exposures. Up to four whole images are held before they are
/// summed, because memory is read and written once then; whatever happens, the sums are in the end those of
/// all whole images.
class FrameGrabber {
public:
    /// Fewer than one frame counts as one: there is no mean of none.
    FrameGrabber(CameraSession& session, Clock& clock, int frames);
    FrameGrabber(const FrameGrabber&) = delete;
    FrameGrabber& operator=(const FrameGrabber&) = delete;
    ~FrameGrabber() { SumHeld(); }

    /// Fills the working frame. Throws what the camera throws; the working frame is then as it was.
    void Grab();

private:
    void TakeImage(int k);
    bool RetrieveWholeImage();
    void KeepLast();
    void SumHeld() noexcept;
    void Sum(const GrabResult& image) noexcept;
    bool AllAreHeld() const;
    void ShowMeanOfHeld();

    CameraSession& m_session;
    Clock& m_clock;
    int m_frames;
    std::array<GrabResult, exposuresAtOnce - 1> m_earlier; // held, in order
    std::size_t m_earlierCount = 0;
    bool m_lastIsHeld = false;  // the session's last result comes after them
    bool m_firstIsHeld = false; // the first of them is image 0, which replaces the sums of the last frame
};

} // namespace tessaro
