#include "compare/comparison_table.h"

#include "app/number_text.h"

namespace tessaro {
namespace {

constexpr int bulkLayers = 100; // what the truth gives for flakes whose layers nobody counts
constexpr double percent = 100.0;

std::string Row(const std::string& what, int count) {
    return Formatted("%-46s %5d\n", what.c_str(), count);
}

std::string ShareRow(const std::string& what, int count, std::size_t all) {
    if (all == 0)
        return Row(what, count);
    return Formatted("%-46s %5d %6.1f %%\n", what.c_str(), count, percent * count / static_cast<double>(all));
}

std::string WhatLiesThere(const ReportedFlake& flake) {
    if (!flake.truth.has_value())
        return "no flake";
    return flake.layers >= bulkLayers ? "bulk" : Formatted("%d layers", flake.layers);
}

std::string MissedLine(const WantedFlake& wanted) {
    std::string line = Formatted("  missed  %8.1f %8.1f  %6.0f um^2  in %d fields: ", wanted.flake.centre.x,
                                 wanted.flake.centre.y, wanted.flake.areaUm2, wanted.fields);
    return line +
           (wanted.grains == 0 ? "no grain there\n" : Formatted("best score there %.2f\n", wanted.bestScore));
}

std::string WrongLine(const ReportedFlake& flake) {
    return Formatted("  wrong   %8.1f %8.1f  %6.0f um^2  score %.2f: ", flake.centre.x, flake.centre.y,
                     flake.areaUm2, flake.bestScore) +
           WhatLiesThere(flake) + " there\n";
}

} // namespace

std::string ComparisonTable(const ReportFile& report, const ScanComparison& comparison,
                            const ComparisonOptions& options) {
    const std::size_t wanted = comparison.wanted.size();
    const std::size_t reported = comparison.reported.size();
    const int found = comparison.Found();
    const int wrong = comparison.Wrong();
    const int right = static_cast<int>(reported) - wrong;
    const int rightAndWanted = comparison.RightAndWanted();
    std::string table = Row("fields scanned", comparison.fields);
    table += Row(Formatted("single layers of %g um^2 or more in the area", options.minimumAreaUm2),
                 static_cast<int>(wanted));
    table += ShareRow("  found", found, wanted);
    table += ShareRow("  missed", static_cast<int>(wanted) - found, wanted);
    table += Row("reported as single layers, each counted once", static_cast<int>(reported));
    table +=
        ShareRow(Formatted("  right, of %g um^2 or more", options.minimumAreaUm2), rightAndWanted, reported);
    table += ShareRow("  right, smaller or cut by the border", right - rightAndWanted, reported);
    table += ShareRow("  anything else", wrong, reported);
    table += Row("  one flake reported as several", comparison.Again());
    for (const ReportedEnd& end : report.ends)
        table += Formatted("scan %d ended: %s\n", end.scan, end.why.c_str());
    if (report.ends.empty())
        table += "no scan has come to an end\n";
    if (report.tornLines > 0)
        table += Formatted("lines that break off, left out: %d\n", report.tornLines);
    return table;
}

std::string ComparisonList(const ScanComparison& comparison) {
    std::string list;
    for (const WantedFlake& wanted : comparison.wanted)
        list += wanted.found ? "" : MissedLine(wanted);
    for (const ReportedFlake& flake : comparison.reported)
        list += flake.IsRight() ? "" : WrongLine(flake);
    return list.empty() ? list : "            X um     Y um\n" + list;
}

} // namespace tessaro
