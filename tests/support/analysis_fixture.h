#pragma once

#include "analysis/field_analysis.h"
#include "analysis/frame_statistics.h"
#include "platform/fake/recording_surface.h"
#include "support/drawn_frames.h"
#include "support/recording_status.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <memory>

namespace tessaro {

/// A fresh analysis with a painter for its frame, a surface and a status sink that remember.
class AnalysisFixture : public testing::Test {
protected:
    AnalysisFixture() {
        field.frame.pixels = painter.frame.Data();
        field.surface = &surface;
        field.status = &status;
    }

    void Measure() { ComputeFrameStatistics(field.frame, field.frame, field.measured); }

    /// An evenly lit background, each channel its own.
    void SetBackground(float redLevel, float greenLevel, float blueLevel) {
        const std::array<float, channelCount> levels = {redLevel, greenLevel, blueLevel};
        for (int channel = 0; channel < channelCount; ++channel) {
            for (int gx = 0; gx < gridSize; ++gx) {
                for (int gy = 0; gy < gridSize; ++gy) {
                    field.measured.background.SetMeasured(channel, gx, gy,
                                                          levels[static_cast<std::size_t>(channel)]);
                }
            }
        }
    }

    /// Paints whole reduced pixels.
    void PaintReduced(int x4, int y4, int columns, int rows, FramePainter::Rgb colour) {
        painter.Rectangle(reduction * x4, reduction * y4, reduction * columns, reduction * rows, colour);
    }

    Grain& GrainAt(int g) { return field.grains.grains[static_cast<std::size_t>(g)]; }

    static void SetPixels(Grain& grain, int left, int low, int width, int height) {
        grain.count = 0;
        for (int y = low; y < low + height; ++y) {
            for (int x = left; x < left + width; ++x) {
                grain.pixels[static_cast<std::size_t>(grain.count++)] = {static_cast<std::int16_t>(x),
                                                                         static_cast<std::int16_t>(y)};
            }
        }
    }

    Settings settings;
    FramePainter painter;
    RecordingSurface surface;
    RecordingStatus status;

private:
    std::unique_ptr<AnalysisMemory> m_memory = std::make_unique<AnalysisMemory>();

protected:
    FieldAnalysis field = m_memory->Bind(settings);
};

} // namespace tessaro
