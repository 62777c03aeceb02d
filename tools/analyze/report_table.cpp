#include "analyze/report_table.h"

#include "analysis/reduced_image.h"
#include "imaging/frame_buffer.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

namespace tessaro {
namespace {

template<typename... Values>
std::string Format(const char* format, Values... values) {
    std::array<char, 256> text{};
    const int length = std::snprintf(text.data(), text.size(), format, values...);
    return {text.data(), static_cast<std::size_t>(std::clamp<int>(length, 0, text.size() - 1))};
}

std::string Count(int count, const char* one, const char* many) {
    return std::to_string(count) + ' ' + (count == 1 ? one : many);
}

std::string BestScore(const PictureReport& report) {
    bool any = false;
    float best = 0.0F;
    for (const GrainReport& grain : report.grains) {
        if (std::isfinite(grain.score) && (!any || grain.score > best)) {
            best = grain.score;
            any = true;
        }
    }
    return any ? Format(", best score %.1f", static_cast<double>(best)) : std::string();
}

std::string ScoreText(float score) {
    return std::isfinite(score) ? Format("score %.1f", static_cast<double>(score)) : "no score";
}

/// Only a picture of the frame's size is known to have the microscope's scale.
std::string AreaText(const PictureReport& report, const GrainReport& grain) {
    const bool toScale = report.pictureWidth == frameWidth && report.pictureHeight == frameHeight;
    return toScale ? Format(", about %.0f um2", grain.pixels * framePixelUm2) : std::string();
}

std::string GrainLine(const PictureReport& report, const GrainReport& grain) {
    const double scaleX = static_cast<double>(report.pictureWidth) / frameWidth;
    const double scaleY = static_cast<double>(report.pictureHeight) / frameHeight;
    const double centreX = (grain.left + grain.right) / 2.0 * scaleX;
    const double centreY = (WindowRow(grain.minRow) + WindowRow(grain.maxRow)) / 2.0 * scaleY;
    return Format("    %s at x %.0f, y %.0f: ", grain.single ? "single layer" : "grain", centreX, centreY) +
           ScoreText(grain.score) + AreaText(report, grain) + "\n";
}

} // namespace

std::string ReportText(const PictureReport& report) {
    std::string text = report.file + ": " + Count(report.found, "single layer", "single layers") + " among " +
                       Count(static_cast<int>(report.grains.size()), "grain", "grains") + BestScore(report);
    text += Format("; %d candidate pixels, noise %.1f, background R %.0f G %.0f B %.0f\n", report.candidates,
                   static_cast<double>(report.noise), report.bgPeak[0], report.bgPeak[1], report.bgPeak[2]);
    for (const GrainReport& grain : report.grains)
        text += GrainLine(report, grain);
    if (report.overflow)
        text += "    too many grains for the table: some were left out\n";
    return text;
}

std::string SummaryText(const BatchTotals& totals) {
    std::string text = Count(totals.found, "single layer", "single layers") + " in " +
                       Count(totals.analysed, "picture", "pictures");
    if (totals.failed > 0)
        text += "; " + Count(totals.failed, "picture", "pictures") + " could not be analysed";
    if (totals.unsaved > 0)
        text +=
            "; " + Count(totals.unsaved, "annotated picture", "annotated pictures") + " could not be saved";
    return text + "\n";
}

} // namespace tessaro
