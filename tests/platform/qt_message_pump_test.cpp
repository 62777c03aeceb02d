#include "app/message_pump.h"
#include "app/resource_ids.h"
#include "platform/fake/scripted_serial_port.h"
#include "tests/platform/operator_input.h"
#include "tests/platform/qt_machine.h"
#include "tests/platform/recording_procedures.h"

#include <QAction>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <sys/resource.h>
#include <sys/time.h>
#include <vector>

namespace tessaro {
namespace {

const std::vector<std::string> stopOfAllAxes = {{"n", 2}, {"N", 2}, {"O", 2}}; // with their terminators

/// The pump on real windows: the main window with its menu, the control panel and the motor controller.
class QtMessagePump : public testing::Test {
protected:
    QtMessagePump() {
        m_stage.machine.serial = &m_port;
        m_stage.hComm = m_port.Open(m_port.PortName(3));
        m_port.TakeAnyWrite();
        m_machine.ui.windows.RegisterWindowClass({"main", &m_main, 109});
        m_machine.ui.windows.RegisterWindowClass({"motor", &m_motor});
        m_windows.main = m_machine.ui.windows.MakeWindow({"main", "Main", {}, 0, 0, 700, 500});
        m_windows.motorController = m_machine.ui.windows.MakeWindow(
            {"motor", "Motor", WindowStyle::ToolPopup, 0, 0, 400, 300, m_windows.main});
        m_windows.controlPanel = m_machine.ui.dialogs.CreateModeless(137, m_windows.main, m_panel);
        m_machine.ui.windows.Show(m_windows.main);
        m_machine.ui.windows.Show(m_windows.motorController);
        m_machine.ui.dialogs.ShowModeless(m_windows.controlPanel);
        m_machine.DispatchAll();
        m_main.messages.clear();
        m_main.answer = [this](const Message& message) {
            if (message.kind == MessageKind::Timer && message.parameter == operatorTimer && m_operator)
                m_operator();
            return message.kind == MessageKind::Timer;
        };
    }

    /// Does this in the middle of what runs, again every few milliseconds.
    void Operator(std::function<void()> act) {
        m_operator = std::move(act);
        m_machine.ui.messages.SetTimer(m_windows.main, operatorTimer, 4);
    }

    void OperatorRests() { m_machine.ui.messages.KillTimer(m_windows.main, operatorTimer); }

    static QWidget& View() {
        QWidget* window = QtMachine::TopLevel("Main");
        return *window->childAt(window->rect().center());
    }

    static QMessageBox* Box() { return qobject_cast<QMessageBox*>(QApplication::activeModalWidget()); }

    std::string Information() { return m_machine.ui.dialogs.ItemText(m_windows.controlPanel, 1006, 100); }

    /// Presses a button of the panel once, and answers the question whenever one is asked.
    void PressOnceAndAnswer(int controlId, QMessageBox::StandardButton answer) {
        bool pressed = false;
        Operator([this, controlId, answer, pressed]() mutable {
            if (!std::exchange(pressed, true)) {
                operator_input::Click(*QtMachine::Control("Control Panel", controlId));
            } else if (Box() != nullptr) {
                ++m_asked;
                m_texts = Box()->windowTitle().toStdString() + ": " + Box()->text().toStdString();
                operator_input::Click(*Box()->button(answer));
                OperatorRests();
            }
        });
    }

    static void TriggerMenu(std::uint32_t command) {
        for (QAction* action : QtMachine::TopLevel("Main")->findChildren<QAction*>()) {
            if (action->property("commandId").toUInt() == command)
                action->trigger();
        }
    }

    static constexpr std::uint32_t operatorTimer = 77;

    QtMachine m_machine;
    RecordingWindowProcedure m_main;
    RecordingWindowProcedure m_motor;
    RecordingDialogProcedure m_panel;
    ProgramWindows m_windows;
    VirtualClock m_lineClock; // nothing is read
    ScriptedSerialPorts m_port{m_lineClock};
    StageLink m_stage;
    LiveTimer m_liveTimer;
    ScanState m_scan;
    ShownPosition m_shown;
    StatusLines m_status{m_machine.ui.dialogs, m_windows, m_stage, m_shown};
    LiveView m_live{m_liveTimer, m_machine.ui.messages, m_windows};
    MessagePump m_pump{
        m_machine.ui.clock, m_machine.ui.messages, m_machine.ui.boxes, m_live, m_status, m_scan, m_stage,
        m_windows};
    std::function<void()> m_operator;
    int m_asked = 0;
    std::string m_texts; // of the last question
};

TEST_F(QtMessagePump, KeepsTheLengthOfAWait) {
    for (const std::uint32_t length : {5U, 10U, 100U}) {
        qint64 shortest = 1'000'000;
        // Others share the machine: one of several waits is on time.
        for (int i = 0; i < 10; ++i) {
            QElapsedTimer waited;
            waited.start();
            EXPECT_EQ(m_pump.PumpMessages(length), 1);
            shortest = std::min(shortest, waited.nsecsElapsed() / 1000);
        }
        EXPECT_GE(shortest, (qint64{length} - 1) * 1000);
        EXPECT_LE(shortest, (qint64{length} + 5) * 1000);
    }
}

TEST_F(QtMessagePump, DoesNotBurnTheProcessorWhileItWaits) {
    const auto processorMs = [] {
        rusage usage{};
        getrusage(RUSAGE_SELF, &usage);
        return (usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) * 1000 +
               (usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1000;
    };
    m_pump.PumpMessages(10);
    const auto before = processorMs();
    m_pump.PumpMessages(400);
    EXPECT_LT(processorMs() - before, 100);
}

TEST_F(QtMessagePump, WaitsItsWholeLengthWhileMessagesCome) {
    int ticks = 0;
    Operator([&] { ++ticks; });
    QElapsedTimer waited;
    waited.start();
    EXPECT_EQ(m_pump.PumpMessages(60), 1);
    EXPECT_GE(waited.elapsed(), 59);
    EXPECT_GE(ticks, 3);
}

TEST_F(QtMessagePump, SuspendsTheLiveViewWhileItRuns) {
    m_live.Switch(1);
    m_pump.PumpMessages(250);
    EXPECT_EQ(m_main.Count(MessageKind::Timer), 0U) << "no tick of 100 ms came through";
    Message tick;
    ASSERT_TRUE(m_machine.TakeNext(MessageKind::Timer, tick)) << "afterwards it ticks again";
    EXPECT_EQ(tick.parameter, liveTimerId);
}

TEST_F(QtMessagePump, LeavesALiveViewOffThatWasOff) {
    m_live.Switch(0);
    m_pump.PumpMessages(5);
    QtMachine::PassTime(150);
    Message tick;
    EXPECT_FALSE(m_machine.ui.messages.TakeMessage(tick, 0));
}

TEST_F(QtMessagePump, StopsTheStageByAClickAndLetsTheClickHappen) {
    bool clicked = false;
    Operator([&] {
        if (!std::exchange(clicked, true))
            operator_input::Click(View());
    });
    EXPECT_EQ(m_pump.PumpMessages(60), 1);
    EXPECT_EQ(m_port.writes, stopOfAllAxes);
    EXPECT_EQ(m_main.Count(MessageKind::LeftButtonPress), 1U);
}

TEST_F(QtMessagePump, StopsTheStageByAButtonAndStillFiresIt) {
    bool clicked = false;
    Operator([&] {
        if (!std::exchange(clicked, true))
            operator_input::Click(*QtMachine::Control("Control Panel", 1032));
    });
    m_pump.PumpMessages(60);
    EXPECT_EQ(m_port.writes, stopOfAllAxes);
    EXPECT_EQ(m_panel.Count(1032, Notification::Clicked), 1U);
}

TEST_F(QtMessagePump, LeavesPressesInTheMotorControllerAlone) {
    bool clicked = false;
    Operator([&] {
        QWidget* motor = QtMachine::TopLevel("Motor");
        if (!std::exchange(clicked, true))
            operator_input::Click(*motor->childAt(motor->rect().center()));
    });
    m_pump.PumpMessages(60);
    EXPECT_TRUE(m_port.writes.empty());
    EXPECT_EQ(m_motor.Count(MessageKind::LeftButtonPress), 1U);
}

TEST_F(QtMessagePump, StopsTheStageByTheMenuCommandButNotByOpeningTheMenu) {
    bool done = false;
    Operator([&] {
        if (!std::exchange(done, true))
            TriggerMenu(command::stop);
    });
    m_pump.PumpMessages(40);
    EXPECT_EQ(m_port.writes, stopOfAllAxes);
    EXPECT_EQ(m_main.Count(MessageKind::Command), 1U);
}

TEST_F(QtMessagePump, EndsAtOnceWhenTheOperatorWantsToStopTheScan) {
    m_scan.scanning = 1;
    m_live.Switch(1);
    PressOnceAndAnswer(1013, QMessageBox::Yes);
    QElapsedTimer waited;
    waited.start();
    EXPECT_EQ(m_pump.PumpMessages(20'000), 0);
    EXPECT_LT(waited.elapsed(), 10'000);
    EXPECT_EQ(m_asked, 1);
    EXPECT_EQ(m_texts, "Warning: Do you want to stop, now ?");
    EXPECT_EQ(m_scan.stopRequested, 1);
    EXPECT_TRUE(m_port.writes.empty());
    m_machine.DispatchAll();
    EXPECT_EQ(m_panel.Count(1013, Notification::Clicked), 0U) << "the press was kept from its button";
    QtMachine::PassTime(150);
    Message tick;
    EXPECT_FALSE(m_machine.ui.messages.TakeMessage(tick, 0)) << "the live view stays suspended";
}

TEST_F(QtMessagePump, GoesOnWhenTheOperatorDoesNotWantToStopTheScan) {
    m_scan.scanning = 1;
    PressOnceAndAnswer(1032, QMessageBox::No);
    QElapsedTimer waited;
    waited.start();
    EXPECT_EQ(m_pump.PumpMessages(300), 1);
    EXPECT_GE(waited.elapsed(), 299);
    EXPECT_EQ(m_asked, 1);
    EXPECT_EQ(m_scan.stopRequested, 0);
    EXPECT_EQ(m_panel.Count(1032, Notification::Clicked), 1U) << "the click goes on as usual";
}

TEST_F(QtMessagePump, CompletesAClickWhoseButtonWasLetGoUnderTheQuestion) {
    m_scan.scanning = 1;
    QWidget& control = *QtMachine::Control("Control Panel", 1032);
    const QPoint middle = control.rect().center();
    bool pressed = false;
    bool released = false;
    Operator([&] {
        if (!std::exchange(pressed, true)) {
            operator_input::Press(control, middle);
        } else if (Box() != nullptr && !std::exchange(released, true)) {
            operator_input::Release(control, middle);
        } else if (Box() != nullptr) {
            ++m_asked;
            operator_input::Click(*Box()->button(QMessageBox::No));
            OperatorRests();
        }
    });
    EXPECT_EQ(m_pump.PumpMessages(300), 1);
    EXPECT_EQ(m_asked, 1);
    EXPECT_EQ(m_panel.Count(1032, Notification::Clicked), 1U);
}

TEST_F(QtMessagePump, AsksWithoutHarmWhenTheAnswerIsGivenInsideAnInnerPump) {
    // A timer of the main window pumps, too, as a live tick that waits does: the click comes to the inner
    // pump.
    m_scan.scanning = 1;
    bool pressed = false;
    int inner = -1;
    Operator([&] {
        if (!std::exchange(pressed, true)) {
            operator_input::Click(View());
            inner = m_pump.PumpMessages(5000);
        } else if (Box() != nullptr) {
            operator_input::Click(*Box()->button(QMessageBox::Yes));
            OperatorRests();
        }
    });
    EXPECT_EQ(m_pump.PumpMessages(50), 1);
    EXPECT_EQ(inner, 0);
    EXPECT_EQ(m_scan.stopRequested, 1);
}

/// The stage travels home while the window is destroyed, and nobody is there to answer.
TEST_F(QtMessagePump, AsksNothingAboutAClickBehindTheCloseOfTheWindow) {
    m_scan.scanning = 1;
    m_main.answer = [this](const Message& message) {
        if (message.kind == MessageKind::Destroy)
            m_pump.PumpMessages(50);
        return false;
    };
    QTimer answering;
    QObject::connect(&answering, &QTimer::timeout, [this] {
        if (Box() != nullptr && ++m_asked > 0)
            Box()->reject();
    });
    answering.start(4);
    m_machine.Post({m_windows.main, MessageKind::Close});
    operator_input::Click(View());
    EXPECT_EQ(m_pump.PumpMessages(100), 1);
    EXPECT_EQ(m_main.Count(MessageKind::Destroy), 1U);
    EXPECT_EQ(m_asked, 0);
}

TEST_F(QtMessagePump, ShowsPauseAndResumption) {
    m_scan.scanning = 1;
    TriggerMenu(command::pauseResume);
    m_pump.PumpMessages(5);
    EXPECT_EQ(Information(), "Paused...");
    EXPECT_EQ(m_scan.paused, 1);
    TriggerMenu(command::pauseResume);
    m_pump.PumpMessages(5);
    EXPECT_EQ(Information(), "Scanning resumed...");
    EXPECT_EQ(m_scan.paused, 0);
    EXPECT_EQ(m_main.Count(MessageKind::Command), 2U);
}

TEST_F(QtMessagePump, IgnoresPressesOnTheMenu) {
    auto* bar = QtMachine::TopLevel("Main")->findChild<QWidget*>(QStringLiteral("menuBar"));
    ASSERT_NE(bar, nullptr);
    bool clicked = false;
    Operator([&] {
        if (!std::exchange(clicked, true))
            operator_input::Press(*bar, {10, 5});
    });
    m_pump.PumpMessages(40);
    EXPECT_NE(QApplication::activePopupWidget(), nullptr) << "the menu is open";
    EXPECT_TRUE(m_port.writes.empty());
}

} // namespace
} // namespace tessaro
