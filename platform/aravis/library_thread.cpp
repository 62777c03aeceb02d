#include "platform/aravis/library_thread.h"

#include "platform/camera_device.h"

#include <system_error>
#include <thread>
#include <utility>

namespace tessaro {

namespace {

// How often a waiting caller asks whether it should go on.
constexpr std::chrono::milliseconds patience(400);

} // namespace

struct LibraryThread::Ending::State {
    mutable std::mutex mutex;
    mutable std::condition_variable changed;
    std::function<void()> work;
    std::exception_ptr error;
    bool ending = false;
    bool ended = false;
};

bool LibraryThread::Ending::HasEnded() const {
    const std::scoped_lock lock(m_state->mutex);
    return m_state->ended;
}

bool LibraryThread::Ending::WaitUntil(std::chrono::steady_clock::time_point limit) const {
    std::unique_lock lock(m_state->mutex);
    return m_state->changed.wait_until(lock, limit, [&] { return m_state->ended; });
}

LibraryThread::LibraryThread(std::shared_ptr<void> charge) : m_state(std::make_shared<State>()) {
    try {
        std::thread([state = m_state, owned = std::move(charge)]() mutable {
            Main(state, std::move(owned));
        }).detach();
    } catch (const std::system_error& error) {
        throw CameraError(error.what());
    }
}

LibraryThread::~LibraryThread() {
    End();
}

bool LibraryThread::Run(std::function<void()> work, const std::function<bool()>& goOnWaiting) {
    if (!Post(std::move(work), goOnWaiting))
        return false;
    std::unique_lock lock(m_state->mutex);
    if (!WaitForIdle(lock, goOnWaiting))
        return false;
    if (const std::exception_ptr error = std::exchange(m_state->error, nullptr))
        std::rethrow_exception(error);
    return true;
}

bool LibraryThread::Post(std::function<void()> work, const std::function<bool()>& goOnWaiting) {
    std::unique_lock lock(m_state->mutex);
    if (m_state->ending || !WaitForIdle(lock, goOnWaiting))
        return false;
    m_state->work = std::move(work);
    m_state->changed.notify_all();
    return true;
}

bool LibraryThread::WaitForIdle(std::unique_lock<std::mutex>& lock,
                                const std::function<bool()>& goOnWaiting) {
    while (!m_state->changed.wait_for(lock, patience, [&] { return !m_state->work; })) {
        lock.unlock();
        const bool goOn = goOnWaiting();
        lock.lock();
        if (!goOn && m_state->work) {
            m_state->ending = true;
            return false;
        }
    }
    return true;
}

LibraryThread::Ending LibraryThread::End() {
    const std::scoped_lock lock(m_state->mutex);
    m_state->ending = true;
    m_state->changed.notify_all();
    return Ending(m_state);
}

void LibraryThread::Main(const std::shared_ptr<State>& state, std::shared_ptr<void> charge) {
    std::unique_lock lock(state->mutex);
    while (true) {
        state->changed.wait(lock, [&] { return state->work || state->ending; });
        if (!state->work)
            break;
        lock.unlock();
        std::exception_ptr error;
        try {
            state->work();
        } catch (...) {
            error = std::current_exception();
        }
        lock.lock();
        state->error = std::move(error);
        state->work = nullptr;
        state->changed.notify_all();
    }
    lock.unlock();
    charge.reset();
    lock.lock();
    state->ended = true;
    state->changed.notify_all();
}

} // namespace tessaro
