#include "camera/frame_grabber.h"
#include "camera/test_pattern.h"
#include "tests/camera/camera_fixture.h"

#include <algorithm>

namespace tessaro {
namespace {

/// Different in every cell and in each of its samples.
std::uint8_t Sample(int x, int y) {
    return static_cast<std::uint8_t>(3 * x + 5 * y + x * y / 7);
}

Samples Mosaic() {
    Samples samples;
    for (int y = 0; y < sensorHeight; ++y) {
        for (int x = 0; x < sensorWidth; ++x)
            samples.push_back(Sample(x, y));
    }
    return samples;
}

class GrabFrame : public CameraFixture {
protected:
    void SetUp() override { Connect(); }

    void ThenMosaic(int count = 1) {
        for (int image = 0; image < count; ++image)
            scripted.ThenImage(sensorWidth, sensorHeight, Mosaic());
    }

    void ThenBroken(int count) {
        for (int image = 0; image < count; ++image)
            scripted.ThenBrokenImage();
    }

    std::ptrdiff_t Calls(const std::string& call) const {
        return std::count(scripted.calls.begin(), scripted.calls.end(), call);
    }

    bool ShowsTestPattern() const {
        const auto pattern = std::make_unique<CameraSession>();
        pattern->testPatternPhase = session->testPatternPhase - 50;
        DrawTestPattern(*pattern);
        return std::equal(pattern->workingFrame.Data(), pattern->workingFrame.Data() + frameByteCount,
                          session->workingFrame.Data());
    }

    std::array<int, 3> Pixel(int x, int storedRow) const {
        return {WorkingByte(x, storedRow, 0), WorkingByte(x, storedRow, 1), WorkingByte(x, storedRow, 2)};
    }

    static std::array<int, 3> Cell(int p00, int p01, int p10, int p11) { return {p11, (p10 + p01) / 2, p00}; }
};

TEST_F(GrabFrame, LaysTheRowsBottomUpWithBlueFromTheLowerRight) {
    ThenMosaic();
    EXPECT_EQ(camera.GrabFrame(1), 0);
    EXPECT_EQ(Pixel(0, 1027), Cell(Sample(0, 0), Sample(1, 0), Sample(0, 1), Sample(1, 1)));
    EXPECT_EQ(Pixel(1231, 1027), Cell(Sample(2462, 0), Sample(2463, 0), Sample(2462, 1), Sample(2463, 1)));
    EXPECT_EQ(Pixel(100, 1),
              Cell(Sample(200, 2052), Sample(201, 2052), Sample(200, 2053), Sample(201, 2053)));
    EXPECT_EQ(scripted.calls, (Texts{"StartGrabbing 1", "RetrieveResult 4294967295"}));
}

TEST_F(GrabFrame, TakesOneCellForTheWholeFirstStoredRow) {
    ThenMosaic();
    camera.GrabFrame(1);
    // 2464 * 2056 - 2 * 2464 - 1 is the last sample of row 2053.
    const auto cell = Cell(Sample(2463, 2053), Sample(0, 2054), Sample(2463, 2054), Sample(0, 2055));
    for (const int x : {0, 1, 600, 1231})
        EXPECT_EQ(Pixel(x, 0), cell) << x;
    EXPECT_EQ(session->sourceIndex, 5'061'055);
    EXPECT_EQ(session->targetIndex, 4924);
    EXPECT_EQ(session->p00, Sample(2463, 2053));
    EXPECT_EQ(session->p11, Sample(0, 2055));
}

TEST_F(GrabFrame, LeavesTheFourthByteOfTheConvertedFrameAndCopiesIt) {
    for (const int frames : {1, 5}) {
        session->convertedFrame.Data()[3] = 9;
        session->convertedFrame.Data()[PixelOffset(7, 500) + 3] = 11;
        session->workingFrame.Data()[3] = 5;
        ThenMosaic(frames);
        camera.GrabFrame(frames);
        EXPECT_EQ(session->convertedFrame.Data()[3], 9);
        EXPECT_EQ(session->workingFrame.Data()[3], 9);
        EXPECT_EQ(WorkingByte(7, 500, 3), 11);
    }
}

TEST_F(GrabFrame, OfASteadySceneIsTheSameForAnyNumberOfExposures) {
    ThenMosaic();
    camera.GrabFrame(1);
    const FrameBuffer once = session->workingFrame;
    for (const int frames : {2, 3, 4, 5}) {
        ThenMosaic(frames);
        camera.GrabFrame(frames);
        EXPECT_TRUE(std::equal(once.Data(), once.Data() + frameByteCount, session->workingFrame.Data()))
            << frames;
    }
}

TEST_F(GrabFrame, TruncatesTheMean) {
    for (const std::uint8_t level : Samples{11, 12, 12, 12})
        ThenEvenImage(level);
    camera.GrabFrame(4);
    EXPECT_EQ(session->accumulator[1'000'000], 47);
    EXPECT_EQ(session->rawFrame[1'000'000], 11);
    EXPECT_EQ(Pixel(50, 50), (std::array<int, 3>{11, 11, 11}));
}

TEST_F(GrabFrame, SumsBrightExposuresWithoutLoss) {
    for (int image = 0; image < 4; ++image)
        ThenEvenImage(255);
    camera.GrabFrame(4);
    EXPECT_EQ(session->accumulator[0], 1020);
    EXPECT_EQ(Pixel(3, 3), (std::array<int, 3>{255, 255, 255}));
}

TEST_F(GrabFrame, SumsIn16Bits) {
    for (int image = 0; image < 300; ++image)
        scripted.ThenImage(2, 2, Samples(4, 255));
    camera.GrabFrame(300);
    EXPECT_EQ(session->accumulator[0], 10'964); // 76,500 - 65,536
    EXPECT_EQ(session->rawFrame[0], 36);
}

TEST_F(GrabFrame, OfFewerThanOneIsOfOne) {
    for (const int frames : {0, -1, -2'000'000'000}) {
        ThenEvenImage(40);
        camera.GrabFrame(frames);
        EXPECT_EQ(Pixel(0, 0), (std::array<int, 3>{40, 40, 40}));
    }
    EXPECT_EQ(Calls("StartGrabbing 1"), 3);
}

TEST_F(GrabFrame, HoldsOnlyTheLastImageAfterwards) {
    for (const int frames : {1, 4, 6}) {
        ThenMosaic(frames);
        camera.GrabFrame(frames);
        EXPECT_EQ(scripted.held, 1) << frames;
        EXPECT_TRUE(session->grabResult.GrabSucceeded());
    }
}

TEST_F(GrabFrame, StartsAgainWhenBrokenImagesHaveUsedUpTheGrab) {
    ThenEvenImage(10);
    ThenBroken(1);
    for (const std::uint8_t level : Samples{20, 30, 40})
        ThenEvenImage(level);
    camera.GrabFrame(4);
    EXPECT_EQ(scripted.calls,
              (Texts{"StartGrabbing 4", "RetrieveResult 4294967295", "RetrieveResult 4294967295",
                     "RetrieveResult 4294967295", "RetrieveResult 4294967295", "StartGrabbing 4",
                     "RetrieveResult 4294967295"}));
    EXPECT_EQ(ui.clock.now, 10U);
    EXPECT_EQ(Pixel(9, 9), (std::array<int, 3>{25, 25, 25}));
}

TEST_F(GrabFrame, WithABrokenImageInTheMiddleSumsTheWholeOnes) {
    for (const std::uint8_t level : Samples{10, 20}) {
        ThenEvenImage(level);
        ThenBroken(2);
    }
    camera.GrabFrame(2);
    EXPECT_EQ(session->accumulator[77], 30);
    EXPECT_EQ(Pixel(9, 9), (std::array<int, 3>{15, 15, 15}));
    EXPECT_EQ(scripted.StepsLeft(), 2U);
    ThenEvenImage(1);
    camera.GrabFrame(1); // takes the broken ones first
}

TEST_F(GrabFrame, LeavesOutAnImageAfter1000Tries) {
    ThenEvenImage(40);
    camera.GrabFrame(1); // leaves its sum behind
    scripted.calls.clear();
    ThenBroken(667); // two for each start: 667 images and 333 starts are 1000 tries
    ThenEvenImage(20);
    camera.GrabFrame(2);
    EXPECT_EQ(Calls("StartGrabbing 2"), 1 + 333);
    EXPECT_EQ(Calls("RetrieveResult 4294967295"), 668);
    EXPECT_EQ(ui.clock.now, 3330U);
    EXPECT_EQ(session->accumulator[5], 60) << "image 0 never came: the sums go on";
    EXPECT_EQ(Pixel(9, 9), (std::array<int, 3>{30, 30, 30})) << "divided by both";
}

TEST_F(GrabFrame, ShowsTheLastSumsAgainWhenNoImageComesWhole) {
    ThenEvenImage(40);
    camera.GrabFrame(1);
    ThenBroken(500); // and 500 starts
    camera.GrabFrame(1);
    EXPECT_EQ(Pixel(9, 9), (std::array<int, 3>{40, 40, 40}));
    EXPECT_EQ(session->testPatternPhase, 0U) << "it is no failure";
    EXPECT_EQ(ui.clock.now, 5000U);
    EXPECT_FALSE(session->grabResult.GrabSucceeded());
}

class VanishingCamera : public GrabFrame, public testing::WithParamInterface<int> {};

TEST_P(VanishingCamera, LeavesTheTestPatternAndTheSumsSoFar) {
    ThenEvenImage(200);
    camera.GrabFrame(1);
    const int wholeImages = GetParam();
    for (int image = 0; image < wholeImages; ++image)
        ThenEvenImage(30);
    scripted.ThenFault("the camera was taken away");
    EXPECT_EQ(camera.GrabFrame(4), 0);
    EXPECT_TRUE(ShowsTestPattern());
    EXPECT_EQ(session->testPatternPhase, 50U);
    EXPECT_EQ(session->patternStandsIn, 1);
    EXPECT_EQ(session->accumulator[123'456], wholeImages == 0 ? 200 : 30 * wholeImages);
    EXPECT_EQ(session->rawFrame[123'456], 200) << "of the frame before";
    EXPECT_EQ(scripted.held, 1);
    EXPECT_TRUE(Information().empty()) << "nothing is reported";

    ThenEvenImage(60);
    camera.GrabFrame(1);
    EXPECT_EQ(Pixel(9, 9), (std::array<int, 3>{60, 60, 60})) << "it is back";
    EXPECT_EQ(session->patternStandsIn, 0);
}

INSTANTIATE_TEST_SUITE_P(InEachExposure, VanishingCamera, testing::Values(0, 1, 2, 3));

TEST_F(GrabFrame, ShowsTheTestPatternWhenItCannotStart) {
    scripted.FailAt("StartGrabbing 4");
    camera.GrabFrame(4);
    EXPECT_TRUE(ShowsTestPattern());
    ThenBroken(1);
    scripted.onCall = [this](const std::string& call) {
        if (call == "RetrieveResult 4294967295")
            scripted.FailAt("StartGrabbing 1");
    };
    camera.GrabFrame(1);
    EXPECT_TRUE(ShowsTestPattern());
    EXPECT_EQ(session->testPatternPhase, 100U);
}

TEST_F(GrabFrame, ShowsTheTestPatternBeforeTheCameraIsOpen) {
    camera.InitializeCamera();
    camera.GrabFrame(1);
    EXPECT_TRUE(ShowsTestPattern());
}

TEST_F(GrabFrame, WithoutACameraShowsTheMovingTestPatternOncePerGrabWhateverTheExposures) {
    session->present = 0;
    EXPECT_EQ(session->patternStandsIn, 0);
    EXPECT_EQ(camera.GrabFrame(4), 0);
    EXPECT_EQ(session->patternStandsIn, 1);
    EXPECT_EQ(WorkingByte(0, 0, 0), 16); // 50 / 3
    EXPECT_EQ(camera.GrabFrame(1), 0);
    EXPECT_EQ(WorkingByte(0, 0, 0), 33); // 100 / 3
    EXPECT_TRUE(ShowsTestPattern());
    EXPECT_TRUE(scripted.calls.empty());
    EXPECT_TRUE(Information().empty());
}

struct OddImage {
    int width;
    int height;
    std::size_t sent;
    std::int32_t byteCount;
};

class OddImages : public GrabFrame, public testing::WithParamInterface<OddImage> {};

TEST_P(OddImages, AreLimitedToWhatWasSentAndToTheBuffers) {
    const OddImage& image = GetParam();
    session->workingFrame.Data()[frameByteCount - 1] = 200;
    scripted.ThenImage(image.width, image.height, Samples(image.sent, 90));
    scripted.ThenImage(image.width, image.height, Samples(image.sent, 91));
    camera.GrabFrame(2);
    EXPECT_EQ(session->byteCount, image.byteCount);
    EXPECT_EQ(session->width, 2464) << "once more the sensor's";
    EXPECT_EQ(session->testPatternPhase, 0U);
    const auto count = static_cast<std::size_t>(image.byteCount);
    EXPECT_TRUE(std::all_of(session->rawFrame.begin(),
                            session->rawFrame.begin() + static_cast<std::ptrdiff_t>(count),
                            [](std::uint8_t sample) { return sample == 90; }));
    if (count < sensorByteCount) {
        EXPECT_EQ(session->accumulator[count], 0) << "beyond";
        EXPECT_EQ(session->workingFrame.Data()[frameByteCount - 1], 200) << "beyond";
    }
}

INSTANTIATE_TEST_SUITE_P(
    Each, OddImages,
    testing::Values(OddImage{0, 0, 0, 0}, OddImage{1, 1, 1, 1}, OddImage{2464, 2, 4928, 4928},
                    OddImage{2464, 3, 7392, 7392}, OddImage{2463, 2056, 5'063'528, 5'063'528},
                    OddImage{2056, 2464, 5'065'984, 5'065'984}, OddImage{2592, 2048, 5'308'416, 5'065'984},
                    OddImage{2464, 2056, 5'065'983, 5'065'983}, OddImage{2464, 2056, 0, 0},
                    OddImage{65'536, 65'536, 100, 100}, OddImage{-2464, -2056, 5'065'984, 0},
                    OddImage{2464, 2056, 5'100'000, 5'065'984}));

TEST_F(GrabFrame, TakesTheSizeOfTheLastOfSeveralSizes) {
    ThenEvenImage(10);
    scripted.ThenImage(100, 50, Samples(5000, 20));
    camera.GrabFrame(2);
    EXPECT_EQ(session->byteCount, 5000);
    EXPECT_EQ(session->rawFrame[4999], 15);
    EXPECT_EQ(session->rawFrame[5000], 0) << "not averaged";
    EXPECT_EQ(session->accumulator[5000], 10);
}

TEST_F(GrabFrame, TakesTheTestPatternsWidthFromTheImageBeforeTheFault) {
    scripted.ThenImage(1000, 10, Samples(10'000, 20));
    scripted.ThenFault("gone");
    camera.GrabFrame(2);
    EXPECT_EQ(session->width, 1000);
    EXPECT_EQ(session->workingFrame.Data()[999], 94);  // 1049 / 3 = 349
    EXPECT_EQ(session->workingFrame.Data()[1000], 16); // x is 0 again
    EXPECT_EQ(session->workingFrame.Data()[2000], 17); // two rows down
}

} // namespace
} // namespace tessaro
