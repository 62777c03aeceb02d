#include "rendered_levels.h"
#include "twin/truth.h"

#include <gtest/gtest.h>

namespace tessaro {
namespace {

TEST(WaferTruth, ListsFlakesInMicrometresOfTheStage) {
    WaferContents contents;
    contents.flakes.push_back({.outline = SquareAround({100.5, 200.0}, 10.0), .layers = 1});
    contents.flakes.push_back({.outline = {{0, 0}, {0, 3}, {6, 0}}, .layers = bulkWaferLayers});
    contents.scratches.push_back({.from = {1, 1}, .to = {9, 9}, .widthUm = 1.0});
    EXPECT_EQ(WaferTruthJson(Wafer({}, contents)), R"({"flakes":[
{"layers":1,"area":100.000,"centre":[100.500,200.000],"outline":[[95.500,195.000],[105.500,195.000],[105.500,205.000],[95.500,205.000]]},
{"layers":100,"area":9.000,"centre":[2.000,1.000],"outline":[[0.000,0.000],[0.000,3.000],[6.000,0.000]]}]}
)");
}

TEST(WaferTruth, OfABareWaferHasNoFlakes) {
    EXPECT_EQ(WaferTruthJson(BareWafer()), "{\"flakes\":[]}\n");
}

} // namespace
} // namespace tessaro
