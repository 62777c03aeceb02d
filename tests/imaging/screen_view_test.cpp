#include "imaging/screen_view.h"
#include "support/imaging_fixture.h"

#include <cstring>
#include <utility>

namespace tessaro {
namespace {

using Texts = std::vector<std::string>;

class ScreenSetUp : public ImagingFixture {};

TEST_F(ScreenSetUp, MakesABitmapOfTheFramesSizeAndAContext) {
    screen.SetUp();
    ASSERT_NE(view.screenBitmap, BitmapHandle::None);
    EXPECT_EQ(ui.drawing.bitmaps.at(view.screenBitmap).width, 1232);
    EXPECT_EQ(ui.drawing.bitmaps.at(view.screenBitmap).height, 1028);
    EXPECT_NE(view.memoryContext, DeviceContext::None);
    EXPECT_EQ(view.description.width, 1232);
    EXPECT_EQ(view.description.height, 1028);
    EXPECT_EQ(view.errorCounter, 0);
    EXPECT_EQ(ui.drawing.contextsHeld, 0);
    EXPECT_TRUE(Information().empty());
}

TEST_F(ScreenSetUp, DescribesRowsFromTheBottomUp) {
    screen.SetUp();
    EXPECT_EQ(view.header.size, 40U);
    EXPECT_EQ(view.header.width, 1232);
    EXPECT_EQ(view.header.height, 1028);
    EXPECT_EQ(view.header.planes, 1);
    EXPECT_EQ(view.header.bitsPerPixel, 32);
    EXPECT_EQ(view.header.compression, 0U);
    EXPECT_EQ(view.header.imageSize, 0U);
    EXPECT_EQ(view.header.horizontalResolution, 0);
    EXPECT_EQ(view.header.verticalResolution, 0);
    EXPECT_EQ(view.header.coloursUsed, 0U);
    EXPECT_EQ(view.header.coloursImportant, 0U);
}

TEST_F(ScreenSetUp, TriesForABitmapWithoutEndEvery100Milliseconds) {
    ui.drawing.failBitmap = 50;
    screen.SetUp();
    EXPECT_NE(view.screenBitmap, BitmapHandle::None);
    EXPECT_EQ(Information(), Texts(50, "CreateCompatibleBitmap Failed"));
    EXPECT_EQ(ui.clock.now, 5000U);
    EXPECT_EQ(view.errorCounter, 0) << "these failures are not counted";
    EXPECT_EQ(ui.drawing.contextsHeld, 0);
}

TEST_F(ScreenSetUp, TriesForAContextAtOnceAndUpTo20Times) {
    ui.drawing.failContext = 19;
    screen.SetUp();
    EXPECT_NE(view.memoryContext, DeviceContext::None);
    EXPECT_EQ(Information(), Texts(19, "CreateCompatibleDC has failed"));
    EXPECT_EQ(view.errorCounter, 19);
    EXPECT_EQ(ui.clock.now, 0U);
    EXPECT_EQ(ui.drawing.bitmaps.size(), 1U) << "the bitmaps of the failed attempts are gone";
}

TEST_F(ScreenSetUp, GivesUpAfter20ContextsButGoesOnToTheScreenCopy) {
    ui.drawing.failContext = FakeWindowDrawing::forEver;
    screen.SetUp();
    EXPECT_EQ(view.memoryContext, DeviceContext::None);
    EXPECT_EQ(Information(), Texts(20, "CreateCompatibleDC has failed"));
    EXPECT_EQ(view.errorCounter, 20);
    EXPECT_NE(view.screenCopy, nullptr);
    EXPECT_EQ(ui.drawing.contextsHeld, 0);
}

TEST_F(ScreenSetUp, EndsWhenTheWindowIsClosedMeanwhile) {
    ui.drawing.failBitmap = FakeWindowDrawing::forEver;
    ui.messages.PostAt(250, {windows.main, MessageKind::Other});
    ui.messages.onDispatch = [&](const Message&) { ui.windows.Destroy(windows.main); };
    screen.SetUp();
    EXPECT_EQ(Information().size(), 3U);
    EXPECT_EQ(ui.clock.now, 300U);
}

class ShowBufferTest : public ImagingFixture {
protected:
    ShowBufferTest() { screen.SetUp(); }

    int Show() { return screen.ShowBuffer(frame.Data()); }
};

TEST_F(ShowBufferTest, PutsTheImageOnTheTopLeftOfTheWindowBottomUp) {
    NumberRows(frame);
    EXPECT_EQ(Show(), 1);
    EXPECT_EQ(BytesAt(Window(), 0, 0), (Bytes{1027 % 251, 1, 2, 3}));
    EXPECT_EQ(BytesAt(Window(), 1231, 0), (Bytes{1027 % 251, 1, 2, 3}));
    EXPECT_EQ(BytesAt(Window(), 600, 1), (Bytes{1026 % 251, 1, 2, 3}));
    EXPECT_EQ(BytesAt(Window(), 0, 1027), (Bytes{0, 1, 2, 3}));
    EXPECT_EQ(BytesAt(Window(), 1232, 0), (Bytes{0, 0, 0, 0}));
    EXPECT_EQ(BytesAt(Window(), 0, 1028), (Bytes{0, 0, 0, 0}));
}

TEST_F(ShowBufferTest, LeavesTheBitmapOutOfTheContextAndNoContextHeld) {
    EXPECT_EQ(Show(), 1);
    EXPECT_EQ(ui.drawing.contexts.at(view.memoryContext).selected, BitmapHandle::None);
    EXPECT_EQ(ui.drawing.contextsHeld, 0);
    EXPECT_EQ(view.errorCounter, 0);
    EXPECT_EQ(view.lastResult, 1);
    EXPECT_EQ(ui.clock.now, 0U);
}

TEST_F(ShowBufferTest, TriesAgainEvery100MillisecondsWhenRowsCannotBeSet) {
    NumberRows(frame);
    ui.drawing.failSetRows = 3;
    EXPECT_EQ(Show(), 1);
    EXPECT_EQ(Information(),
              (Texts{"SetDIBits has failed, error count: 0", "SetDIBits has failed, error count: 1",
                     "SetDIBits has failed, error count: 2"}));
    EXPECT_EQ(ui.clock.now, 300U);
    EXPECT_EQ(view.errorCounter, 3);
    EXPECT_EQ(BytesAt(Window(), 5, 1027), (Bytes{0, 1, 2, 3}));
    EXPECT_EQ(ui.drawing.contextsHeld, 0);
}

TEST_F(ShowBufferTest, SucceedsAtTheTwentiethTry) {
    ui.drawing.failSetRows = 19;
    EXPECT_EQ(Show(), 1);
    EXPECT_EQ(Information().size(), 19U);
}

TEST_F(ShowBufferTest, GivesUpAfter20TimesThatRowsCouldNotBeSet) {
    ui.drawing.failSetRows = FakeWindowDrawing::forEver;
    EXPECT_EQ(Show(), 0);
    EXPECT_EQ(ui.drawing.setRowsCalls, 20);
    EXPECT_EQ(Information().size(), 20U);
    EXPECT_EQ(Information().back(), "SetDIBits has failed, error count: 19");
    EXPECT_EQ(view.errorCounter, 20);
    EXPECT_EQ(view.lastResult, 0);
    EXPECT_EQ(ui.clock.now, 2000U);
    EXPECT_EQ(ui.drawing.contextsHeld, 0);
}

TEST_F(ShowBufferTest, CountsAnewForEveryImage) {
    ui.drawing.failSetRows = FakeWindowDrawing::forEver;
    Show();
    ui.drawing.failSetRows = 1;
    EXPECT_EQ(Show(), 1);
    EXPECT_EQ(Information().back(), "SetDIBits has failed, error count: 0");
}

TEST_F(ShowBufferTest, CopiesAgainEvery100MillisecondsWhenTheWindowDoesNotTakeIt) {
    ui.drawing.failCopy = 2;
    EXPECT_EQ(Show(), 1);
    EXPECT_EQ(Information(), (Texts{"BitBlt to window has failed, error count: 0",
                                    "BitBlt to window has failed, error count: 1"}));
    EXPECT_EQ(ui.drawing.copyCalls, 3);
    EXPECT_EQ(ui.drawing.setRowsCalls, 1);
    EXPECT_EQ(ui.clock.now, 200U);
}

TEST_F(ShowBufferTest, CopiesForTheTenthTimeBeforeItMakesTheBitmapAnew) {
    ui.drawing.failCopy = 9;
    EXPECT_EQ(Show(), 1);
    EXPECT_EQ(ui.drawing.bitmapsMade, 1);
}

TEST_F(ShowBufferTest, MakesTheBitmapAnewAfterTenFailedCopies) {
    NumberRows(frame);
    const BitmapHandle first = view.screenBitmap;
    ui.drawing.failCopy = 10;
    EXPECT_EQ(Show(), 1);
    EXPECT_EQ(Information().size(), 10U);
    EXPECT_EQ(Information().back(), "BitBlt to window has failed, error count: 9");
    EXPECT_EQ(ui.drawing.bitmapsMade, 2);
    EXPECT_NE(view.screenBitmap, first);
    EXPECT_FALSE(ui.drawing.bitmaps.contains(first));
    EXPECT_EQ(ui.drawing.setRowsCalls, 2) << "the new bitmap is filled again";
    EXPECT_EQ(BytesAt(Window(), 0, 1027), (Bytes{0, 1, 2, 3}));
    EXPECT_EQ(ui.drawing.contextsHeld, 0);
}

TEST_F(ShowBufferTest, CopiesOnceToEveryBitmapThatFollowsBecauseTheCounterGoesOn) {
    ui.drawing.failCopy = 12;
    EXPECT_EQ(Show(), 1);
    EXPECT_EQ(ui.drawing.bitmapsMade, 4);
    EXPECT_EQ(Information().back(), "BitBlt to window has failed, error count: 11");
    EXPECT_EQ(view.errorCounter, 12);
}

TEST_F(ShowBufferTest, CountsFailedRowsAndFailedCopiesTogether) {
    ui.drawing.failSetRows = 9;
    ui.drawing.failCopy = 1;
    EXPECT_EQ(Show(), 1);
    EXPECT_EQ(Information().back(), "BitBlt to window has failed, error count: 9");
    EXPECT_EQ(ui.drawing.bitmapsMade, 2);
}

TEST_F(ShowBufferTest, EndsWhenNoNewBitmapCanBeMade) {
    ui.drawing.failCopy = 10;
    ui.drawing.failBitmap = 1;
    EXPECT_EQ(Show(), 0);
    EXPECT_EQ(Information().size(), 11U);
    EXPECT_EQ(Information().back(), "CreateCompatibleBitmap Failed, error count: 10");
    EXPECT_EQ(view.screenBitmap, BitmapHandle::None);
    EXPECT_EQ(view.errorCounter, 11);
    EXPECT_EQ(ui.clock.now, 1100U);
    EXPECT_EQ(ui.drawing.contextsHeld, 0);
}

TEST_F(ShowBufferTest, WithoutABitmapReturnsAtOnceAndTouchesNothing) {
    view.screenBitmap = BitmapHandle::None;
    view.lastResult = 7;
    NumberRows(frame);
    const Picture before = Window();
    EXPECT_EQ(Show(), 0);
    EXPECT_EQ(Window().pixels, before.pixels);
    EXPECT_EQ(ui.drawing.setRowsCalls, 0);
    EXPECT_EQ(ui.drawing.copyCalls, 0);
    EXPECT_EQ(view.lastResult, 7);
    EXPECT_TRUE(Information().empty());
    EXPECT_EQ(ui.clock.now, 0U);
}

TEST_F(ShowBufferTest, EndsWhenTheWindowIsClosedBetweenTwoTries) {
    ui.drawing.failSetRows = FakeWindowDrawing::forEver;
    ui.messages.PostAt(150, {windows.main, MessageKind::Other});
    ui.messages.onDispatch = [&](const Message&) { ui.windows.Destroy(windows.main); };
    EXPECT_EQ(Show(), 0);
    EXPECT_EQ(Information().size(), 2U);
}

TEST_F(ShowBufferTest, HandlesMessagesWhileItWaitsToTryAgain) {
    ui.drawing.failCopy = 1;
    ui.messages.PostAt(50, {windows.main, MessageKind::MouseMove});
    EXPECT_EQ(Show(), 1);
    EXPECT_EQ(ui.messages.dispatched.size(), 1U);
}

/// An image is shown from a message that arrives while another waits to be shown.
class NestedShow : public ShowBufferTest {
protected:
    NestedShow() {
        NumberRows(frame);
        ui.messages.PostAt(50, {windows.main, MessageKind::MouseMove});
        ui.messages.onDispatch = [this](const Message&) {
            const int failuresToCome = std::exchange(ui.drawing.failSetRows, 0);
            inner = screen.ShowBuffer(other.Data());
            ui.drawing.failSetRows = failuresToCome;
        };
    }

    FrameBuffer other;
    int inner = -1;
};

TEST_F(NestedShow, AfterFailedRowsKeepsTheContextOfTheOuterOne) {
    ui.drawing.failSetRows = 1;
    EXPECT_EQ(Show(), 1);
    EXPECT_EQ(inner, 1);
    EXPECT_EQ(ui.drawing.contextsHeld, 0);
    EXPECT_EQ(BytesAt(Window(), 0, 1027), (Bytes{0, 1, 2, 3})) << "the outer image came last";
}

TEST_F(NestedShow, AfterAFailedCopyKeepsTheContextOfTheOuterOne) {
    ui.drawing.failCopy = 1;
    EXPECT_EQ(Show(), 1);
    EXPECT_EQ(inner, 1);
    EXPECT_EQ(Information(), Texts{"BitBlt to window has failed, error count: 0"});
    EXPECT_EQ(ui.drawing.bitmapsMade, 1);
    EXPECT_EQ(ui.drawing.contextsHeld, 0);
    EXPECT_EQ(ui.drawing.contexts.at(view.memoryContext).selected, BitmapHandle::None);
}

TEST_F(NestedShow, LeavesTheOuterOneItsErrorCounter) {
    ui.drawing.failSetRows = 3;
    ui.messages.PostAt(150, {windows.main, MessageKind::MouseMove});
    EXPECT_EQ(Show(), 1);
    EXPECT_EQ(inner, 1);
    EXPECT_EQ(Information().back(), "SetDIBits has failed, error count: 2");
}

class ScreenDrawing : public ImagingFixture {
protected:
    ScreenDrawing() { screen.SetUp(); }
};

TEST_F(ScreenDrawing, ClearsARectangleToWhite) {
    screen.ClearRectangle({3, 4, 6, 8});
    EXPECT_EQ(BytesAt(Window(), 3, 4), whiteBytes);
    EXPECT_EQ(BytesAt(Window(), 5, 7), whiteBytes);
    EXPECT_EQ(BytesAt(Window(), 6, 7), (Bytes{0, 0, 0, 0}));
    EXPECT_EQ(BytesAt(Window(), 5, 8), (Bytes{0, 0, 0, 0}));
    EXPECT_EQ(ui.drawing.contextsHeld, 0);
}

TEST_F(ScreenDrawing, PutsTheScaleBar100PixelsFromTheRightAnd50FromTheBottom) {
    ui.drawing.SelectBitmap(view.memoryContext, view.screenBitmap);
    screen.DrawScaleBar(view.memoryContext);
    const std::vector<RecordingSurface::Call> expected = {
        RecordingSurface::Frame{{875, 978, 1132, 976}, 1, Colour{0, 0, 255}},
        RecordingSurface::Text{"100 um", {875, 998, 1132, 996}, TextAlignment::Centre, Colour{0, 0, 255}}};
    EXPECT_EQ(ui.drawing.memorySurface.calls, expected);
}

TEST_F(ScreenDrawing, OfTheScaleBarPutsThePreviousBitmapBack) {
    const DeviceContext window = ui.drawing.GetWindowContext(windows.main);
    view.previousBitmap = ui.drawing.CreateCompatibleBitmap(window, 5, 5);
    ui.drawing.ReleaseContext(window);
    ui.drawing.SelectBitmap(view.memoryContext, view.screenBitmap);
    screen.DrawScaleBar(view.memoryContext);
    EXPECT_EQ(ui.drawing.contexts.at(view.memoryContext).selected, view.previousBitmap);
}

} // namespace
} // namespace tessaro
