#include "compare/image_check.h"
#include "compare/report_file.h"
#include "platform/qt/qt_picture_files.h"
#include "scan_program_fixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <sched.h>
#include <sstream>
#include <string>
#include <sys/mount.h>
#include <variant>
#include <vector>

namespace tessaro {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;
using std::chrono::seconds;

constexpr int fieldCount = 4; // of the small area
constexpr const char* everyGrainCounts =
    "3,-12.000000,-8.000000,-2.000000,6.000000,10,10,100,4,-1000.000000\n";

/// A scan of the small area whose microscope or disk fails behind its first field. Nothing is assumed of how
/// far the scan is when the fault takes effect.
class ScanFaults : public ScanProgram {
protected:
    ~ScanFaults() override {
        if (m_mounted)
            umount2(Desktop().c_str(), MNT_DETACH);
    }

    /// Every field finds something, and so has images.
    void SaveEveryField() {
        fs::create_directories(Desktop() / "Image_Data");
        std::ofstream(ConfigFile()) << everyGrainCounts;
    }

    /// A small disk of its own for the desktop; false where this test may not have one.
    bool PutDesktopOnADisk(const char* options) {
        fs::create_directories(Desktop());
        m_mounted = unshare(CLONE_NEWNS) == 0 &&
                    mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                    mount("none", Desktop().c_str(), "tmpfs", 0, options) == 0;
        return m_mounted;
    }

    void ScanUntilTheFirstField() {
        StartTwin();
        Options options = smallArea;
        options.insert(options.end(), {"--report", Path("report")});
        Start(options);
        ASSERT_TRUE(ReportsFields(1)) << Output() << Errors();
    }

    void Set(const std::string& fault) { ASSERT_EQ(twin->Say("fault " + fault), "ok"); }

    std::vector<std::string> Lines() const {
        std::vector<std::string> lines;
        std::istringstream text(ReadText(Path("report")));
        for (std::string line; std::getline(text, line) && !text.eof();) // whole ones
            lines.push_back(line);
        return lines;
    }
    bool ReportsFields(std::size_t count) {
        return Eventually([&] { return Lines().size() >= count || !program->IsRunning(); }, seconds(60)) &&
               Lines().size() >= count;
    }

    /// Of a scan that has ended.
    ReportFile Report() const {
        const std::string text = ReadText(Path("report"));
        auto read = ReadReportFile(text);
        if (const ReadingError* const error = std::get_if<ReadingError>(&read)) {
            ADD_FAILURE() << error->reason << " in:\n" << text;
            return {};
        }
        return std::get<ReportFile>(std::move(read));
    }

    static bool Has(const std::string& line, const std::string& part) {
        return line.find(part) != std::string::npos;
    }
    std::ptrdiff_t LinesWith(const std::string& part) const {
        const std::vector<std::string> lines = Lines();
        return std::count_if(lines.begin(), lines.end(),
                             [&](const std::string& line) { return Has(line, part); });
    }

    void ExpectAWholeReport() const {
        ReportFile report = Report();
        EXPECT_EQ(report.tornLines, 0);
        EXPECT_EQ(report.fields.size(), std::size_t{fieldCount});
        for (ReportedField& field : report.fields)
            if (field.position.x == 400.0 && field.position.y == 600.0)
                field.row = field.column = 0; // its images are kept wherever the stage truly is
        ASSERT_EQ(report.ends.size(), 1U);
        EXPECT_EQ(report.ends[0].why, "completed");
        QtPictureFiles pictures;
        const ImageFindings images = CheckImages(report.fields, pictures);
        EXPECT_TRUE(images.faults.empty()) << images.faults.front();
        EXPECT_TRUE(images.others.empty()) << images.others.front();
    }

    /// From the first line with it on, all fields have this member, and only that first one tells the
    /// problem.
    void ExpectAllLaterFieldsHave(const std::string& member, const std::string& problem) const {
        const std::vector<std::string> lines = Lines();
        ASSERT_EQ(lines.size(), std::size_t{fieldCount} + 1);
        bool gone = false;
        for (std::size_t field = 0; field < fieldCount; ++field) {
            EXPECT_EQ(Has(lines[field], problem), !gone && Has(lines[field], member)) << lines[field];
            EXPECT_TRUE(!gone || Has(lines[field], member)) << lines[field];
            gone = Has(lines[field], member);
        }
        EXPECT_FALSE(Has(lines[0], member)) << lines[0];
        EXPECT_TRUE(gone);
    }

    /// Every field behind the first has found something, and none of its images.
    void ExpectNoLaterImages(const std::string& reason) const {
        const ReportFile report = Report();
        for (const ReportedField& field : report.fields) {
            EXPECT_GT(field.found, 0) << "field " << field.field;
            if (field.field == 1) {
                EXPECT_EQ(field.images.size(), 2U);
                continue;
            }
            EXPECT_TRUE(field.images.empty()) << field.images[0];
            ASSERT_EQ(field.problems.size(), 2U) << "field " << field.field;
            EXPECT_TRUE(field.problems[0].ends_with(").jpg: " + reason)) << field.problems[0];
            EXPECT_TRUE(field.problems[1].ends_with(")detail.jpg: " + reason)) << field.problems[1];
            for (const std::string& problem : field.problems)
                EXPECT_TRUE(Has(Errors(), problem + "\n")) << problem << " in:\n" << Errors();
        }
    }

private:
    bool m_mounted = false;
};

TEST_F(ScanFaults, GoesOnWithASimulatedStageWhenItsLineIsClosed) {
    ScanUntilTheFirstField();
    Set("stage-gone");
    EXPECT_EQ(ExitStatus(), 0);
    EXPECT_EQ(Errors(),
              "tessaro: the line to the stage was lost during the scan: later fields are not where they "
              "were meant to be\n");
    ExpectAWholeReport();
    ExpectAllLaterFieldsHave("\"stage\":false", "the stage is offline: its moves are simulated");
    const std::vector<ReportedField> fields = Report().fields;
    ASSERT_GE(fields.size(), 4U);
    EXPECT_EQ(fields[3].position.x, fields[2].position.x - 400.0) << "simulated";
    EXPECT_EQ(fields[3].position.y, fields[2].position.y);
    EXPECT_FALSE(TwinStage::Moves(*twin));
}

TEST_F(ScanFaults, GoesOnWhenTheControllerIsSilentForAWhile) {
    ScanUntilTheFirstField();
    Set("stage-silent");
    const Clock::time_point silent = Clock::now();
    const std::size_t before = Lines().size();
    ASSERT_TRUE(ReportsFields(before + 1)) << Output();
    const Clock::time_point between = Clock::now();
    ASSERT_TRUE(ReportsFields(before + 2)) << Output();
    const auto wait = Clock::now() - between;
    EXPECT_GE(wait, std::chrono::milliseconds(1900)) << "the wait for the arrival gives up after 2 s";
    EXPECT_LT(wait, seconds(10));
    Eventually([&] { return Clock::now() - silent >= seconds(5); });
    ASSERT_EQ(twin->Say("clear stage-silent"), "ok");
    EXPECT_EQ(ExitStatus(), 0);
    EXPECT_EQ(Errors(), "");
    ExpectAWholeReport();
    EXPECT_EQ(LinesWith("\"stage\":false"), 0) << "its line takes what it is told";
    const std::vector<ReportedField> fields = Report().fields;
    EXPECT_EQ(fields[before + 1].position.x, fields[before].position.x)
        << "a place that is not told stays the one before";
    EXPECT_EQ(fields[before + 1].position.y, fields[before].position.y);
    EXPECT_EQ(TwinStage::Place(*twin), (std::array<double, 3>{400.0, 600.0, 0.0})) << "back in the end";
    EXPECT_FALSE(TwinStage::Moves(*twin));
}

TEST_F(ScanFaults, GoesOnWithATestPatternWhenTheCameraIsGone) {
    ScanUntilTheFirstField();
    Set("camera-gone");
    const Clock::time_point gone = Clock::now();
    EXPECT_EQ(ExitStatus(), 0);
    EXPECT_LT(Clock::now() - gone, seconds(30)) << "a camera that is gone keeps nobody waiting";
    ExpectAWholeReport();
    ExpectAllLaterFieldsHave("\"camera\":false", "no image from the camera: a test pattern stands in");
    EXPECT_EQ(Errors(), "tessaro: the camera was lost during the scan: " +
                            std::to_string(LinesWith("\"camera\":false")) +
                            " of 4 fields show a test pattern\n");
    EXPECT_EQ(TwinStage::Place(*twin), (std::array<double, 3>{400.0, 600.0, 0.0}));
}

TEST_F(ScanFaults, GoesOnWhenTheFoldersOfItsImagesAreRemoved) {
    SaveEveryField();
    ScanUntilTheFirstField();
    for (const char* root : {"Image_Data", "Image_Detail"})
        for (const fs::directory_entry& entry : fs::directory_iterator(Desktop() / root))
            if (entry.is_directory())
                fs::remove_all(entry.path());
    EXPECT_EQ(ExitStatus(), 0);
    EXPECT_EQ(SavedImages(), 0U) << "no folder is made anew";
    EXPECT_EQ(Report().tornLines, 0);
    EXPECT_EQ(Report().fields.size(), std::size_t{fieldCount});
    ExpectNoLaterImages("No such file or directory");
    EXPECT_TRUE(Has(Lines().back(), R"("end":"completed","fields":4,)")) << Lines().back();
    EXPECT_EQ(Config(), everyGrainCounts);
}

TEST_F(ScanFaults, KeepsWhatIsSavedWhenTheDiskIsFull) {
    if (!PutDesktopOnADisk("size=16m"))
        GTEST_SKIP() << "no disk may be made here";
    SaveEveryField();
    ScanUntilTheFirstField();
    std::ofstream filler(Desktop() / "filler", std::ios::binary);
    const std::string piece(4096, 'x');
    while (filler.write(piece.data(), static_cast<std::streamsize>(piece.size())).flush())
        continue;
    EXPECT_EQ(ExitStatus(), 0);
    EXPECT_EQ(SavedImages(), 2U) << "nothing is there in part";
    ExpectAWholeReport();
    ExpectNoLaterImages("No space left on device");
    EXPECT_EQ(Config(), everyGrainCounts) << "settings that cannot be written stay as they were";
}

} // namespace
} // namespace tessaro
