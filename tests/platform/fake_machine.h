#pragma once

#include "platform/fake/fake_user_interface.h"

namespace tessaro {

/// The fake adapters as the contracts see them.
struct FakeMachine {
    static constexpr bool virtualTime = true;

    FakeUserInterface fake;
    UserInterface ui = fake.Adapters();

    void Post(const Message& message) { fake.messages.Post(message); }

    /// Time goes by, and nobody takes messages.
    void PassTime(std::uint32_t milliseconds) { fake.clock.now += milliseconds; }

    bool IsShown(WindowHandle window, const std::string&) { return fake.windows.windows.at(window).shown; }

    /// The close button of the window's frame.
    void CloseByOperator(WindowHandle window, const std::string&) {
        fake.messages.Post({window, MessageKind::Close});
    }
};

} // namespace tessaro
