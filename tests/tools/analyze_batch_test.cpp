#include "analyze/batch.h"
#include "analyze/report_json.h"
#include "imaging/picture_to_frame.h"
#include "platform/fake/memory_picture_files.h"
#include "platform/fake/recording_surface.h"
#include "support/drawn_frames.h"
#include "support/temporary_folder.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <new>
#include <stdexcept>
#include <system_error>

namespace {

thread_local bool outOfMemory = false; // this thread gets none any more

}

// Not inlined: a compiler that sees only one of them into its caller takes them for mismatched.
[[gnu::noinline]] void* operator new(std::size_t size) {
    if (void* memory = outOfMemory ? nullptr : std::malloc(size))
        return memory;
    throw std::bad_alloc();
}

[[gnu::noinline]] void operator delete(void* memory) noexcept {
    std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

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
        return Write(name, painter);
    }

    std::string Write(const std::string& name, const FramePainter& painter) {
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

TEST_F(AnalyzeBatch, TellsCandidatesFromLiveOnesAndTheNumberOfAGrainFromItsPlace) {
    FramePainter painter;
    painter.Fill(substrate100);
    painter.Rectangle(200, 200, 12, 12, singleLayer100); // grain 0, too small
    painter.Rectangle(200, 600, 40, 40, singleLayer100); // grain 1
    painter.Rectangle(800, 800, 4, 4, singleLayer100);   // noise
    const auto results = Run({Write("mixed", painter)});
    const PictureReport& report = results[0].report;
    EXPECT_EQ(report.candidates, 9 + 100 + 1);
    EXPECT_EQ(report.live, 9 + 100);
    EXPECT_EQ(report.groups, 2);
    EXPECT_EQ(report.kept, 1);
    ASSERT_EQ(report.grains.size(), 1U);
    EXPECT_EQ(report.grains[0].grain, 1);
    EXPECT_NE(
        ReportJson(report).find(R"("candidates":110,"live":109,"groups":2,"kept":1,"grains":[{"grain":1,)"),
        std::string::npos);
}

TEST_F(AnalyzeBatch, LetsNoMarksOfOnePictureCountInTheNext) {
    // A lonely candidate, which would be kept among the marks that the picture before it leaves in the upper
    // three quarters of the map.
    FramePainter around;
    around.Fill(substrate100);
    around.Rectangle(400, 800, 12, 12, singleLayer100);
    FramePainter lonely;
    lonely.Fill(substrate100);
    lonely.Rectangle(404, 804, 4, 4, singleLayer100);
    const auto results = Run({Write("around", around), Write("lonely", lonely)});
    EXPECT_EQ(results[0].report.live, 9);
    EXPECT_EQ(results[1].report.candidates, 1);
    EXPECT_EQ(results[1].report.live, 0);
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

TEST_F(AnalyzeBatch, ReportsAPictureWhoseAnnotatedPictureCannotBeEncoded) {
    settings.annotate = true;
    const std::string path = WritePicture("one", 1);
    files.failEncoding = true;
    const auto results = Run({path});
    EXPECT_EQ(results[0].saveError, "encoding failed as the test asked for");
    EXPECT_EQ(results[0].error, "");
    EXPECT_EQ(results[0].report.found, 1);
}

TEST_F(AnalyzeBatch, ReportsAPictureWhoseAnnotatedPictureFindsNoMemory) {
    class NoMemoryToEncode : public MemoryPictureFiles {
    public:
        std::variant<std::vector<std::uint8_t>, PictureError> Encode(const Picture& /*picture*/,
                                                                     std::string_view /*type*/) override {
            throw std::bad_alloc();
        }
    };
    settings.annotate = true;
    NoMemoryToEncode noMemoryToEncode;
    BatchPlatform poor{noMemoryToEncode, platform.makeSurface};
    const BatchResult result = AnalysePicture(WritePicture("one", 1), settings, poor);
    EXPECT_EQ(result.saveError, "not enough memory");
    EXPECT_EQ(result.error, "");
    EXPECT_EQ(result.report.found, 1);
}

TEST_F(AnalyzeBatch, ReportsAnOverflowOfTheGrains) {
    FramePainter painter;
    painter.Fill(substrate100);
    for (int i = 0; i < 400; ++i)
        painter.Rectangle(104 + 40 * (i % 20), 16 + 40 * (i / 20), 8, 8, singleLayer100);
    const auto results = Run({Write("many", painter)});
    EXPECT_TRUE(results[0].report.overflow);
    EXPECT_EQ(results[0].report.groups, 297);
    EXPECT_EQ(results[0].report.kept, 0);
}

TEST_F(AnalyzeBatch, EndsWithTheExceptionThatTheReceiverOfAResultThrows) {
    settings.jobs = 2;
    const std::vector<std::string> paths(20, (folder.Path() / "absent").string());
    int taken = 0;
    const auto take = [&](const BatchResult&) {
        if (++taken == 3)
            throw std::runtime_error("no room for the result");
    };
    EXPECT_THROW(AnalyseBatch(paths, settings, platform, take), std::runtime_error);
    EXPECT_EQ(taken, 3);
}

TEST_F(AnalyzeBatch, IsDoneByTheThreadsThatCouldBeStarted) {
    const auto startUpTo = [this](int most) {
        platform.startThread = [most, started = 0](std::function<void()> work) mutable {
            if (started == most)
                throw std::system_error(std::make_error_code(std::errc::resource_unavailable_try_again));
            ++started;
            return std::jthread(std::move(work));
        };
    };
    settings.jobs = 4;
    const std::vector<std::string> paths(20, (folder.Path() / "absent").string());
    for (const int most : {0, 1, 3}) {
        startUpTo(most);
        const auto results = Run(paths);
        ASSERT_EQ(results.size(), paths.size()) << most << " threads";
        EXPECT_EQ(results.back().error, "No such file or directory");
    }
}

TEST_F(AnalyzeBatch, NamesWhatKeptAPictureFromBeingAnalysed) {
    settings.annotate = true;
    const std::string path = WritePicture("one", 1);
    platform.makeSurface = [](Picture&) -> std::unique_ptr<DrawingSurface> { throw std::bad_alloc(); };
    EXPECT_EQ(Run({path})[0].error, "not enough memory");
    platform.makeSurface = [](Picture&) -> std::unique_ptr<DrawingSurface> {
        throw std::runtime_error("nothing to draw on");
    };
    EXPECT_EQ(Run({path})[0].error, "nothing to draw on");
}

TEST_F(AnalyzeBatch, GoesOnWhenMemoryDoesNotSufficeForTheErrorThatSaysSo) {
    settings.annotate = true;
    platform.makeSurface = [](Picture&) -> std::unique_ptr<DrawingSurface> {
        outOfMemory = true; // from here on, for this thread
        throw std::bad_alloc();
    };
    const std::vector<std::string> paths{WritePicture("a", 1), WritePicture("b", 1)};
    const auto results = Run(paths);
    ASSERT_EQ(results.size(), 2U);
    for (std::size_t i = 0; i < 2; ++i) {
        EXPECT_EQ(results[i].error, "not enough memory");
        EXPECT_EQ(results[i].report.file, paths[i]);
    }
}

TEST_F(AnalyzeBatch, OfNoPicturesDoesNothing) {
    EXPECT_TRUE(Run({}).empty());
}

} // namespace
} // namespace tessaro
