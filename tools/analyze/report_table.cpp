#include "analyze/report_table.h"

#include "imaging/frame_buffer.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

namespace tessaro {
namespace {

constexpr double framePixelUm2 = 0.16; // a reduced pixel stands for 2.56 um^2

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

std::string SingleLayerLine(const PictureReport& report, const GrainReport& grain) {
    const double scaleX = static_cast<double>(report.pictureWidth) / frameWidth;
    const double scaleY = static_cast<double>(report.pictureHeight) / frameHeight;
    const double centreX = (grain.left + grain.right) / 2.0 * scaleX;
    const double centreY = (WindowRow(grain.minRow) + WindowRow(grain.maxRow)) / 2.0 * scaleY;
    return Format("    single layer at x %.0f, y %.0f: score %.1f, about %.0f um2\n", centreX, centreY,
                  static_cast<double>(grain.score), grain.pixels * framePixelUm2);
}

} // namespace

std::string ReportText(const PictureReport& report) {
    std::string text = report.file + ": " + Count(report.found, "single layer", "single layers") + " among " +
                       Count(static_cast<int>(report.grains.size()), "grain", "grains") + BestScore(report);
    text += Format("; %d candidate pixels, noise %.1f, background R %.0f G %.0f B %.0f\n", report.candidates,
                   static_cast<double>(report.noise), report.bgPeak[0], report.bgPeak[1], report.bgPeak[2]);
    for (const GrainReport& grain : report.grains) {
        if (grain.single)
            text += SingleLayerLine(report, grain);
    }
    if (report.overflow)
        text += "    too many grains for the table: some were left out\n";
    return text;
}

std::string SummaryText(int analysed, int failed, int found) {
    std::string text =
        Count(found, "single layer", "single layers") + " in " + Count(analysed, "picture", "pictures");
    if (failed > 0)
        text += "; " + Count(failed, "picture", "pictures") + " could not be read";
    return text + "\n";
}

} // namespace tessaro
