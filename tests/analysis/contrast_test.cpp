#include "analysis/contrast.h"
#include "analysis/contrast_table.h"
#include "support/analysis_fixture.h"

#include <cmath>
#include <limits>

namespace tessaro {
namespace {

class ContrastTests : public AnalysisFixture {
protected:
    ContrastClass ClassifyReduced(float redLevel, float greenLevel, float blueLevel) {
        field.measured.reduced.Set(0, 100, 100, redLevel);
        field.measured.reduced.Set(1, 100, 100, greenLevel);
        field.measured.reduced.Set(2, 100, 100, blueLevel);
        return ClassifyReducedPixel(field, 100, 100);
    }
};

TEST_F(ContrastTests, MatchAtBothEndsOfTheToleranceAndNotBeyond) {
    SetBackground(100, 100, 100);
    EXPECT_EQ(ClassifyReduced(82.0F, 98.0F, 104.0F), ContrastClass::Match);  // -18, -2, 4
    EXPECT_EQ(ClassifyReduced(94.0F, 86.0F, 92.0F), ContrastClass::Match);   // -6, -14, -8
    EXPECT_NE(ClassifyReduced(81.99F, 92.0F, 98.0F), ContrastClass::Match);  // -18.01, -8, -2
    EXPECT_NE(ClassifyReduced(88.0F, 98.01F, 98.0F), ContrastClass::Match);  // green above
    EXPECT_NE(ClassifyReduced(88.0F, 92.0F, 104.01F), ContrastClass::Match); // blue above
}

TEST_F(ContrastTests, CallAPixelDifferentBetweenTenAndAHundredPercentInAnyChannel) {
    SetBackground(100, 100, 100);
    EXPECT_EQ(ClassifyReduced(100.0F, 100.0F, 100.0F), ContrastClass::Background);
    EXPECT_EQ(ClassifyReduced(110.0F, 90.0F, 110.0F), ContrastClass::Background) << "exactly ten percent";
    EXPECT_EQ(ClassifyReduced(110.5F, 100.0F, 100.0F), ContrastClass::Different);
    EXPECT_EQ(ClassifyReduced(100.0F, 89.0F, 100.0F), ContrastClass::Different);
    EXPECT_EQ(ClassifyReduced(100.0F, 100.0F, 150.0F), ContrastClass::Different);
    EXPECT_EQ(ClassifyReduced(0.0F, 200.0F, 200.0F), ContrastClass::Background)
        << "exactly a hundred percent";
}

TEST_F(ContrastTests, TakeTheRedBackgroundForEveryChannel) {
    SetBackground(100, 50, 200);
    EXPECT_EQ(ClassifyReduced(88.0F, 92.0F, 98.0F), ContrastClass::Match);
    EXPECT_EQ(InterpolateBackground(field.measured.background, 2, 100, 100), 100.0F);
    EXPECT_EQ(InterpolateBackground(field.measured.background, 3, 100, 100), 100.0F);
}

TEST_F(ContrastTests, TakeEachChannelsOwnBackgroundByBlock) {
    SetBackground(100, 50, 200);
    field.measured.reduced.Set(0, 100, 100, 88.0F);
    field.measured.reduced.Set(1, 100, 100, 46.0F);
    field.measured.reduced.Set(2, 100, 100, 196.0F);
    EXPECT_EQ(ClassifyReducedPixelByBlock(field, 100, 100), ContrastClass::Match);
    field.measured.reduced.Set(1, 100, 100, 92.0F);
    EXPECT_EQ(ClassifyReducedPixelByBlock(field, 100, 100), ContrastClass::Different);
}

TEST_F(ContrastTests, AnswerMatchOrBackgroundOnlyForSinglePixels) {
    SetBackground(100, 100, 100);
    painter.Set(500, 500, {88, 92, 98});
    painter.Set(501, 500, {60, 60, 60});
    EXPECT_EQ(ClassifyPixel(field, 500, 500), ContrastClass::Match);
    EXPECT_EQ(ClassifyPixel(field, 501, 500), ContrastClass::Background);
    EXPECT_EQ(ClassifyPixelByBlock(field, 500, 500), ContrastClass::Match);
    EXPECT_EQ(ClassifyPixelByBlock(field, 501, 500), ContrastClass::Background);
}

TEST_F(ContrastTests, CallEverythingBackgroundOnABackgroundOfZero) {
    SetBackground(0, 0, 0);
    EXPECT_EQ(ClassifyReduced(0.0F, 0.0F, 0.0F), ContrastClass::Background);    // undefined contrast
    EXPECT_EQ(ClassifyReduced(50.0F, 50.0F, 50.0F), ContrastClass::Background); // infinite contrast
    painter.Set(500, 500, {88, 92, 98});
    EXPECT_EQ(ClassifyPixel(field, 500, 500), ContrastClass::Background);
    EXPECT_EQ(ClassifyPixelByBlock(field, 501, 500), ContrastClass::Background);
}

TEST_F(ContrastTests, InterpolateOnTheLineThroughTheBlockCentresAlongX) {
    for (int gx = 0; gx < gridSize; ++gx) {
        for (int gy = 0; gy < gridSize; ++gy)
            field.measured.background.SetMeasured(0, gx, gy, static_cast<float>(100 + 10 * gx));
    }
    // Column 20 starts at x 80: block 1, offset 3. Along x: (110 - 100) * 3 / 77 + 105; along y: 110.
    const float alongX = 10.0F * 3 / 77 + 105;
    EXPECT_EQ(InterpolateBackground(field.measured.background, 1, 20, 100), (alongX + 110) / 2);
    // Column 30: x 120, offset 43, past the centre: (120 - 110) * 43 / 77 - 60 + 165.
    const float pastCentre = 10.0F * 43 / 77 - 60 + 165;
    EXPECT_EQ(InterpolateBackground(field.measured.background, 1, 30, 100), (pastCentre + 110) / 2);
}

TEST_F(ContrastTests, InterpolateOnTheLineThroughTheBlockCentresAlongY) {
    for (int gx = 0; gx < gridSize; ++gx) {
        for (int gy = 0; gy < gridSize; ++gy)
            field.measured.background.SetMeasured(0, gx, gy, static_cast<float>(100 + 10 * gy));
    }
    // Row 17: y 68, block 1, offset 4: (110 - 100) * 4 / 64 + 105. Row 24: offset 32: (120 - 110) / 2 - 60 +
    // 165.
    EXPECT_EQ(InterpolateBackground(field.measured.background, 1, 100, 17), (110 + 105.625F) / 2);
    EXPECT_EQ(InterpolateBackground(field.measured.background, 1, 100, 24), (110 + 110.0F) / 2);
}

TEST_F(ContrastTests, InterpolateAtTheFramesEdgeWithTheNeighbourInTheFlatArray) {
    SetBackground(100, 40, 40);
    field.measured.background.SetMeasured(0, 2, 15, 180.0F);
    // Column 60 lies in block column 3; its row -1 is the last row of block column 2. Row 1: offset 4 of 64.
    const float alongY = (100.0F - 180.0F) * 4 / 64 + 140;
    EXPECT_EQ(InterpolateBackground(field.measured.background, 1, 60, 1), (100 + alongY) / 2);
    // Column 300 lies in block column 15, whose row 16 is green's first cell. Row 255: offset 60.
    const float lastRow = (40.0F - 100.0F) * 60 / 64 - 20 + 150;
    EXPECT_EQ(InterpolateBackground(field.measured.background, 1, 300, 255), (100 + lastRow) / 2);
}

TEST_F(ContrastTests, InterpolateInTheFirstBlockAsIfTheGridWentOnEvenly) {
    SetBackground(100, 40, 40);
    field.measured.background.SetMeasured(0, 1, 0, 100.0F);
    EXPECT_EQ(InterpolateBackground(field.measured.background, 1, 0, 0), 100.0F);
}

TEST_F(ContrastTests, StayDefinedBesideTheFrame) {
    SetBackground(100, 100, 100);
    painter.Set(0, 0, {88, 92, 98});
    EXPECT_EQ(ClassifyPixel(field, -3, -3), ContrastClass::Match) << "the nearest pixel answers";
    EXPECT_EQ(ClassifyPixel(field, 5000, 5000), ContrastClass::Background);
    field.measured.background.SetFitted(0, 0, 0, 50.0F); // what blue reads below the last block
    field.measured.reduced.Set(0, 307, 256, 88.0F);
    field.measured.reduced.Set(1, 307, 256, 92.0F);
    field.measured.reduced.Set(2, 307, 256, 49.0F);
    EXPECT_EQ(ClassifyReducedPixelByBlock(field, 307, 256), ContrastClass::Match);
}

class ContrastTableTests : public ContrastTests {
protected:
    /// Holds the table's answers for every intensity equal to the plain formula's.
    void ExpectTableAsFormula(int x4, int y4) {
        ContrastTable& table = field.scratch.contrastTable;
        table.Prepare(settings, field.measured.background);
        const ContrastTable::Matches& matches = table.MatchesAt(x4, y4);
        const float background = std::trunc(InterpolateBackground(field.measured.background, 1, x4, y4));
        for (std::size_t intensity = 0; intensity < 256; ++intensity) {
            for (std::size_t channel = 0; channel < 3; ++channel) {
                EXPECT_EQ((matches[intensity] >> channel & 1U) != 0,
                          WithinTolerance(Contrast(static_cast<float>(intensity), background),
                                          settings.targetContrast[channel], settings.contrastTolerance))
                    << "intensity " << intensity << " on " << background;
            }
        }
    }
};

TEST_F(ContrastTableTests, AnswersAsTheFormulaForBackgroundsOfEveryKind) {
    for (const float level :
         {0.0F, 1.0F, 99.5F, 255.0F, 256.0F, -3.0F, 1e30F, std::numeric_limits<float>::infinity(),
          std::numeric_limits<float>::quiet_NaN()}) {
        SetBackground(level, 0, 0);
        ExpectTableAsFormula(100, 100);
        ExpectTableAsFormula(307, 256);
    }
}

TEST_F(ContrastTableTests, FollowsTheBackgroundAndTheCellsBesideItsColumns) {
    SetBackground(100, 100, 100);
    ExpectTableAsFormula(300, 255);
    field.measured.background.SetMeasured(1, 0, 0, 20.0F); // read as row 16 of red's last column
    ExpectTableAsFormula(300, 255);
    field.measured.background.SetMeasured(0, 0, 0, 180.0F); // read as row -1 of red's first column, too
    ExpectTableAsFormula(3, 1);
}

TEST_F(ContrastTableTests, FollowsTheSettings) {
    SetBackground(100, 100, 100);
    ExpectTableAsFormula(100, 100);
    settings.contrastTolerance = 20.0F;
    ExpectTableAsFormula(100, 100);
    settings.targetContrast = {30.0F, 20.0F, 10.0F};
    ExpectTableAsFormula(100, 100);
    settings.contrastTolerance = std::numeric_limits<float>::quiet_NaN();
    ExpectTableAsFormula(100, 100);
}

} // namespace
} // namespace tessaro
