#pragma once

#include "analysis/field_analysis.h"

namespace tessaro {

inline constexpr int candidateMarginColumns = 25; // reduced columns on either side that are not searched
inline constexpr int candidateMarginRows = 1;     // reduced rows below and above

/// Fills the candidate list and map with the reduced pixels whose contrasts match the targets, row by row
/// from the buffer's row 0, leaving the margins out. Ends silently at the
/// 20,000th. With `paint` each candidate is marked by one red pixel on the surface.
void FindCandidates(FieldAnalysis& field, bool paint);

/// Removes every candidate with fewer than three marked neighbours, in list order; a removal counts at once
/// for those that follow. The list keeps its length.
void RejectNoise(FlakeAnalyzer& analyzer);

/// Candidates that are live.
int LiveCandidates(const FlakeAnalyzer& analyzer);

/// Rejection of the live ones of `count` candidates whose 3 x 3 neighbourhood in `map` (either resolution),
/// the candidate included, holds fewer than `fewestMarks` marks.
template<typename Map>
void RejectIsolated(Candidate* candidates, int count, Map& map, int fewestMarks) {
    for (Candidate* candidate = candidates; candidate != candidates + count; ++candidate) {
        if (candidate->live == 0)
            continue;
        const int x = candidate->x;
        const int y = candidate->y;
        int marks = 0;
        for (int column = x - 1; column <= x + 1; ++column)
            marks += map.Get(column, y - 1) + map.Get(column, y) + map.Get(column, y + 1);
        if (marks < fewestMarks) {
            *candidate = {};
            map.Set(x, y, 0);
        }
    }
}

} // namespace tessaro
