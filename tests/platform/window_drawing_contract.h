#pragma once

#include "platform/user_interface.h"
#include "tests/platform/recording_procedures.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

// What every WindowDrawing must do. Instantiate it for each machine:
// INSTANTIATE_TYPED_TEST_SUITE_P(Qt, WindowDrawingContract, QtMachine);

namespace tessaro {

template<class Machine>
class WindowDrawingContract : public testing::Test {
protected:
    WindowDrawingContract() {
        m_machine.ui.windows.RegisterWindowClass({"contract", &m_procedure});
        m_window = m_machine.ui.windows.MakeWindow({"contract", "Contract", {}, 0, 0, 300, 200});
        m_machine.ui.windows.Show(m_window);
        Message message;
        while (m_machine.ui.messages.TakeMessage(message, 0))
            m_machine.ui.messages.Dispatch(message);
        m_context = Drawing().GetWindowContext(m_window);
    }

    WindowDrawing& Drawing() { return m_machine.ui.drawing; }

    static BitmapHeader HeaderOf(int width, int height) {
        BitmapHeader header;
        header.size = 40;
        header.width = width;
        header.height = height;
        header.planes = 1;
        header.bitsPerPixel = 32;
        return header;
    }

    /// Each pixel's blue is its column, its green the screen row, counted from one.
    static std::vector<std::uint8_t> Numbered(int width, int height) {
        std::vector<std::uint8_t> rows; // from the bottom up
        for (int y = height - 1; y >= 0; --y) {
            for (int x = 0; x < width; ++x) {
                rows.push_back(static_cast<std::uint8_t>(x + 1));
                rows.push_back(static_cast<std::uint8_t>(y + 1));
                rows.push_back(7);
                rows.push_back(0);
            }
        }
        return rows;
    }

    BitmapHandle NumberedBitmap(int width, int height) {
        const BitmapHandle bitmap = Drawing().CreateCompatibleBitmap(m_context, width, height);
        const std::vector<std::uint8_t> rows = Numbered(width, height);
        EXPECT_EQ(Drawing().SetBitmapRows(m_context, bitmap, rows.data(), HeaderOf(width, height)), height);
        return bitmap;
    }

    /// A context in memory that draws on the bitmap.
    DeviceContext In(BitmapHandle bitmap) {
        const DeviceContext context = Drawing().CreateCompatibleContext(m_context);
        EXPECT_EQ(Drawing().SelectBitmap(context, bitmap), BitmapHandle::None);
        return context;
    }

    /// Column and screen row that the pixels of a bitmap came from, "." for those that nothing was copied to.
    std::vector<std::string> Origins(BitmapHandle bitmap) {
        const Picture picture = Drawing().BitmapPicture(bitmap);
        std::vector<std::string> lines;
        for (int y = 0; y < picture.height; ++y) {
            std::string line;
            for (int x = 0; x < picture.width; ++x) {
                const std::uint8_t* pixel = picture.Pixel(x, y);
                if (pixel[2] == 7)
                    line += std::to_string(pixel[0]) + std::to_string(pixel[1]) + " ";
                else
                    line += ". ";
            }
            lines.push_back(line);
        }
        return lines;
    }

    Machine m_machine;
    RecordingWindowProcedure m_procedure;
    WindowHandle m_window = WindowHandle::None;
    DeviceContext m_context = DeviceContext::None;
};

TYPED_TEST_SUITE_P(WindowDrawingContract);

TYPED_TEST_P(WindowDrawingContract, HasContextsOfWindowsThatAreThere) {
    EXPECT_NE(this->m_context, DeviceContext::None);
    EXPECT_EQ(this->Drawing().GetWindowContext(WindowHandle::None), DeviceContext::None);
    this->m_machine.ui.windows.Destroy(this->m_window);
    EXPECT_EQ(this->Drawing().GetWindowContext(this->m_window), DeviceContext::None);
}

TYPED_TEST_P(WindowDrawingContract, StoresRowsFromTheBottomUp) {
    const BitmapHandle bitmap = this->NumberedBitmap(3, 2);
    EXPECT_EQ(this->Origins(bitmap), (std::vector<std::string>{"11 21 31 ", "12 22 32 "}));
    std::vector<std::uint8_t> back(3 * 2 * 4, 99);
    EXPECT_EQ(this->Drawing().GetBitmapRows(this->m_context, bitmap, back.data(), this->HeaderOf(3, 2)), 2);
    const std::vector<std::uint8_t> rows = this->Numbered(3, 2);
    for (std::size_t i = 0; i < rows.size(); ++i) {
        if (i % 4 != 3) {
            EXPECT_EQ(back[i], rows[i]) << "byte " << i;
        }
    }
}

TYPED_TEST_P(WindowDrawingContract, DescribesItsBitmaps) {
    BitmapDescription description;
    ASSERT_TRUE(this->Drawing().DescribeBitmap(this->NumberedBitmap(5, 3), description));
    EXPECT_EQ(description.width, 5);
    EXPECT_EQ(description.height, 3);
    EXPECT_EQ(description.bytesPerRow, 20);
    EXPECT_EQ(description.bitsPerPixel, 32);
}

TYPED_TEST_P(WindowDrawingContract, KnowsNothingOfADeletedBitmap) {
    const BitmapHandle bitmap = this->NumberedBitmap(2, 2);
    const DeviceContext memory = this->In(bitmap);
    this->Drawing().DeleteBitmap(bitmap);
    this->Drawing().DeleteBitmap(bitmap);
    BitmapDescription description;
    std::vector<std::uint8_t> rows(16);
    EXPECT_FALSE(this->Drawing().DescribeBitmap(bitmap, description));
    EXPECT_EQ(this->Drawing().SetBitmapRows(this->m_context, bitmap, rows.data(), this->HeaderOf(2, 2)), 0);
    EXPECT_EQ(this->Drawing().GetBitmapRows(this->m_context, bitmap, rows.data(), this->HeaderOf(2, 2)), 0);
    EXPECT_EQ(this->Drawing().BitmapPicture(bitmap).width, 0);
    EXPECT_FALSE(this->Drawing().CopyPixels(this->m_context, 0, 0, 2, 2, memory, 0, 0));
    EXPECT_EQ(this->Drawing().Surface(memory), nullptr);
}

TYPED_TEST_P(WindowDrawingContract, RefusesRowsThatTheHeaderDescribesWrongly) {
    const BitmapHandle bitmap = this->NumberedBitmap(3, 2);
    std::vector<std::uint8_t> rows(400);
    for (const auto [width, height] : {std::array{2, 2}, std::array{3, 3}, std::array{4, 2}}) {
        const BitmapHeader header = this->HeaderOf(width, height);
        EXPECT_EQ(this->Drawing().SetBitmapRows(this->m_context, bitmap, rows.data(), header), 0);
        EXPECT_EQ(this->Drawing().GetBitmapRows(this->m_context, bitmap, rows.data(), header), 0);
    }
    BitmapHeader header = this->HeaderOf(3, 2);
    header.bitsPerPixel = 24;
    EXPECT_EQ(this->Drawing().SetBitmapRows(this->m_context, bitmap, rows.data(), header), 0);
    EXPECT_EQ(this->Drawing().GetBitmapRows(this->m_context, bitmap, rows.data(), header), 0);
    EXPECT_EQ(this->Origins(bitmap)[0], "11 21 31 ") << "nothing was changed";
}

TYPED_TEST_P(WindowDrawingContract, MakesNothingWithoutAContext) {
    std::vector<std::uint8_t> rows(16);
    const BitmapHandle bitmap = this->NumberedBitmap(2, 2);
    WindowDrawing& drawing = this->Drawing();
    EXPECT_EQ(drawing.CreateCompatibleBitmap(DeviceContext::None, 2, 2), BitmapHandle::None);
    EXPECT_EQ(drawing.CreateCompatibleContext(DeviceContext::None), DeviceContext::None);
    EXPECT_EQ(drawing.SetBitmapRows(DeviceContext::None, bitmap, rows.data(), this->HeaderOf(2, 2)), 0);
    EXPECT_EQ(drawing.GetBitmapRows(DeviceContext::None, bitmap, rows.data(), this->HeaderOf(2, 2)), 0);
    EXPECT_EQ(drawing.SelectBitmap(DeviceContext::None, bitmap), BitmapHandle::None);
    EXPECT_FALSE(drawing.CopyPixels(this->m_context, 0, 0, 2, 2, DeviceContext::None, 0, 0));
    EXPECT_FALSE(drawing.CopyPixels(DeviceContext::None, 0, 0, 2, 2, this->m_context, 0, 0));
    EXPECT_EQ(drawing.Surface(DeviceContext::None), nullptr);
}

TYPED_TEST_P(WindowDrawingContract, MakesNoBitmapWithoutPixels) {
    for (const auto [width, height] : {std::array{0, 2}, std::array{2, 0}, std::array{-1, 2}})
        EXPECT_EQ(this->Drawing().CreateCompatibleBitmap(this->m_context, width, height), BitmapHandle::None);
}

TYPED_TEST_P(WindowDrawingContract, SelectsOneBitmapAfterTheOther) {
    const BitmapHandle first = this->NumberedBitmap(2, 2);
    const BitmapHandle second = this->NumberedBitmap(1, 1);
    const DeviceContext memory = this->Drawing().CreateCompatibleContext(this->m_context);
    EXPECT_EQ(this->Drawing().SelectBitmap(memory, first), BitmapHandle::None);
    EXPECT_EQ(this->Drawing().SelectBitmap(memory, second), first);
    EXPECT_EQ(this->Drawing().SelectBitmap(memory, BitmapHandle::None), second);
    EXPECT_EQ(this->Drawing().Surface(memory), nullptr);
    EXPECT_FALSE(this->Drawing().CopyPixels(this->m_context, 0, 0, 1, 1, memory, 0, 0));
}

TYPED_TEST_P(WindowDrawingContract, CopiesOnlyWhatBothHave) {
    struct Case {
        int x, y, width, height, sourceX, sourceY;
        std::vector<std::string> expected;
    };
    const std::string none = ". . . ";
    const std::vector<Case> cases = {
        {0, 0, 3, 3, 0, 0, {"11 21 31 ", "12 22 32 ", "13 23 33 "}},
        {1, 0, 3, 3, 0, 0, {". 11 21 ", ". 12 22 ", ". 13 23 "}},  // over the right edge
        {0, 2, 3, 3, 0, 0, {none, none, "11 21 31 "}},             // over the bottom
        {-1, 0, 3, 3, 0, 0, {"21 31 . ", "22 32 . ", "23 33 . "}}, // over the left edge
        {0, -2, 3, 3, 0, 0, {"13 23 33 ", none, none}},            // over the top
        {0, 0, 3, 3, 2, 1, {"32 . . ", "33 . . ", none}},          // past the end of the source
        {0, 0, 3, 3, -1, -2, {none, none, ". 11 21 "}},            // before its beginning
        {-1, 0, 3, 1, -2, 0, {". 11 . ", none, none}},             // both
        {1, 1, 1, 1, 2, 2, {none, ". 33 . ", none}},
        {9, 9, 3, 3, 0, 0, {none, none, none}},
        {-9, -9, 3, 3, 0, 0, {none, none, none}},
        {0, 0, 3, 3, 9, 0, {none, none, none}},
        {0, 0, 0, 3, 0, 0, {none, none, none}},
        {0, 0, -3, -3, 0, 0, {none, none, none}},
    };
    const DeviceContext source = this->In(this->NumberedBitmap(3, 3));
    for (const Case& test : cases) {
        const BitmapHandle bitmap = this->Drawing().CreateCompatibleBitmap(this->m_context, 3, 3);
        EXPECT_TRUE(this->Drawing().CopyPixels(this->In(bitmap), test.x, test.y, test.width, test.height,
                                               source, test.sourceX, test.sourceY));
        EXPECT_EQ(this->Origins(bitmap), test.expected)
            << test.x << "," << test.y << " " << test.width << "x" << test.height << " from " << test.sourceX
            << "," << test.sourceY;
    }
}

TYPED_TEST_P(WindowDrawingContract, ReadsBackWhatItCopiedToAWindow) {
    const DeviceContext source = this->In(this->NumberedBitmap(3, 2));
    ASSERT_TRUE(this->Drawing().CopyPixels(this->m_context, 10, 20, 3, 2, source, 0, 0));
    this->Drawing().ReleaseContext(this->m_context);
    this->m_context = this->Drawing().GetWindowContext(this->m_window);
    const BitmapHandle back = this->Drawing().CreateCompatibleBitmap(this->m_context, 4, 3);
    ASSERT_TRUE(this->Drawing().CopyPixels(this->In(back), 0, 0, 4, 3, this->m_context, 9, 19));
    EXPECT_EQ(this->Origins(back), (std::vector<std::string>{". . . . ", ". 11 21 31 ", ". 12 22 32 "}));
}

TYPED_TEST_P(WindowDrawingContract, FillsAnAreaWithoutItsRightAndBottomEdge) {
    const BitmapHandle bitmap = this->NumberedBitmap(4, 3);
    const DeviceContext memory = this->In(bitmap);
    this->Drawing().FillArea(memory, {1, 1, 3, 2}, white);
    EXPECT_EQ(this->Origins(bitmap),
              (std::vector<std::string>{"11 21 31 41 ", "12 . . 42 ", "13 23 33 43 "}));
    const Picture filled = this->Drawing().BitmapPicture(bitmap);
    EXPECT_EQ(filled.Pixel(1, 1)[0], 255);
    this->Drawing().FillArea(memory, {-5, -5, 1, 99}, white);
    this->Drawing().FillArea(memory, {3, -5, 99, 99}, white);
    EXPECT_EQ(this->Origins(bitmap), (std::vector<std::string>{". 21 31 . ", ". . . . ", ". 23 33 . "}));
}

TYPED_TEST_P(WindowDrawingContract, DrawsAPictureWithClippingOnAllSides) {
    Picture picture(2, 2);
    for (std::size_t i = 0; i < picture.pixels.size(); i += 4)
        picture.pixels[i + 2] = 200;
    for (const auto [x, y, drawn] :
         {std::array{0, 0, 4}, std::array{2, 1, 2}, std::array{1, 2, 2}, std::array{-1, 0, 2},
          std::array{0, -1, 2}, std::array{-1, -1, 1}, std::array{3, 0, 0}, std::array{0, -2, 0}}) {
        const BitmapHandle bitmap = this->NumberedBitmap(3, 3);
        this->Drawing().DrawPicture(this->In(bitmap), x, y, picture);
        const Picture now = this->Drawing().BitmapPicture(bitmap);
        int found = 0;
        for (int row = 0; row < 3; ++row) {
            for (int column = 0; column < 3; ++column) {
                const bool inside = column >= x && column < x + 2 && row >= y && row < y + 2;
                EXPECT_EQ(now.Pixel(column, row)[2], inside ? 200 : 7) << column << "," << row;
                found += inside ? 1 : 0;
            }
        }
        EXPECT_EQ(found, drawn);
    }
}

TYPED_TEST_P(WindowDrawingContract, DrawsNothingOnAWindowThatIsGone) {
    const DeviceContext source = this->In(this->NumberedBitmap(2, 2));
    this->m_machine.ui.windows.Destroy(this->m_window);
    EXPECT_FALSE(this->Drawing().CopyPixels(this->m_context, 0, 0, 2, 2, source, 0, 0));
    EXPECT_FALSE(this->Drawing().CopyPixels(source, 0, 0, 2, 2, this->m_context, 0, 0));
    EXPECT_EQ(this->Drawing().Surface(this->m_context), nullptr);
    this->Drawing().FillArea(this->m_context, {0, 0, 5, 5}, white);
    this->Drawing().DrawPicture(this->m_context, 0, 0, Picture(2, 2));
    this->Drawing().ReleaseContext(this->m_context);
    this->Drawing().ReleaseContext(this->m_context);
}

TYPED_TEST_P(WindowDrawingContract, DrawsNothingWithAReleasedOrDeletedContext) {
    const BitmapHandle bitmap = this->NumberedBitmap(2, 2);
    const DeviceContext source = this->In(bitmap);
    this->Drawing().DeleteContext(source);
    EXPECT_FALSE(this->Drawing().CopyPixels(this->m_context, 0, 0, 2, 2, source, 0, 0));
    const DeviceContext other = this->In(bitmap);
    this->Drawing().ReleaseContext(this->m_context);
    EXPECT_FALSE(this->Drawing().CopyPixels(this->m_context, 0, 0, 2, 2, other, 0, 0));
    EXPECT_EQ(this->Drawing().Surface(this->m_context), nullptr);
    EXPECT_EQ(this->Origins(bitmap)[0], "11 21 ") << "a bitmap outlives its contexts";
}

REGISTER_TYPED_TEST_SUITE_P(WindowDrawingContract, HasContextsOfWindowsThatAreThere,
                            StoresRowsFromTheBottomUp, DescribesItsBitmaps, KnowsNothingOfADeletedBitmap,
                            RefusesRowsThatTheHeaderDescribesWrongly, MakesNothingWithoutAContext,
                            MakesNoBitmapWithoutPixels, SelectsOneBitmapAfterTheOther, CopiesOnlyWhatBothHave,
                            ReadsBackWhatItCopiedToAWindow, FillsAnAreaWithoutItsRightAndBottomEdge,
                            DrawsAPictureWithClippingOnAllSides, DrawsNothingOnAWindowThatIsGone,
                            DrawsNothingWithAReleasedOrDeletedContext);

} // namespace tessaro
