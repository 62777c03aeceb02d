#include "focus/focus_measures.h"
#include "reference/plain_focus.h"

#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <vector>

namespace tessaro {
namespace {

/// A channel plane by row and column, as the measures count them.
class Plane {
public:
    explicit Plane(float value = 100.0F) : m_values(308 * 257, value) {}

    float& At(int row, int column) {
        return m_values[static_cast<std::size_t>(row) * 257 + static_cast<std::size_t>(column)];
    }
    const float* Data() const { return m_values.data(); }

private:
    std::vector<float> m_values;
};

TEST(PlaneDeviation, OfAnEvenPlaneIsZero) {
    EXPECT_EQ(PlaneDeviation(Plane(77.0F).Data()), 0.0F);
}

TEST(PlaneDeviation, IsThatOfTheWholePopulation) {
    Plane plane(0.0F);
    for (int row = 0; row < 154; ++row)
        for (int column = 0; column < 257; ++column)
            plane.At(row, column) = 10.0F;
    EXPECT_EQ(PlaneDeviation(plane.Data()), 5.0F); // half 0, half 10: each 5 from the mean
}

TEST(PlaneLaplacian, OfAnEvenPlaneHasNothingToMeasure) {
    EXPECT_EQ(PlaneLaplacian(Plane().Data(), 1), 0.0001F);
    EXPECT_EQ(PlaneLaplacian(Plane().Data(), 5), 0.0001F);
}

TEST(PlaneLaplacian, LeavesOutStepsOfExactlyTwo) {
    Plane exactly(100.0F);
    Plane above(100.0F);
    for (int row = 0; row < 308; ++row) {
        for (int column = 0; column < 257; ++column) {
            exactly.At(row, column) = row % 2 == 0 ? 100.0F : 102.0F;
            above.At(row, column) = row % 2 == 0 ? 100.0F : 102.25F;
        }
    }
    EXPECT_EQ(PlaneLaplacian(exactly.Data(), 1), 0.0001F);
    EXPECT_EQ(PlaneLaplacian(above.Data(), 1), 0.045F); // |2v - a - b| = 4.5 everywhere
}

TEST(PlaneLaplacian, LooksForStepsAlongTheRowIndexOnly) {
    Plane columns(100.0F);
    for (int row = 0; row < 308; ++row)
        for (int column = 0; column < 257; column += 2)
            columns.At(row, column) = 200.0F;
    EXPECT_EQ(PlaneLaplacian(columns.Data(), 1), 0.0001F);
}

/// Single bright cells far apart: each counts three times along the row index.
float LaplacianOfSpots(int spots, int extraSteps) {
    Plane plane(100.0F);
    for (int i = 0; i < spots; ++i)
        plane.At(50, 20 + 20 * i) = 110.0F;
    for (int i = 0; i < extraSteps; ++i)
        plane.At(0, 20 + 20 * i) = 110.0F; // in the border: only the neighbour below counts
    return PlaneLaplacian(plane.Data(), 1);
}

TEST(PlaneLaplacian, NeedsElevenCells) {
    EXPECT_EQ(LaplacianOfSpots(3, 1), 0.0001F) << "ten cells";
    // A spot gives |20| + |20|; the cells beside it along the row index |10| each. Nine cells of three spots
    // and two beside the border: (3 * (40 + 10 + 10) + 2 * 10) / 11 / 100.
    EXPECT_EQ(LaplacianOfSpots(3, 2), static_cast<float>(200.0 / 11 / 100.0)) << "eleven cells";
}

TEST(PlaneLaplacian, CountsACellForEitherNeighbour) {
    for (const int distance : {1, 5}) {
        Plane plane(100.0F);
        for (int row = 100; row < 308; ++row)
            for (int column = 0; column < 257; ++column)
                plane.At(row, column) = 150.0F;
        // Beside the one edge every counted cell has |2v - a - b| = 50, across it nothing.
        EXPECT_EQ(PlaneLaplacian(plane.Data(), distance), 0.5F) << distance;
    }
}

TEST(PlaneLaplacian, LeavesOutABorderAsWideAsItsDistance) {
    Plane plane(100.0F);
    for (int column = 0; column < 257; ++column) {
        plane.At(0, column) = 200.0F;
        plane.At(307, column) = 200.0F;
    }
    // Distance 1: rows 1 and 306 see the edge; 0 and 307 themselves are not looked at.
    EXPECT_EQ(PlaneLaplacian(plane.Data(), 1), 1.0F);
    Plane corner(100.0F);
    for (int row = 0; row < 308; ++row)
        for (int column = 0; column < 5; ++column)
            corner.At(row, column) = row % 2 == 0 ? 0.0F : 50.0F;
    EXPECT_EQ(PlaneLaplacian(corner.Data(), 5), 0.0001F) << "columns 0 to 4 lie in the border";
}

TEST(FocusMeasures, OfAnEvenFrameFallBackOnTheFixedFactor) {
    const auto reduced = std::make_unique<ReducedImage>();
    const FocusFigures figures = MeasureFocus(*reduced);
    EXPECT_EQ(figures.deviation, 0.0F);
    EXPECT_EQ(figures.laplaceS, 0.0001F);
    EXPECT_EQ(figures.laplaceM, 0.0001F);
    EXPECT_EQ(figures.focusValue, 0.0001F * 10.0F);
}

/// Every plane half at one value and half at another: a deviation of half the difference.
FocusFigures FiguresOfHalves(float difference) {
    const auto reduced = std::make_unique<ReducedImage>();
    for (int channel = 0; channel < 3; ++channel)
        for (int column = 0; column < 154; ++column)
            for (int row = 0; row < 257; ++row)
                reduced->Set(channel, column, row, difference);
    return MeasureFocus(*reduced);
}

TEST(FocusMeasures, DivideByTheDeviationOnlyAboveATenth) {
    const FocusFigures below = FiguresOfHalves(0.1875F);
    EXPECT_EQ(below.deviation, 0.09375F);
    EXPECT_EQ(below.focusValue, 0.0001F * 10.0F);
    const FocusFigures above = FiguresOfHalves(0.25F);
    EXPECT_EQ(above.deviation, 0.125F);
    EXPECT_EQ(above.focusValue, 0.0001F * 300.0F / 0.125F);
}

TEST(FocusMeasures, AreTheMeansOfTheThreePlanes) {
    const auto reduced = std::make_unique<ReducedImage>();
    for (int column = 0; column < 154; ++column)
        for (int row = 0; row < 257; ++row)
            reduced->Set(1, column, row, 60.0F);
    const FocusFigures figures = MeasureFocus(*reduced);
    EXPECT_EQ(figures.deviation, 10.0F);                            // 30 in one plane of three
    EXPECT_EQ(figures.laplaceM, (0.0001F + 0.6F + 0.0001F) / 3.0F); // |2v - a - b| = 60
    EXPECT_EQ(figures.focusValue, figures.laplaceM * 300.0F / 10.0F);
}

/// By how much the values stray around an uneven background.
class FocusMeasuresOfAnyField : public testing::TestWithParam<int> {};

TEST_P(FocusMeasuresOfAnyField, EqualThePlainTranscription) {
    const int spread = GetParam();
    std::mt19937 random(static_cast<std::uint32_t>(spread));
    const auto reduced = std::make_unique<ReducedImage>();
    for (int channel = 0; channel < 3; ++channel)
        for (int column = 0; column < 308; ++column)
            for (int row = 0; row < 257; ++row) {
                const int level = 80 + column / 8 + row / 16;
                reduced->Set(channel, column, row,
                             static_cast<float>(level) +
                                 static_cast<float>(random() % static_cast<unsigned>(16 * spread + 1)) /
                                     16.0F);
            }
    const FocusFigures figures = MeasureFocus(*reduced);
    const reference::FocusMeasures plain = reference::MeasurePlanes(reduced->Plane(0));
    EXPECT_EQ(figures.deviation, plain.deviation);
    EXPECT_EQ(figures.laplaceS, plain.laplaceS);
    EXPECT_EQ(figures.laplaceM, plain.laplaceM);
    EXPECT_EQ(figures.focusValue, plain.focusValue);
}

INSTANTIATE_TEST_SUITE_P(Spreads, FocusMeasuresOfAnyField, testing::Values(0, 1, 2, 3, 10, 100));

} // namespace
} // namespace tessaro
