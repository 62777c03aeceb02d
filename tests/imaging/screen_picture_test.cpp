// Pictures from files on the screen, and from there in the frame.

#include "imaging/screen_view.h"
#include "support/imaging_fixture.h"

#include <algorithm>
#include <array>
#include <string>
#include <utility>
#include <vector>

namespace tessaro {
namespace {

class LoadPictureTest : public ImagingFixture {
protected:
    LoadPictureTest() {
        screen.SetUp();
        NumberRows(frame);
    }

    int Load() { return screen.LoadPictureFile("picture", scan.imageArea, ui.folders, ui.pictures, frame); }

    static Picture Even(int width, int height, std::uint8_t value) {
        Picture picture(width, height);
        std::fill(picture.pixels.begin(), picture.pixels.end(), value);
        return picture;
    }

    bool FrameIs(const Bytes& bytes) const {
        for (int y = 0; y < frameHeight; ++y)
            for (int x = 0; x < frameWidth; ++x)
                if (BytesAt(frame, x, y) != bytes)
                    return false;
        return true;
    }
};

TEST_F(LoadPictureTest, TakesAPictureOfTheFramesSizePixelByPixelBottomUp) {
    Picture picture(1232, 1028);
    for (std::size_t i = 0; i < picture.pixels.size(); ++i)
        picture.pixels[i] = static_cast<std::uint8_t>(i * 7 % 253);
    PutPicture("picture", picture);
    EXPECT_EQ(Load(), 0);
    for (int y = 0; y < 1028; ++y)
        ASSERT_EQ(std::memcmp(frame.Data() + PixelOffset(0, 1027 - y), picture.Pixel(0, y), 4928), 0) << y;
    EXPECT_EQ(BytesAt(Window(), 17, 0), BytesAt(picture, 17, 0));
}

TEST_F(LoadPictureTest, FillsTheFrameExactlyWithAPictureOfAnySize) {
    for (const auto& [width, height] :
         {std::pair{1, 1}, {3, 2}, {616, 514}, {1231, 1029}, {2464, 100}, {5, 3000}}) {
        PutPicture("picture", Even(width, height, 77));
        NumberRows(frame);
        EXPECT_EQ(Load(), 0);
        EXPECT_TRUE(FrameIs({77, 77, 77, 77})) << width << " x " << height;
        EXPECT_EQ(BytesAt(Window(), 1231, 1027), (Bytes{77, 77, 77, 77}));
        EXPECT_EQ(BytesAt(Window(), 1232, 1000), whiteBytes) << "the cleared margin";
        EXPECT_EQ(BytesAt(Window(), 1000, 1028), whiteBytes);
        EXPECT_EQ(BytesAt(Window(), 1000, 1031), (Bytes{0, 0, 0, 0})) << "behind the margin of three pixels";
    }
}

TEST_F(LoadPictureTest, ClearsThreePixelsAroundTheAreaBeforeItDraws) {
    PutPicture("picture", Even(4, 4, 50));
    scan.imageArea = {10, 20, 1242, 1048};
    Load();
    EXPECT_EQ(ui.drawing.filled, (std::vector<SurfaceRectangle>{{7, 17, 1245, 1051}}));
    EXPECT_EQ(BytesAt(Window(), 9, 30), whiteBytes);
    EXPECT_EQ(BytesAt(Window(), 6, 30), (Bytes{0, 0, 0, 0}));
    EXPECT_EQ(BytesAt(Window(), 10, 20), (Bytes{50, 50, 50, 50}));
}

TEST_F(LoadPictureTest, LeavesTheAreaAndTheFrameWhiteWhenTheFileIsNoPicture) {
    ui.folders.Put("picture", "GIF89a");
    testing::internal::CaptureStderr();
    EXPECT_EQ(Load(), 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "picture: not a fake picture\n");
    EXPECT_TRUE(FrameIs(whiteBytes));
    EXPECT_EQ(BytesAt(Window(), 0, 0), whiteBytes);
}

TEST_F(LoadPictureTest, LeavesTheAreaAndTheFrameWhiteWhenThereIsNoFile) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(Load(), 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "picture: no such file\n");
    EXPECT_TRUE(FrameIs(whiteBytes));
}

TEST_F(LoadPictureTest, DoesNotReadAFileThatIsTooLarge) {
    PutPicture("picture", Even(8, 8, 60));
    ui.folders.claimedSizes["picture"] = 801'000'001;
    ui.folders.onCall = [](const std::string& call) { ADD_FAILURE() << call; };
    testing::internal::CaptureStderr();
    EXPECT_EQ(Load(), 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "picture: the file is too large\n");
    EXPECT_TRUE(FrameIs(whiteBytes));
    EXPECT_EQ(BytesAt(Window(), 0, 0), whiteBytes);
}

TEST_F(LoadPictureTest, ReadsAFileOfTheLargestSize) {
    PutPicture("picture", Even(8, 8, 60));
    ui.folders.claimedSizes["picture"] = 801'000'000;
    Load();
    EXPECT_TRUE(FrameIs({60, 60, 60, 60}));
}

TEST_F(LoadPictureTest, ReadsBackFromTheOriginOfAMovedArea) {
    PutPicture("picture", Even(8, 8, 60));
    scan.imageArea = {2, 5, 1234, 1033};
    Load();
    EXPECT_TRUE(FrameIs({60, 60, 60, 60})) << "the window is wide enough for all of it";
}

TEST_F(LoadPictureTest, ReadsBackFromNoFurtherThanTheMiddle) {
    PutPicture("picture", Even(8, 8, 60));
    scan.imageArea = {700, 600, 1932, 1628};
    Load();
    // Read from (616, 514): the picture starts 84 columns and 86 rows later, three less is white.
    EXPECT_EQ(BytesAt(frame, 84, 1027 - 86), (Bytes{60, 60, 60, 60}));
    EXPECT_EQ(BytesAt(frame, 83, 1027 - 86), whiteBytes);
    EXPECT_EQ(BytesAt(frame, 84, 1027 - 85), whiteBytes);
    EXPECT_EQ(BytesAt(frame, 80, 1027 - 86), (Bytes{0, 0, 0, 0}));
    EXPECT_EQ(BytesAt(frame, 617, 1027 - 86), (Bytes{60, 60, 60, 60})) << "window column 1233";
    EXPECT_EQ(BytesAt(frame, 618, 1027 - 86), (Bytes{0, 0, 0, 0})) << "beside the window";
}

TEST_F(LoadPictureTest, ReadsBackFromTheWindowsCornerWhenTheAreaLiesOutside) {
    PutPicture("picture", Even(8, 8, 60));
    scan.imageArea = {-100, -200, 1132, 828};
    Load();
    EXPECT_EQ(BytesAt(frame, 0, 1027), (Bytes{60, 60, 60, 60}));
    EXPECT_EQ(BytesAt(frame, 1131, 1027 - 827), (Bytes{60, 60, 60, 60}));
    EXPECT_EQ(BytesAt(frame, 1132, 1027 - 827), whiteBytes);
    EXPECT_EQ(BytesAt(frame, 1135, 1027 - 827), (Bytes{0, 0, 0, 0}));
}

TEST_F(LoadPictureTest, LeavesTheFrameAloneUntilThePictureIsOnTheWindow) {
    PutPicture("picture", Even(8, 8, 60));
    ui.drawing.onCall = [this](const std::string& made) {
        if (made != "memory context") // the first that reading back makes
            return;
        EXPECT_EQ(BytesAt(Window(), 0, 0), (Bytes{60, 60, 60, 60}));
        EXPECT_EQ(BytesAt(frame, 0, 1027), (Bytes{1027 % 251, 1, 2, 3}));
    };
    Load();
    EXPECT_TRUE(FrameIs({60, 60, 60, 60}));
}

TEST_F(LoadPictureTest, ReleasesWhatItTook) {
    PutPicture("picture", Even(8, 8, 60));
    const std::size_t contexts = ui.drawing.contexts.size();
    Load();
    EXPECT_EQ(ui.drawing.contextsHeld, 0);
    EXPECT_EQ(ui.drawing.contexts.size(), contexts);
    EXPECT_EQ(ui.drawing.bitmaps.size(), 1U) << "the screen bitmap";
}

struct ReadBackFault {
    int FakeWindowDrawing::*failures;
    const char* message;
};

class ReadBackTest : public LoadPictureTest, public testing::WithParamInterface<ReadBackFault> {};

TEST_P(ReadBackTest, ThatFailsLeavesTheFrameAndSaysWhy) {
    PutPicture("picture", Even(8, 8, 60));
    const std::size_t contexts = ui.drawing.contexts.size();
    ui.drawing.*GetParam().failures = 1;
    testing::internal::CaptureStderr();
    EXPECT_EQ(Load(), 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), std::string("picture: ") + GetParam().message + "\n");
    FrameBuffer before;
    NumberRows(before);
    EXPECT_EQ(std::memcmp(frame.Data(), before.Data(), frameByteCount), 0);
    EXPECT_EQ(BytesAt(Window(), 0, 0), (Bytes{60, 60, 60, 60})) << "the window shows the picture";
    EXPECT_EQ(ui.drawing.contextsHeld, 0);
    EXPECT_EQ(ui.drawing.contexts.size(), contexts);
    EXPECT_EQ(ui.drawing.bitmaps.size(), 1U) << "the screen bitmap";
}

INSTANTIATE_TEST_SUITE_P(
    Steps, ReadBackTest,
    testing::Values(ReadBackFault{&FakeWindowDrawing::failContext,
                                  "no memory context to read the window back with"},
                    ReadBackFault{&FakeWindowDrawing::failBitmap, "no bitmap to read the window back with"},
                    ReadBackFault{&FakeWindowDrawing::failCopy, "the window's pixels could not be copied"},
                    ReadBackFault{&FakeWindowDrawing::failGetRows,
                                  "the pixels copied from the window could not be read"}));

TEST_F(LoadPictureTest, IntoAWindowThatIsGoneLeavesTheFrame) {
    PutPicture("picture", Even(8, 8, 60));
    ui.drawing.windows.clear();
    testing::internal::CaptureStderr();
    EXPECT_EQ(Load(), 0);
    EXPECT_NE(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(BytesAt(frame, 0, 1027), (Bytes{1027 % 251, 1, 2, 3}));
}

} // namespace
} // namespace tessaro
