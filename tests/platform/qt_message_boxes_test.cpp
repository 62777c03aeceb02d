#include "tests/platform/operator_input.h"
#include "tests/platform/qt_machine.h"
#include "tests/platform/recording_procedures.h"
#include "tests/support/temporary_folder.h"

#include <QEvent>
#include <QFileDialog>
#include <QLineEdit>
#include <QMessageBox>

#include <gtest/gtest.h>

#include <functional>
#include <string>

namespace tessaro {
namespace {

/// Counts the dialogs that come to the screen.
class ShownDialogs : public QObject {
public:
    ShownDialogs() { qApp->installEventFilter(this); }

    int count = 0;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Show && qobject_cast<QDialog*>(watched) != nullptr)
            ++count;
        return false;
    }
};

/// Questions, warnings and the file chooser, with an owner whose timer is the operator.
class QtQuestions : public testing::Test {
protected:
    QtQuestions() {
        m_machine.ui.windows.RegisterWindowClass({"main", &m_procedure});
        m_owner = m_machine.ui.windows.MakeWindow({"main", "Main", {}, 0, 0, 500, 400});
        m_machine.ui.windows.Show(m_owner);
        m_machine.DispatchAll();
        m_procedure.answer = [this](const Message& message) {
            if (message.kind == MessageKind::Timer && m_operator)
                m_operator();
            return message.kind == MessageKind::Timer;
        };
    }

    /// Does it again and again while a question waits for its answer.
    void Operator(std::function<void()> act) {
        m_operator = std::move(act);
        m_machine.ui.messages.SetTimer(m_owner, 1, 5);
    }

    static QMessageBox* Box() { return qobject_cast<QMessageBox*>(QApplication::activeModalWidget()); }

    bool Ask() { return m_machine.ui.boxes.AskYesNo(m_owner, "Do you want to stop, now ?", "Warning"); }

    QtMachine m_machine;
    RecordingWindowProcedure m_procedure;
    WindowHandle m_owner = WindowHandle::None;
    std::function<void()> m_operator;
};

TEST_F(QtQuestions, AreAnsweredByTheirButtons) {
    for (const auto answer : {QMessageBox::Yes, QMessageBox::No}) {
        Operator([=] { operator_input::Click(*Box()->button(answer)); });
        EXPECT_EQ(Ask(), answer == QMessageBox::Yes);
    }
}

TEST_F(QtQuestions, AreAnsweredByKeys) {
    Operator([] { operator_input::Type(*Box(), Qt::Key_Escape); });
    EXPECT_FALSE(Ask());
    Operator([] { operator_input::Type(*Box(), Qt::Key_Return, Qt::NoModifier, QStringLiteral("\r")); });
    EXPECT_TRUE(Ask());
}

TEST_F(QtQuestions, TakeClosingForNo) {
    Operator([] { Box()->windowHandle()->close(); });
    EXPECT_FALSE(Ask());
}

TEST_F(QtQuestions, ShowTextAndCaptionAsTheyAre) {
    std::string caption;
    std::string text;
    Operator([&] {
        caption = Box()->windowTitle().toStdString();
        text = Box()->text().toStdString();
        EXPECT_EQ(Box()->textFormat(), Qt::PlainText);
        EXPECT_EQ(Box()->buttons().size(), 1);
        operator_input::Click(*Box()->button(QMessageBox::Ok));
    });
    m_machine.ui.boxes.ShowWarning(m_owner, "<b>COM3</b>\tis not\n\tthere & gone", "Warning");
    EXPECT_EQ(caption, "Warning");
    EXPECT_EQ(text, "<b>COM3</b>\tis not\n\tthere & gone");
}

TEST_F(QtQuestions, EndAWarningByEnterEscapeAndClosing) {
    int shown = 0;
    for (const int qtKey : {int{Qt::Key_Return}, int{Qt::Key_Enter}, int{Qt::Key_Escape}, 0}) {
        bool first = true;
        Operator([&, qtKey] {
            shown += std::exchange(first, false) ? 1 : 0;
            if (qtKey == 0)
                Box()->windowHandle()->close();
            else
                operator_input::Type(*Box(), qtKey);
        });
        m_machine.ui.boxes.ShowWarning(m_owner, "text", "Warning");
    }
    EXPECT_EQ(shown, 4);
}

TEST_F(QtQuestions, KeepAllOtherWindowsFromBeingUsed) {
    int ticks = 0;
    Operator([&] {
        if (++ticks == 1)
            operator_input::Click(*QtMachine::TopLevel("Main"));
        if (ticks == 4)
            operator_input::Click(*Box()->button(QMessageBox::Yes));
    });
    EXPECT_TRUE(Ask());
    EXPECT_EQ(m_procedure.Count(MessageKind::LeftButtonPress), 0U);
}

TEST_F(QtQuestions, CanBeAskedInTheMiddleOfAnother) {
    int depth = 0;
    bool inner = false;
    Operator([&] {
        if (++depth == 1)
            inner = Ask();
        else if (depth == 2)
            operator_input::Click(*Box()->button(QMessageBox::Yes));
        else
            operator_input::Click(*Box()->button(QMessageBox::No));
    });
    EXPECT_FALSE(Ask());
    EXPECT_TRUE(inner);
}

TEST_F(QtQuestions, AreNoWhenTheProgramEnds) {
    Operator([&] { m_machine.ui.messages.PostQuit(0); });
    EXPECT_FALSE(Ask());
    EXPECT_EQ(Box(), nullptr);
}

TEST_F(QtQuestions, AreNotEvenShownOnceTheProgramIsToldToQuit) {
    const ShownDialogs shown;
    Operator([] { operator_input::Click(*Box()->button(QMessageBox::Yes)); });
    EXPECT_TRUE(Ask());
    EXPECT_EQ(shown.count, 1) << "it would be noticed";
    Operator([] {});
    m_machine.ui.messages.PostQuit(0);
    EXPECT_FALSE(Ask());
    m_machine.ui.boxes.ShowWarning(m_owner, "text", "Warning");
    EXPECT_EQ(m_machine.ui.chooser.ChooseFileToOpen(), std::nullopt);
    EXPECT_EQ(shown.count, 1);
}

TEST_F(QtQuestions, AreNoWhenTheirOwnerGoes) {
    Operator([&] { m_machine.ui.windows.Destroy(m_owner); });
    EXPECT_FALSE(Ask());
}

TEST_F(QtQuestions, NeedNoOwner) {
    Operator([] { operator_input::Click(*Box()->button(QMessageBox::Yes)); });
    EXPECT_TRUE(m_machine.ui.boxes.AskYesNo(WindowHandle::None, "text", "Warning"));
}

class QtFileChooserTest : public QtQuestions {
protected:
    static QFileDialog* Chooser() { return qobject_cast<QFileDialog*>(QApplication::activeModalWidget()); }

    /// Types a name into the chooser, and accepts it.
    static void Choose(const std::string& name) {
        auto* edit = Chooser()->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
        ASSERT_NE(edit, nullptr);
        edit->setText(QString::fromStdString(name));
        operator_input::Type(*edit, Qt::Key_Return, Qt::NoModifier, QStringLiteral("\r"));
    }

    std::optional<std::filesystem::path> ChooseFile(std::function<void()> act) {
        bool first = true;
        Operator([first, act = std::move(act)]() mutable {
            if (Chooser() != nullptr && std::exchange(first, false))
                act();
        });
        return m_machine.ui.chooser.ChooseFileToOpen();
    }

    TemporaryFolder m_folder;
};

TEST_F(QtFileChooserTest, ReturnsTheFileThatWasChosen) {
    const std::string file = m_folder.Write("flake 한 \xC2\xB5.png", {1, 2, 3});
    EXPECT_EQ(ChooseFile([&] { Choose(file); }), std::filesystem::path(file));
}

TEST_F(QtFileChooserTest, ReturnsNothingWhenItIsCancelled) {
    EXPECT_EQ(ChooseFile([] { operator_input::Type(*Chooser(), Qt::Key_Escape); }), std::nullopt);
}

TEST_F(QtFileChooserTest, ReturnsNothingWhenTheProgramEnds) {
    EXPECT_EQ(ChooseFile([this] { m_machine.ui.messages.PostQuit(0); }), std::nullopt);
}

TEST_F(QtFileChooserTest, StartsWhereTheLastFileWasChosen) {
    const std::string file = m_folder.Write("flake.png", {1, 2, 3});
    ASSERT_TRUE(ChooseFile([&] { Choose(file); }).has_value());
    std::filesystem::path folder;
    ChooseFile([&] {
        folder = Chooser()->directory().absolutePath().toStdString();
        operator_input::Type(*Chooser(), Qt::Key_Escape);
    });
    EXPECT_EQ(std::filesystem::canonical(folder), std::filesystem::canonical(m_folder.Path()));
}

TEST_F(QtFileChooserTest, StaysWhenTheFileIsNotThere) {
    const std::string missing = (m_folder.Path() / "missing.png").string();
    int tick = 0;
    Operator([&] {
        if (QMessageBox* box = Box(); box != nullptr)
            operator_input::Type(*box, Qt::Key_Return);
        else if (Chooser() != nullptr && ++tick == 1)
            Choose(missing);
        else if (Chooser() != nullptr && tick > 20)
            operator_input::Type(*Chooser(), Qt::Key_Escape);
    });
    EXPECT_EQ(m_machine.ui.chooser.ChooseFileToOpen(), std::nullopt);
    EXPECT_GT(tick, 1);
}

} // namespace
} // namespace tessaro
