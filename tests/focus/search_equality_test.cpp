#include "app/number_text.h"
#include "reference/plain_auto_focus.h"
#include "tests/focus/search_fixture.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <vector>

namespace tessaro {
namespace {

/// A machine on which a search is done, by the program or by its plain transcription: a field, a controller
/// and an operator that follow from a number. All that is said and done is noted in its order.
class SearchBench : public SearchFixture, private reference::FocusMachine {
public:
    explicit SearchBench(std::uint32_t seed) : m_random(seed) {
        PutUpField();
        PutUpStage();
        PutUpOperator();
        m_range = Among({1000, 1000, 2000, 150});
        m_speed = Among({200, 100, 50, 400, 800, 1, 3000});
        focus.focusSpeed = m_speed;
        focus.xTilt = Between(-1.0F, 1.0F);
        m_isFine = Below(3) != 0;
        line.onCall = [this](std::string_view call) { Note(std::string(call)); };
        view.onGrab = [this] {
            Note("grab");
            ui.clock.Sleep(frameMs);
        };
    }

    void SearchAsTheProgram() {
        if (m_isFine)
            m_result = autoFocus.FineFocus(autoFocus.Hint(), 1);
        else
            autoFocus.CoarseFocus(autoFocus.Hint(), m_range, m_speed);
        Note("end");
    }
    void SearchPlainly() {
        if (m_isFine)
            m_result = reference::FineFocus(*this, focus.xTilt, focus.focusSpeed);
        else
            reference::CoarseFocus(*this, m_range, m_speed);
        Note("end");
    }

    Texts Said() const {
        Texts said;
        for (const auto& [box, text] : ui.dialogs.textsSet)
            said.push_back(std::to_string(box) + ": " + text);
        for (const auto& warning : ui.boxes.warnings)
            said.push_back(warning.text + " / " + warning.caption);
        return said;
    }
    /// Of the program's state, what a search may change.
    Texts State() const {
        return {Formatted("%.9g %.9g", stage.position[2], static_cast<double>(focusValue)),
                Formatted("%d %d %d %d", focus.focusBusy, scan.stopRequested, scan.scanning, m_result),
                Formatted("%d %d %d %d", liveTimer.on, liveTimer.previous, liveTimer.saved, stage.offline)};
    }
    /// What of the searches' ways it has gone.
    std::set<std::string> Ways() const {
        const Texts outcomes = Outcomes();
        std::set<std::string> ways(outcomes.begin(), outcomes.end());
        for (const auto& warning : ui.boxes.warnings)
            ways.insert(warning.text);
        const Texts steps = ClimbSteps();
        if (!steps.empty() && steps.back() == "Focusing step:1-0" &&
            outcomes.back() == "best of the second pass")
            ways.insert("second pass ended at once");
        return ways;
    }
    bool Climbed() const { return !ClimbSteps().empty(); }
    bool Swept() const { return CallsOf("score") > 0; }

    using SearchFixture::line;
    using SearchFixture::ui;
    using SearchFixture::view;
    Texts notes;

private:
    void TestBody() override {}

    void Note(const std::string& call) {
        notes.push_back(Formatted("%llu %s, %zu texts, %zu measured, %zu timers, %zu warnings",
                                  static_cast<unsigned long long>(ui.clock.now), call.c_str(),
                                  ui.dialogs.textsSet.size(), view.calls.size(),
                                  ui.messages.timerCalls.size(), ui.boxes.warnings.size()));
    }

    int Below(int end) { return static_cast<int>(m_random() % static_cast<unsigned>(end)); }
    float Between(float low, float high) {
        return low + (high - low) * static_cast<float>(m_random() % 10'001U) / 10'000.0F;
    }
    int Among(std::vector<int> values) {
        return values[static_cast<std::size_t>(Below(static_cast<int>(values.size())))];
    }

    void PutUpField() {
        const auto peak = static_cast<double>(Between(-600.0F, 600.0F) * (Below(2) == 0 ? 1.0F : 0.02F));
        const auto width = static_cast<double>(Between(2.0F, 60.0F));
        const auto height = static_cast<double>(Between(0.0F, 14.0F));
        const auto floor = static_cast<double>(Between(0.0F, 2.0F)) * Among({0, 1, 1, 1});
        const auto noise = Below(3) == 0 ? 0.0 : static_cast<double>(Between(0.0F, 0.3F));
        const auto scale = static_cast<double>(Between(0.5F, 3.0F));
        const auto salt = static_cast<std::uint32_t>(m_random());
        view.sharpness = [=, this] {
            std::mt19937 frame(salt + static_cast<std::uint32_t>(view.calls.size()));
            const double stray = noise * static_cast<double>(frame() % 1000U) / 1000.0;
            const double score = 0.0001 + floor + Peak(height, width, Z() - peak) + stray;
            return FocusFigures{0.0F, 0.0F, static_cast<float>(score),
                                static_cast<float>(0.0009 + score * scale)};
        };
        if (Below(20) == 0) // nothing lies there
            view.sharpness = [] { return FocusFigures{0.0F, 0.0001F, 0.0001F, 0.0001F * 10.0F}; };
    }

    void PutUpStage() {
        motion.MoveAxisTo(axisZ, Below(3) == 0 ? 0.0 : static_cast<double>(Between(-300.0F, 300.0F)));
        line.silent = Below(10) == 0;
        if (Below(5) == 0)
            line.limit = Below(1000);
        if (Below(10) == 0)
            line.HangUpAt(static_cast<std::uint64_t>(Below(15'000)));
        if (Below(20) == 0)
            line.room = static_cast<std::size_t>(Below(300));
    }

    void PutUpOperator() {
        liveTimer.on = Below(2);
        scan.stopRequested = Below(4) == 0 ? 1 : 0;
        scan.scanning = Below(2);
        for (int clicks = Below(4); clicks > 0; --clicks) {
            ClickAt(ui.clock.now + static_cast<std::uint64_t>(Below(15'000)));
            ui.boxes.answers.push_back(Below(2) == 0);
        }
        if (Below(10) == 0)
            QuitAt(ui.clock.now + static_cast<std::uint64_t>(Below(15'000)));
        if (Below(10) == 0)
            ClosePanel();
    }

    int PumpMessages(std::uint32_t milliseconds) override { return pump.PumpMessages(milliseconds); }
    void GrabAndDraw() override { view.GrabAndDraw(); }
    float FocusScore() override { return view.FocusScore(); }
    void UpdateFocusMeasures() override { view.UpdateFocusMeasures(); }
    double QueryPosition() override { return stage.QueryPosition(axisZ); }
    void SetSpeed(std::int32_t umPerSecond) override { stage.SetSpeed(axisZ, umPerSecond); }
    void MoveAxisBy(double um) override { motion.MoveAxisBy(axisZ, um); }
    void MoveAxisTo(double um) override { motion.MoveAxisTo(axisZ, um); }
    void StopAxis() override { stage.StopAxis(axisZ); }
    void ShowInformation(const std::string& text) override { status.ShowInformation(text); }
    void ShowProgress(const std::string& text) override { status.ShowProgress(text); }
    void ShowStagePosition() override { status.ShowStagePosition(); }
    bool LiveViewRuns() override { return liveTimer.on == 1; }
    void SwitchLiveView(bool on) override { liveView.Switch(on ? 1 : 0); }
    void ShowErrorBox(const std::string& text, const std::string& caption) override {
        ui.boxes.ShowWarning(windows.main, text, caption);
    }
    float FocusValue() override { return focusValue; }
    double& Position() override { return stage.position[2]; }
    std::int32_t& FocusBusy() override { return focus.focusBusy; }
    std::int32_t& StopRequested() override { return scan.stopRequested; }
    std::int32_t& Scanning() override { return scan.scanning; }

    std::mt19937 m_random;
    bool m_isFine = false;
    int m_range = 0;
    int m_speed = 0;
    int m_result = -1;
};

/// Of one world each, the program's search and the plain one.
class SearchPair {
public:
    explicit SearchPair(std::uint32_t seed)
        : program(std::make_unique<SearchBench>(seed)), plain(std::make_unique<SearchBench>(seed)) {
        program->SearchAsTheProgram();
        plain->SearchPlainly();
    }

    const std::unique_ptr<SearchBench> program;
    const std::unique_ptr<SearchBench> plain;
};

void ExpectEqual(const SearchBench& program, const SearchBench& plain) {
    EXPECT_EQ(program.Said(), plain.Said());
    EXPECT_EQ(program.line.writes, plain.line.writes);
    EXPECT_EQ(program.view.calls, plain.view.calls);
    EXPECT_EQ(program.ui.messages.timerCalls, plain.ui.messages.timerCalls);
    EXPECT_EQ(program.State(), plain.State());
    EXPECT_EQ(program.notes, plain.notes);
}

TEST(Searches, DoWhatThePlainTranscriptionDoesCallByCall) {
    int climbs = 0;
    int sweeps = 0;
    int both = 0;
    std::map<std::string, int> ways;
    testing::internal::CaptureStdout(); // the link says all that it sends
    for (std::uint32_t seed = 1; seed <= 600; ++seed) {
        SCOPED_TRACE(seed);
        const SearchPair pair(seed);
        ExpectEqual(*pair.program, *pair.plain);
        climbs += pair.program->Climbed() ? 1 : 0;
        sweeps += pair.program->Swept() ? 1 : 0;
        both += pair.program->Climbed() && pair.program->Swept() ? 1 : 0;
        for (const std::string& way : pair.program->Ways())
            ++ways[way];
        if (testing::Test::HasFailure())
            break;
    }
    testing::internal::GetCapturedStdout();
    EXPECT_GT(climbs, 200);
    EXPECT_GT(sweeps, 200);
    EXPECT_GT(both, 40);
    for (const char* way :
         {"Please, adjust the sample posion", "Please, adjust the sample position", "peak passed",
          "already sharp", "all samples taken", "best of the second pass", "second pass ended at once",
          "in focus", "in focus already", "stopped", "stopped on the final move", "aborted"})
        EXPECT_GE(ways[way], 3) << way;
}

} // namespace
} // namespace tessaro
