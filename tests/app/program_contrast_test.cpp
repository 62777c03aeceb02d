// The contrast dialog in the whole program: from the menu to the frame, the images and the settings file.

#include "app/resource_ids.h"
#include "support/drawn_frames.h"
#include "tests/app/program_fixture.h"

#include <cstddef>

namespace tessaro {
namespace {

class ProgramContrast : public ProgramTest {
protected:
    ProgramContrast() { ui.clock.localTime = {2024, 3, 15, 14, 7}; }

    /// Where the dialog does not open, nothing that is expected inside it is looked at.
    void TearDown() override {
        EXPECT_GT(m_timesConfigured, 0U);
        EXPECT_EQ(ui.dialogs.modalResources, std::vector<int>(m_timesConfigured, 129));
    }

    /// Chooses the dialog at a time, and lets the operator act in it.
    void ConfigureAt(std::uint64_t time, const std::function<void()>& act) {
        ++m_timesConfigured;
        ChooseAt(time, command::configuration);
        ui.dialogs.whileModal = [this, act](WindowHandle handle) {
            dialog = handle;
            act();
            Press(2);
        };
    }
    void Press(int controlId) { ui.dialogs.Notify(dialog, controlId, Notification::Clicked); }
    void Type(int controlId, const std::string& text) { ui.dialogs.SetItemText(dialog, controlId, text); }
    std::string Text(int controlId) { return ui.dialogs.ItemText(dialog, controlId, 100); }
    bool LiveTimerRuns() const { return ui.messages.TimerRuns(mainWindow, liveTimerId); }

    static constexpr std::uint64_t open = 260; // the live view runs by then
    WindowHandle dialog = WindowHandle::None;

private:
    std::size_t m_timesConfigured = 0;
};

TEST_F(ProgramContrast, OpensOverTheMainWindowWithoutALiveView) {
    ConfigureAt(open, [&] {
        EXPECT_EQ(ui.dialogs.dialogs.at(dialog).owner, mainWindow);
        EXPECT_EQ(globals->liveTimer.on, 0);
        EXPECT_EQ(globals->liveTimer.previous, 1);
        EXPECT_FALSE(LiveTimerRuns());
    });
    At(open + 1, [&] {
        EXPECT_EQ(globals->liveTimer.on, 1);
        EXPECT_TRUE(LiveTimerRuns());
    });
    RunUntil(open + 300);
}

TEST_F(ProgramContrast, LeavesALiveViewOffThatWasOffBefore) {
    ChooseAt(open - 10, command::stopStartGrabbing);
    ConfigureAt(open, [&] { EXPECT_EQ(globals->liveTimer.previous, 0); });
    At(open + 250, [&] {
        EXPECT_EQ(globals->liveTimer.on, 0);
        EXPECT_FALSE(LiveTimerRuns());
    });
    RunUntil(open + 300);
}

TEST_F(ProgramContrast, ShowsTheFiguresOfTheLastFrame) {
    ConfigureAt(open, [&] {
        EXPECT_EQ(Text(1003), Formatted("%.1f", globals->frame.bgPeak[0]));
        EXPECT_EQ(Text(1005), Formatted("%.1f", globals->frame.bgPeak[1]));
        EXPECT_EQ(Text(1006), Formatted("%.1f", globals->frame.bgPeak[2]));
        EXPECT_NE(Text(1003), "0.0") << "the live view has measured";
        EXPECT_EQ(Text(1012), Formatted("%.1f", globals->measured.noiseLevel));
        EXPECT_EQ(Text(1015), Formatted("%.1f", globals->focusValue));
        EXPECT_NE(Text(1015), "10.0");
    });
    RunUntil(open + 10);
}

TEST_F(ProgramContrast, KeepsTheSettingsInTheFileAtTheEndButNeitherSubstrateNorSmoothing) {
    ConfigureAt(open, [&] {
        Press(1024);
        ui.dialogs.SelectChoice(dialog, 1034, 1);
        ui.dialogs.Notify(dialog, 1034, Notification::SelectionChanged);
        ui.dialogs.SetChecked(dialog, 1013, true);
        Press(1013);
        Type(1000, "250");
        Type(1007, "55.5");
        Press(1);
    });
    At(open + 1, [&] {
        EXPECT_EQ(globals->contrastChoices.substrate, 1);
        EXPECT_EQ(globals->contrastChoices.smoothing, 1);
        EXPECT_EQ(Config(), "") << "not before the end";
    });
    RunUntil(open + 10);
    EXPECT_EQ(Config(), "3,3.000000,6.000000,9.000000,5.000000,10,10,250,1,55.500000\n");
}

TEST_F(ProgramContrast, ShowsItsChoicesWhenItOpensAgain) {
    ConfigureAt(open, [&] {
        ui.dialogs.SelectChoice(dialog, 1034, 2);
        ui.dialogs.SetChecked(dialog, 1013, true);
        Press(1013); // the substrate
        Press(1013); // smoothing
    });
    At(open + 1, [&] {
        ConfigureAt(open + 2, [&] {
            EXPECT_EQ(ui.dialogs.SelectedChoice(dialog, 1034), 2);
            EXPECT_TRUE(ui.dialogs.IsChecked(dialog, 1013));
        });
    });
    RunUntil(open + 10);
}

TEST_F(ProgramContrast, EndsWithTheProgramThatIsClosedMeanwhile) {
    ConfigureAt(open, [&] {
        Press(1009);
        ui.windows.Destroy(mainWindow);
        for (const int control : {1009, 1027, 1008, 1013, 1028, 1, 1023})
            Press(control);
    });
    RunUntil(open + 10);
    EXPECT_EQ(Config().substr(0, 13), "3,-11.000000,");
    EXPECT_TRUE(ui.dialogs.dialogs.empty());
}

/// An imported frame with a flake of 40 x 40 pixels, away from the scan's origin, for settings that would not
/// find it.
class ContrastOnAFlake : public ProgramContrast {
protected:
    ContrastOnAFlake() {
        FramePainter painter;
        painter.Fill(substrate100);
        painter.Rectangle(200, 200, 40, 40, singleLayer100);
        PutPicture("/pictures/flake.png", painter.frame);
        ui.chooser.choice = "/pictures/flake.png";
        ui.folders.Put(globals->folders.settings, "3,50,50,50,6,10,10,100,2,60\n");
        globals->stage.position = {1000.0, 0.0, 0.0}; // the field at the origin is always saved
        ChooseAt(open - 10, command::importImage);
    }

    /// Around single layers; those of the jog buttons are black.
    std::vector<RecordingSurface::Frame> RedFrames() const {
        auto frames = ui.drawing.windowSurface.All<RecordingSurface::Frame>();
        std::erase_if(frames, [](const auto& frame) { return frame.colour != pureRed; });
        return frames;
    }
};

TEST_F(ContrastOnAFlake, FindsFramesCountsReportsAndSavesItByTestNow) {
    ConfigureAt(open, [&] {
        EXPECT_EQ(Text(1003), "100.0");
        Press(1008);
        EXPECT_TRUE(RedFrames().empty());
        EXPECT_EQ(PanelText(panel::information), "File:/pictures/flake.png") << "nothing is said of none";
        Type(1017, "-12.5");
        Type(1018, "-8");
        Type(1019, "-2");
        Press(1008);
        EXPECT_EQ(PanelText(panel::information), "1 single layer detected!");
        ASSERT_EQ(RedFrames().size(), 1U);
        EXPECT_EQ(RedFrames()[0].corners, (SurfaceRectangle{199, 829, 241, 787}));
        EXPECT_EQ(PanelText(panel::totalFound), "1");
        EXPECT_EQ(globals->findings.groupCount, 1);
    });
    RunUntil(open + 50);
    EXPECT_EQ(Images(),
              (Texts{"Image_Data/240315_14-07/(100,0).jpg", "Image_Detail/240315_14-07/(100,0)detail.jpg"}));
    EXPECT_EQ(Config(), "3,-12.500000,-8.000000,-2.000000,6.000000,10,10,100,2,60.000000\n");
    EXPECT_EQ(globals->liveTimer.on, 0) << "the imported picture stays on the screen";
}

TEST_F(ContrastOnAFlake, FindsItByThePresetOfItsMaterial) {
    ConfigureAt(open, [&] {
        Press(1023);
        Press(1008);
        EXPECT_EQ(PanelText(panel::information), "1 single layer detected!");
    });
    RunUntil(open + 50);
    EXPECT_EQ(Images().size(), 2U);
}

TEST_F(ContrastOnAFlake, PaintsWhatAStepFindsWithoutDecidingAnything) {
    ConfigureAt(open, [&] {
        Press(1023);
        EXPECT_TRUE(ui.drawing.windowSurface.All<RecordingSurface::Pixel>().empty());
        Press(1027);
        EXPECT_FALSE(ui.drawing.windowSurface.All<RecordingSurface::Pixel>().empty());
        EXPECT_EQ(globals->analyzer.candidateCount, 100) << "10 x 10 reduced pixels";
        EXPECT_TRUE(RedFrames().empty());
    });
    RunUntil(open + 50);
    EXPECT_TRUE(Images().empty());
    EXPECT_EQ(globals->findings.totalFound, 0);
}

TEST_F(ContrastOnAFlake, FindsNothingSmallerThanTheAreaThatWasSet) {
    ConfigureAt(open, [&] {
        Press(1023);
        Type(1000, "259"); // 101 reduced pixels of 2.56 um2; the flake has 100
        Press(1);
        Press(1008);
        EXPECT_TRUE(RedFrames().empty());
        Type(1000, "240"); // 93
        Press(1);
        Press(1008);
        EXPECT_EQ(PanelText(panel::information), "1 single layer detected!");
    });
    RunUntil(open + 50);
    EXPECT_EQ(Images().size(), 2U);
}

TEST_F(ContrastOnAFlake, FindsNothingThatScoresLessThanTheThreshold) {
    ConfigureAt(open, [&] {
        Press(1023);
        Type(1007, "99");
        Press(1);
        Press(1008);
        EXPECT_EQ(globals->findings.groupCount, 1);
        EXPECT_TRUE(RedFrames().empty());
    });
    RunUntil(open + 50);
    EXPECT_TRUE(Images().empty());
}

struct ExtremeNumbers {
    const char* contrast;
    const char* tolerance;
    const char* area;
    int candidates;
};

/// Everything matches, nothing does, and areas that no grain has.
TEST_F(ContrastOnAFlake, IsTestedWithTheMostExtremeNumbersThatCanBeTyped) {
    const std::vector<ExtremeNumbers> cases = {
        {"0", "3e38", "-214748364", 20'000}, // as many as are kept
        {"0", "3e38", "2147483647", 20'000}, {"3e38", "0", "0", 0},
        {"-3e38", "1e-30", "0", 0},          {"0", "-1", "0", 0},
    };
    ConfigureAt(open, [&] {
        for (const ExtremeNumbers& numbers : cases) {
            Type(1000, numbers.area);
            Press(1);
            for (const int edit : {1017, 1018, 1019})
                Type(edit, numbers.contrast);
            Type(1020, numbers.tolerance);
            Press(1008);
            EXPECT_EQ(globals->analyzer.candidateCount, numbers.candidates)
                << numbers.contrast << ' ' << numbers.tolerance;
        }
    });
    RunUntil(open + 50);
    EXPECT_EQ(globals->settings.contrastTolerance, -1.0F) << "they were all tried";
}

} // namespace
} // namespace tessaro
