#pragma once

#include "platform/user_interface.h"
#include "tests/platform/recording_procedures.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

// What every Dialogs must do. Instantiate it for each machine:
// INSTANTIATE_TYPED_TEST_SUITE_P(Qt, DialogsContract, QtMachine);

namespace tessaro {

template<class Machine>
class DialogsContract : public testing::Test {
protected:
    // Dialogs of the resources, and some of their controls.
    static constexpr int contrast = 129;
    static constexpr int stage = 130;
    static constexpr int panel = 137;
    static constexpr int port = 141;
    static constexpr int unknownControl = 200;
    static constexpr int redContrast = 1017;
    static constexpr int graphene = 1023;
    static constexpr int hBN = 1024;
    static constexpr int tmdc = 1033;
    static constexpr int substrate = 1034;
    static constexpr int smoothing = 1013;
    static constexpr int testNow = 1008;
    static constexpr int information = 1006;

    Dialogs& Boxes() { return m_machine.ui.dialogs; }
    WindowHandle Open(int resource) {
        return Boxes().CreateModeless(resource, WindowHandle::None, m_procedure);
    }

    static std::vector<RecordingDialogProcedure::Reported> Changed(int controlId, std::size_t times) {
        return std::vector(times, RecordingDialogProcedure::Reported(controlId, Notification::TextChanged));
    }

    Machine m_machine;
    RecordingDialogProcedure m_procedure;
};

TYPED_TEST_SUITE_P(DialogsContract);

TYPED_TEST_P(DialogsContract, InitializesADialogBeforeItIsReturned) {
    const WindowHandle dialog = this->Open(this->panel);
    EXPECT_NE(dialog, WindowHandle::None);
    EXPECT_EQ(this->m_procedure.dialog, dialog);
    EXPECT_TRUE(this->m_procedure.commands.empty());
}

TYPED_TEST_P(DialogsContract, MakesNoDialogWithoutAResource) {
    EXPECT_EQ(this->Open(4711), WindowHandle::None);
    EXPECT_EQ(this->Boxes().RunModal(4711, WindowHandle::None, this->m_procedure), -1);
    EXPECT_EQ(this->m_procedure.dialog, WindowHandle::None) << "nothing was initialized";
}

TYPED_TEST_P(DialogsContract, KeepsTextsOfEditsApart) {
    const WindowHandle dialog = this->Open(this->panel);
    EXPECT_EQ(this->Boxes().ItemText(dialog, this->information, 100), "");
    this->Boxes().SetItemText(dialog, this->information, "Image saved.");
    this->Boxes().SetItemText(dialog, 1007, "12\xC2\xB5m");
    EXPECT_EQ(this->Boxes().ItemText(dialog, this->information, 100), "Image saved.");
    EXPECT_EQ(this->Boxes().ItemText(dialog, 1007, 100), "12\xC2\xB5m");
}

TYPED_TEST_P(DialogsContract, KnowsTheLabelsOfButtons) {
    const WindowHandle dialog = this->Open(this->port);
    EXPECT_EQ(this->Boxes().ItemText(dialog, 1008, 100), "Initialize");
    EXPECT_EQ(this->Boxes().ItemText(dialog, commandCancel, 100), "\xEC\xB7\xA8\xEC\x86\x8C");
}

TYPED_TEST_P(DialogsContract, CutsTextsAtWholeCharacters) {
    const WindowHandle dialog = this->Open(this->panel);
    this->Boxes().SetItemText(dialog, this->information, "a\xC2\xB5\xED\x99\x95\xF0\x9F\x94\xACz");
    const std::vector<std::string> cut = {"",
                                          "a",
                                          "a",
                                          "a\xC2\xB5",
                                          "a\xC2\xB5",
                                          "a\xC2\xB5",
                                          "a\xC2\xB5\xED\x99\x95",
                                          "a\xC2\xB5\xED\x99\x95",
                                          "a\xC2\xB5\xED\x99\x95",
                                          "a\xC2\xB5\xED\x99\x95",
                                          "a\xC2\xB5\xED\x99\x95\xF0\x9F\x94\xAC",
                                          "a\xC2\xB5\xED\x99\x95\xF0\x9F\x94\xACz",
                                          "a\xC2\xB5\xED\x99\x95\xF0\x9F\x94\xACz"};
    for (std::size_t bytes = 0; bytes < cut.size(); ++bytes)
        EXPECT_EQ(this->Boxes().ItemText(dialog, this->information, bytes), cut[bytes]) << bytes;
}

TYPED_TEST_P(DialogsContract, NotifiesOfATextThatTheProgramChanges) {
    const WindowHandle dialog = this->Open(this->panel);
    this->Boxes().SetItemText(dialog, 1012, "30");
    EXPECT_EQ(this->m_procedure.commands, this->Changed(1012, 1));
    this->Boxes().SetItemText(dialog, 1012, "30");
    EXPECT_EQ(this->m_procedure.commands, this->Changed(1012, 1)) << "nothing has changed";
    this->Boxes().SetItemText(dialog, 1012, "");
    EXPECT_EQ(this->m_procedure.commands, this->Changed(1012, 2));
    EXPECT_EQ(this->m_procedure.fromOthers, 0);
}

TYPED_TEST_P(DialogsContract, ShowsTheNewTextToTheNotificationAboutIt) {
    const WindowHandle dialog = this->Open(this->panel);
    std::vector<std::string> seen;
    this->m_procedure.onCommand = [&](int, Notification) {
        seen.push_back(this->Boxes().ItemText(dialog, 1012, 10));
        if (seen.size() == 1)
            this->Boxes().SetItemText(dialog, 1012, "30"); // a notification inside a notification
    };
    this->Boxes().SetItemText(dialog, 1012, "3");
    EXPECT_EQ(seen, (std::vector<std::string>{"3", "30"}));
    EXPECT_EQ(this->Boxes().ItemText(dialog, 1012, 10), "30");
    EXPECT_EQ(this->m_procedure.commands, this->Changed(1012, 2));
}

TYPED_TEST_P(DialogsContract, NotifiesOfTextsSetWhileItIsInitialized) {
    this->m_procedure.onInitialize = [this](WindowHandle dialog) {
        this->Boxes().SetItemText(dialog, this->redContrast, "-12.0");
    };
    this->Open(this->contrast);
    EXPECT_EQ(this->m_procedure.commands, this->Changed(this->redContrast, 1));
}

TYPED_TEST_P(DialogsContract, ChecksAndUnchecksABox) {
    const WindowHandle dialog = this->Open(this->contrast);
    EXPECT_FALSE(this->Boxes().IsChecked(dialog, this->smoothing));
    this->Boxes().SetChecked(dialog, this->smoothing, true);
    EXPECT_TRUE(this->Boxes().IsChecked(dialog, this->smoothing));
    EXPECT_FALSE(this->Boxes().IsChecked(dialog, 1004)) << "the other box";
    this->Boxes().SetChecked(dialog, this->smoothing, false);
    EXPECT_FALSE(this->Boxes().IsChecked(dialog, this->smoothing));
    EXPECT_TRUE(this->m_procedure.commands.empty()) << "only the operator's clicks are clicks";
}

TYPED_TEST_P(DialogsContract, HasOneRadioButtonOfAGroupChecked) {
    const WindowHandle dialog = this->Open(this->contrast);
    for (const int id : {this->graphene, this->hBN, this->tmdc})
        EXPECT_FALSE(this->Boxes().IsChecked(dialog, id)) << "none at first";
    for (const int checked : {this->hBN, this->tmdc, this->graphene}) {
        this->Boxes().SetChecked(dialog, checked, true);
        for (const int id : {this->graphene, this->hBN, this->tmdc})
            EXPECT_EQ(this->Boxes().IsChecked(dialog, id), id == checked);
    }
    EXPECT_TRUE(this->m_procedure.commands.empty());
}

TYPED_TEST_P(DialogsContract, SelectsAmongTheChoicesThatWereAdded) {
    const WindowHandle dialog = this->Open(this->contrast);
    EXPECT_EQ(this->Boxes().SelectedChoice(dialog, this->substrate), -1);
    for (const char* text : {"SiO2 (300nm)", "glass", "sapphire"})
        this->Boxes().AddChoice(dialog, this->substrate, text);
    EXPECT_EQ(this->Boxes().SelectedChoice(dialog, this->substrate), -1) << "none by itself";
    for (const int index : {2, 0, 1}) {
        this->Boxes().SelectChoice(dialog, this->substrate, index);
        EXPECT_EQ(this->Boxes().SelectedChoice(dialog, this->substrate), index);
    }
    this->Boxes().SelectChoice(dialog, this->substrate, 3);
    EXPECT_EQ(this->Boxes().SelectedChoice(dialog, this->substrate), -1) << "no such choice";
    EXPECT_TRUE(this->m_procedure.commands.empty()) << "only the operator's selections are selections";
}

TYPED_TEST_P(DialogsContract, DoesNothingWithAnIdThatItHasNot) {
    const WindowHandle dialog = this->Open(this->port);
    Dialogs& dialogs = this->Boxes();
    dialogs.SetItemText(dialog, this->unknownControl, "1500");
    dialogs.SetChecked(dialog, this->unknownControl, true);
    dialogs.AddChoice(dialog, this->unknownControl, "glass");
    dialogs.SelectChoice(dialog, this->unknownControl, 0);
    EXPECT_EQ(dialogs.ItemText(dialog, this->unknownControl, 10), "");
    EXPECT_FALSE(dialogs.IsChecked(dialog, this->unknownControl));
    EXPECT_EQ(dialogs.SelectedChoice(dialog, this->unknownControl), -1);
    EXPECT_TRUE(this->m_procedure.commands.empty());
}

TYPED_TEST_P(DialogsContract, DoesNothingWithAControlOfAnotherKind) {
    const WindowHandle dialog = this->Open(this->contrast);
    Dialogs& dialogs = this->Boxes();
    dialogs.SetChecked(dialog, this->redContrast, true);
    EXPECT_FALSE(dialogs.IsChecked(dialog, this->redContrast));
    dialogs.AddChoice(dialog, this->testNow, "glass");
    dialogs.SelectChoice(dialog, this->testNow, 0);
    EXPECT_EQ(dialogs.SelectedChoice(dialog, this->testNow), -1);
    dialogs.SetChecked(dialog, this->testNow, true);
    EXPECT_FALSE(dialogs.IsChecked(dialog, this->testNow));
}

TYPED_TEST_P(DialogsContract, DoesNothingWithADialogThatIsGone) {
    Dialogs& dialogs = this->Boxes();
    const WindowHandle dialog = this->Open(this->contrast);
    dialogs.SetItemText(dialog, this->redContrast, "1");
    dialogs.DestroyModeless(dialog);
    this->m_procedure.commands.clear();
    for (const WindowHandle gone : {dialog, WindowHandle::None}) {
        dialogs.ShowModeless(gone);
        dialogs.SetItemText(gone, this->redContrast, "2");
        dialogs.SetChecked(gone, this->smoothing, true);
        dialogs.AddChoice(gone, this->substrate, "glass");
        dialogs.SelectChoice(gone, this->substrate, 0);
        dialogs.EndModal(gone, 3);
        dialogs.DestroyModeless(gone);
        EXPECT_EQ(dialogs.ItemText(gone, this->redContrast, 10), "");
        EXPECT_FALSE(dialogs.IsChecked(gone, this->smoothing));
        EXPECT_EQ(dialogs.SelectedChoice(gone, this->substrate), -1);
    }
    EXPECT_TRUE(this->m_procedure.commands.empty());
}

TYPED_TEST_P(DialogsContract, GivesEveryDialogAHandleOfItsOwn) {
    RecordingDialogProcedure other;
    const WindowHandle first = this->Open(this->panel);
    const WindowHandle second = this->Boxes().CreateModeless(this->panel, WindowHandle::None, other);
    EXPECT_NE(first, second);
    this->Boxes().SetItemText(second, this->information, "second");
    EXPECT_EQ(this->Boxes().ItemText(first, this->information, 10), "");
    EXPECT_TRUE(this->m_procedure.commands.empty());
    EXPECT_EQ(other.commands, this->Changed(this->information, 1));
    this->Boxes().DestroyModeless(first);
    EXPECT_NE(this->Open(this->panel), first);
    EXPECT_EQ(this->Boxes().ItemText(second, this->information, 10), "second");
}

TYPED_TEST_P(DialogsContract, CanBeDestroyedByItsOwnCommand) {
    const WindowHandle dialog = this->Open(this->panel);
    this->m_procedure.onCommand = [&](int, Notification) { this->Boxes().DestroyModeless(dialog); };
    this->Boxes().SetItemText(dialog, this->information, "1");
    this->Boxes().SetItemText(dialog, this->information, "2");
    EXPECT_EQ(this->m_procedure.commands, this->Changed(this->information, 1));
}

TYPED_TEST_P(DialogsContract, ReturnsWhatTheModalDialogWasEndedWith) {
    this->m_procedure.onInitialize = [this](WindowHandle dialog) {
        this->Boxes().SetItemText(dialog, 1007, "12");
    };
    this->m_procedure.onCommand = [this](int, Notification) {
        this->Boxes().EndModal(this->m_procedure.dialog, 5);
    };
    EXPECT_EQ(this->Boxes().RunModal(this->stage, WindowHandle::None, this->m_procedure), 5);
    EXPECT_EQ(this->Boxes().ItemText(this->m_procedure.dialog, 1007, 10), "") << "it is gone";
}

TYPED_TEST_P(DialogsContract, ReturnsZeroWhenTheProgramEndsDuringAModalDialog) {
    this->m_procedure.onInitialize = [this](WindowHandle) { this->m_machine.ui.messages.PostQuit(4); };
    EXPECT_EQ(this->Boxes().RunModal(this->stage, WindowHandle::None, this->m_procedure), 0);
    EXPECT_EQ(this->m_machine.ui.messages.ExitCode(), 4);
}

REGISTER_TYPED_TEST_SUITE_P(DialogsContract, InitializesADialogBeforeItIsReturned,
                            MakesNoDialogWithoutAResource, KeepsTextsOfEditsApart, KnowsTheLabelsOfButtons,
                            CutsTextsAtWholeCharacters, NotifiesOfATextThatTheProgramChanges,
                            ShowsTheNewTextToTheNotificationAboutIt, NotifiesOfTextsSetWhileItIsInitialized,
                            ChecksAndUnchecksABox, HasOneRadioButtonOfAGroupChecked,
                            SelectsAmongTheChoicesThatWereAdded, DoesNothingWithAnIdThatItHasNot,
                            DoesNothingWithAControlOfAnotherKind, DoesNothingWithADialogThatIsGone,
                            GivesEveryDialogAHandleOfItsOwn, CanBeDestroyedByItsOwnCommand,
                            ReturnsWhatTheModalDialogWasEndedWith,
                            ReturnsZeroWhenTheProgramEndsDuringAModalDialog);

} // namespace tessaro
