#include "focus/focus_measures.h"
#include "reference/plain_focus.h"

#include <gtest/gtest.h>

#include <cmath>
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

/// Eleven cells in one row, each `step` off the cell beyond the border and level with all others.
float LaplacianBesideBorder(int borderRow, float step) {
    Plane plane(100.0F);
    for (int column = 20; column < 31; ++column)
        plane.At(borderRow, column) = 100.0F + step;
    return PlaneLaplacian(plane.Data(), 1);
}

TEST(PlaneLaplacian, CountsACellForTheOneNeighbourThatDiffers) {
    EXPECT_EQ(LaplacianBesideBorder(0, 50.0F), 0.5F) << "before, brighter";
    EXPECT_EQ(LaplacianBesideBorder(0, -50.0F), 0.5F) << "before, darker";
    EXPECT_EQ(LaplacianBesideBorder(307, 50.0F), 0.5F) << "behind, brighter";
    EXPECT_EQ(LaplacianBesideBorder(307, -50.0F), 0.5F) << "behind, darker";
    EXPECT_EQ(LaplacianBesideBorder(0, 2.0F), 0.0001F);
    EXPECT_EQ(LaplacianBesideBorder(307, 2.0F), 0.0001F);
}

TEST(PlaneLaplacian, AddsWhatACellDiffersAcrossOnlyWhereItCounts) {
    Plane plane(100.0F);
    for (int column = 20; column < 31; ++column)
        plane.At(0, column) = 150.0F;
    plane.At(1, 19) = 102.0F; // too little to count; |2v - l - q| of the cell beside it is 2
    plane.At(200, 100) = 102.0F;
    // Eleven cells with 50 along, the first with 2 across.
    EXPECT_EQ(PlaneLaplacian(plane.Data(), 1), static_cast<float>(552.0 / 11 / 100.0));
}

TEST(PlaneLaplacian, OfAPlaneTooSmallForTheDistanceHasNothingToMeasure) {
    Plane plane(0.0F);
    for (int row = 0; row < 154; ++row)
        for (int column = 0; column < 257; ++column)
            plane.At(row, column) = 100.0F;
    EXPECT_EQ(PlaneLaplacian(plane.Data(), 128), 1.0F) << "one column of 52 cells, each 100 from a neighbour";
    EXPECT_EQ(PlaneLaplacian(plane.Data(), 129), 0.0001F);
    EXPECT_EQ(PlaneLaplacian(plane.Data(), 200), 0.0001F);
}

TEST(PlaneLaplacian, AddsCellAfterCell) {
    Plane plane(100.0F);
    for (int row = 1; row < 308; row += 2)
        for (int column = 0; column < 257; ++column)
            plane.At(row, column) = 107.0F;
    plane.At(0, 1) = -0x1p57F;
    plane.At(1, 0) = -18476718080.0F;
    // The first cell adds 2^57 + 18476718080, next to which each 14 of the 78,029 others is lost. The mean
    // lies just below the middle of two floats: the rest of the first row, added up first, would tip it.
    EXPECT_EQ(PlaneLaplacian(plane.Data(), 1), 18469203968.0F);
    EXPECT_EQ(reference::PlaneLaplacian(plane.Data(), 1), 18469203968.0F);
}

TEST(PlaneDeviation, AddsValueAfterValue) {
    Plane plane(2.0F);
    for (int i = 0; i < 308 * 257; i += 2)
        plane.At(i / 257, i % 257) = -2.0F;
    plane.At(0, 0) = -250459136.0F;
    plane.At(0, 1) = 250459136.0F;
    plane.At(0, 2) = -170031.0F;
    plane.At(0, 3) = 170031.0F;
    // The mean is 0. Next to the first four squares each 4 of the others is lost; the root lies just below
    // the middle of two floats.
    EXPECT_EQ(PlaneDeviation(plane.Data()), 1258954.5F);
    EXPECT_EQ(reference::PlaneDeviation(plane.Data()), 1258954.5F);
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
    const FocusFigures edge = FiguresOfHalves(0.2F);
    ASSERT_EQ(edge.deviation, 0.1F);
    EXPECT_EQ(edge.focusValue, 0.0001F * 10.0F) << "in single precision it is not above";
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

void ExpectThePlainFigures(const ReducedImage& reduced) {
    const FocusFigures figures = MeasureFocus(reduced);
    const reference::FocusMeasures plain = reference::MeasurePlanes(reduced.Plane(0));
    EXPECT_EQ(figures.deviation, plain.deviation);
    EXPECT_EQ(figures.laplaceS, plain.laplaceS);
    EXPECT_EQ(figures.laplaceM, plain.laplaceM);
    EXPECT_EQ(figures.focusValue, plain.focusValue);
    EXPECT_EQ(MeasureFocusScore(reduced), plain.laplaceM);
    for (int channel = 0; channel < 3; ++channel) {
        const float* plane = reduced.Plane(channel);
        EXPECT_EQ(PlaneDeviation(plane), reference::PlaneDeviation(plane));
        for (const int distance : {1, 2, 5, 100, 128})
            EXPECT_EQ(PlaneLaplacian(plane, distance), reference::PlaneLaplacian(plane, distance))
                << distance;
    }
}

/// Every value of the three planes by a function of channel, column and row.
template<typename Value>
std::unique_ptr<ReducedImage> ReducedImageOf(Value value) {
    auto reduced = std::make_unique<ReducedImage>();
    for (int channel = 0; channel < 3; ++channel)
        for (int column = 0; column < 308; ++column)
            for (int row = 0; row < 257; ++row)
                reduced->Set(channel, column, row, value(channel, column, row));
    return reduced;
}

/// By how much the values stray around an uneven background.
class FocusMeasuresOfAnyField : public testing::TestWithParam<int> {};

TEST_P(FocusMeasuresOfAnyField, EqualThePlainTranscription) {
    const int spread = GetParam();
    std::mt19937 random(static_cast<std::uint32_t>(spread));
    const auto reduced = ReducedImageOf([&](int, int column, int row) {
        const int level = 80 + column / 8 + row / 16;
        return static_cast<float>(level) +
               static_cast<float>(random() % static_cast<unsigned>(16 * spread + 1)) / 16.0F;
    });
    ExpectThePlainFigures(*reduced);
}

INSTANTIATE_TEST_SUITE_P(Spreads, FocusMeasuresOfAnyField, testing::Values(0, 1, 2, 3, 10, 100));

struct Magnitudes {
    int lowest;  // powers of two
    int highest; // below 128, so that all are finite
};

/// What no frame has, too.
class FocusMeasuresOfAnyFloats : public testing::TestWithParam<Magnitudes> {};

TEST_P(FocusMeasuresOfAnyFloats, EqualThePlainTranscription) {
    const auto [lowest, highest] = GetParam();
    for (std::uint32_t seed = 1; seed <= 5; ++seed) {
        std::mt19937 random(seed);
        const auto reduced = ReducedImageOf([&, from = lowest, to = highest](int, int, int) {
            const auto mantissa = static_cast<float>(random() >> 8U) / 16777216.0F + 1.0F;
            const int exponent = from + static_cast<int>(random() % static_cast<unsigned>(to - from + 1));
            return std::ldexp(random() % 2 == 0 ? mantissa : -mantissa, exponent);
        });
        SCOPED_TRACE(seed);
        ExpectThePlainFigures(*reduced);
    }
}

INSTANTIATE_TEST_SUITE_P(FromTinyToHuge, FocusMeasuresOfAnyFloats,
                         testing::Values(Magnitudes{-2, 2}, Magnitudes{-20, 20}, Magnitudes{-149, -100},
                                         Magnitudes{100, 125}, Magnitudes{120, 127}, Magnitudes{-149, 127}));

} // namespace
} // namespace tessaro
