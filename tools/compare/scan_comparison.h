#pragma once

#include "compare/report_file.h"
#include "compare/wafer_truth.h"

#include <cstddef>
#include <optional>
#include <vector>

namespace tessaro {

struct ComparisonOptions {
    double minimumAreaUm2 = 150.0; // of the flakes that are to be found
    double toleranceUm = 3.0;      // between a grain and the flake that it is; flakes keep 7 um apart
};

/// A flake that was to be found, and how it fared.
struct WantedFlake {
    TrueFlake flake;
    int fields = 0;         // that show it whole
    int grains = 0;         // that lie there, in all fields
    double bestScore = 0.0; // of them
    bool found = false;
};

/// What the report has as one single layer: grains of one place, in one field or in several.
struct ReportedFlake {
    Vertex centre; // of its best grain
    double bestScore = 0.0;
    double areaUm2 = 0.0; // of that grain's pixels
    int grains = 0;
    std::optional<std::size_t> truth; // which of the true flakes lies there; nothing: none
    int layers = 0;                   // of it
    bool wanted = false;              // it is one of those to be found
    bool again = false;               // an earlier one lies at the same flake

    bool IsRight() const { return layers == 1; }
};

struct ScanComparison {
    int fields = 0;
    std::vector<WantedFlake> wanted;
    std::vector<ReportedFlake> reported;

    int Found() const;
    int RightAndWanted() const;
    int Wrong() const;
    int Again() const;
};

/// The middle of the frame is where the stage stood. True for a flake that lies wholly where the analysis of
/// that field looks for candidates.
bool IsWhollyAnalysed(const Outline& outline, Vertex fieldPosition);

/// Reported single layers and the wafer's. A flake counts once, however many fields show it.
ScanComparison CompareScan(const std::vector<ReportedField>& fields, const std::vector<TrueFlake>& flakes,
                           const ComparisonOptions& options = {});

} // namespace tessaro
