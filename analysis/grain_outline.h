#pragma once

#include "analysis/grain.h"
#include "analysis/grain_box.h"
#include "imaging/frame_buffer.h"

#include <array>
#include <cstddef>

namespace tessaro {

/// First and last pixel of a grain on one row or column; empty where first > last.
struct PixelSpan {
    int first = 0;
    int last = -1;

    bool Empty() const { return first > last; }
    void Include(int position) {
        if (Empty()) {
            first = last = position;
        } else if (position < first) {
            first = position;
        } else if (position > last) {
            last = position;
        }
    }
};

/// Where a grain begins and ends on each row and column of its box: what scanning its marks from both sides
/// finds.
class GrainOutline {
public:
    void Trace(const Grain& grain, const GrainBox& box) {
        m_rows = Range(box.low, box.height, frameHeight);
        m_columns = Range(box.left, box.width, frameWidth);
        for (int y = m_rows.first; y <= m_rows.last; ++y)
            m_alongRow[Index(y)] = {};
        for (int x = m_columns.first; x <= m_columns.last; ++x)
            m_alongColumn[Index(x)] = {};
        for (int i = 0; i < grain.count; ++i) {
            const PixelPosition pixel = grain.pixels[Index(i)];
            if (pixel.x < m_columns.first || pixel.x > m_columns.last || pixel.y < m_rows.first ||
                pixel.y > m_rows.last)
                continue;
            m_alongRow[Index(pixel.y)].Include(pixel.x);
            m_alongColumn[Index(pixel.x)].Include(pixel.y);
        }
    }

    /// Rows and columns of the box that lie in the frame.
    PixelSpan Rows() const { return m_rows; }
    PixelSpan Columns() const { return m_columns; }

    PixelSpan AlongRow(int y) const { return m_alongRow[Index(y)]; }
    PixelSpan AlongColumn(int x) const { return m_alongColumn[Index(x)]; }

private:
    static std::size_t Index(int value) { return static_cast<std::size_t>(value); }
    static PixelSpan Range(int start, int length, int end) {
        return {start < 0 ? 0 : start, (start + length < end ? start + length : end) - 1};
    }

    PixelSpan m_rows;
    PixelSpan m_columns;
    std::array<PixelSpan, frameHeight> m_alongRow = {};
    std::array<PixelSpan, frameWidth> m_alongColumn = {};
};

} // namespace tessaro
