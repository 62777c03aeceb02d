#include "analysis/background_grid.h"

#include <gtest/gtest.h>

namespace tessaro {
namespace {

TEST(BackgroundGrid, KeepsMeasuredAndFittedApart) {
    BackgroundGrid grid;
    grid.SetMeasured(1, 2, 3, 5.0F);
    grid.SetFitted(1, 2, 3, 7.0F);
    EXPECT_EQ(grid.Measured(1, 2, 3), 5.0F);
    EXPECT_EQ(grid.Fitted(1, 2, 3), 7.0F);
}

TEST(BackgroundGrid, ReadsTheNeighbouringCellOfTheFlatArrayBesideAColumn) {
    BackgroundGrid grid;
    grid.SetMeasured(0, 4, 15, 11.0F);
    grid.SetMeasured(0, 6, 0, 12.0F);
    grid.SetMeasured(1, 0, 0, 13.0F);
    grid.SetFitted(0, 0, 0, 14.0F);
    EXPECT_EQ(grid.Measured(0, 5, -1), 11.0F);
    EXPECT_EQ(grid.Measured(0, 5, 16), 12.0F);
    EXPECT_EQ(grid.Measured(0, 15, 16), 13.0F) << "the next channel's first cell";
    EXPECT_EQ(grid.Measured(2, 15, 16), 14.0F) << "the fitted set's first cell";
}

TEST(BackgroundGrid, ReadsTheNearestCellBesideTheArray) {
    BackgroundGrid grid;
    grid.SetMeasured(0, 0, 0, 21.0F);
    grid.SetFitted(2, 15, 15, 22.0F);
    EXPECT_EQ(grid.Measured(0, 0, -1), 21.0F);
    EXPECT_EQ(grid.Fitted(2, 15, 16), 22.0F);
}

} // namespace
} // namespace tessaro
