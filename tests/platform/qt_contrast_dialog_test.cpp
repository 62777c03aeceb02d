// The contrast dialog in its real window: mouse and keys at one end, settings and the field at the other.

#include "scan/contrast_dialog.h"
#include "tests/platform/operator_input.h"
#include "tests/platform/qt_machine.h"
#include "tests/platform/recording_procedures.h"
#include "tests/support/scripted_field.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace tessaro {
namespace {

class QtContrastDialog : public testing::Test {
protected:
    using Calls = std::vector<std::string>;
    using Contrasts = std::array<float, 3>; // [red, green, blue]

    /// What the operator does, and what comes of it before the next step.
    struct Step {
        std::function<void()> act;
        std::function<bool()> until;
    };

    QtContrastDialog() {
        m_machine.ui.windows.RegisterWindowClass({"main", &m_main});
        m_owner = m_machine.ui.windows.MakeWindow({"main", "Main", {}, 0, 0, 500, 400});
        m_machine.ui.windows.Show(m_owner);
        m_machine.DispatchAll();
    }

    /// Shows the dialog while the operator acts; false when it had to be closed afterwards.
    bool EndsBy(const std::vector<Step>& steps) {
        bool closedAfterwards = false;
        std::size_t begun = 0;
        QElapsedTimer waited;
        m_main.answer = [&](const Message& message) {
            if (message.kind != MessageKind::Timer)
                return false;
            const bool isDone = begun == 0 || steps[begun - 1].until();
            if (!isDone && waited.elapsed() < 5000)
                return true;
            EXPECT_TRUE(isDone) << "step " << begun;
            closedAfterwards = begun == steps.size() || !isDone;
            if (closedAfterwards)
                QtMachine::CloseByOperator(WindowHandle::None, title);
            else
                steps[begun++].act();
            waited.restart();
            return true;
        };
        m_machine.ui.messages.SetTimer(m_owner, 1, 5);
        m_dialog.Show(m_owner);
        m_machine.ui.messages.KillTimer(m_owner, 1);
        EXPECT_EQ(begun, steps.size());
        EXPECT_EQ(QtMachine::TopLevel(title), nullptr);
        return !closedAfterwards;
    }

    void StaysOpenBehind(const std::vector<Step>& steps) { EXPECT_FALSE(EndsBy(steps)); }

    template<typename Widget>
    static Widget& Control(int id) {
        return *QtMachine::Control<Widget>(title, id);
    }
    static std::string Text(int edit) { return Control<QLineEdit>(edit).text().toStdString(); }

    static Step Click(int button, std::function<bool()> until) {
        return {[button] { operator_input::Click(Control<QPushButton>(button)); }, std::move(until)};
    }
    static Step PressIn(int edit, int key, std::function<bool()> until) {
        return {[=] { operator_input::Type(Control<QLineEdit>(edit), key); }, std::move(until)};
    }
    /// In place of what stands there.
    static Step TypeInto(int edit, const std::string& text) {
        const auto type = [=] {
            auto& box = Control<QLineEdit>(edit);
            operator_input::Click(box);
            operator_input::Type(box, Qt::Key_A, Qt::ControlModifier);
            for (const char character : text)
                operator_input::Type(box, character, Qt::NoModifier, QString(QLatin1Char(character)));
        };
        return {type, [=] { return Text(edit) == text; }};
    }

    const Calls quickly = {"show", "statistics", "find and paint"};

    Settings settings;
    ContrastChoices choices;
    ScriptedField field;

    static constexpr const char* title = "Color Contrast Configuration";

private:
    QtMachine m_machine;
    RecordingWindowProcedure m_main;
    WindowHandle m_owner = WindowHandle::None;
    FrameRecord m_frame;
    std::unique_ptr<FrameMeasurements> m_measured = std::make_unique<FrameMeasurements>();
    float m_focusValue = 10.0F;
    ContrastDialog m_dialog{
        {m_machine.ui.dialogs, settings, choices, m_frame, *m_measured, m_focusValue, field}};
};

TEST_F(QtContrastDialog, TakesThePresetOfASubstrateThatIsChosenWithTheMouse) {
    settings.material = 1;
    const auto list = [] { return Control<QComboBox>(1034).view(); };
    const auto open = [] { operator_input::Click(Control<QComboBox>(1034)); };
    const auto chooseGlass = [&] {
        const QPoint glass = list()->visualRect(list()->model()->index(1, 0)).center();
        operator_input::Move(*list()->viewport(), glass);
        operator_input::Press(*list()->viewport(), glass);
        operator_input::Release(*list()->viewport(), glass);
    };
    StaysOpenBehind({{open, [&] { return list()->isVisible(); }},
                     {chooseGlass, [&] { return !list()->isVisible() && Text(1020) == "5.00"; }}});
    EXPECT_EQ(choices.substrate, 1);
    EXPECT_EQ(settings.targetContrast, (Contrasts{3.0F, 6.0F, 9.0F}));
    EXPECT_EQ(settings.contrastTolerance, 5.0F);
    EXPECT_TRUE(field.calls.empty());
}

TEST_F(QtContrastDialog, TakesThePresetOfAMaterialWhereNoneWasCheckedBefore) {
    const auto isChecked = [](int id) { return Control<QRadioButton>(id).isChecked(); };
    const auto clickHbn = [&] {
        EXPECT_FALSE(isChecked(1023) || isChecked(1024) || isChecked(1033)) << "of a probed pixel";
        operator_input::Click(Control<QRadioButton>(1024));
    };
    StaysOpenBehind({{clickHbn, [&] { return isChecked(1024) && Text(1017) == "-20.00"; }}});
    EXPECT_EQ(settings.material, 1);
    EXPECT_EQ(settings.targetContrast, (Contrasts{-20.0F, 17.0F, 3.0F}));
}

TEST_F(QtContrastDialog, LooksAtTheFieldQuicklyForEveryPressOfAPlusOrMinus) {
    StaysOpenBehind({Click(1009, [&] { return field.calls == quickly && Text(1017) == "-11"; }),
                     Click(1026, [&] { return field.calls.size() == 6 && Text(1020) == "5.0"; })});
    EXPECT_EQ(settings.targetContrast, (Contrasts{-11.0F, -8.0F, -2.0F}));
    EXPECT_EQ(settings.contrastTolerance, 5.0F);
}

TEST_F(QtContrastDialog, TakesWhatIsTypedBySetAlone) {
    StaysOpenBehind({TypeInto(1017, "-12.5"),
                     TypeInto(1020, "20"),
                     TypeInto(1007, "35"),
                     {[&] { EXPECT_EQ(settings.targetContrast[0], -12.0F); }, [] { return true; }},
                     Click(1, [] { return Text(1020) == "12.5"; })});
    EXPECT_EQ(settings.targetContrast, (Contrasts{-12.5F, -8.0F, -2.0F}));
    EXPECT_EQ(settings.contrastTolerance, 12.5F);
    EXPECT_EQ(settings.scoreThreshold, 35.0F);
    EXPECT_TRUE(field.calls.empty());
}

TEST_F(QtContrastDialog, TakesWhatIsTypedByEnterAndStaysOpen) {
    StaysOpenBehind({TypeInto(1000, "250"),
                     PressIn(1000, Qt::Key_Return, [&] { return settings.minimumFlakeArea == 250; }),
                     TypeInto(1000, "99"),
                     PressIn(1000, Qt::Key_Enter, [&] { return settings.minimumFlakeArea == 99; })});
    EXPECT_TRUE(field.calls.empty());
}

TEST_F(QtContrastDialog, EndsByEscapeAndByDoneWithoutWhatIsTyped) {
    const auto isGone = [] { return QtMachine::TopLevel(title) == nullptr; };
    EXPECT_TRUE(EndsBy({TypeInto(1000, "250"), PressIn(1000, Qt::Key_Escape, isGone)}));
    EXPECT_TRUE(EndsBy({TypeInto(1000, "250"), Click(2, isGone)}));
    EXPECT_EQ(settings.minimumFlakeArea, 100);
}

} // namespace
} // namespace tessaro
