#include "analyze/batch.h"
#include "analyze/report_json.h"
#include "imaging/picture_to_frame.h"
#include "platform/fake/memory_picture_files.h"
#include "platform/fake/recording_surface.h"
#include "support/drawn_frames.h"
#include "support/temporary_folder.h"

#include <gtest/gtest.h>

#include <atomic>

namespace tessaro {
namespace {

class AnalyzeBatch : public testing::Test {
protected:
    AnalyzeBatch() { settings.settings.scoreThreshold = 50; }

    /// A picture file with this many single-layer flakes, where the candidate map keeps its marks.
    std::string WritePicture(const std::string& name, int flakes) {
        FramePainter painter;
        painter.Fill(substrate100);
        for (int i = 0; i < flakes; ++i)
            painter.Rectangle(200 + 120 * i, 600, 40, 40, singleLayer100);
        const auto bytes = files.Encode(FrameToPicture(painter.frame), "image/png");
        return folder.Write(name, std::get<std::vector<std::uint8_t>>(bytes));
    }

    std::vector<BatchResult> Run(const std::vector<std::string>& paths) {
        std::vector<BatchResult> results;
        AnalyseBatch(paths, settings, platform,
                     [&](BatchResult result) { results.push_back(std::move(result)); });
        return results;
    }

    TemporaryFolder folder;
    MemoryPictureFiles files;
    BatchSettings settings;
    std::atomic<int> surfaces = 0;
    BatchPlatform platform{files, [this](Picture&) {
                               ++surfaces;
                               return std::make_unique<RecordingSurface>();
                           }};
};

TEST_F(AnalyzeBatch, ReportsAPicture) {
    const std::string path = WritePicture("one", 1);
    const auto results = Run({path});
    ASSERT_EQ(results.size(), 1U);
    const PictureReport& report = results[0].report;
    EXPECT_EQ(results[0].error, "");
    EXPECT_EQ(report.file, path);
    EXPECT_EQ(report.pictureWidth, 1232);
    EXPECT_EQ(report.bgPeak, (std::array<double, 3>{100, 100, 100}));
    EXPECT_EQ(report.candidates, 100);
    EXPECT_EQ(report.live, 100);
    EXPECT_EQ(report.groups, 1);
    EXPECT_EQ(report.kept, 1);
    EXPECT_EQ(report.found, 1);
    EXPECT_FALSE(report.overflow);
    ASSERT_EQ(report.grains.size(), 1U);
    EXPECT_EQ(report.grains[0].reducedPixels, 100);
    EXPECT_EQ(report.grains[0].pixels, 1'596);
    EXPECT_EQ(report.grains[0].left, 199);
    EXPECT_EQ(report.grains[0].maxRow, 641);
    EXPECT_TRUE(report.grains[0].single);
    EXPECT_EQ(surfaces, 0);
}

TEST_F(AnalyzeBatch, GivesTheSameResultsInAnyOrderWithAnyNumberOfJobs) {
    std::vector<std::string> paths;
    for (int flakes = 0; flakes < 8; ++flakes)
        paths.push_back(WritePicture("picture" + std::to_string(flakes), flakes));
    settings.jobs = 1;
    const auto alone = Run(paths);
    settings.jobs = 4;
    const std::vector<std::string> reversed(paths.rbegin(), paths.rend());
    const auto together = Run(reversed);
    ASSERT_EQ(together.size(), paths.size());
    for (std::size_t i = 0; i < paths.size(); ++i) {
        EXPECT_EQ(alone[i].report.found, static_cast<int>(i));
        EXPECT_EQ(ReportJson(alone[i].report), ReportJson(together[paths.size() - 1 - i].report));
    }
}

TEST_F(AnalyzeBatch, GoesOnAfterPicturesThatCannotBeRead) {
    const auto results = Run({(folder.Path() / "absent").string(), folder.Path().string(),
                              folder.Write("broken", {'F', 'A', 'K'}), WritePicture("good", 2)});
    ASSERT_EQ(results.size(), 4U);
    EXPECT_EQ(results[0].error, "No such file or directory");
    EXPECT_EQ(results[1].error, "it is a folder");
    EXPECT_EQ(results[2].error, "not a fake picture");
    EXPECT_EQ(results[2].report.file, (folder.Path() / "broken").string());
    EXPECT_EQ(results[3].error, "");
    EXPECT_EQ(results[3].report.found, 2);
}

TEST_F(AnalyzeBatch, AnnotatesWhenAsked) {
    settings.annotate = true;
    const auto results = Run({WritePicture("one", 1)});
    EXPECT_EQ(surfaces, 1);
    EXPECT_FALSE(results[0].annotatedJpeg.empty());
}

TEST_F(AnalyzeBatch, SaysWhenTheAnnotatedPictureCannotBeEncoded) {
    settings.annotate = true;
    files.failEncoding = false;
    const std::string path = WritePicture("one", 1);
    files.failEncoding = true;
    EXPECT_EQ(Run({path})[0].error, "encoding failed as the test asked for");
}

TEST_F(AnalyzeBatch, ReportsAnOverflowOfTheGrains) {
    FramePainter painter;
    painter.Fill(substrate100);
    for (int i = 0; i < 400; ++i)
        painter.Rectangle(104 + 40 * (i % 20), 16 + 40 * (i / 20), 8, 8, singleLayer100);
    const auto bytes = files.Encode(FrameToPicture(painter.frame), "image/png");
    const auto results = Run({folder.Write("many", std::get<std::vector<std::uint8_t>>(bytes))});
    EXPECT_TRUE(results[0].report.overflow);
    EXPECT_EQ(results[0].report.groups, 297);
    EXPECT_EQ(results[0].report.kept, 0);
}

TEST_F(AnalyzeBatch, OfNoPicturesDoesNothing) {
    EXPECT_TRUE(Run({}).empty());
}

} // namespace
} // namespace tessaro
