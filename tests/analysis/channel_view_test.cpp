#include "analysis/channel_view.h"
#include "support/imaging_fixture.h"

namespace tessaro {
namespace {

class ChannelView : public ImagingFixture {
protected:
    ChannelView() {
        screen.SetUp();
        for (int i = 0; i < frameByteCount; i += 4) {
            frame.Data()[i] = static_cast<std::uint8_t>(i / 4 % 241);
            frame.Data()[i + 1] = static_cast<std::uint8_t>(i / 4 % 239);
            frame.Data()[i + 2] = static_cast<std::uint8_t>(i / 4 % 233);
            frame.Data()[i + 3] = 9;
        }
    }

    /// Every pixel of the window is the frame's with the other bytes cleared.
    void ExpectShown(int mode, const std::array<bool, 4>& kept) {
        EXPECT_EQ(ShowChannel(screen, frame, mode), 1);
        for (int y = 0; y < frameHeight; ++y) {
            for (int x = 0; x < frameWidth; ++x) {
                Bytes expected = BytesAt(frame, x, 1027 - y);
                for (std::size_t byte = 0; byte < 4; ++byte)
                    expected[byte] = kept[byte] ? expected[byte] : std::uint8_t{0};
                ASSERT_EQ(BytesAt(Window(), x, y), expected) << x << ", " << y;
            }
        }
    }
};

TEST_F(ChannelView, ShowsRedGreenOrBlueInItsOwnColour) {
    ExpectShown(1, {false, false, true, false});
    ExpectShown(2, {false, true, false, false});
    ExpectShown(3, {true, false, false, false});
}

TEST_F(ChannelView, ShowsAllOfTheFrame) {
    ExpectShown(4, {true, true, true, true});
}

TEST_F(ChannelView, ShowsBlackForAnyOtherMode) {
    for (const int mode : {0, 5, -1}) {
        ShowChannel(screen, frame, 4);
        ExpectShown(mode, {false, false, false, false});
    }
}

TEST_F(ChannelView, LeavesTheFrameAlone) {
    FrameBuffer before = frame;
    ShowChannel(screen, frame, 1);
    EXPECT_TRUE(std::equal(frame.Data(), frame.Data() + frameByteCount, before.Data()));
}

TEST_F(ChannelView, AnswersOneEvenIfNothingCouldBeShown) {
    view.screenBitmap = BitmapHandle::None;
    EXPECT_EQ(ShowChannel(screen, frame, 4), 1);
}

} // namespace
} // namespace tessaro
