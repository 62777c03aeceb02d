#include "camera/frame_grabber.h"

#include <algorithm>
#include <utility>

namespace tessaro {
namespace {

constexpr int maximumTries = 1000;
constexpr std::uint32_t restartSleepMs = 10;

} // namespace

FrameGrabber::FrameGrabber(CameraSession& session, Clock& clock, int frames)
    : m_session(session), m_clock(clock), m_frames(std::max(1, frames)) {}

void FrameGrabber::Grab() {
    m_session.camera->StartGrabbing(m_frames);
    for (int k = 0; k < m_frames; ++k)
        TakeImage(k);
    if (AllAreHeld()) {
        ShowMeanOfHeld();
    } else {
        SumHeld();
        ShowMean(m_session, m_frames);
    }
}

/// An image that does not come whole in so many tries is left out, and the mean divided by all frames still.
/// Without image 0 the sums go on from those of the frame before. All of that is meant.
void FrameGrabber::TakeImage(int k) {
    for (int attempt = 0; attempt < maximumTries; ++attempt) {
        if (!m_session.camera->IsGrabbing()) { // broken images have used up those that were asked for
            m_session.camera->StartGrabbing(m_frames);
            m_clock.Sleep(restartSleepMs);
        } else if (RetrieveWholeImage()) {
            m_lastIsHeld = true;
            m_firstIsHeld = m_firstIsHeld || k == 0;
            m_session.width = m_session.grabResult.GetWidth();
            m_session.height = m_session.grabResult.GetHeight();
            m_session.byteCount = SampleCount(m_session.grabResult);
            return;
        }
    }
}

/// A broken image is never the one too many: while one is wanted, fewer than all were summed.
bool FrameGrabber::RetrieveWholeImage() {
    GrabResult next = m_session.camera->RetrieveResult(waitWithoutLimit);
    if (m_lastIsHeld)
        KeepLast();
    m_session.grabResult = std::move(next);
    return m_session.grabResult.GrabSucceeded();
}

void FrameGrabber::KeepLast() {
    if (m_earlierCount == m_earlier.size()) {
        SumHeld();
        return;
    }
    m_earlier[m_earlierCount++] = std::move(m_session.grabResult);
    m_lastIsHeld = false;
}

void FrameGrabber::SumHeld() noexcept {
    for (std::size_t i = 0; i < m_earlierCount; ++i)
        Sum(m_earlier[i]);
    if (std::exchange(m_lastIsHeld, false))
        Sum(m_session.grabResult);
    m_earlierCount = 0;
}

void FrameGrabber::Sum(const GrabResult& image) noexcept {
    AddExposure(m_session, image, std::exchange(m_firstIsHeld, false));
}

bool FrameGrabber::AllAreHeld() const {
    const auto isWhole = [](const GrabResult& image) { return SampleCount(image) == sensorByteCount; };
    return m_firstIsHeld && m_lastIsHeld && m_earlierCount + 1 == static_cast<std::size_t>(m_frames) &&
           std::all_of(m_earlier.begin(), m_earlier.begin() + static_cast<std::ptrdiff_t>(m_earlierCount),
                       isWhole) &&
           isWhole(m_session.grabResult);
}

void FrameGrabber::ShowMeanOfHeld() {
    std::array<const GrabResult*, exposuresAtOnce> exposures = {};
    for (std::size_t i = 0; i < m_earlierCount; ++i)
        exposures[i] = &m_earlier[i];
    exposures[m_earlierCount] = &m_session.grabResult;
    ShowMeanOf(m_session, std::span(exposures).first(m_earlierCount + 1));
    m_earlierCount = 0; // they are in the accumulator now
    m_lastIsHeld = false;
}

} // namespace tessaro
