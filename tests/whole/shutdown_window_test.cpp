// The operator ends the program in its real window, whatever it is in the middle of, with the simulated
// microscope behind it.

#include "scan/control_panel_ids.h"
#include "support/sanitizer.h"
#include "support/twin_stage.h"
#include "whole/window_driver.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace tessaro {
namespace {

constexpr const char* questionTitle = "Warning";
constexpr const char* stageDialogTitle = "XYZ stage configuration";
constexpr const char* typedLine = "3,-12.000000,-8.000000,-2.000000,6.000000,3,10,100,4,70.000000\n";
// A dead line is given up after two seconds, a dead camera a little later; machines may be busy.
constexpr std::chrono::seconds soon(30);

class ShutdownWindow : public WindowDriver {
protected:
    void SetUp() override {
        WindowDriver::SetUp();
        std::vector<std::string> options = stage.Options();
        options.insert(options.end(), {"--wafer-mm", "4", "--seed", "5", "--at", "1000,1000,0", "--quiet"});
        twin = std::make_unique<RunningTwin>(TESSARO_TWIN, options);
        ASSERT_TRUE(twin->IsReady()) << twin->Errors();
        arguments = {"--camera", "127.0.0.1", "--stage-port", stage.LinkPath()};
    }

    /// Without the tilt, which would be measured first.
    void ScanUntilTheMiddleOfARow() {
        TypeIntoPanel(panel::xRange, "3");
        ClickPanel(panel::tiltCorrection);
        ClickPanel(panel::startScan);
        ASSERT_TRUE(Eventually([this] { return OrdersToX() >= 3; })) << "to the origin, and two steps";
    }

    void OpenAndLeave(const std::string& entry, const std::string& title) {
        Menu(entry);
        ASSERT_TRUE(Eventually([&] { return display.ActiveTitle() == title + "\n"; })) << title;
        display.Keys({"Escape"});
        ASSERT_TRUE(Eventually([&] { return !display.Shows(title); })) << title;
    }

    void OpenStopQuestion() {
        ClickPanel(panel::stop);
        ASSERT_TRUE(Eventually([this] { return display.Shows(questionTitle); }));
    }

    std::ptrdiff_t OrdersToX() const {
        const std::vector<std::string> orders = stage.Orders();
        return std::ranges::count_if(orders, [](const auto& order) { return order.starts_with('m'); });
    }

    void ExpectItEnds(const std::string& settings) {
        ASSERT_TRUE(Eventually([this] { return program->ExitStatus().has_value(); }, soon));
        EXPECT_EQ(program->ExitStatus(), 0);
        EXPECT_EQ(ReadText(ConfigFile()), settings);
        EXPECT_FALSE(display.Shows(mainTitle));
    }

    void ExpectTheStageIsBack() {
        const std::array<double, 3> place = TwinStage::Place(*twin);
        EXPECT_FALSE(TwinStage::Moves(*twin));
        EXPECT_NEAR(place[0], 0.0, 1.0);
        EXPECT_NEAR(place[1], 0.0, 1.0);
    }

    TwinStage stage{home.Path().string()};
    std::unique_ptr<RunningTwin> twin;
};

TEST_F(ShutdownWindow, ByItsButtonInTheMiddleOfAScan) {
    Start();
    ScanUntilTheMiddleOfARow();
    display.Close(mainTitle);
    ExpectItEnds(typedLine);
    ExpectTheStageIsBack();
}

TEST_F(ShutdownWindow, ByTheMenuInTheMiddleOfAScan) {
    Start();
    ScanUntilTheMiddleOfARow();
    Menu("Exit");
    ExpectItEnds(typedLine);
    ExpectTheStageIsBack();
}

/// The window waits for the dialog, as for every modal one.
TEST_F(ShutdownWindow, OnceItsModalDialogIsClosed) {
    Start();
    Menu("Setting XY stage");
    ASSERT_TRUE(Eventually([this] { return display.Shows(stageDialogTitle); }));
    display.Close(mainTitle);
    display.Close(stageDialogTitle);
    ASSERT_TRUE(Eventually([this] { return !display.Shows(stageDialogTitle); }));
    EXPECT_TRUE(program->IsRunning());
    EXPECT_TRUE(display.Shows(mainTitle));
    display.Close(mainTitle);
    ExpectItEnds("3,-12.000000,-8.000000,-2.000000,6.000000,10,10,100,4,70.000000\n");
    ExpectTheStageIsBack();
}

TEST_F(ShutdownWindow, OnceItsQuestionIsClosed) {
    Start();
    ScanUntilTheMiddleOfARow();
    OpenStopQuestion();
    display.Close(mainTitle);
    const std::ptrdiff_t steps = OrdersToX();
    display.Close(questionTitle); // answers No
    ASSERT_TRUE(Eventually([this] { return !display.Shows(questionTitle); }));
    ASSERT_TRUE(Eventually([&] { return OrdersToX() > steps; })) << "the scan goes on";
    display.Close(mainTitle);
    ExpectItEnds(typedLine);
    ExpectTheStageIsBack();
}

TEST_F(ShutdownWindow, WhenStageAndCameraHaveGoneInTheMiddleOfAScan) {
    Start();
    ScanUntilTheMiddleOfARow();
    twin->Signal(SIGKILL);
    ASSERT_TRUE(Eventually([this] { return !twin->IsRunning(); }));
    display.Close(mainTitle);
    ExpectItEnds(typedLine);
}

/// A leak would show in the exit status, and in what the program says.
TEST_F(ShutdownWindow, WithoutALeakAfterAllDialogs) {
    if (!addressSanitizer)
        GTEST_SKIP() << "only a program with an AddressSanitizer looks for leaks";
    Start();
    OpenAndLeave("Information", "About Tessaro");
    OpenAndLeave("Configuration", "Color Contrast Configuration");
    OpenAndLeave("Setting XY stage", stageDialogTitle);
    OpenAndLeave("Import Image", "Import Image");
    Menu("XY Stage Configuration");
    ASSERT_TRUE(Eventually([this] { return display.Shows("XYZ stage Configuration"); }));
    ScanUntilTheMiddleOfARow();
    OpenStopQuestion();
    display.Close(questionTitle);
    ASSERT_TRUE(Eventually([this] { return !display.Shows(questionTitle); }));
    display.Close(mainTitle);
    ExpectItEnds(typedLine);
}

} // namespace
} // namespace tessaro
