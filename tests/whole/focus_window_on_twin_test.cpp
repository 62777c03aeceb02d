#include "scan/control_panel_ids.h"
#include "whole/window_on_twin.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <string>
#include <vector>

namespace tessaro {
namespace {

constexpr double focusZ = 40.0; // um
constexpr double nearUm = 3.0;

// Of a focus speed of 300 um/s, in steps/s.
constexpr const char* sweepCommand = "T480";
constexpr const char* liftCommand = "T960"; // twice that

/// What the file of the focus curve says, in the order of its lines.
struct CurveLine {
    std::string search;
    double focusValue = 0.0;
    std::string outcome; // of the line that ends a search; empty in all others
};

std::vector<CurveLine> CurveOf(const std::string& text) {
    std::vector<CurveLine> lines;
    std::size_t begin = text.find('\n'); // behind the names of the columns
    while (begin != std::string::npos && text.find('\n', begin + 1) != std::string::npos) {
        const std::size_t end = text.find('\n', begin + 1);
        std::vector<std::string> cells(1);
        for (const char character : text.substr(begin + 1, end - begin - 1)) {
            if (character == ',')
                cells.emplace_back();
            else
                cells.back() += character;
        }
        lines.push_back({cells.at(2), std::stod(cells.at(8)), cells.back()});
        begin = end;
    }
    return lines;
}

/// The operator's program looks at the simulated wafer from a height above its focus.
class FocusWindowOnTwin : public WindowOnTwin {
protected:
    void StartAt(const std::string& place, const std::vector<std::string>& extra = {}) {
        ASSERT_NO_FATAL_FAILURE(StartTwin({"--seed", "5", "--focus-z", "40", "--at", place}));
        arguments.insert(arguments.end(), {"--focus-curve", CurveFile()});
        arguments.insert(arguments.end(), extra.begin(), extra.end());
        Start();
        WaitForTheWafer();
    }

    std::string CurveFile() const { return (home.Path() / "curve.csv").string(); }

    /// How the searches of this name have ended.
    std::vector<std::string> Outcomes(const std::string& search) const {
        std::vector<std::string> outcomes;
        for (const CurveLine& line : CurveOf(ReadText(CurveFile())))
            if (line.search == search && !line.outcome.empty())
                outcomes.push_back(line.outcome);
        return outcomes;
    }

    /// In the middle of a sweep.
    void CloseTheWindow() {
        display.Close(mainTitle);
        ASSERT_TRUE(
            Eventually([this] { return program->ExitStatus().has_value(); }, std::chrono::seconds(10)));
        EXPECT_EQ(program->ExitStatus(), 0);
        EXPECT_EQ(Outcomes("coarse"), std::vector<std::string>{"stopped"});
        EXPECT_TRUE(Eventually([this] { return Stands(); }, std::chrono::seconds(2)));
    }

    double Z() { return Where()[2]; }
};

TEST_F(FocusWindowOnTwin, ComesIntoFocusByTheMenu) {
    StartAt("1500,700,52");
    Menu("Auto focusing");
    ASSERT_TRUE(Eventually([this] { return Outcomes("fine").size() == 1; }));
    EXPECT_TRUE(Eventually([this] { return Stands(); }));
    EXPECT_NEAR(Z(), focusZ, nearUm) << ReadText(CurveFile());
    EXPECT_TRUE(Outcomes("coarse").empty()) << "there was enough to climb by";
    display.Screenshot(screenshots / "focus-by-menu.png");
    Exit();
}

/// As an operator would: "focus" once more where the image is not sharp yet.
TEST_F(FocusWindowOnTwin, ComesIntoFocusFromFarByCoarseAndFocus) {
    StartAt("1500,700,290", {"--focus-speed", "150"}); // samples lie close together on a slow machine, too
    ClickPanel(panel::coarse);
    ASSERT_TRUE(Eventually([this] { return Outcomes("coarse").size() == 1; }, std::chrono::minutes(1)));
    EXPECT_EQ(Outcomes("coarse").back(), "peak passed") << ReadText(CurveFile());
    EXPECT_TRUE(Eventually([this] { return Stands(); }));
    EXPECT_NEAR(Z(), focusZ, 60.0) << ReadText(CurveFile());
    display.Screenshot(screenshots / "focus-after-coarse.png");
    for (std::size_t press = 1; press <= 4 && std::abs(Z() - focusZ) > nearUm; ++press) {
        ClickPanel(panel::autoFocus);
        ASSERT_TRUE(Eventually([&] { return Outcomes("fine").size() == press; }, std::chrono::minutes(1)));
        EXPECT_TRUE(Eventually([this] { return Stands(); }));
    }
    EXPECT_NEAR(Z(), focusZ, nearUm) << ReadText(CurveFile());
    display.Screenshot(screenshots / "focus-after-focus.png");
    Exit();
}

TEST_F(FocusWindowOnTwin, IsClosedInTheMiddleOfASearchAndLeavesNothingMoving) {
    StartAt("1500,700,200", {"--focus-speed", "300"});
    ClickPanel(panel::coarse);
    ASSERT_TRUE(Eventually([this] { return CurveOf(ReadText(CurveFile())).size() > 3; }));
    CloseTheWindow();
    const std::vector<std::string> orders = stage.Orders();
    const auto lift = std::ranges::find(orders, liftCommand);
    ASSERT_NE(lift, orders.end()) << "the speed of the command line";
    EXPECT_NE(std::find(lift, orders.end(), sweepCommand), orders.end());
}

/// It has something to say about the sample then, and nobody is there to answer. The sweep takes its second
/// frame 4 s after it has begun.
TEST_F(FocusWindowOnTwin, IsClosedInTheMiddleOfASearchThatSeesTooLittleAndWaitsForNobody) {
    StartAt("1500,700,150", {"--focus-speed", "300"});
    Menu("Auto focusing");
    ASSERT_TRUE(Eventually([this] {
        const std::vector<std::string> orders = stage.Orders();
        return std::ranges::find(orders, liftCommand) != orders.end();
    }));
    CloseTheWindow();
    EXPECT_EQ(Outcomes("fine"), std::vector<std::string>{"stopped"});
    EXPECT_LT(CurveOf(ReadText(CurveFile())).back().focusValue, 0.7) << ReadText(CurveFile());
}

} // namespace
} // namespace tessaro
