#include "app/resource_ids.h"
#include "scan/report_lines.h"
#include "scan/scan_report.h"
#include "tests/app/program_fixture.h"

#include <sstream>

namespace tessaro {
namespace {

/// The whole program on an area of 2 x 2 fields without tilt correction, with a report.
class ProgramReport : public ProgramTest {
protected:
    ProgramReport() {
        globals->focusControl.tiltCorrection = 0;
        ui.folders.Put(globals->folders.settings,
                       "3,-12.000000,-8.000000,-2.000000,6.000000,1,1,100,4,70.000000\n");
    }

    Texts Lines() const {
        Texts all;
        std::istringstream text(out.str());
        for (std::string line; std::getline(text, line);)
            all.push_back(line);
        return all;
    }
    static bool Has(const std::string& line, const std::string& part) {
        return line.find(part) != std::string::npos;
    }

    void RunWithReportUntil(std::uint64_t end) {
        ui.messages.PostAt(end, {mainWindow, MessageKind::Close});
        RunProgram(*globals, ui.Adapters(), {*cameraRuntime, *serialPorts},
                   {nullptr, &report, &report, &report});
    }

    std::ostringstream out;
    ReportLines lines{out};
    ScanReport report{StateToReport(*globals), lines};
};

TEST_F(ProgramReport, HasEachFieldAsItIsFinishedAndTheEnd) {
    ChooseAt(started, command::startScan);
    At(started + 100, [this] {
        ASSERT_EQ(Lines().size(), 1U) << "the pump behind the first field runs for 200 ms";
        EXPECT_TRUE(Lines()[0].ends_with("]}"));
    });
    RunWithReportUntil(started + 3000);

    const Texts all = Lines();
    ASSERT_EQ(all.size(), 5U);
    const char* starts[] = {R"("field":1,"row":0,"column":0,"x":0.000000,"y":0.000000,)",
                            R"("field":2,"row":0,"column":1,"x":400.000000,"y":0.000000,)",
                            R"("field":3,"row":1,"column":1,"x":400.000000,"y":400.000000,)",
                            R"("field":4,"row":1,"column":0,"x":0.000000,"y":400.000000,)"};
    for (std::size_t i = 0; i < 4; ++i)
        EXPECT_TRUE(all[i].starts_with(R"({"scan":1,)" + std::string(starts[i]))) << all[i];
    EXPECT_TRUE(all[4].starts_with(R"({"scan":1,"end":"completed","fields":4,)")) << all[4];
}

TEST_F(ProgramReport, SaysWhatIsMissingAndThatTheStageIsSimulated) {
    ChooseAt(started, command::startScan);
    RunWithReportUntil(started + 3000);
    const std::string first = Lines().at(0);
    EXPECT_TRUE(Has(first, R"("camera":false,"stage":false,)")) << first;
    EXPECT_TRUE(Has(first, R"("no image from the camera: a test pattern stands in",)"
                           R"("the stage is offline: its moves are simulated"]})"))
        << first;
}

TEST_F(ProgramReport, NamesTheImagesThatThereAre) {
    ChooseAt(started, command::startScan);
    RunWithReportUntil(started + 3000);
    const Texts images = Images(); // the first field is always kept
    ASSERT_GE(images.size(), 2U);
    std::size_t named = 0;
    std::string all = out.str();
    for (const std::string& image : images)
        named += Has(all, "\"" + (ui.folders.desktop / image).string() + "\"") ? 1U : 0U;
    EXPECT_EQ(named, images.size());
    EXPECT_TRUE(Has(Lines().back(), "\"images\":" + std::to_string(images.size()) + ",")) << Lines().back();
}

TEST_F(ProgramReport, NamesTheImagesThatCouldNotBeSavedAndTheScanGoesOn) {
    ui.folders.failWriting = true;
    testing::internal::CaptureStderr();
    ChooseAt(started, command::startScan);
    RunWithReportUntil(started + 3000);
    testing::internal::GetCapturedStderr();
    const Texts all = Lines();
    ASSERT_EQ(all.size(), 5U);
    EXPECT_TRUE(Has(all[0], R"("images":[],)")) << all[0];
    EXPECT_TRUE(Has(all[0], R"(/(0,0).jpg: cannot write",)")) << all[0];
    EXPECT_TRUE(Has(all[0], R"(/(0,0)detail.jpg: cannot write")")) << all[0];
    EXPECT_TRUE(Has(all[4], R"("end":"completed","fields":4,)")) << all[4];
    EXPECT_TRUE(Has(all[4], R"("images":0,)")) << all[4];
}

TEST_F(ProgramReport, NamesTheOneImageThatCouldNotBeSavedAndKeepsTheOneBefore) {
    int images = 0;
    ui.folders.onCall = [&](const std::string& call) {
        ui.folders.failWriting = call.starts_with("write ") && call.ends_with(".jpg") && ++images == 2;
    };
    testing::internal::CaptureStderr();
    ChooseAt(started, command::startScan);
    RunWithReportUntil(started + 3000);
    testing::internal::GetCapturedStderr();
    const Texts all = Lines();
    ASSERT_EQ(all.size(), 5U);
    ASSERT_EQ(Images().size(), 1U);
    const std::string kept = (ui.folders.desktop / Images()[0]).string();
    EXPECT_TRUE(Has(all[0], R"("images":[")" + kept + R"("],)")) << all[0];
    EXPECT_TRUE(Has(all[0], R"(/(0,0)detail.jpg: cannot write",)")) << all[0];
    EXPECT_FALSE(Has(all[0], R"(/(0,0).jpg: )")) << all[0];
    EXPECT_TRUE(Has(all[4], R"("end":"completed","fields":4,"found":0,"images":1,)")) << all[4];
}

TEST_F(ProgramReport, HearsTheQuestionThatStopsAScan) {
    ui.boxes.answers = {true};
    ChooseAt(started, command::startScan);
    ChooseAt(started + 100, command::stop);
    RunWithReportUntil(started + 3000);
    const Texts all = Lines();
    ASSERT_EQ(all.size(), 2U);
    EXPECT_TRUE(Has(all[1], R"("end":"stopped","fields":1,)")) << all[1];
    EXPECT_TRUE(Has(all[1], R"("problems":["Do you want to stop, now ? Yes"]})")) << all[1];
}

TEST_F(ProgramReport, EndsAsStoppedWhenTheWindowIsClosedDuringAScan) {
    ChooseAt(started, command::startScan);
    RunWithReportUntil(started + 100);
    EXPECT_TRUE(Has(Lines().back(), R"("end":"stopped","fields":1,)")) << Lines().back();
}

TEST_F(ProgramReport, NeitherShowsNorKeepsTheFocusThatItTells) {
    const auto figures = [this] {
        Texts shown;
        for (const int box : {panel::focus, panel::deviation, panel::laplaceS, panel::laplaceM})
            for (const std::string& text : ui.dialogs.TextsOf(box))
                shown.push_back(text);
        return shown;
    };
    Texts before;
    float focusValue = 0.0F;
    At(started + 1, [&] {
        before = figures();
        focusValue = globals->focusValue;
    });
    ChooseAt(started + 2, command::startScan);
    At(started + 500, [&] {
        ASSERT_GE(Lines().size(), 2U);
        EXPECT_FALSE(Has(Lines()[1], R"("focus":0.0)")) << "it is that of the field";
        EXPECT_EQ(figures(), before);
        EXPECT_EQ(globals->focusValue, focusValue);
    });
    RunWithReportUntil(started + 600);
}

} // namespace
} // namespace tessaro
