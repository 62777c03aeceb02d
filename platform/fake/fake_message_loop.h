#pragma once

#include "platform/fake/virtual_clock.h"
#include "platform/message_loop.h"
#include "platform/window_system.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace tessaro {

/// A queue that the test fills, in virtual time: a message can be due later, and timers tick, as the clock
/// reaches them; waiting moves the clock.
class FakeMessageLoop : public MessageLoop {
public:
    explicit FakeMessageLoop(VirtualClock& clock) : m_clock(clock) {}

    bool TakeMessage(Message& message, std::uint32_t milliseconds) override {
        return TakeUntil(message, m_clock.now + std::min(milliseconds, longestWait));
    }

    bool WaitMessage(Message& message) override {
        if (TakeUntil(message, m_clock.now))
            return true;
        if (m_quitting)
            return false;
        if (NextDue() == never) {
            // Nothing will ever come: a real program would hang here.
            waitedForEver = true;
            return false;
        }
        return TakeUntil(message, NextDue());
    }

    void Dispatch(const Message& message) override {
        dispatched.push_back(message);
        if (onDispatch)
            onDispatch(message);
        const auto found = procedures.find(message.window);
        if (found != procedures.end() && !found->second->HandleMessage(message) && onUnhandled)
            onUnhandled(message);
    }

    void SetTimer(WindowHandle window, std::uint32_t id, std::uint32_t milliseconds) override {
        timerCalls.push_back("set " + std::to_string(id) + " every " + std::to_string(milliseconds));
        if (window != WindowHandle::None && !m_gone.contains(window))
            timers[{window, id}] = {m_clock.now + milliseconds, milliseconds};
    }

    void KillTimer(WindowHandle window, std::uint32_t id) override {
        timerCalls.push_back("kill " + std::to_string(id));
        timers.erase({window, id});
    }

    void PostQuit(int exitCode) override {
        m_quitting = true;
        m_exitCode = exitCode;
    }

    bool HasQuit() const override { return m_quitting; }
    int ExitCode() const override { return m_exitCode; }

    void Post(const Message& message) { PostAt(m_clock.now, message); }

    void PostAt(std::uint64_t due, const Message& message) {
        const auto later = std::find_if(m_queue.begin(), m_queue.end(),
                                        [&](const auto& waiting) { return waiting.first > due; });
        m_queue.insert(later, {due, message});
    }

    /// Its timers and waiting messages go with a window.
    void Forget(WindowHandle window) {
        m_gone.insert(window);
        procedures.erase(window);
        std::erase_if(timers, [&](const auto& timer) { return timer.first.first == window; });
        std::erase_if(m_queue, [&](const auto& waiting) { return waiting.second.window == window; });
    }

    /// What the operator did to a window that is hidden now.
    void ForgetInput(WindowHandle window) {
        std::erase_if(m_queue, [window](const auto& waiting) {
            return waiting.second.window == window && IsInput(waiting.second.kind);
        });
    }

    /// Whether there was one.
    bool Remove(WindowHandle window, MessageKind kind) {
        return std::erase_if(m_queue, [&](const auto& waiting) {
                   return waiting.second.window == window && waiting.second.kind == kind;
               }) > 0;
    }

    bool TimerRuns(WindowHandle window, std::uint32_t id) const { return timers.contains({window, id}); }

    struct Timer {
        std::uint64_t due = 0;
        std::uint32_t period = 0;
    };

    std::vector<Message> dispatched;
    std::function<void(const Message&)> onDispatch;
    std::function<void(const Message&)> onUnhandled; // the platform's own behaviour
    std::map<WindowHandle, WindowProcedure*> procedures;
    std::map<std::pair<WindowHandle, std::uint32_t>, Timer> timers;
    std::vector<std::string> timerCalls;
    std::uint32_t longestWait = ~0U; // a real wait may end before its time without a message
    bool waitedForEver = false;

private:
    static constexpr std::uint64_t never = ~std::uint64_t{0};

    static bool IsInput(MessageKind kind) {
        return kind == MessageKind::KeyDown || kind == MessageKind::MouseMove ||
               kind == MessageKind::LeftButtonPress || kind == MessageKind::LeftButtonRelease;
    }

    std::uint64_t NextDue() const {
        std::uint64_t due = m_queue.empty() ? never : m_queue.front().first;
        for (const auto& [key, timer] : timers)
            due = std::min(due, timer.due);
        return due;
    }

    /// Messages win over ticks that are due.
    bool TakeUntil(Message& message, std::uint64_t until) {
        const std::uint64_t due = std::max(NextDue(), m_clock.now);
        if (NextDue() == never || due > until) {
            m_clock.now = std::max(m_clock.now, until);
            return false;
        }
        m_clock.now = due;
        if (!m_queue.empty() && m_queue.front().first <= due) {
            message = m_queue.front().second;
            m_queue.erase(m_queue.begin());
            return true;
        }
        for (auto& [key, timer] : timers) {
            if (timer.due > due)
                continue;
            timer.due = due + timer.period;
            message = {key.first, MessageKind::Timer, key.second};
            return true;
        }
        return false;
    }

    VirtualClock& m_clock;
    std::set<WindowHandle> m_gone;
    std::vector<std::pair<std::uint64_t, Message>> m_queue; // by due time
    bool m_quitting = false;
    int m_exitCode = 0;
};

} // namespace tessaro
