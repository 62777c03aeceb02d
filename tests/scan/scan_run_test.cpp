#include "scan/scan_run.h"
#include "tests/scan/small_scan.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <utility>

namespace tessaro {
namespace {

class ScanRunTest : public SmallScan {
protected:
    /// What is sent, made and done with the field, and what the panel shows in between, but for the motion's
    /// own texts.
    void KeepLog() {
        const auto note = [this](const std::string& what) { Note(what); };
        arriving.onCommand = note;
        field.onCall = note;
        ui.folders.onCall = note;
    }
    Texts TakeLog() {
        NoteTexts();
        return std::exchange(log, {});
    }

    Texts log;

private:
    void Note(const std::string& what) {
        NoteTexts();
        log.push_back(what);
    }
    void NoteTexts() {
        for (; m_noted < ui.dialogs.textsSet.size(); ++m_noted) {
            const auto& [control, text] = ui.dialogs.textsSet[m_noted];
            if (control == 1006 || text == "Done")
                log.push_back(std::to_string(control) + ": " + text);
        }
    }

    std::size_t m_noted = 0;
};

TEST_F(ScanRunTest, DoesEverythingInItsOrder) {
    KeepLog();
    scanRun.RunScan();
    const auto analysed = [](const std::string& percentage) {
        return Texts{"grab 4", "statistics",   "show",  "1006: " + percentage,
                     "find",   "reject noise", "group", "decide"};
    };
    Texts expected = {"1006: scanning...",   "s3200", "S3200", "create 240315_14-07", "create Image_Detail",
                      "create 240315_14-07", "m0",    "M0"};
    const auto append = [&](const Texts& texts) {
        expected.insert(expected.end(), texts.begin(), texts.end());
    };
    append(analysed("0% finished, 0.1 minute left")); // 4 / 80 is 0.05
    append({"m640"});
    append(analysed("25% finished, 0.0 minute left"));
    append({"M640"});
    append(analysed("25% finished, 0.0 minute left"));
    append({"m0"});
    append(analysed("50% finished, 0.0 minute left"));
    append({"m0", "M1280", "1006: Scanning has completed.", "1007: Done", "m0", "M0"});
    EXPECT_EQ(TakeLog(), expected);
}

TEST_F(ScanRunTest, WaitsAtTheOriginAndBehindEachStep) {
    const std::uint64_t start = ui.clock.now;
    Texts times;
    const auto note = [&](const std::string& what) {
        if (what == "grab 4" || what[0] == 'm' || what[0] == 'M')
            times.push_back(std::to_string(ui.clock.now - start) + " " + what);
    };
    arriving.onCommand = note;
    field.onCall = [&](const std::string& call) {
        if (call == "grab 4")
            note(call);
    };
    scanRun.RunScan();
    EXPECT_EQ(times, (Texts{"0 m0", "0 M0", "30 grab 4", // a move takes 20 ms here
                            "30 m640", "250 grab 4",     //
                            "250 M640", "470 grab 4",    //
                            "470 m0", "690 grab 4",      //
                            "690 m0",                    // nobody waits behind the way back along X
                            "710 M1280",                 //
                            "930 m0", "930 M0"}));
    EXPECT_EQ(ui.clock.now - start, 950U);
}

TEST_F(ScanRunTest, ShowsThePositionAfterTheFrameAndBeforeThePercentage) {
    std::size_t before = 0;
    std::vector<std::pair<int, std::string>> shown;
    field.onCall = [&](const std::string& call) {
        if (call == "show") {
            shownPosition.shownOnce = 0;
            before = ui.dialogs.textsSet.size();
        } else if (call == "find") {
            shown.assign(ui.dialogs.textsSet.begin() + static_cast<std::ptrdiff_t>(before),
                         ui.dialogs.textsSet.end());
        }
    };
    scanRun.RunScan();
    EXPECT_EQ(shown, (std::vector<std::pair<int, std::string>>{
                         {1000, "0"}, {1003, "400"}, {1005, "0"}, {1006, "50% finished, 0.0 minute left"}}));
}

/// A simulated stage is there at once, and no wait shows where it is.
TEST_F(ScanRunTest, ShowsThePositionAtTheOriginBeforeAndAfterwards) {
    stage.hComm = SerialHandle::Invalid;
    stage.offline = 1;
    scan.originX = 1000;
    scan.originY = -500;
    const auto shown = [this] { return Texts{PanelText(1000), PanelText(1003), PanelText(1005)}; };
    field.onCall = [&](const std::string&) {
        if (field.calls.size() == 1) {
            EXPECT_EQ(shown(), (Texts{"1000", "-500", "0"}));
        }
    };
    scanRun.RunScan();
    EXPECT_EQ(shown(), (Texts{"1000", "-500", "0"})) << "and not of the last field any more";
}

TEST_F(ScanRunTest, TellsEachFieldWithItsPlaceAndPosition) {
    StandAt(0.0, 0.0, 35.0);
    scanRun.RunScan();
    EXPECT_EQ(told.Places(), (Places{{0, 0}, {0, 1}, {1, 1}, {1, 0}}));
    const std::vector<std::array<double, 3>> positions = {
        {0.0, 0.0, 35.0}, {400.0, 0.0, 35.0}, {400.0, 400.0, 35.0}, {0.0, 400.0, 35.0}};
    for (std::size_t i = 0; i < positions.size(); ++i)
        EXPECT_EQ(told.fields[i].position, positions[i]) << i;
}

TEST_F(ScanRunTest, TellsWhereTheStageStoodWhenTheImageWasTaken) {
    field.onCall = [this](const std::string& call) { stage.position[2] = call == "grab 4" ? 7.5 : 99.0; };
    scanRun.RunScan();
    EXPECT_EQ(told.fields.front().position[2], 7.5);
}

TEST_F(ScanRunTest, TellsAFieldWhenItIsDecided) {
    field.onCall = [this](const std::string&) {
        EXPECT_EQ(told.fields.size(), (field.calls.size() - 1) / 7);
    };
    scanRun.RunScan();
    EXPECT_EQ(told.fields.size(), 4U);
}

TEST_F(ScanRunTest, NeedsNobodyToTell) {
    scanReach.listener = nullptr;
    ScanRun(scanReach).RunScan();
    EXPECT_EQ(field.calls.size(), 28U);
}

TEST_F(ScanRunTest, BeginsWithNothingFoundAndAnOldStopForgotten) {
    totalFound = 7;
    scan.stopRequested = 1;
    field.onCall = [this](const std::string&) {
        EXPECT_EQ(totalFound, 0);
        EXPECT_EQ(scan.scanning, 1);
        EXPECT_EQ(scan.stopRequested, 0);
    };
    scanRun.RunScan();
    EXPECT_EQ(told.fields.size(), 4U);
    EXPECT_EQ(scan.scanning, 0);
}

TEST_F(ScanRunTest, BeginsASessionOfItsOwn) {
    scanRun.RunScan();
    EXPECT_EQ(folders.sessionName, "240315_14-07");
    ui.clock.localTime.minute = 9;
    scanRun.RunScan();
    EXPECT_EQ(folders.sessionName, "240315_14-09");
    EXPECT_TRUE(ui.folders.folders.contains(folders.working / "240315_14-09"));
}

TEST_F(ScanRunTest, ScansOneRowMoreWhereTheirNumberIsOdd) {
    settings.yRange = 2; // five rows
    scanRun.RunScan();
    EXPECT_EQ(
        told.Places(),
        (Places{
            {0, 0}, {0, 1}, {1, 1}, {1, 0}, {2, 0}, {2, 1}, {3, 1}, {3, 0}, {4, 0}, {4, 1}, {5, 1}, {5, 0}}));
    EXPECT_EQ(told.fields.back().position[1], 2000.0);
    EXPECT_EQ(*(Information().end() - 2), "60% finished, 0.1 minute left") << "6 of 10; 4 / 80";
}

/// 24 steps in each of six rows, of 25 times 5 fields.
TEST_F(ScanRunTest, CountsTheAdditionalRowBeyondAHundredPerCent) {
    settings.xRange = 10;
    settings.yRange = 2;
    scanRun.RunScan();
    EXPECT_EQ(told.fields.size(), 150U);
    EXPECT_EQ(*(Information().end() - 2), "115% finished, -0.2 minute left") << "144 of 125; -19 / 80";
}

TEST_F(ScanRunTest, ScansNothingWithoutARow) {
    for (const int range : {0, -1, -10, std::numeric_limits<std::int32_t>::min()}) {
        settings.yRange = range;
        arriving.writes.clear();
        ui.dialogs.textsSet.clear();
        scanRun.RunScan();
        EXPECT_EQ(arriving.Commands(), (Texts{"s3200", "S3200", "m0", "M0", "m0", "M0"})) << range;
        EXPECT_EQ(Information(), (Texts{"scanning...", "Scanning has completed."}));
        EXPECT_EQ(told.ends.back(), ScanEnd::Completed);
    }
    EXPECT_TRUE(field.calls.empty());
}

TEST_F(ScanRunTest, GoesByRowsWhereThereIsNoColumn) {
    settings.xRange = 0;
    settings.yRange = 2; // five rows
    scanRun.RunScan();
    EXPECT_EQ(told.Places(), (Places{{0, 0}, {2, 0}, {4, 0}}))
        << "one on the way there, none on the way back";
    EXPECT_EQ(Information(), (Texts{"scanning...", "0% finished, 0.1 minute left", // 5 / 80
                                    "40% finished, 0.0 minute left", "80% finished, 0.0 minute left",
                                    "Scanning has completed."}));
    EXPECT_EQ(arriving.Commands(),
              (Texts{"s3200", "S3200", "m0", "M0", "m640", "M640", "m0", "M1280", "m640", "M1920", "m0",
                     "M2560", "m640", "M3200", "m0", "M3840", "m0", "M0"}));
}

TEST_F(ScanRunTest, WalksTheRowsOfANegativeWidthWithoutAField) {
    settings.xRange = -1;
    scanRun.RunScan();
    EXPECT_TRUE(field.calls.empty());
    EXPECT_EQ(arriving.Commands(), (Texts{"s3200", "S3200", "m0", "M0", "M640", "m0", "M1280", "m0", "M0"}));
    EXPECT_EQ(told.ends, std::vector{ScanEnd::Completed});
}

TEST_F(ScanRunTest, CountsTheFieldsOfTheWidestAreaThatCanBeTyped) {
    settings.xRange = std::numeric_limits<std::int32_t>::max();
    settings.yRange = std::numeric_limits<std::int32_t>::max();
    field.onCall = [this](const std::string& call) {
        if (call == "decide" && field.calls.size() == 14)
            ClickIn(0, true);
    };
    scanRun.RunScan();
    EXPECT_EQ(told.Places(), (Places{{0, 0}, {0, 1}}));
    // 2,147,483,647 um hold 5,368,709 steps. Of their square, 28,823,036,326,681, single precision makes
    // 28,823,036,887,040, an eightieth of which it holds.
    EXPECT_EQ(Information()[1], "0% finished, 360287961088.0 minute left");
}

TEST_F(ScanRunTest, SwitchesTheLiveViewOffAndOnAgain) {
    liveView.Switch(1);
    field.onCall = [this](const std::string&) {
        EXPECT_EQ(liveTimer.on, 0);
        EXPECT_FALSE(LiveTimerRuns());
    };
    scanRun.RunScan();
    EXPECT_EQ(liveTimer.on, 1);
    EXPECT_TRUE(LiveTimerRuns());
}

TEST_F(ScanRunTest, LeavesALiveViewOffThatWasOff) {
    liveView.Switch(0);
    scanRun.RunScan();
    EXPECT_EQ(liveTimer.on, 0);
    EXPECT_FALSE(LiveTimerRuns());
}

/// Searches for the focus switch the live view as well.
TEST_F(ScanRunTest, RemembersTheLiveViewWhenThePlaneIsMeasuredMeanwhile) {
    view.sharpness = [] { return FocusFigures{0.0F, 0.0F, 1.0F, 11.0F}; };
    focus.tiltCorrection = 1;
    liveView.Switch(1);
    scanRun.RunScan();
    EXPECT_EQ(liveTimer.on, 1);
    EXPECT_TRUE(LiveTimerRuns());
    liveView.Switch(0);
    focus.tiltMeasured = 0;
    scanRun.RunScan();
    EXPECT_EQ(view.calls.size(), 28U) << "it has focused both times";
    EXPECT_EQ(liveTimer.on, 0);
    EXPECT_FALSE(LiveTimerRuns());
}

TEST_F(ScanRunTest, WritesNothingIntoAPanelThatIsClosed) {
    ClosePanel();
    scanRun.RunScan();
    EXPECT_TRUE(ui.dialogs.textsSet.empty());
    EXPECT_EQ(told.fields.size(), 4U);
}

TEST_F(ScanRunTest, ScansWithASimulatedStage) {
    stage.hComm = SerialHandle::Invalid;
    stage.offline = 1;
    scanRun.RunScan();
    EXPECT_EQ(told.Places(), (Places{{0, 0}, {0, 1}, {1, 1}, {1, 0}}));
    EXPECT_EQ(told.fields[2].position, (std::array<double, 3>{400.0, 400.0, 0.0}));
}

} // namespace
} // namespace tessaro
