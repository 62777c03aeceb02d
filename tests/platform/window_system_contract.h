#pragma once

#include "platform/user_interface.h"
#include "tests/platform/recording_procedures.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

// What every WindowSystem must do. Instantiate it for each machine:
// INSTANTIATE_TYPED_TEST_SUITE_P(Qt, WindowSystemContract, QtMachine);

namespace tessaro {

template<class Machine>
class WindowSystemContract : public testing::Test {
protected:
    WindowSystemContract() { Windows().RegisterWindowClass({"contract", &m_procedure}); }

    WindowSystem& Windows() { return m_machine.ui.windows; }

    WindowHandle Make(const std::string& title, WindowHandle owner = WindowHandle::None) {
        return Windows().MakeWindow({"contract", title, WindowStyle::Overlapped, 10, 20, 300, 200, owner});
    }

    void DispatchAll() {
        Message message;
        while (m_machine.ui.messages.TakeMessage(message, 20))
            m_machine.ui.messages.Dispatch(message);
    }

    bool IsThere(WindowHandle window) {
        const DeviceContext context = m_machine.ui.drawing.GetWindowContext(window);
        m_machine.ui.drawing.ReleaseContext(context);
        return context != DeviceContext::None;
    }

    /// Windows that were told so, in order.
    std::vector<WindowHandle> Told(MessageKind kind) const {
        std::vector<WindowHandle> told;
        for (const Message& message : m_procedure.messages) {
            if (message.kind == kind)
                told.push_back(message.window);
        }
        return told;
    }

    Machine m_machine;
    RecordingWindowProcedure m_procedure;
};

TYPED_TEST_SUITE_P(WindowSystemContract);

TYPED_TEST_P(WindowSystemContract, KeepsTheFirstOfTwoClassesOfOneName) {
    RecordingWindowProcedure second;
    EXPECT_FALSE(this->Windows().RegisterWindowClass({"contract", &second}));
    this->Make("A");
    EXPECT_EQ(this->m_procedure.Count(MessageKind::Create), 1U);
    EXPECT_TRUE(second.messages.empty());
}

TYPED_TEST_P(WindowSystemContract, MakesNoWindowOfAnUnknownClass) {
    EXPECT_EQ(this->Windows().MakeWindow({"unknown", "A"}), WindowHandle::None);
}

TYPED_TEST_P(WindowSystemContract, SendsCreateFirstWithTheHandleThatItReturns) {
    WindowHandle seen = WindowHandle::None;
    bool usable = false;
    this->m_procedure.answer = [&](const Message& message) {
        seen = message.window;
        usable = this->IsThere(message.window);
        return true;
    };
    const WindowHandle window = this->Make("A");
    ASSERT_NE(window, WindowHandle::None);
    ASSERT_EQ(this->m_procedure.messages.size(), 1U);
    EXPECT_EQ(this->m_procedure.messages[0].kind, MessageKind::Create);
    EXPECT_EQ(seen, window);
    EXPECT_TRUE(usable);
}

TYPED_TEST_P(WindowSystemContract, PaintsAWindowOnceAfterItWasShown) {
    const WindowHandle window = this->Make("A");
    this->DispatchAll();
    EXPECT_EQ(this->m_procedure.Count(MessageKind::Paint), 0U) << "it is hidden";
    this->Windows().Show(window);
    this->Windows().Update(window);
    EXPECT_EQ(this->m_procedure.Count(MessageKind::Paint), 1U) << "sent, not posted";
    this->Windows().Update(window);
    this->DispatchAll();
    EXPECT_EQ(this->m_procedure.Count(MessageKind::Paint), 1U);
}

TYPED_TEST_P(WindowSystemContract, PaintsAWindowThatNobodyUpdates) {
    this->Windows().Show(this->Make("A"));
    this->DispatchAll();
    EXPECT_EQ(this->m_procedure.Count(MessageKind::Paint), 1U);
}

TYPED_TEST_P(WindowSystemContract, UpdatesNoHiddenWindow) {
    this->Windows().Update(this->Make("A"));
    EXPECT_EQ(this->m_procedure.Count(MessageKind::Paint), 0U);
}

TYPED_TEST_P(WindowSystemContract, SendsDestroyOnceWhileTheWindowIsStillThere) {
    bool wasThere = false;
    this->m_procedure.answer = [&](const Message& message) {
        if (message.kind == MessageKind::Destroy) {
            wasThere = this->IsThere(message.window);
            this->Windows().Destroy(message.window); // in the middle of it: nothing more
        }
        return false;
    };
    const WindowHandle window = this->Make("A");
    this->Windows().Destroy(window);
    EXPECT_TRUE(wasThere);
    EXPECT_FALSE(this->IsThere(window));
    this->Windows().Destroy(window);
    this->DispatchAll();
    EXPECT_EQ(this->m_procedure.Count(MessageKind::Destroy), 1U);
}

TYPED_TEST_P(WindowSystemContract, TakesOwnedWindowsAwayAfterTheirOwner) {
    const WindowHandle owner = this->Make("owner");
    const WindowHandle owned = this->Make("owned", owner);
    const WindowHandle ownedByOwned = this->Make("owned by owned", owned);
    const WindowHandle other = this->Make("other");
    this->Windows().Destroy(owner);
    EXPECT_EQ(this->Told(MessageKind::Destroy), (std::vector<WindowHandle>{owner, owned, ownedByOwned}));
    EXPECT_FALSE(this->IsThere(owned));
    EXPECT_FALSE(this->IsThere(ownedByOwned));
    EXPECT_TRUE(this->IsThere(other));
}

TYPED_TEST_P(WindowSystemContract, ShowsNeitherTheWindowNorThoseThatItOwnsWhileItIsDestroyed) {
    const WindowHandle owner = this->Make("owner");
    const WindowHandle owned = this->Make("owned", owner);
    const WindowHandle other = this->Make("other");
    for (const WindowHandle window : {owner, owned, other})
        this->Windows().Show(window);
    this->DispatchAll();
    std::vector<bool> shown;
    this->m_procedure.answer = [&](const Message& message) {
        if (message.kind == MessageKind::Destroy && message.window == owner)
            shown = {this->m_machine.IsShown(owner, "owner"), this->m_machine.IsShown(owned, "owned"),
                     this->m_machine.IsShown(other, "other")};
        return false;
    };
    this->Windows().Destroy(owner);
    EXPECT_EQ(shown, (std::vector<bool>{false, false, true}));
}

TYPED_TEST_P(WindowSystemContract, LeavesTheOwnerWhenAnOwnedWindowGoes) {
    const WindowHandle owner = this->Make("owner");
    const WindowHandle owned = this->Make("owned", owner);
    this->Windows().Destroy(owned);
    EXPECT_TRUE(this->IsThere(owner));
    EXPECT_EQ(this->Told(MessageKind::Destroy), std::vector<WindowHandle>{owned});
}

TYPED_TEST_P(WindowSystemContract, TakesDialogsAwayWithTheirOwnerAfterItHasHeardOfIt) {
    const WindowHandle owner = this->Make("owner");
    RecordingDialogProcedure procedure;
    const WindowHandle dialog = this->m_machine.ui.dialogs.CreateModeless(137, owner, procedure);
    std::string atDestroy;
    this->m_machine.ui.dialogs.SetItemText(dialog, 1006, "there");
    this->m_procedure.answer = [&](const Message& message) {
        if (message.kind == MessageKind::Destroy)
            atDestroy = this->m_machine.ui.dialogs.ItemText(dialog, 1006, 10);
        return false;
    };
    this->Windows().Destroy(owner);
    EXPECT_EQ(atDestroy, "there");
    EXPECT_EQ(this->m_machine.ui.dialogs.ItemText(dialog, 1006, 10), "");
}

TYPED_TEST_P(WindowSystemContract, AsksTheProcedureBeforeTheOperatorClosesAWindow) {
    const WindowHandle window = this->Make("Closing");
    this->Windows().Show(window);
    this->DispatchAll();
    bool keep = true;
    this->m_procedure.answer = [&](const Message& message) {
        return message.kind == MessageKind::Close && keep;
    };
    this->m_machine.CloseByOperator(window, "Closing");
    this->DispatchAll();
    EXPECT_EQ(this->m_procedure.Count(MessageKind::Close), 1U);
    EXPECT_EQ(this->m_procedure.Count(MessageKind::Destroy), 0U);
    EXPECT_TRUE(this->IsThere(window));
    keep = false;
    this->m_machine.CloseByOperator(window, "Closing");
    this->DispatchAll();
    EXPECT_EQ(this->m_procedure.Count(MessageKind::Close), 2U);
    EXPECT_EQ(this->m_procedure.Count(MessageKind::Destroy), 1U);
    EXPECT_FALSE(this->IsThere(window));
}

TYPED_TEST_P(WindowSystemContract, LetsTheProcedureDestroyTheWindowThatIsClosed) {
    const WindowHandle window = this->Make("Closing");
    this->Windows().Show(window);
    this->DispatchAll();
    this->m_procedure.answer = [&](const Message& message) {
        if (message.kind == MessageKind::Close)
            this->Windows().Destroy(window);
        return false;
    };
    this->m_machine.CloseByOperator(window, "Closing");
    this->DispatchAll();
    EXPECT_EQ(this->m_procedure.Count(MessageKind::Destroy), 1U);
    EXPECT_FALSE(this->IsThere(window));
}

TYPED_TEST_P(WindowSystemContract, DoesNothingWithAWindowThatIsGone) {
    const WindowHandle window = this->Make("A");
    this->Windows().Destroy(window);
    const std::size_t before = this->m_procedure.messages.size();
    for (const WindowHandle gone : {window, WindowHandle::None}) {
        this->Windows().Show(gone);
        this->Windows().Update(gone);
        this->Windows().Hide(gone);
        this->Windows().SetTitle(gone, "B");
        this->Windows().SetKeyboardFocus(gone);
        this->Windows().Destroy(gone);
    }
    this->DispatchAll();
    EXPECT_EQ(this->m_procedure.messages.size(), before);
}

TYPED_TEST_P(WindowSystemContract, NeverUsesAHandleAgain) {
    std::vector<WindowHandle> handles;
    for (int i = 0; i < 4; ++i) {
        handles.push_back(this->Make("A"));
        this->Windows().Destroy(handles.back());
    }
    std::sort(handles.begin(), handles.end());
    EXPECT_EQ(std::adjacent_find(handles.begin(), handles.end()), handles.end());
}

TYPED_TEST_P(WindowSystemContract, PutsControlsWithTextsOnAWindow) {
    const WindowHandle window = this->Make("A");
    const WindowHandle label = this->Windows().MakeChild(window, {ChildKind::Label, "Step", 5, 100, 40, 20});
    const WindowHandle edit = this->Windows().MakeChild(window, {ChildKind::Edit, "100", 55, 100, 40, 20});
    EXPECT_EQ((std::set<WindowHandle>{WindowHandle::None, window, label, edit}).size(), 4U);
    EXPECT_EQ(this->Windows().ChildText(label, 10), "Step");
    EXPECT_EQ(this->Windows().ChildText(edit, 10), "100");
    this->Windows().SetChildText(edit, "-1250");
    EXPECT_EQ(this->Windows().ChildText(edit, 10), "-1250");
    EXPECT_EQ(this->Windows().ChildText(label, 10), "Step");
    EXPECT_EQ(this->m_procedure.messages.size(), 1U) << "Create, and nothing of the controls";
}

TYPED_TEST_P(WindowSystemContract, CutsTheTextOfAControlToWholeCharacters) {
    const WindowHandle window = this->Make("A");
    const WindowHandle edit =
        this->Windows().MakeChild(window, {ChildKind::Edit, "12\xEC\xB7\xA8", 0, 0, 40, 20});
    EXPECT_EQ(this->Windows().ChildText(edit, 5), "12\xEC\xB7\xA8");
    EXPECT_EQ(this->Windows().ChildText(edit, 4), "12");
    EXPECT_EQ(this->Windows().ChildText(edit, 1), "1");
    EXPECT_EQ(this->Windows().ChildText(edit, 0), "");
}

TYPED_TEST_P(WindowSystemContract, PutsNoControlOnAWindowThatIsNotThere) {
    const WindowHandle window = this->Make("A");
    const ChildDescription edit{ChildKind::Edit, "100", 0, 0, 40, 20};
    const WindowHandle child = this->Windows().MakeChild(window, edit);
    EXPECT_EQ(this->Windows().MakeChild(WindowHandle::None, edit), WindowHandle::None);
    EXPECT_EQ(this->Windows().MakeChild(child, edit), WindowHandle::None);
    this->Windows().Destroy(window);
    EXPECT_EQ(this->Windows().MakeChild(window, edit), WindowHandle::None);
}

TYPED_TEST_P(WindowSystemContract, KeepsAControlUntilItsWindowGoes) {
    const WindowHandle window = this->Make("A");
    const WindowHandle other = this->Make("B");
    const WindowHandle edit = this->Windows().MakeChild(window, {ChildKind::Edit, "100", 0, 0, 40, 20});
    const WindowHandle kept = this->Windows().MakeChild(other, {ChildKind::Edit, "200", 0, 0, 40, 20});
    this->Windows().Destroy(edit);
    this->Windows().Update(edit);
    EXPECT_EQ(this->Windows().ChildText(edit, 10), "100");
    std::string atDestroy;
    this->m_procedure.answer = [&](const Message& message) {
        if (message.kind == MessageKind::Destroy)
            atDestroy = this->Windows().ChildText(edit, 10);
        return false;
    };
    this->Windows().Destroy(window);
    EXPECT_EQ(atDestroy, "100");
    this->Windows().SetChildText(edit, "1");
    EXPECT_EQ(this->Windows().ChildText(edit, 10), "");
    EXPECT_EQ(this->Windows().ChildText(kept, 10), "200");
}

TYPED_TEST_P(WindowSystemContract, PutsControlsOnAWindowThatIsBeingMade) {
    WindowHandle edit = WindowHandle::None;
    this->m_procedure.answer = [&](const Message& message) {
        if (message.kind == MessageKind::Create)
            edit = this->Windows().MakeChild(message.window, {ChildKind::Edit, "100", 0, 0, 40, 20});
        return true;
    };
    this->Make("A");
    EXPECT_NE(edit, WindowHandle::None);
    EXPECT_EQ(this->Windows().ChildText(edit, 10), "100");
}

TYPED_TEST_P(WindowSystemContract, FindsTheAcceleratorsOfTheResources) {
    EXPECT_TRUE(this->Windows().LoadAccelerators(109));
    EXPECT_FALSE(this->Windows().LoadAccelerators(110));
}

REGISTER_TYPED_TEST_SUITE_P(WindowSystemContract, LetsTheProcedureDestroyTheWindowThatIsClosed,
                            KeepsTheFirstOfTwoClassesOfOneName, MakesNoWindowOfAnUnknownClass,
                            SendsCreateFirstWithTheHandleThatItReturns, PaintsAWindowOnceAfterItWasShown,
                            PaintsAWindowThatNobodyUpdates, UpdatesNoHiddenWindow,
                            SendsDestroyOnceWhileTheWindowIsStillThere, TakesOwnedWindowsAwayAfterTheirOwner,
                            ShowsNeitherTheWindowNorThoseThatItOwnsWhileItIsDestroyed,
                            LeavesTheOwnerWhenAnOwnedWindowGoes,
                            TakesDialogsAwayWithTheirOwnerAfterItHasHeardOfIt,
                            AsksTheProcedureBeforeTheOperatorClosesAWindow, DoesNothingWithAWindowThatIsGone,
                            NeverUsesAHandleAgain, PutsControlsWithTextsOnAWindow,
                            CutsTheTextOfAControlToWholeCharacters, PutsNoControlOnAWindowThatIsNotThere,
                            KeepsAControlUntilItsWindowGoes, PutsControlsOnAWindowThatIsBeingMade,
                            FindsTheAcceleratorsOfTheResources);

} // namespace tessaro
