#include "analyze/picture_analysis.h"
#include "simulated_field/random_field.h"
#include "simulated_field/simulated_field.h"
#include "support/program.h"
#include "support/temporary_folder.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace tessaro {
namespace {

Settings DemonstrationSettings() {
    Settings settings;
    settings.scoreThreshold = 35.0F;
    return settings;
}

bool Overlap(const GrainReport& grain, const PixelBox& box) {
    return grain.left <= box.right && box.left <= grain.right && grain.minRow <= box.maxRow &&
           box.minRow <= grain.maxRow;
}

TEST(SimulatedFlakes, OfOneLayerAreFoundAndNothingElseIs) {
    constexpr int singles = 12;
    int found = 0;
    int known = 0;
    for (std::uint64_t seed = 1; seed <= 5; ++seed) {
        const RandomFieldOptions options{.singleLayerArea = findableSingleLayerArea};
        const SimulatedField field = RandomField(seed, singles, 8, options);
        FrameBuffer frame;
        DrawField(field, seed, frame);
        const PictureReport report = AnalyzeFrame(frame, DemonstrationSettings(), nullptr);
        for (const GrainReport& grain : report.grains) {
            if (!grain.single)
                continue;
            const auto flake =
                std::find_if(field.flakes.begin(), field.flakes.end(), [&](const SimulatedFlake& candidate) {
                    return Overlap(grain, FlakeBox(candidate));
                });
            ASSERT_NE(flake, field.flakes.end()) << "a single layer where there is no flake";
            EXPECT_EQ(flake->layers, 1) << "seed " << seed;
            ++found;
        }
        known +=
            static_cast<int>(std::count_if(field.flakes.begin(), field.flakes.end(),
                                           [](const SimulatedFlake& flake) { return flake.layers == 1; }));
    }
    EXPECT_EQ(known, 5 * singles);
    EXPECT_GE(found, known * 9 / 10);
}

TEST(SimulatedFlakes, AreFoundInThePictureThatTheProgramDraws) {
    const TemporaryFolder folder;
    const std::string picture = (folder.Path() / "field.png").string();
    const std::string truth = (folder.Path() / "truth.json").string();
    ASSERT_EQ(RunProgram(TESSARO_SIMULATE_FIELD, {"--seed", "3", "--truth", truth, picture}).exitStatus, 0);
    EXPECT_NE(ReadText(truth).find("\"flakes\":"), std::string::npos);
    const ProgramRun run = RunProgram(TESSARO_ANALYZE, {"--threshold", "35", "--json", "-", picture});
    EXPECT_EQ(run.exitStatus, 0);
    EXPECT_NE(run.output.find("\"single\":true"), std::string::npos);
}

} // namespace
} // namespace tessaro
