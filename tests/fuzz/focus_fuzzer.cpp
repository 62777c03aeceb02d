#include "focus/auto_focus.h"
#include "platform/fake/fake_user_interface.h"
#include "platform/fake/scripted_serial_port.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

// Any field, any controller and any operator through both searches for the focus, in virtual time.
//
// The input's first bytes choose the search, its range, speed and direction, how many writes the line
// survives (0: all) and the state before. Then every frame takes two bytes, for its score and focus value,
// and every write one, for what the controller answers; a frame's byte may also be a click or the end of the
// program.

namespace tessaro {
namespace {

constexpr std::size_t mostFrames = 1 + 2 + 90 + 30; // of a climb with its sweep
constexpr std::size_t mostMoves = 3 + 31;
constexpr std::uint64_t longestMoveMs = 2'500;

/// Takes the input apart; gives zeros when it has run out.
class Input {
public:
    Input(const std::uint8_t* data, std::size_t size) : m_data(data), m_end(data + size) {}

    std::uint8_t Byte() { return m_data == m_end ? std::uint8_t{0} : *m_data++; }
    std::uint32_t Word() {
        std::uint32_t word = 0;
        for (int i = 0; i < 4; ++i)
            word = word << 8U | Byte();
        return word;
    }

private:
    const std::uint8_t* m_data;
    const std::uint8_t* m_end;
};

void Require(bool condition) {
    if (!condition)
        std::abort();
}

/// Powers of the quarter root of 2 from 0.00002 to 1,000,000, and what is no figure at all.
float Figure(std::uint8_t byte) {
    switch (byte) {
    case 0:
        return 0.0F;
    case 253:
        return -1.0F;
    case 254:
        return INFINITY;
    case 255:
        return NAN;
    default:
        return std::exp2((static_cast<float>(byte) - 110.0F) / 7.0F);
    }
}

class FuzzedView : public FocusView {
public:
    FuzzedView(Input& input, float& focusValue, FakeUserInterface& ui, const ProgramWindows& windows)
        : m_input(input), m_focusValue(focusValue), m_ui(ui), m_windows(windows) {}

    void GrabAndDraw() override {
        Require(++m_frames <= mostFrames);
        m_figures.laplaceM = Figure(m_input.Byte());
        const std::uint8_t value = m_input.Byte();
        m_figures.focusValue = Figure(value);
        m_ui.clock.Sleep(40);
        if (value % 16 == 7)
            m_ui.messages.PostAt(m_ui.clock.now + value, {m_windows.main, MessageKind::LeftButtonPress});
        if (value % 64 == 9)
            m_ui.boxes.answers.push_back(true);
        if (value == 200)
            m_ui.messages.PostQuit(0);
    }
    float FocusScore() override { return m_figures.laplaceM; }
    void UpdateFocusMeasures() override { m_focusValue = m_figures.focusValue; }
    FocusFigures Figures() const override { return m_figures; }

private:
    Input& m_input;
    float& m_focusValue;
    FakeUserInterface& m_ui;
    const ProgramWindows& m_windows;
    FocusFigures m_figures;
    std::size_t m_frames = 0;
};

/// A stage with its shell, a field and an operator as the input says.
class Bench {
public:
    explicit Bench(Input& input) : m_input(input) {
        ui.windows.RegisterWindowClass({"main", &m_procedure});
        windows.main = ui.windows.MakeWindow({"main", "Main"});
        line.remembersCalls = false;
        line.TakeAnyWrite([this](const std::string& written) { return AnswerTo(written[0]); });
        stage.machine = {&line, &ui.boxes, &ui.clock};
        stage.hComm = line.Open("line 3");
        line.SetTimeouts(stage.hComm, {10, 10, 50, 10, 50});
        if (const std::size_t writes = input.Byte(); writes > 0)
            line.HangUpAfterWrites(writes);
    }

    void Run() {
        const std::uint8_t kind = m_input.Byte();
        scan.scanning = kind & 1;
        scan.stopRequested = kind >> 1 & 1;
        liveTimer.on = kind >> 2 & 1;
        const std::int32_t liveBefore = liveTimer.on;
        const auto speed = static_cast<std::int32_t>(m_input.Word());
        focus.focusSpeed = speed;
        focus.xTilt = Figure(m_input.Byte());
        if ((kind & 8) != 0)
            autoFocus.CoarseFocus(autoFocus.Hint(), static_cast<std::int32_t>(m_input.Word()), speed);
        else
            CheckResult(autoFocus.FineFocus(autoFocus.Hint(), 1));
        Require(focus.focusBusy == 0);
        Require(liveTimer.on == liveBefore);
        Require(std::isfinite(stage.position[2]));
        Require(ui.clock.now < mostMoves * longestMoveMs + mostFrames * 1'000 + m_progress * longestMoveMs);
    }

private:
    class IgnoringWindow : public WindowProcedure {
    public:
        bool HandleMessage(const Message&) override { return true; }
    };

    void CheckResult(int result) const {
        Require(result == 0 || result == 1);
        Require(result == 0 || !(focusValue < 0.7F));
    }

    ScriptedSerialPorts::Reply AnswerTo(char command) {
        const std::uint8_t byte = m_input.Byte();
        if (byte == 0)
            return {};
        const std::string number = std::to_string((byte - 128) * 13);
        if (byte % 8 == 1) { // progress, which makes the wait longer
            ++m_progress;
            return {{byte, ScriptedSerialPorts::Terminated("Q" + number)}};
        }
        if (byte % 8 == 2)
            return {{byte, std::string(1, static_cast<char>(byte))}};
        if (command == 'L')
            return {{byte, ScriptedSerialPorts::Terminated("Z")}};
        return command == 'Q' ? ScriptedSerialPorts::Reply{{1, ScriptedSerialPorts::Terminated(number)}}
                              : ScriptedSerialPorts::Reply{};
    }

    Input& m_input;
    std::size_t m_progress = 0;
    IgnoringWindow m_procedure;

    FakeUserInterface ui;
    ProgramWindows windows;
    ScriptedSerialPorts line{ui.clock};
    StageLink stage;
    ScanState scan;
    LiveTimer liveTimer;
    ShownPosition shownPosition;
    StatusLines status{ui.dialogs, windows, stage, shownPosition};
    LiveView liveView{liveTimer, ui.messages, windows};
    MessagePump pump{ui.clock, ui.messages, ui.boxes, liveView, status, scan, stage, windows};
    StageMotion motion{stage, pump, status, ui.clock};
    FocusControl focus;
    float focusValue = 10.0F;
    FuzzedView view{m_input, focusValue, ui, windows};
    AutoFocus autoFocus{
        {view, focus, focusValue, scan, stage, motion, pump, liveView, liveTimer, status, ui.boxes, windows}};
};

} // namespace
} // namespace tessaro

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    if (std::freopen("/dev/null", "w", stdout) == nullptr) // the link says all that it sends
        std::abort();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    tessaro::Input input(data, size);
    tessaro::Bench(input).Run();
    return 0;
}
