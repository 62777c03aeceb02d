#include "compare/scan_comparison.h"

#include "analysis/candidates.h"
#include "analysis/reduced_image.h"
#include "simulated_field/simulated_field.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace tessaro {
namespace {

constexpr double marginX = candidateMarginColumns * reduction; // frame pixels
constexpr double marginY = candidateMarginRows * reduction;

bool LiesAt(const ReportedGrain& grain, const TrueFlake& flake, double toleranceUm) {
    return SignedDistance(grain.centre, flake.outline) < toleranceUm;
}

/// A grain that is reported as a single layer, and where.
struct SingleGrain {
    const ReportedGrain* grain = nullptr;
    const ReportedField* field = nullptr;
    std::size_t truth = 0; // the flake that lies there; the number of all where none does
};

/// Whether the place lies in the box of the grain, or nearer to it than the tolerance. The middle of the
/// frame is where the stage stood.
bool IsInBox(const SingleGrain& single, Vertex place, double toleranceUm) {
    const PixelBox& box = single.grain->box;
    const double x = (place.x - single.field->position.x) * framePixelsPerUm + frameWidth / 2.0;
    const double y = (place.y - single.field->position.y) * framePixelsPerUm + frameHeight / 2.0;
    const double tolerance = toleranceUm * framePixelsPerUm;
    return x >= box.left - tolerance && x <= box.right + 1 + tolerance && y >= box.minRow - tolerance &&
           y <= box.maxRow + 1 + tolerance;
}

/// A field whose border cuts a flake shows a part of it, in the box of the whole. What one field shows apart
/// is apart, unless it is known to be one.
bool AreOneFlake(const SingleGrain& a, const SingleGrain& b, std::size_t noFlake, double toleranceUm) {
    const bool mayBe = a.field != b.field || (a.truth == b.truth && a.truth != noFlake);
    return mayBe && (IsInBox(a, b.grain->centre, toleranceUm) || IsInBox(b, a.grain->centre, toleranceUm));
}

/// The one that lies there; the number of all where none does.
std::size_t FlakeAt(const ReportedGrain& grain, const std::vector<TrueFlake>& flakes, double toleranceUm) {
    const auto at = std::ranges::find_if(
        flakes, [&](const TrueFlake& flake) { return LiesAt(grain, flake, toleranceUm); });
    return static_cast<std::size_t>(at - flakes.begin());
}

std::vector<SingleGrain> SingleGrains(const std::vector<ReportedField>& fields,
                                      const std::vector<TrueFlake>& flakes, double toleranceUm) {
    std::vector<SingleGrain> singles;
    for (const ReportedField& field : fields)
        for (const ReportedGrain& grain : field.grains)
            if (grain.single)
                singles.push_back({&grain, &field, FlakeAt(grain, flakes, toleranceUm)});
    return singles;
}

/// For each grain the number of its group; grains of one flake share it.
std::vector<std::size_t> GroupByPlace(const std::vector<SingleGrain>& grains, std::size_t noFlake,
                                      double toleranceUm) {
    std::vector<std::size_t> group(grains.size());
    std::iota(group.begin(), group.end(), std::size_t{0});
    for (std::size_t b = 1; b < grains.size(); ++b)
        for (std::size_t a = 0; a < b; ++a)
            if (group[a] != group[b] && AreOneFlake(grains[a], grains[b], noFlake, toleranceUm))
                std::replace(group.begin(), group.end(), std::size_t{group[b]}, std::size_t{group[a]});
    return group;
}

void AddGrain(const ReportedGrain& grain, ReportedFlake& flake) {
    if (flake.grains++ > 0 && grain.score <= flake.bestScore)
        return;
    flake.centre = grain.centre;
    flake.bestScore = grain.score;
    flake.areaUm2 = grain.pixels / (framePixelsPerUm * framePixelsPerUm);
}

/// A grain on a single layer outweighs one beside it.
void Recognise(std::size_t there, const std::vector<TrueFlake>& flakes, ReportedFlake& flake) {
    if (there == flakes.size() || (flake.truth.has_value() && flakes[there].layers != 1))
        return;
    flake.truth = there;
    flake.layers = flakes[there].layers;
}

std::vector<ReportedFlake> ReportedFlakes(const std::vector<ReportedField>& fields,
                                          const std::vector<TrueFlake>& flakes, double toleranceUm) {
    const std::vector<SingleGrain> grains = SingleGrains(fields, flakes, toleranceUm);
    const std::vector<std::size_t> group = GroupByPlace(grains, flakes.size(), toleranceUm);
    std::vector<ReportedFlake> reported(grains.size()); // by group; most have no grain
    for (std::size_t i = 0; i < grains.size(); ++i) {
        AddGrain(*grains[i].grain, reported[group[i]]);
        Recognise(grains[i].truth, flakes, reported[group[i]]);
    }
    std::erase_if(reported, [](const ReportedFlake& flake) { return flake.grains == 0; });
    for (auto flake = reported.begin(); flake != reported.end(); ++flake)
        flake->again = flake->truth.has_value() &&
                       std::any_of(reported.begin(), flake,
                                   [&](const ReportedFlake& other) { return other.truth == flake->truth; });
    return reported;
}

void LookFor(WantedFlake& wanted, const std::vector<ReportedField>& fields, double toleranceUm) {
    for (const ReportedField& field : fields) {
        wanted.fields += IsWhollyAnalysed(wanted.flake.outline, field.position) ? 1 : 0;
        for (const ReportedGrain& grain : field.grains) {
            if (!LiesAt(grain, wanted.flake, toleranceUm))
                continue;
            wanted.bestScore = wanted.grains++ > 0 ? std::max(wanted.bestScore, grain.score) : grain.score;
            wanted.found = wanted.found || grain.single;
        }
    }
}

} // namespace

int ScanComparison::Found() const {
    return static_cast<int>(std::ranges::count_if(wanted, &WantedFlake::found));
}

int ScanComparison::RightAndWanted() const {
    return static_cast<int>(std::ranges::count_if(
        reported, [](const ReportedFlake& flake) { return flake.IsRight() && flake.wanted; }));
}

int ScanComparison::Wrong() const {
    return static_cast<int>(
        std::ranges::count_if(reported, [](const ReportedFlake& flake) { return !flake.IsRight(); }));
}

int ScanComparison::Again() const {
    return static_cast<int>(std::ranges::count_if(reported, &ReportedFlake::again));
}

bool IsWhollyAnalysed(const Outline& outline, Vertex fieldPosition) {
    return std::ranges::all_of(outline, [&](const Vertex& corner) {
        return std::abs(corner.x - fieldPosition.x) * framePixelsPerUm <= frameWidth / 2.0 - marginX &&
               std::abs(corner.y - fieldPosition.y) * framePixelsPerUm <= frameHeight / 2.0 - marginY;
    });
}

ScanComparison CompareScan(const std::vector<ReportedField>& fields, const std::vector<TrueFlake>& flakes,
                           const ComparisonOptions& options) {
    ScanComparison comparison;
    comparison.fields = static_cast<int>(fields.size());
    comparison.reported = ReportedFlakes(fields, flakes, options.toleranceUm);
    for (std::size_t i = 0; i < flakes.size(); ++i) {
        if (flakes[i].layers != 1 || flakes[i].areaUm2 < options.minimumAreaUm2)
            continue;
        WantedFlake wanted = {.flake = flakes[i]};
        LookFor(wanted, fields, options.toleranceUm);
        if (wanted.fields == 0)
            continue;
        comparison.wanted.push_back(std::move(wanted));
        for (ReportedFlake& flake : comparison.reported)
            flake.wanted = flake.wanted || flake.truth == i;
    }
    return comparison;
}

} // namespace tessaro
