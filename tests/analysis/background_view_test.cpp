#include "analysis/background_view.h"
#include "support/imaging_fixture.h"

namespace tessaro {
namespace {

class BackgroundView : public ImagingFixture {
protected:
    BackgroundView() {
        screen.SetUp();
        for (int channel = 0; channel < 3; ++channel) {
            for (int gx = 0; gx < 16; ++gx) {
                for (int gy = 0; gy < 16; ++gy) {
                    const int level = 50 * channel + 10 * gx / 4 + gy;
                    const auto value = static_cast<float>(level);
                    background.SetMeasured(channel, gx, gy, value + 0.9F);
                    background.SetFitted(channel, gx, gy, value + 30.5F);
                }
            }
        }
    }

    static std::uint8_t Level(int channel, int x, int y) {
        return static_cast<std::uint8_t>(50 * channel + 10 * (x / 77) / 4 + y / 64);
    }

    /// The mosaic, `raised` above the measured levels: 16 x 16 blocks of 77 x 64 pixels.
    void ExpectMosaic(int raised) {
        for (int y = 0; y < 1024; ++y) {
            for (int x = 0; x < 1232; ++x) {
                const Bytes expected = {static_cast<std::uint8_t>(Level(2, x, y) + raised),
                                        static_cast<std::uint8_t>(Level(1, x, y) + raised),
                                        static_cast<std::uint8_t>(Level(0, x, y) + raised), 0};
                ASSERT_EQ(BytesAt(Window(), x, 1027 - y), expected) << x << ", " << y;
            }
        }
    }

    BackgroundGrid background;
};

TEST_F(BackgroundView, ShowsTheMeasuredGridTruncated) {
    EXPECT_EQ(ShowBackground(screen, background, false), 1);
    ExpectMosaic(0);
}

TEST_F(BackgroundView, ShowsTheFittedModel) {
    EXPECT_EQ(ShowBackground(screen, background, true), 1);
    ExpectMosaic(30);
}

TEST_F(BackgroundView, LeavesTheRowsAboveTheLastBlockBlack) {
    ShowBackground(screen, background, true);
    for (int y = 1024; y < 1028; ++y)
        EXPECT_EQ(BytesAt(Window(), 600, 1027 - y), (Bytes{0, 0, 0, 0}));
}

TEST_F(BackgroundView, IsBlackBeforeAnyFrameWasMeasured) {
    ShowBackground(screen, background, true);
    ShowBackground(screen, BackgroundGrid(), false);
    for (int y = 0; y < 1028; y += 13)
        EXPECT_EQ(BytesAt(Window(), y, y), (Bytes{0, 0, 0, 0}));
}

TEST_F(BackgroundView, ShowsNothingWhereThereWasNoMemoryForIt) {
    view.screenCopy.reset();
    EXPECT_EQ(ShowBackground(screen, background, false), 1);
    EXPECT_EQ(ui.drawing.setRowsCalls, 0);
}

} // namespace
} // namespace tessaro
