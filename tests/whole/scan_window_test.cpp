// A scan from the control panel, by mouse and keys, without camera and controller: the test pattern is
// scanned, and the stage is where it was sent to at once.

#include "scan/control_panel_ids.h"
#include "whole/window_driver.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

namespace tessaro {
namespace {

constexpr const char* questionTitle = "Warning";

class ScanWindow : public WindowDriver {
protected:
    /// Learns how the panel looks at the start and at the end of a scan: one without any row ends at once.
    void StartAndLearn() {
        Start();
        atOrigin = PanelText(panel::positionX);
        ClickPanel(panel::tiltCorrection);
        const std::string before = PanelText(panel::information);
        const std::string beforeProgress = PanelText(panel::progress);
        Scan("1", "0");
        ASSERT_TRUE(Eventually([&] {
            return PanelText(panel::information) != before && PanelText(panel::progress) != beforeProgress;
        }));
        done = PanelText(panel::progress); // the last text of a scan
        completed = PanelText(panel::information);
        ASSERT_TRUE(SavedImages().empty());
    }

    void Scan(const std::string& xRangeMm, const std::string& yRangeMm) {
        TypeIntoPanel(panel::xRange, xRangeMm);
        TypeIntoPanel(panel::yRange, yRangeMm);
        ClickPanel(panel::startScan);
    }

    /// Its first field, at the origin, has been saved, and the stage has moved on.
    void WaitForTheMiddleOfARow() {
        ASSERT_TRUE(Eventually([this] { return !SavedImages().empty() && !HasEnded() && IsOffOrigin(); }));
    }

    bool IsOffOrigin() const { return PanelText(panel::positionX) != atOrigin; }
    bool HasEnded() const {
        return PanelText(panel::information) == completed && PanelText(panel::progress) == done;
    }

    void Answer(const char* key) {
        ASSERT_TRUE(Eventually([this] { return display.Shows(questionTitle); }));
        display.Screenshot(screenshots / "stop-question.png");
        display.Activate(questionTitle);
        display.Keys({key});
        ASSERT_TRUE(Eventually([this] { return !display.Shows(questionTitle); }));
    }

    /// How often the field at the origin was saved: once by each scan, whatever it finds there.
    std::size_t ScansSaved() const {
        const std::vector<std::filesystem::path> files = SavedImages();
        return static_cast<std::size_t>(std::ranges::count_if(files, [](const auto& file) {
            const std::string name = file.filename().string();
            return name.starts_with("(0,0)") && name.find("detail") == std::string::npos;
        }));
    }

    std::string atOrigin;
    std::string completed;
    std::string done;
};

TEST_F(ScanWindow, ScansTheRangesThatAreTyped) {
    StartAndLearn();
    Scan("1", "1");
    ASSERT_TRUE(Eventually([this] { return !HasEnded(); }));
    ASSERT_TRUE(Eventually([this] { return HasEnded(); }));
    EXPECT_FALSE(IsOffOrigin());
    EXPECT_EQ(ScansSaved(), 1U);
    Exit();
    EXPECT_TRUE(ReadText(ConfigFile()).find(",1,1,") != std::string::npos) << ReadText(ConfigFile());
}

TEST_F(ScanWindow, GoesOnWhileItIsPaused) {
    StartAndLearn();
    Scan("20", "1");
    WaitForTheMiddleOfARow();
    Menu("Pause/Resume");
    for (int step = 0; step < 3; ++step) { // the menu may be slower than one
        const std::string here = PanelText(panel::positionX);
        EXPECT_TRUE(Eventually([&] { return PanelText(panel::positionX) != here; }));
        EXPECT_FALSE(HasEnded());
    }
    ClickPanel(panel::stop);
    Answer("Return");
    EXPECT_TRUE(Eventually([this] { return HasEnded(); }));
    Exit();
}

TEST_F(ScanWindow, GoesOnAfterStopAnsweredNoAndEndsAfterYes) {
    StartAndLearn();
    Scan("20", "1");
    WaitForTheMiddleOfARow();
    ClickPanel(panel::stop);
    Answer("Escape");
    const std::string here = PanelText(panel::positionX);
    EXPECT_TRUE(Eventually([&] { return PanelText(panel::positionX) != here; })) << "it goes on";
    EXPECT_FALSE(HasEnded());
    ClickPanel(panel::stop);
    Answer("Return");
    EXPECT_TRUE(Eventually([this] { return HasEnded() && !IsOffOrigin(); }));
    EXPECT_EQ(ScansSaved(), 1U);
    display.Screenshot(screenshots / "scan-stopped.png");
    Exit();
}

TEST_F(ScanWindow, GoesOnWhileItsPanelIsClosedAndOpenedAgain) {
    StartAndLearn();
    Scan("20", "1");
    WaitForTheMiddleOfARow();
    display.Close(panelTitle);
    ASSERT_TRUE(Eventually([this] { return !display.Shows(panelTitle); }));
    Menu("Control Panel");
    ASSERT_TRUE(Eventually([this] { return display.Shows(panelTitle); }));
    const std::string here = PanelText(panel::information);
    EXPECT_TRUE(Eventually([&] { return PanelText(panel::information) != here; })) << "it goes on";
    EXPECT_FALSE(HasEnded());
    ClickPanel(panel::stop);
    Answer("Return");
    EXPECT_TRUE(Eventually([this] { return HasEnded(); }));
    Exit();
}

TEST_F(ScanWindow, ScansAnewInsideAScanWhenItIsStartedAgain) {
    StartAndLearn();
    Scan("3", "1");
    WaitForTheMiddleOfARow();
    ClickPanel(panel::startScan);
    Answer("Escape");
    ASSERT_TRUE(Eventually([this] { return ScansSaved() >= 2; }));
    ASSERT_TRUE(Eventually([this] { return HasEnded(); }));
    Exit();
    EXPECT_LE(ScansSaved(), 3U) << "inside a step along Y the first one takes one more field, at the origin";
}

TEST_F(ScanWindow, EndsWithTheProgramWhenTheWindowIsClosed) {
    StartAndLearn();
    Scan("20", "1");
    WaitForTheMiddleOfARow();
    display.Close(mainTitle);
    ASSERT_TRUE(Eventually([this] { return program->ExitStatus().has_value(); }, std::chrono::seconds(15)));
    EXPECT_EQ(program->ExitStatus(), 0);
}

} // namespace
} // namespace tessaro
