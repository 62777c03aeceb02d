#include "analyze/batch.h"
#include "analyze/result_files.h"
#include "analyze/white_balance.h"
#include "imaging/picture_to_frame.h"
#include "platform/qt/qt_picture_files.h"
#include "support/analysis_pair.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace tessaro {
namespace {

// Tests on real microscope pictures, skipped where there are none.

std::vector<std::filesystem::path> SamplePictures() {
    std::vector<std::filesystem::path> pictures;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(TESSARO_SAMPLES, error)) {
        if (entry.path().extension() == ".jpg")
            pictures.push_back(entry.path());
    }
    return pictures;
}

Settings GrapheneSettings() {
    Settings settings;
    settings.targetContrast = {-13.0F, -14.0F, -9.0F};
    settings.scoreThreshold = 30.0F;
    return settings;
}

TEST(SamplePictures, ShowTheSameToTheFastAndThePlainAnalysis) {
    const auto pictures = SamplePictures();
    if (pictures.empty())
        GTEST_SKIP() << "no sample pictures";
    QtPictureFiles files;
    for (const auto& path : pictures) {
        SCOPED_TRACE(path.string());
        const auto decoded = files.Decode(std::get<std::vector<std::uint8_t>>(ReadFile(path)));
        const Picture& picture = std::get<Picture>(decoded);
        FrameBuffer frame;
        AnalysisPair pair(GrapheneSettings());
        BalancedFrame(picture, frame);
        pair.AnalyseField(frame);
        PictureToFrame(picture, frame); // as it came, its old marks still in the map
        pair.AnalyseField(frame);
    }
}

TEST(SamplePictures, ShowTheFlakeThatTheTargetWasTakenFrom) {
    const std::filesystem::path path = std::filesystem::path(TESSARO_SAMPLES) / "graphene_28f74d1c.jpg";
    if (!std::filesystem::exists(path))
        GTEST_SKIP() << "no sample pictures";
    QtPictureFiles files;
    BatchSettings settings;
    settings.settings = GrapheneSettings();
    settings.balance = true;
    BatchPlatform platform{files, nullptr};
    const BatchResult result = AnalysePicture(path.string(), settings, platform);
    ASSERT_EQ(result.error, "");

    // The flake lies at (1307, 853) of 1920 x 1200, counted from the top left.
    const int x = 1307 * frameWidth / 1920;
    const int y = WindowRow(853 * frameHeight / 1200);
    const auto& grains = result.report.grains;
    EXPECT_TRUE(std::any_of(grains.begin(), grains.end(), [&](const GrainReport& grain) {
        return grain.single && grain.left <= x && x <= grain.right && grain.minRow <= y && y <= grain.maxRow;
    }));
}

} // namespace
} // namespace tessaro
