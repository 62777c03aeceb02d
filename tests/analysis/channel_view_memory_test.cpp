#include "analysis/channel_view.h"
#include "support/imaging_fixture.h"
#include "support/watched_memory.h"

namespace tessaro {
namespace {

using ChannelViewMemory = ImagingFixture;

TEST_F(ChannelViewMemory, ThatIsMissingLeavesTheWindowAsItIs) {
    screen.SetUp();
    NumberRows(frame);
    refusedBlock = frameByteCount;
    const int result = ShowChannel(screen, frame, channel_view::allChannels);
    refusedBlock = 0;
    EXPECT_EQ(result, 1);
    EXPECT_EQ(BytesAt(Window(), 0, 0), (Bytes{0, 0, 0, 0}));
    EXPECT_EQ(ui.drawing.setRowsCalls, 0);
}

} // namespace
} // namespace tessaro
