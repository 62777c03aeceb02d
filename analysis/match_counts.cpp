#include "analysis/match_counts.h"

#include "analysis/contrast.h"
#include "analysis/field_analysis.h"

namespace tessaro {

int MatchCounts::Between(FieldAnalysis& field, int row, int left, int right) {
    const auto r = static_cast<std::size_t>(row);
    if (m_knownColumns[r] < right)
        Extend(field, row, right);
    return m_counts[r][static_cast<std::size_t>(right)] - m_counts[r][static_cast<std::size_t>(left)];
}

void MatchCounts::Extend(FieldAnalysis& field, int row, int columns) {
    const auto r = static_cast<std::size_t>(row);
    RowCounts& counts = m_counts[r];
    ContrastTable& table = field.scratch.contrastTable;
    const bool interpolated = field.analyzer.useInterpolatedBackground != 0;
    if (interpolated)
        table.Prepare(field.settings, field.measured.background);
    for (int x = m_knownColumns[r]; x < columns; ++x) {
        const bool match = interpolated
                               ? ContrastTable::Match(table.MatchesAt(x / reduction, row / reduction),
                                                      field.frame.pixels + PixelOffset(x, row))
                               : ClassifyPixelByBlock(field, x, row) == ContrastClass::Match;
        const auto column = static_cast<std::size_t>(x);
        counts[column + 1] = static_cast<std::uint16_t>(counts[column] + (match ? 1 : 0));
    }
    m_knownColumns[r] = static_cast<std::int16_t>(columns);
}

} // namespace tessaro
