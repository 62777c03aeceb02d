#pragma once

#include "imaging/frame_buffer.h"

#include <array>
#include <cstdint>

namespace tessaro {

struct FieldAnalysis;

/// How many pixels of a stretch of a row match the target contrasts, counted up from the left as far as was
/// asked for: the grains of a field ask for the same pixels again and again.
class MatchCounts {
public:
    /// Must be called when the frame, the background or the settings have changed.
    void Forget() { m_knownColumns.fill(0); }

    /// Pixels (x, row) with left <= x < right that match; right <= frameWidth, row in the frame.
    int Between(FieldAnalysis& field, int row, int left, int right);

private:
    using RowCounts = std::array<std::uint16_t, frameWidth + 1>;

    void Extend(FieldAnalysis& field, int row, int columns);

    // [row][x]: matching pixels left of x, known for x <= m_knownColumns[row]
    std::array<RowCounts, frameHeight> m_counts = {};
    std::array<std::int16_t, frameHeight> m_knownColumns = {};
};

} // namespace tessaro
