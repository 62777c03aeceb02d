#include "imaging/image_files.h"
#include "imaging/picture_to_frame.h"
#include "support/imaging_fixture.h"

#include <memory>
#include <set>

namespace tessaro {
namespace {

using Texts = std::vector<std::string>;

TEST(EncoderClassIdTest, IsTheIndexOfTheTypeAndItsId) {
    MemoryPictureFiles pictures;
    pictures.encoderTypes = {"image/bmp", "image/jpeg", "image/png"};
    std::string id;
    EXPECT_EQ(EncoderClassId(pictures, "image/jpeg", id), 1);
    EXPECT_EQ(id, "image/jpeg");
    EXPECT_EQ(EncoderClassId(pictures, "image/bmp", id), 0);
    EXPECT_EQ(id, "image/bmp");
}

TEST(EncoderClassIdTest, IsTheFirstOfEqualTypes) {
    MemoryPictureFiles pictures;
    pictures.encoderTypes = {"image/png", "image/jpeg", "image/jpeg"};
    std::string id;
    EXPECT_EQ(EncoderClassId(pictures, "image/jpeg", id), 1);
}

TEST(EncoderClassIdTest, IsZeroWithoutAMatchAndLeavesTheIdAlone) {
    MemoryPictureFiles pictures;
    std::string id = "before";
    for (const char* type : {"image/tiff", "image/JPEG", "image/jpe", "image/jpeg ", ""}) {
        EXPECT_EQ(EncoderClassId(pictures, type, id), 0) << type;
        EXPECT_EQ(id, "before") << type;
    }
}

TEST(EncoderClassIdTest, IsMinusOneWithoutEncoders) {
    MemoryPictureFiles pictures;
    pictures.encoderTypes.clear();
    std::string id = "before";
    EXPECT_EQ(EncoderClassId(pictures, "image/jpeg", id), -1);
    EXPECT_EQ(id, "before");
}

class ImageFilesTest : public ImagingFixture {
protected:
    ImageFilesTest() {
        screen.SetUp();
        NumberRows(frame);
        ui.clock.localTime = {2024, 3, 15, 14, 7};
    }

    int SavePlain() { return images.SavePlainImage(frame, *findings); }

    /// The files below a folder, by name.
    std::set<std::string> Names(const std::filesystem::path& folder) const {
        std::set<std::string> names;
        for (const auto& [path, bytes] : ui.folders.files)
            if (path.parent_path() == folder)
                names.insert(path.filename().string());
        return names;
    }

    void MarkGrain(std::size_t g, std::int16_t left, std::int16_t low, std::int16_t right,
                   std::int16_t high) {
        findings->singleLayer[g] = 1;
        findings->edges.EdgeLeft[g] = {left, 1};
        findings->edges.EdgeMinRow[g] = {2, low};
        findings->edges.EdgeRight[g] = {right, 3};
        findings->edges.EdgeMaxRow[g] = {4, high};
    }

    const std::filesystem::path plain = "/home/operator/Desktop/Image_Data/240315_14-07";
    const std::filesystem::path detail = "/home/operator/Desktop/Image_Detail/240315_14-07";
    std::unique_ptr<GrainFindings> findings = std::make_unique<GrainFindings>();
};

TEST_F(ImageFilesTest, MakeAPairOfSessionFoldersNamedAfterTheMinute) {
    ui.calls.clear();
    images.MakeSessionFolders(0);
    EXPECT_EQ(folders.sessionName, "240315_14-07");
    EXPECT_EQ(folders.plainSession, plain);
    EXPECT_EQ(folders.detailSession, detail);
    EXPECT_EQ(folders.sessionMade, 1);
    EXPECT_TRUE(ui.folders.folders.contains(plain));
    EXPECT_TRUE(ui.folders.folders.contains(detail));
    EXPECT_EQ(ui.calls, (Texts{"create 240315_14-07", "create Image_Detail", "create 240315_14-07"}));
}

TEST_F(ImageFilesTest, WriteEveryPartOfTheSessionNameWithTwoDigits) {
    ui.clock.localTime = {2031, 1, 2, 3, 4};
    images.MakeSessionFolders(0);
    EXPECT_EQ(folders.sessionName, "310102_03-04");
}

TEST_F(ImageFilesTest, KeepTheSessionUntilANewOneIsAskedFor) {
    images.MakeSessionFolders(0);
    ui.clock.localTime = {2024, 3, 15, 15, 30};
    images.MakeSessionFolders(0);
    EXPECT_EQ(folders.plainSession, plain);
    images.MakeSessionFolders(1);
    EXPECT_EQ(folders.sessionName, "240315_15-30");
    EXPECT_TRUE(ui.folders.folders.contains("/home/operator/Desktop/Image_Detail/240315_15-30"));
    images.MakeSessionFolders(0);
    EXPECT_EQ(folders.sessionName, "240315_15-30");
}

TEST_F(ImageFilesTest, BeginANewSessionForAnyArgumentButZero) {
    images.MakeSessionFolders(1);
    EXPECT_EQ(folders.sessionName, "240315_14-07");
    ui.clock.localTime.minute = 8;
    images.MakeSessionFolders(-1);
    EXPECT_EQ(folders.sessionName, "240315_14-08");
}

TEST_F(ImageFilesTest, MakeFoldersAgainThatWereRemovedMeanwhile) {
    images.MakeSessionFolders(0);
    ui.folders.folders.clear();
    images.MakeSessionFolders(0);
    EXPECT_TRUE(ui.folders.folders.contains(plain));
    EXPECT_TRUE(ui.folders.folders.contains(detail));
}

TEST_F(ImageFilesTest, AreNamedAfterThePositionInTensOfMicrometres) {
    images.MakeSessionFolders(0);
    stage.position = {1204.9, 453.2, 99.0};
    EXPECT_EQ(SavePlain(), 1);
    EXPECT_EQ(images.SaveDetailImage(), 1);
    EXPECT_EQ(Names(plain), std::set<std::string>{"(120,45).jpg"});
    EXPECT_EQ(Names(detail), std::set<std::string>{"(120,45)detail.jpg"});
}

TEST_F(ImageFilesTest, RoundNegativePositionsTowardZeroTwice) {
    images.MakeSessionFolders(0);
    stage.position = {-15.7, -9.9, 0.0};
    SavePlain();
    EXPECT_EQ(Names(plain), std::set<std::string>{"(-1,0).jpg"});
}

TEST_F(ImageFilesTest, AddACounterFromZeroWhereTheNameIsTaken) {
    images.MakeSessionFolders(0);
    for (int i = 0; i < 3; ++i) {
        SavePlain();
        images.SaveDetailImage();
    }
    EXPECT_EQ(Names(plain), (std::set<std::string>{"(0,0).jpg", "(0,0)_0.jpg", "(0,0)_1.jpg"}));
    EXPECT_EQ(Names(detail),
              (std::set<std::string>{"(0,0)detail.jpg", "(0,0)detail_0.jpg", "(0,0)detail_1.jpg"}));
    EXPECT_EQ(view.lastFileName, detail / "(0,0)detail_1.jpg");
}

TEST_F(ImageFilesTest, TakeTheFirstNameThatIsFree) {
    ui.folders.Put("/d/a.jpg", "x");
    ui.folders.Put("/d/a_0.jpg", "x");
    ui.folders.Put("/d/a_2.jpg", "x");
    EXPECT_EQ(images.UniqueFileName("/d/a", "jpg"), "/d/a_1.jpg");
    EXPECT_EQ(images.UniqueFileName("/d/b", "jpg"), "/d/b.jpg");
    EXPECT_EQ(images.UniqueFileName("/d/a", "png"), "/d/a.png");
    EXPECT_EQ(images.UniqueFileName("/d/a.b", "jpg"), "/d/a.b.jpg") << "no part of the name is replaced";
}

TEST_F(ImageFilesTest, ExistWhenTheyCanBeRead) {
    ui.folders.Put("/d/a.jpg", "x");
    EXPECT_TRUE(images.FileExists("/d/a.jpg"));
    EXPECT_FALSE(images.FileExists("/d/b.jpg"));
    ui.folders.unreadable.insert("/d/a.jpg");
    EXPECT_FALSE(images.FileExists("/d/a.jpg"));
}

TEST_F(ImageFilesTest, NeverOverwriteAFileEvenOneThatCannotBeRead) {
    images.MakeSessionFolders(0);
    ui.folders.Put(plain / "(0,0).jpg", "precious");
    ui.folders.unreadable.insert(plain / "(0,0).jpg");
    testing::internal::CaptureStderr();
    EXPECT_EQ(SavePlain(), 1);
    EXPECT_NE(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(ui.folders.Text(plain / "(0,0).jpg"), "precious");
}

TEST_F(ImageFilesTest, LeaveNoFileWhenTheFolderIsMissing) {
    images.MakeSessionFolders(0);
    ui.folders.folders.erase(plain);
    testing::internal::CaptureStderr();
    EXPECT_EQ(SavePlain(), 1) << "whether the file was written is not looked at";
    EXPECT_EQ(testing::internal::GetCapturedStderr(), (plain / "(0,0).jpg").string() + ": cannot write\n");
    EXPECT_TRUE(ui.folders.files.empty());
}

TEST_F(ImageFilesTest, LeaveNoFileWhenEncodingFails) {
    images.MakeSessionFolders(0);
    ui.pictures.failEncoding = true;
    testing::internal::CaptureStderr();
    EXPECT_EQ(SavePlain(), 1);
    EXPECT_EQ(images.SaveDetailImage(), 1);
    testing::internal::GetCapturedStderr();
    EXPECT_TRUE(ui.folders.files.empty());
}

TEST_F(ImageFilesTest, KeepTheEncoderOfTheTimeBeforeWhenThereIsNoneAnyMore) {
    images.MakeSessionFolders(0);
    SavePlain();
    ui.pictures.encoderTypes.clear();
    SavePlain();
    EXPECT_EQ(view.encoderId, "image/jpeg");
    EXPECT_EQ(Names(plain).size(), 2U);
}

TEST_F(ImageFilesTest, CannotBeSavedWithoutAnyEncoder) {
    images.MakeSessionFolders(0);
    ui.pictures.encoderTypes.clear();
    testing::internal::CaptureStderr();
    EXPECT_EQ(SavePlain(), 1);
    testing::internal::GetCapturedStderr();
    EXPECT_TRUE(ui.folders.files.empty());
}

class HeardImageFiles : public ImageFilesTest, public ImageSaveListener {
protected:
    void ImageSaved(const std::filesystem::path& file) override {
        heard.push_back("saved " + file.string());
        EXPECT_FALSE(ui.folders.Text(file).empty()) << "it is there already";
    }
    void ImageNotSaved(const std::filesystem::path& file, std::string_view reason) override {
        heard.push_back("not " + file.string() + ": " + std::string(reason));
    }

    Texts heard;
    ImageFiles heardFiles{folders,    ui.folders, ui.pictures, ui.clock, screen,
                          ui.drawing, windows,    status,      stage,    this};
};

TEST_F(HeardImageFiles, TellOfEachImageUnderTheNameThatItGot) {
    heardFiles.MakeSessionFolders(0);
    stage.position = {1204.9, 453.2, 99.0};
    heardFiles.SavePlainImage(frame, *findings);
    heardFiles.SaveDetailImage();
    heardFiles.SavePlainImage(frame, *findings);
    EXPECT_EQ(heard, (Texts{"saved " + (plain / "(120,45).jpg").string(),
                            "saved " + (detail / "(120,45)detail.jpg").string(),
                            "saved " + (plain / "(120,45)_0.jpg").string()}));
}

TEST_F(HeardImageFiles, TellWhyAnImageIsNotThere) {
    heardFiles.MakeSessionFolders(0);
    ui.folders.folders.erase(plain);
    testing::internal::CaptureStderr();
    heardFiles.SavePlainImage(frame, *findings);
    heardFiles.SaveDetailImage();
    ui.pictures.failEncoding = true;
    heardFiles.SaveDetailImage();
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(heard, (Texts{"not " + (plain / "(0,0).jpg").string() + ": cannot write",
                            "saved " + (detail / "(0,0)detail.jpg").string(),
                            "not " + (detail / "(0,0)detail_0.jpg").string() +
                                ": encoding failed as the test asked for"}));
}

TEST_F(HeardImageFiles, TellOfAnImageThatWasGivenUp) {
    heardFiles.MakeSessionFolders(0);
    ui.drawing.failSetRows = FakeWindowDrawing::forEver;
    EXPECT_EQ(heardFiles.SavePlainImage(frame, *findings), 0);
    EXPECT_EQ(heard, Texts{"not " + (plain / "(0,0).jpg").string() + ": its pixels could not be set"});
}

class PlainImage : public ImageFilesTest {
protected:
    PlainImage() { images.MakeSessionFolders(0); }

    static RecordingSurface::Frame Box(int left, int top, int right, int bottom) {
        return {{left, top, right, bottom}, 1, Colour{255, 0, 0}};
    }
    static RecordingSurface::Frame ScaleBar() { return {{875, 978, 1132, 976}, 1, Colour{0, 0, 255}}; }
    std::vector<RecordingSurface::Frame> Frames() const {
        return ui.drawing.memorySurface.All<RecordingSurface::Frame>();
    }
};

TEST_F(PlainImage, IsTheFrameWhateverTheWindowShows) {
    FrameBuffer black;
    screen.ShowBuffer(black.Data());
    EXPECT_EQ(SavePlain(), 1);
    EXPECT_EQ(SavedPicture(plain / "(0,0).jpg").pixels, FrameToPicture(frame).pixels);
    EXPECT_EQ(BytesAt(Window(), 0, 0), (Bytes{0, 0, 0, 0})) << "the window is left alone";
}

TEST_F(PlainImage, WithoutMarkedGrainsCarriesTheScaleBarOnly) {
    findings->groupCount = 2;
    SavePlain();
    const std::vector<RecordingSurface::Call> expected = {
        ScaleBar(),
        RecordingSurface::Text{"100 um", {875, 998, 1132, 996}, TextAlignment::Centre, Colour{0, 0, 255}}};
    EXPECT_EQ(ui.drawing.memorySurface.calls, expected);
    EXPECT_TRUE(ui.drawing.windowSurface.calls.empty());
}

TEST_F(PlainImage, FramesTheMarkedGrainsAboveWhichTheScaleBarIsDrawn) {
    findings->groupCount = 4;
    MarkGrain(0, 100, 200, 130, 240);
    MarkGrain(3, 0, 0, 1231, 1027);
    findings->singleLayer[2] = 2;
    SavePlain();
    EXPECT_EQ(Frames(), (std::vector{Box(100, 828, 130, 788), Box(0, 1028, 1231, 1), ScaleBar()}));
}

TEST_F(PlainImage, DoesNotFrameMarksBehindTheLastGrain) {
    findings->groupCount = 1;
    MarkGrain(1, 100, 200, 130, 240);
    SavePlain();
    EXPECT_EQ(Frames(), std::vector{ScaleBar()});
}

TEST_F(PlainImage, LeavesTheBitmapOutOfTheContextAndNoContextHeld) {
    SavePlain();
    EXPECT_EQ(ui.drawing.contexts.at(view.memoryContext).selected, BitmapHandle::None);
    EXPECT_EQ(ui.drawing.contextsHeld, 0);
    EXPECT_TRUE(Information().empty());
    EXPECT_EQ(ui.clock.now, 0U);
}

TEST_F(PlainImage, TriesAgainEvery100MillisecondsWhenRowsCannotBeSet) {
    view.errorCounter = 5;
    ui.drawing.failSetRows = 2;
    EXPECT_EQ(SavePlain(), 1);
    EXPECT_EQ(Information(), (Texts{"SetDIBits has failed in SaveImage, error count: 0",
                                    "SetDIBits has failed in SaveImage, error count: 1"}));
    EXPECT_EQ(ui.clock.now, 200U);
    EXPECT_EQ(Names(plain).size(), 1U);
    EXPECT_EQ(ui.drawing.contextsHeld, 0);
}

TEST_F(PlainImage, GivesUpAfterTenTimesAndLeavesNoFile) {
    ui.drawing.failSetRows = FakeWindowDrawing::forEver;
    EXPECT_EQ(SavePlain(), 0);
    EXPECT_EQ(ui.drawing.setRowsCalls, 10);
    EXPECT_EQ(Information().size(), 10U);
    EXPECT_EQ(Information().back(), "SetDIBits has failed in SaveImage, error count: 9");
    EXPECT_EQ(view.errorCounter, 10);
    EXPECT_EQ(ui.clock.now, 1000U);
    EXPECT_TRUE(ui.folders.files.empty());
    EXPECT_EQ(ui.drawing.contextsHeld, 0);
}

TEST_F(PlainImage, IsSavedAtTheTenthTry) {
    ui.drawing.failSetRows = 9;
    EXPECT_EQ(SavePlain(), 1);
    EXPECT_EQ(Names(plain).size(), 1U);
}

TEST_F(PlainImage, KeepsItsContextWhileAnotherImageIsShownBetweenTwoTries) {
    ui.drawing.failSetRows = 1;
    ui.messages.PostAt(50, {windows.main, MessageKind::MouseMove});
    ui.messages.onDispatch = [&](const Message&) { screen.ShowBuffer(frame.Data()); };
    EXPECT_EQ(SavePlain(), 1);
    EXPECT_EQ(ui.drawing.contextsHeld, 0);
}

class DetailImage : public ImageFilesTest {
protected:
    DetailImage() { images.MakeSessionFolders(0); }
};

TEST_F(DetailImage, IsWhatTheWindowShows) {
    Picture& window = ui.drawing.windows.at(windows.main);
    for (std::size_t i = 0; i < window.pixels.size(); ++i)
        window.pixels[i] = static_cast<std::uint8_t>(i * 11 % 249);
    EXPECT_EQ(images.SaveDetailImage(), 1);
    const Picture saved = SavedPicture(detail / "(0,0)detail.jpg");
    ASSERT_EQ(saved.width, 1232);
    ASSERT_EQ(saved.height, 1028);
    for (int y = 0; y < 1028; ++y)
        ASSERT_TRUE(std::equal(saved.Pixel(0, y), saved.Pixel(0, y) + 4928, Window().Pixel(0, y))) << y;
}

TEST_F(DetailImage, CarriesNoScaleBarAndNoFramesOfItsOwn) {
    findings->groupCount = 1;
    MarkGrain(0, 100, 200, 130, 240);
    images.SaveDetailImage();
    EXPECT_TRUE(ui.drawing.memorySurface.calls.empty());
}

TEST_F(DetailImage, PutsThePreviousBitmapBackAndReleasesTheWindow) {
    images.SaveDetailImage();
    EXPECT_EQ(ui.drawing.contexts.at(view.memoryContext).selected, BitmapHandle::None);
    EXPECT_EQ(ui.drawing.contextsHeld, 0);
}

} // namespace
} // namespace tessaro
