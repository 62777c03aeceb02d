#pragma once

#include <chrono>
#include <condition_variable>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>

namespace tessaro {

/// A thread for calls that may hang for seconds. It owns what the calls work on (its charge), so that a
/// caller who lost patience can walk away: the thread finishes its call, destroys the charge and ends by
/// itself.
class LibraryThread {
public:
    /// What is known of a thread that was told to end.
    class Ending {
    public:
        bool HasEnded() const;
        /// False when it has not ended by then.
        bool WaitUntil(std::chrono::steady_clock::time_point limit) const;

    private:
        friend class LibraryThread;
        struct State;
        explicit Ending(std::shared_ptr<State> state) : m_state(std::move(state)) {}
        std::shared_ptr<State> m_state;
    };

    /// Throws CameraError when there is no thread to be had.
    explicit LibraryThread(std::shared_ptr<void> charge);
    /// Tells it to end, and waits for nothing.
    ~LibraryThread();
    LibraryThread(const LibraryThread&) = delete;
    LibraryThread& operator=(const LibraryThread&) = delete;

    /// Runs `work` there, waits until it is done, and rethrows what it threw. Every now and then
    /// `goOnWaiting` is asked; after a no, Run returns false at once while the work goes on, and so does
    /// every later Run. `work` may use the charge and what it owns itself, nothing of the caller's.
    [[nodiscard]] bool Run(std::function<void()> work, const std::function<bool()>& goOnWaiting);

    /// Has `work`, which must not throw, done there and waits for nothing but the end of earlier work, as Run
    /// does.
    [[nodiscard]] bool Post(std::function<void()> work, const std::function<bool()>& goOnWaiting);

    /// Tells the thread to end as soon as it is done with its work.
    Ending End();

private:
    using State = Ending::State;
    bool WaitForIdle(std::unique_lock<std::mutex>& lock, const std::function<bool()>& goOnWaiting);
    static void Main(const std::shared_ptr<State>& state, std::shared_ptr<void> charge);

    std::shared_ptr<State> m_state;
};

} // namespace tessaro
