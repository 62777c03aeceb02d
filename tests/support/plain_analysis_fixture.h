#pragma once

#include "platform/fake/recording_surface.h"
#include "reference/plain_analysis.h"
#include "support/recording_status.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <vector>

namespace tessaro::reference::tests {

/// An analysis of a black frame that draws on and reports to recorders, and ways to set its parts by hand.
class PlainAnalysis : public ::testing::Test {
protected:
    PlainAnalysis() {
        analysis->frame.pixels = frame.Data();
        analysis->surface = &surface;
        analysis->status = &status;
    }

    void Fill(int x0, int y0, int width, int height, int red, int green, int blue) {
        for (int y = y0; y < y0 + height; ++y) {
            for (int x = x0; x < x0 + width; ++x)
                frame.SetPixel(x, y, static_cast<std::uint8_t>(red), static_cast<std::uint8_t>(green),
                               static_cast<std::uint8_t>(blue));
        }
    }
    void FillAll(int grey) { Fill(0, 0, frameWidth, frameHeight, grey, grey, grey); }

    /// A flake that meets the default targets (-12, -8, -2) exactly on a background of 200.
    void DrawFlake(int x0, int y0, int size) { Fill(x0, y0, size, size, 176, 184, 196); }

    void SetGrid(float value) {
        for (int channel = 0; channel < 3; ++channel)
            for (int cell = 0; cell < gridSize * gridSize; ++cell)
                analysis->measured.background.SetMeasured(channel, cell / gridSize, cell % gridSize, value);
    }
    void SetReduced(int x4, int y4, float red, float green, float blue) {
        analysis->measured.reduced.Set(0, x4, y4, red);
        analysis->measured.reduced.Set(1, x4, y4, green);
        analysis->measured.reduced.Set(2, x4, y4, blue);
    }

    /// Puts live candidates into the list and the map.
    void SetCandidates(const std::vector<PixelPosition>& positions) {
        analysis->analyzer.candidateCount = static_cast<std::int32_t>(positions.size());
        for (std::size_t i = 0; i < positions.size(); ++i) {
            analysis->analyzer.candidates[i] = {1, positions[i].x, positions[i].y};
            analysis->analyzer.candidateMap.Set(positions[i].x, positions[i].y, 1);
        }
    }
    void Group(int minSize, int maxSize = grainCapacity) {
        GroupCandidates(*analysis, analysis->analyzer.candidates.data(), analysis->analyzer.candidateCount,
                        analysis->grains, analysis->findings.groupCount, minSize, maxSize);
    }
    void SetGrain(std::size_t g, const std::vector<PixelPosition>& positions) {
        std::copy(positions.begin(), positions.end(), analysis->grains.grains[g].pixels.begin());
        analysis->grains.grains[g].count = static_cast<std::int32_t>(positions.size());
    }
    std::vector<std::int32_t> Counts() const {
        std::vector<std::int32_t> counts;
        for (int g = 0; g < analysis->findings.groupCount; ++g)
            counts.push_back(analysis->grains.grains[static_cast<std::size_t>(g)].count);
        return counts;
    }
    void AnalyseField() {
        ComputeFrameStatistics(*analysis, analysis->frame);
        FindCandidates(*analysis, false);
        RejectNoise(*analysis);
        Group(MinimumReducedPixels(analysis->settings.minimumFlakeArea));
        ComputeGrainEdges(analysis->grains, analysis->findings.groupCount, analysis->findings.edges);
    }

    FrameBuffer frame;
    RecordingSurface surface;
    RecordingStatus status;
    std::unique_ptr<reference::PlainAnalysis> analysis = std::make_unique<reference::PlainAnalysis>();
};

} // namespace tessaro::reference::tests
