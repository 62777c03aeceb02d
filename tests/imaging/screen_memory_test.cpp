#include "support/imaging_fixture.h"
#include "support/watched_memory.h"

namespace tessaro {
namespace {

using ScreenMemory = ImagingFixture;

TEST_F(ScreenMemory, ForTheScreenCopyIsTakenZeroedAtSetUp) {
    screen.SetUp();
    ASSERT_NE(view.screenCopy, nullptr);
    for (int i = 0; i < frameByteCount; ++i)
        ASSERT_EQ(view.screenCopy[static_cast<std::size_t>(i)], 0);
    EXPECT_EQ(Title(), "Main");
}

TEST_F(ScreenMemory, ThatIsMissingIsSaidInTheWindowsTitleAndTheImageIsStillShown) {
    refusedNothrowBlock = std::size_t{1232} * 1028 * 4;
    screen.SetUp();
    refusedNothrowBlock = 0;
    EXPECT_EQ(view.screenCopy, nullptr);
    EXPECT_EQ(Title(), "error in HeapAlloc");
    EXPECT_EQ(screen.ShowBuffer(frame.Data()), 1);
}

class ImportMemory : public ImagingFixture {
protected:
    ImportMemory() {
        screen.SetUp();
        NumberRows(frame);
        PutPicture("picture", Picture(7, 5));
    }

    void ExpectWhiteWithout(std::size_t block) {
        testing::internal::CaptureStderr();
        refusedBlock = block;
        const int result = screen.LoadPictureFile("picture", scan.imageArea, ui.folders, ui.pictures, frame);
        refusedBlock = 0;
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "picture: not enough memory\n");
        EXPECT_EQ(result, 0);
        for (const int y : {0, 500, 1027}) {
            EXPECT_EQ(BytesAt(Window(), 600, y), (Bytes{255, 255, 255, 255}));
            EXPECT_EQ(BytesAt(frame, 600, y), (Bytes{255, 255, 255, 255}));
        }
        EXPECT_EQ(ui.drawing.contextsHeld, 0);
    }
};

TEST_F(ImportMemory, ThatIsMissingForTheDecodedPictureLeavesTheAreaAndTheFrameWhite) {
    ExpectWhiteWithout(std::size_t{7} * 5 * 4);
}

TEST_F(ImportMemory, ThatIsMissingForTheStretchedPictureLeavesTheAreaAndTheFrameWhite) {
    ExpectWhiteWithout(std::size_t{1232} * 5 * 4); // as wide as the frame, not as high yet
}

} // namespace
} // namespace tessaro
