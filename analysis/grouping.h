#pragma once

#include "analysis/field_analysis.h"

#include <cstdint>
#include <string_view>

namespace tessaro {

/// The smallest grain that an area setting in um^2 lets through: trunc(area / 2.56) reduced pixels, and
/// trunc(area * 16 / 2.56) pixels at full resolution. Areas beyond the range of int give its limits.
int MinimumReducedPixels(std::int32_t areaUm2);
int MinimumFullPixels(std::int32_t areaUm2);

inline constexpr int maximumGrainPixels = 10'000;

inline constexpr std::string_view grainOverflowText = "MAX_GRAIN overflow: group counting stopped";

/// Gathers the live candidates into grains, in list order: a candidate joins the first grain that has a pixel
/// within city-block distance 2 of it, unless that grain holds 9,999 pixels already, and opens a new grain
/// otherwise. Then merges grains that touch at two or more pairs of pixels, in two passes, and empties those
/// with fewer than minSize or more than maxSize pixels. groupCount becomes the number of slots used, emptied
/// ones included.
///
/// The 298th grain ends the gathering with a message to the status sink. Candidates outside the frame are
/// none: they are passed over.
void GroupCandidates(FieldAnalysis& field, const Candidate* candidates, int candidateCount,
                     GrainTable& grains, std::int32_t& groupCount, int minSize, int maxSize);

/// GroupCandidates of the field's candidates into its grain table, with the minimum flake area of the
/// settings; then the grains' edges.
void GroupGrains(FieldAnalysis& field);

/// Moves grain b into grain a when they touch at two or more pairs of pixels.
void MergeIfTouching(Grain& a, Grain& b);

/// Moves b's pixels to the end of a; those that would be a's 10,001st or later are lost. Returns how many
/// moved.
int AppendGrain(Grain& a, Grain& b);

/// The highest index below `count` of a grain with more pixels than grain 0, or 0 if there is none. Meant so:
/// grain 0 stays the reference, this is not a search for the largest.
int LargestGrain(const GrainTable& grains, int count);

} // namespace tessaro
