#include "rendered_levels.h"
#include "twin/sensor_renderer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace tessaro {
namespace {

constexpr StagePosition middle = {2000.0, 2000.0, 0.0};

/// Centre of what is darker than bare substrate, in sensor pixels from the mosaic's top left corner.
Vertex CentreOfDarkness(const Wafer& wafer, const StagePosition& position) {
    const Mosaic bare = Rendered(BareWafer(), position);
    const Mosaic mosaic = Rendered(wafer, position);
    double dark = 0.0;
    Vertex sum;
    for (int row = 0; row < twinSensorHeight; ++row)
        for (int column = 0; column < twinSensorWidth; ++column) {
            const double darkness = bare.At(column, row) - mosaic.At(column, row);
            dark += darkness;
            sum = {sum.x + darkness * (column + 0.5), sum.y + darkness * (row + 0.5)};
        }
    return {sum.x / dark, sum.y / dark};
}

TEST(SensorRenderer, ShowsAFlakeRightAndUpOfTheMiddleWhereItLiesFromTheStage) {
    const Wafer wafer = WaferWithSquare({2100.0, 2050.0}, 20.0, bulkWaferLayers);
    const Vertex centre = CentreOfDarkness(wafer, middle);
    EXPECT_NEAR(centre.x, 1232.0 + 100.0 * sensorPixelsPerUm, 0.05);
    EXPECT_NEAR(centre.y, 1028.0 - 50.0 * sensorPixelsPerUm, 0.05);
}

TEST(SensorRenderer, FollowsTheStageByFractionsOfAPixel) {
    const Wafer wafer = WaferWithSquare({1980.0, 2010.0}, 20.0, bulkWaferLayers);
    const Vertex before = CentreOfDarkness(wafer, middle);
    const Vertex after = CentreOfDarkness(wafer, {middle.x + 0.07, middle.y + 0.05, 0.0});
    EXPECT_NEAR(after.x - before.x, -0.07 * sensorPixelsPerUm, 0.03);
    EXPECT_NEAR(after.y - before.y, 0.05 * sensorPixelsPerUm, 0.03);
}

TEST(SensorRenderer, BareSubstrateIsGreyAtTheDefaultLevelInTheMiddle) {
    const Mosaic mosaic = Rendered(BareWafer(), middle);
    for (int sample = 0; sample < 4; ++sample)
        EXPECT_NEAR(mosaic.MeanAround(middleCellColumn, middleCellRow, sample), defaultSubstrateLevel, 0.2);
}

TEST(SensorRenderer, LightFallsOffTowardTheCornersByFourPercent) {
    const Mosaic mosaic = Rendered(BareWafer(), middle);
    for (const int column : {10, 1221})
        for (const int row : {10, 1017})
            EXPECT_NEAR(mosaic.MeanAround(column, row, 1, 10), defaultSubstrateLevel * 0.96, 0.6);
}

/// Contrast of the four samples of a cell in the middle of a flake, in percent.
std::array<double, 4> MeasuredContrast(const WaferOptions& options, int layers) {
    const Mosaic bare = Rendered(BareWafer(), middle);
    const Mosaic mosaic = Rendered(WaferWithSquare({2000.0, 2000.0}, 40.0, layers, options), middle);
    std::array<double, 4> contrast = {};
    for (int sample = 0; sample < 4; ++sample)
        contrast[static_cast<std::size_t>(sample)] =
            (mosaic.MeanAround(middleCellColumn, middleCellRow, sample) /
                 bare.MeanAround(middleCellColumn, middleCellRow, sample) -
             1.0) *
            100.0;
    return contrast;
}

TEST(SensorRenderer, LayersOfGrapheneTakeEachTheSameShareOfTheLight) {
    struct Case {
        int layers;
        double red, green, blue; // 100 * ((1 + contrast / 100)^layers - 1)
    };
    constexpr std::array cases = {Case{1, -12.0, -8.0, -2.0}, Case{2, -22.56, -15.36, -3.96},
                                  Case{3, -31.85, -22.13, -5.88}, Case{5, -47.23, -34.09, -9.61},
                                  Case{100, -100.0, -99.98, -86.74}};
    for (const Case& expected : cases) {
        const std::array<double, 4> contrast = MeasuredContrast({}, expected.layers);
        EXPECT_NEAR(contrast[0], expected.red, 0.5) << expected.layers;
        EXPECT_NEAR(contrast[1], expected.green, 0.5) << expected.layers;
        EXPECT_NEAR(contrast[2], expected.green, 0.5) << expected.layers;
        EXPECT_NEAR(contrast[3], expected.blue, 0.5) << expected.layers;
    }
}

TEST(SensorRenderer, ColoursAreThoseOfTheMaterialOnItsSubstrate) {
    struct Case {
        Material material;
        Substrate substrate;
        double red, green, blue;
    };
    constexpr std::array cases = {Case{Material::hbn, Substrate::sio2, -20.0, 17.0, 3.0},
                                  Case{Material::hbn, Substrate::glass, 3.0, 6.0, 9.0},
                                  Case{Material::hbn, Substrate::sapphire, -20.0, 17.0, 3.0},
                                  Case{Material::tmdc, Substrate::sio2, -80.0, 20.0, 0.0},
                                  Case{Material::graphene, Substrate::glass, -12.0, -8.0, -2.0}};
    for (const Case& expected : cases) {
        WaferOptions options;
        options.material = expected.material;
        options.substrate = expected.substrate;
        const std::array<double, 4> contrast = MeasuredContrast(options, 1);
        EXPECT_NEAR(contrast[0], expected.red, 0.5);
        EXPECT_NEAR(contrast[1], expected.green, 0.5);
        EXPECT_NEAR(contrast[3], expected.blue, 0.5);
    }
}

TEST(SensorRenderer, ManyLayersThatBrightenEndAsAMirrorThatSaturates) {
    WaferOptions options;
    options.material = Material::hbn;
    const Mosaic mosaic = Rendered(WaferWithSquare({2000.0, 2000.0}, 40.0, bulkWaferLayers, options), middle);
    EXPECT_EQ(mosaic.MeanAround(middleCellColumn, middleCellRow, 1), 255.0);
    EXPECT_LT(mosaic.MeanAround(middleCellColumn, middleCellRow, 0), 1.0);
}

TEST(SensorRenderer, TheSameRequestGivesTheSameBytesWhateverWasDrawnBefore) {
    const Wafer wafer{WaferOptions()};
    const Mosaic first = Rendered(wafer, {1500.0, 1700.0, 3.0}, {}, 7);
    SensorRenderer renderer(wafer);
    Mosaic second;
    renderer.Render({10.0, 20.0, 30.0}, {}, 5, second.bytes);
    renderer.Render({1500.0, 1700.0, 3.0}, {}, 7, second.bytes);
    EXPECT_EQ(first.bytes, second.bytes);
    renderer.Render({1500.0, 1700.0, 3.0}, {}, 7, second.bytes); // from the picture that was kept
    EXPECT_EQ(first.bytes, second.bytes);
    renderer.Render({1500.0, 1700.0, 3.0}, {}, 8, second.bytes);
    EXPECT_NE(first.bytes, second.bytes);
}

TEST(SensorRenderer, AnotherSeedMakesAnotherWafer) {
    WaferOptions other;
    other.seed = 2;
    EXPECT_NE(Rendered(Wafer(WaferOptions()), middle).bytes, Rendered(Wafer(other), middle).bytes);
}

/// Variance of the noise of single samples in the middle, from two frames.
double NoiseVariance(const ExposureSettings& exposure) {
    const Wafer wafer = BareWafer();
    const Mosaic one = Rendered(wafer, middle, exposure, 1);
    const Mosaic other = Rendered(wafer, middle, exposure, 2);
    double squares = 0.0;
    int count = 0;
    for (int row = 800; row < 1200; ++row)
        for (int column = 1000; column < 1400; ++column, ++count)
            squares += std::pow(one.At(column, row) - other.At(column, row), 2);
    return squares / count / 2.0;
}

constexpr double roundingVariance = 1.0 / 12.0;

TEST(SensorRenderer, NoiseIsThatOfThePhotonsAndTheReadOut) {
    // 30 electrons a level: a level of 140 has a variance of 140 / 30; reading out adds 0.4 levels. By
    // how much the pixels differ is the same in both frames.
    EXPECT_NEAR(NoiseVariance({}), 140.0 / 30.0 + 0.16 + roundingVariance, 0.1);
}

TEST(SensorRenderer, GainAmplifiesTheNoiseMoreThanALongerExposureDoes) {
    ExposureSettings amplified;
    amplified.exposureTimeUs = 5'000.0;
    amplified.gainDb = 20.0 * std::log10(2.0);
    EXPECT_NEAR(NoiseVariance(amplified), 2.0 * 140.0 / 30.0 + 4.0 * 0.16 + roundingVariance, 0.2);
}

TEST(SensorRenderer, PixelsDifferInTheSameWayInEveryFrame) {
    const Wafer bare = BareWafer();
    const Mosaic first = Rendered(bare, middle, {}, 1);
    const Mosaic second = Rendered(bare, middle, {}, 2);
    double together = 0.0;
    constexpr int pixels = 10'000;
    for (int i = 0; i < pixels; ++i) { // one sample of cells in the middle
        const int column = 2 * (middleCellColumn + i % 100 - 50);
        const int row = 2 * (middleCellRow + i / 100 - 50);
        together += (first.At(column, row) - 140.0) * (second.At(column, row) - 140.0) / pixels;
    }
    EXPECT_NEAR(together, 0.49, 0.15) << "of the noise nothing comes again";
}

double MiddleLevel(const ExposureSettings& exposure, int sample = 1) {
    return Rendered(BareWafer(), middle, exposure).MeanAround(middleCellColumn, middleCellRow, sample);
}

TEST(SensorRenderer, LevelsGrowWithExposureTimeAndGain) {
    EXPECT_NEAR(MiddleLevel({.exposureTimeUs = 5'000.0}), 70.0, 0.2);
    EXPECT_NEAR(MiddleLevel({.exposureTimeUs = 15'000.0}), 210.0, 0.2);
    EXPECT_NEAR(MiddleLevel({.exposureTimeUs = 10'000.0, .gainDb = -20.0}), 14.0, 0.2);
    EXPECT_NEAR(MiddleLevel({.exposureTimeUs = 2'500.0, .gainDb = 20.0 * std::log10(2.0)}), 70.0, 0.2);
}

TEST(SensorRenderer, BalanceScalesEachChannelByItself) {
    const ExposureSettings exposure = {.balanceRatios = {0.5, 1.0, 1.5}};
    EXPECT_NEAR(MiddleLevel(exposure, 0), 70.0, 0.2);
    EXPECT_NEAR(MiddleLevel(exposure, 1), 140.0, 0.2);
    EXPECT_NEAR(MiddleLevel(exposure, 2), 140.0, 0.2);
    EXPECT_NEAR(MiddleLevel(exposure, 3), 210.0, 0.2);
}

TEST(SensorRenderer, TooMuchLightSaturates) {
    const Mosaic mosaic = Rendered(BareWafer(), middle, {.exposureTimeUs = 100'000.0});
    EXPECT_EQ(std::ranges::min(mosaic.bytes), 255);
}

TEST(SensorRenderer, WithoutExposureThereIsOnlyTheReadOutNoise) {
    const Mosaic mosaic = Rendered(BareWafer(), middle, {.exposureTimeUs = 0.0});
    EXPECT_LE(std::ranges::max(mosaic.bytes), 3);
    EXPECT_GT(std::ranges::max(mosaic.bytes), 0);
}

/// Columns of the sensor, in whole cells.
struct Columns {
    int first = 400;
    int last = 2000;
};

/// Sum of squared steps between red neighbours along the middle rows, less the noise's.
double Sharpness(const Wafer& wafer, double z, const Columns& columns = {}) {
    const Mosaic mosaic = Rendered(wafer, {middle.x, middle.y, z});
    const Mosaic bare = Rendered(BareWafer(), middle);
    double sum = 0.0;
    for (int row = 900; row < 1100; row += 2)
        for (int column = columns.first; column < columns.last; column += 2)
            sum += std::pow(mosaic.At(column + 2, row) - mosaic.At(column, row), 2) -
                   std::pow(bare.At(column + 2, row) - bare.At(column, row), 2);
    return sum;
}

TEST(SensorRenderer, IsSharpAtOneMicrometreFromTheFocusSoftAtFiveAndLosesMoreAndMore) {
    const Wafer wafer = WaferWithSquare({2000.0, 2000.0}, 60.0, bulkWaferLayers);
    const double focused = Sharpness(wafer, 0.0);
    // Of an edge the squares go with one over its deviation: with a pixel's own, 0.70, 0.93 and 3.2 pixels.
    EXPECT_GT(Sharpness(wafer, 1.0), focused * 0.6);
    EXPECT_LT(Sharpness(wafer, 5.0), focused * 0.3);
    double last = focused;
    for (const double z : {0.5, 1.0, 1.5, 2.0, 3.0, 4.0, 5.0, 7.0, 10.0, 20.0}) {
        const double sharpness = Sharpness(wafer, z);
        EXPECT_LT(sharpness, last) << z;
        last = sharpness;
    }
}

TEST(SensorRenderer, StructureIsLeftSomeTensOfMicrometresFromTheFocus) {
    const Wafer wafer = WaferWithSquare({2000.0, 2000.0}, 60.0, bulkWaferLayers);
    double last = 0.0;
    for (const double z : {20.0, 50.0, 100.0, 200.0, 400.0}) {
        const double level =
            Rendered(wafer, {middle.x, middle.y, z}).MeanAround(middleCellColumn, middleCellRow, 0, 5);
        EXPECT_GT(level, last) << z;
        last = level;
    }
    EXPECT_LT(Rendered(wafer, {middle.x, middle.y, 50.0}).MeanAround(middleCellColumn, middleCellRow, 0, 5),
              90.0);
}

TEST(SensorRenderer, BelowTheFocusLooksLikeAbove) {
    const Wafer wafer{WaferOptions()};
    EXPECT_EQ(Rendered(wafer, {2000.0, 2000.0, 4.0}).bytes, Rendered(wafer, {2000.0, 2000.0, -4.0}).bytes);
}

/// The red light in a column of cells, of the rows in the middle.
double ColumnLevel(const Mosaic& mosaic, int cell) {
    double sum = 0.0;
    for (int row = 600; row < 1400; row += 2)
        sum += mosaic.At(2 * cell, row);
    return sum / 400.0;
}

TEST(SensorRenderer, AtTheFocusAnEdgeIsAsWideAsDiffractionMakesIt) {
    const Wafer wafer = WaferWithSquare({2200.0, 2000.0}, 400.0, bulkWaferLayers); // an edge at X 2000
    for (const double z : {0.0, 1.0}) {
        const Mosaic mosaic = Rendered(wafer, {2000.0, 2000.0, z});
        double sum = 0.0;
        double first = 0.0;
        double second = 0.0;
        for (int cell = middleCellColumn - 7; cell < middleCellColumn + 7; ++cell) {
            const double step = ColumnLevel(mosaic, cell) - ColumnLevel(mosaic, cell + 1);
            const double place = cell - middleCellColumn;
            sum += step;
            first += step * place;
            second += step * place * place;
        }
        const double deviation = std::sqrt(second / sum - first * first / (sum * sum));
        const double blur = framePixelsPerUm * std::hypot(0.2567, 0.2520 * z);
        // With a sample's own width, and that of a step from one to the next.
        EXPECT_NEAR(deviation, std::sqrt(blur * blur + 1.0 / 12.0 + 1.0 / 12.0), 0.03) << z;
    }
}

TEST(SensorRenderer, BlurSpreadsAnEdgeByDiffractionAndTheConeOfLight) {
    const Wafer wafer = WaferWithSquare({2200.0, 2000.0}, 400.0, bulkWaferLayers); // an edge at X 2000
    for (const double z : {2.0, 4.7, 4.9, 6.0, 12.0, 30.0}) {
        const Mosaic mosaic = Rendered(wafer, {2000.0, 2000.0, z});
        const auto level = [&](int cell) { return ColumnLevel(mosaic, cell); };
        const auto crossing = [&](double wanted) {
            int cell = 100;
            while (level(cell + 1) > wanted)
                ++cell;
            return cell + (level(cell) - wanted) / (level(cell) - level(cell + 1));
        };
        const double sigma = framePixelsPerUm * std::hypot(0.2567, 0.2520 * z);
        const double quartiles =
            2.0 * 0.67449 * std::sqrt(sigma * sigma + 1.0 / 12.0); // with a sample's own width
        EXPECT_NEAR(crossing(35.0) - crossing(105.0), quartiles, 0.03 * quartiles + 0.05) << z;
    }
}

TEST(SensorRenderer, TheFocusFollowsTheTilt) {
    WaferOptions tilted;
    tilted.tiltUmPerUm = {0.01, -0.02};
    tilted.focusZUm = 5.0;
    const Wafer wafer = WaferWithSquare({2000.0, 2000.0}, 60.0, bulkWaferLayers, tilted);
    // 5 + 0.01 * 2000 - 0.02 * 2000
    const double focused = Sharpness(wafer, -15.0);
    EXPECT_LT(Sharpness(wafer, -16.5), focused);
    EXPECT_LT(Sharpness(wafer, -13.5), focused);
    EXPECT_GT(focused, 0.9 * Sharpness(WaferWithSquare({2000.0, 2000.0}, 60.0, bulkWaferLayers), 0.0));
}

TEST(SensorRenderer, AtTheFocusOfASlightTiltAllIsAsOnALevelWafer) {
    WaferOptions tilted;
    tilted.tiltUmPerUm = {0.0005, -0.00075};
    const Wafer wafer = WaferWithSquare({2000.0, 2000.0}, 60.0, bulkWaferLayers, tilted);
    const Wafer level = WaferWithSquare({2000.0, 2000.0}, 60.0, bulkWaferLayers);
    EXPECT_EQ(Rendered(wafer, {2000.0, 2000.0, -0.5}).bytes, Rendered(level, middle).bytes);
}

TEST(SensorRenderer, ASteepTiltHasOneSideOfTheFieldInFocusAtATime) {
    WaferContents contents;
    for (const double x : {1900.0, 2100.0})
        contents.flakes.push_back({.outline = SquareAround({x, 2000.0}, 60.0), .layers = bulkWaferLayers});
    WaferOptions tilted;
    tilted.tiltUmPerUm = {0.05, 0.0};
    tilted.focusZUm = -100.0; // 0 at X 2000
    const Wafer wafer(tilted, contents);
    const Columns left = {400, 1200};
    const Columns right = {1260, 2060};
    EXPECT_GT(Sharpness(wafer, -5.0, left), 3.0 * Sharpness(wafer, -5.0, right));
    EXPECT_GT(Sharpness(wafer, 5.0, right), 3.0 * Sharpness(wafer, 5.0, left));
}

TEST(SensorRenderer, TheTilesOfATiltedFieldShowNoSeams) {
    WaferOptions tilted;
    tilted.tiltUmPerUm = {0.02, -0.01};
    tilted.focusZUm = -20.0; // 0 at (2000, 2000)
    const Mosaic bare = Rendered(BareWafer(), middle);
    const Mosaic bareTilted = Rendered(Wafer(tilted, WaferContents()), middle);
    for (std::size_t i = 0; i < bare.bytes.size(); ++i)
        ASSERT_NEAR(bareTilted.bytes[i], bare.bytes[i], 1) << i;
    // Along an edge from the left to the right of the frame, light changes no more from one cell to the next
    // than the blur does.
    const Outline halfPlane = {{1500.0, 1500.0}, {2500.0, 1500.0}, {2500.0, 1999.0}, {1500.0, 1999.0}};
    WaferContents contents;
    contents.flakes.push_back({.outline = halfPlane, .layers = bulkWaferLayers});
    const Mosaic edge = Rendered(Wafer(tilted, contents), middle, {.gainDb = -6.0}, 1);
    for (int column = 0; column + 10 < twinSensorWidth / 2; ++column) {
        const auto mean = [&](int from) {
            double sum = 0.0;
            for (int cell = from; cell < from + 5; ++cell)
                sum += edge.At(2 * cell, 1028);
            return sum / 5.0;
        };
        EXPECT_NEAR(mean(column), mean(column + 5), 6.0) << column;
    }
}

TEST(SensorRenderer, AStretchAlongZBlursByTheMeanOfItsVariances) {
    const Wafer wafer = WaferWithSquare({2000.0, 2000.0}, 60.0, bulkWaferLayers);
    const auto rendered = [&](const ExposureWay& way) {
        Mosaic mosaic;
        SensorRenderer(wafer).Render(way, {}, 1, mosaic.bytes);
        return mosaic;
    };
    const double along = 12.0; // the mean square of the distance is 25 + 144 / 12
    EXPECT_EQ(rendered({.places = {{2000.0, 2000.0, 5.0}}, .stretchZUm = along}).bytes,
              Rendered(wafer, {2000.0, 2000.0, std::hypot(5.0, along / std::sqrt(12.0))}).bytes);
}

TEST(SensorRenderer, BesideTheWaferThereIsItsDarkHolder) {
    const Wafer wafer = BareWafer();
    constexpr double holder = 16.8; // 0.12 of the substrate
    EXPECT_NEAR(Rendered(wafer, {-5000.0, 100.0, 0.0}).MeanAround(middleCellColumn, middleCellRow, 1), holder,
                0.2);
    const Mosaic corner = Rendered(wafer, {0.0, 0.0, 0.0});
    EXPECT_NEAR(corner.MeanAround(middleCellColumn - 40, middleCellRow - 40, 1), holder, 0.2);
    EXPECT_NEAR(corner.MeanAround(middleCellColumn + 40, middleCellRow + 40, 1), holder, 0.2);
    EXPECT_NEAR(corner.MeanAround(middleCellColumn + 40, middleCellRow - 40, 1), 139.8, 0.4); // up and right
}

TEST(SensorRenderer, AnyPositionAndSettingCanBeAskedFor) {
    constexpr double none = std::numeric_limits<double>::quiet_NaN();
    constexpr double endless = std::numeric_limits<double>::infinity();
    constexpr double huge = std::numeric_limits<double>::max();
    const Wafer wafer{WaferOptions()};
    for (const double odd : {none, endless, -endless, huge, -huge}) {
        EXPECT_NEAR(Rendered(wafer, {odd, 2000.0, 0.0}).MeanAround(middleCellColumn, middleCellRow, 1), 16.8,
                    0.2);
        EXPECT_NEAR(Rendered(wafer, {2000.0, odd, 0.0}).MeanAround(middleCellColumn, middleCellRow, 1), 16.8,
                    0.2);
        EXPECT_GT(Rendered(wafer, {2000.0, 2000.0, odd}).MeanAround(middleCellColumn, middleCellRow, 1),
                  100.0);
        const bool bright = odd > 0.0; // what is no number is no light
        EXPECT_EQ(MiddleLevel({.exposureTimeUs = odd}) > 1.0, bright);
        EXPECT_EQ(MiddleLevel({.balanceRatios = {1.0, odd, 1.0}}) > 1.0, bright);
        EXPECT_GE(MiddleLevel({.exposureTimeUs = 10'000.0, .gainDb = odd}), 0.0);
    }
}

TEST(SensorRenderer, LeavesAMosaicOfAnotherSizeAlone) {
    const Wafer wafer = BareWafer();
    std::vector<std::uint8_t> small(100, 7);
    SensorRenderer(wafer).Render(middle, {}, 1, small);
    EXPECT_EQ(small, std::vector<std::uint8_t>(100, 7));
}

ExposureWay WayOf(double lengthUm, const StagePosition& direction) {
    return WayDuring(0.0, 1.0, [&](double time) {
        const double way = lengthUm * (time - 0.5);
        return StagePosition{middle.x + way * direction.x, middle.y + way * direction.y, 0.0};
    });
}

Mosaic RenderedOnTheWay(const Wafer& wafer, const ExposureWay& way) {
    Mosaic mosaic;
    SensorRenderer(wafer).Render(way, {}, 1, mosaic.bytes);
    return mosaic;
}

/// Of the green light, beside the middle by so many um; bare substrate is 1, bulk about 0.
double LightAt(const Mosaic& mosaic, double rightUm, double upUm) {
    const int column = middleCellColumn + static_cast<int>(std::lround(rightUm * sensorPixelsPerUm / 2.0));
    const int row = middleCellRow - static_cast<int>(std::lround(upUm * sensorPixelsPerUm / 2.0));
    return mosaic.MeanAround(column, row, 1, 2) / defaultSubstrateLevel;
}

TEST(SensorRenderer, ARestingStageIsAWayOfOnePlace) {
    const Wafer wafer = WaferWithSquare({2000.0, 2000.0}, 40.0, bulkWaferLayers);
    EXPECT_EQ(RenderedOnTheWay(wafer, WayOf(0.0, {1.0, 0.0})).bytes, Rendered(wafer, middle).bytes);
}

TEST(SensorRenderer, SmearsWhatMovesAlongItsWay) {
    const Wafer wafer = WaferWithSquare({2000.0, 2000.0}, 40.0, bulkWaferLayers); // to 20 um from the middle
    const Mosaic sharp = Rendered(wafer, middle);
    EXPECT_LT(LightAt(sharp, 15.0, 0.0), 0.1);
    EXPECT_GT(LightAt(sharp, 25.0, 0.0), 0.9);
    const Mosaic alongX = RenderedOnTheWay(wafer, WayOf(20.0, {1.0, 0.0}));
    EXPECT_NEAR(LightAt(alongX, 15.0, 0.0), 0.25, 0.1) << "a quarter of the time beside the flake";
    EXPECT_NEAR(LightAt(alongX, 20.0, 0.0), 0.5, 0.1);
    EXPECT_NEAR(LightAt(alongX, -25.0, 0.0), 0.75, 0.1);
    EXPECT_LT(LightAt(alongX, 0.0, 14.0), 0.1) << "sharper across it";
    EXPECT_GT(LightAt(alongX, 0.0, 26.0), 0.9);
    const Mosaic alongY = RenderedOnTheWay(wafer, WayOf(20.0, {0.0, -1.0}));
    EXPECT_NEAR(LightAt(alongY, 0.0, 25.0), 0.75, 0.1);
    EXPECT_GT(LightAt(alongY, 26.0, 0.0), 0.9);
}

TEST(SensorRenderer, SmearingTakesNoLightAway) {
    const Mosaic mosaic = RenderedOnTheWay(BareWafer(), WayOf(60.0, {0.6, 0.8}));
    for (int sample = 0; sample < 4; ++sample)
        EXPECT_NEAR(mosaic.MeanAround(middleCellColumn, middleCellRow, sample), defaultSubstrateLevel, 0.2);
}

TEST(SensorRenderer, AWayWithoutPlacesLeavesTheMosaicAlone) {
    const Wafer wafer = BareWafer();
    Mosaic mosaic;
    SensorRenderer(wafer).Render(ExposureWay(), {}, 1, mosaic.bytes);
    EXPECT_EQ(mosaic.bytes, std::vector<std::uint8_t>(twinMosaicBytes));
}

} // namespace
} // namespace tessaro
