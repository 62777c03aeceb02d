#pragma once

#include "analysis/candidates.h"
#include "analysis/decision.h"
#include "analysis/field_analysis.h"
#include "analysis/frame_statistics.h"
#include "analysis/grouping.h"
#include "platform/fake/recording_surface.h"
#include "reference/plain_analysis.h"
#include "support/recording_status.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace tessaro {

/// The analysis and its plain transcription side by side, both with surface and status; every step is run on
/// both and everything that it may have changed is compared bit for bit.
class AnalysisPair {
public:
    explicit AnalysisPair(const Settings& settings)
        : m_settings(settings), m_memory(std::make_unique<AnalysisMemory>()),
          m_plain(std::make_unique<reference::PlainAnalysis>()), m_field(m_memory->Bind(m_settings)) {
        m_field.surface = &m_surface;
        m_field.status = &m_status;
        m_plain->settings = settings;
        m_plain->surface = &m_plainSurface;
        m_plain->status = &m_plainStatus;
    }

    FieldAnalysis& Fast() { return m_field; }
    reference::PlainAnalysis& Plain() { return *m_plain; }

    /// The order of a scan's field, from statistics to decision.
    void AnalyseField(const FrameBuffer& frame, bool paint = false) {
        Statistics(frame);
        Candidates(paint);
        Group();
        Decide();
    }

    void Statistics(const FrameBuffer& frame) {
        m_memory->frame.pixels = frame.Data();
        m_plain->frame.pixels = frame.Data();
        ComputeFrameStatistics(m_memory->frame, m_memory->frame, m_memory->measured);
        reference::ComputeFrameStatistics(*m_plain, m_plain->frame);
        ExpectSameStatistics();
    }

    void Candidates(bool paint) {
        FindCandidates(m_field, paint);
        reference::FindCandidates(*m_plain, paint);
        ExpectSameCandidates("found");
        RejectNoise(m_memory->analyzer);
        reference::RejectNoise(*m_plain);
        ExpectSameCandidates("after noise rejection");
    }

    void Group() {
        GroupGrains(m_field);
        reference::GroupCandidates(*m_plain, m_plain->analyzer.candidates.data(),
                                   m_plain->analyzer.candidateCount, m_plain->grains,
                                   m_plain->findings.groupCount,
                                   reference::MinimumReducedPixels(m_settings.minimumFlakeArea), 10'000);
        reference::ComputeGrainEdges(m_plain->grains, m_plain->findings.groupCount, m_plain->findings.edges);
        ExpectSameGrains();
    }

    void Decide() {
        EXPECT_EQ(DecideSingleLayers(m_field), reference::DecideSingleLayers(*m_plain));
        ExpectSameGrains();
        ExpectSameScores();
        EXPECT_TRUE(
            std::memcmp(&m_memory->analyzer.pixelMap, &m_plain->analyzer.pixelMap, sizeof(PixelMap)) == 0)
            << "marks of single pixels";
        EXPECT_TRUE(m_surface.calls == m_plainSurface.calls) << "drawing calls";
        EXPECT_EQ(m_status.lines, m_plainStatus.lines);
    }

    int GrainsLeft() const {
        const auto& grains = m_memory->grains.grains;
        return static_cast<int>(std::count_if(grains.begin(), grains.begin() + m_memory->findings.groupCount,
                                              [](const Grain& grain) { return grain.count != 0; }));
    }

    const RecordingSurface& Surface() const { return m_surface; }
    const std::vector<std::string>& StatusLines() const { return m_status.lines; }

private:
    void ExpectSameStatistics() {
        EXPECT_EQ(m_memory->frame.bgPeak, m_plain->frame.bgPeak);
        EXPECT_EQ(m_memory->frame.bgPeakSum, m_plain->frame.bgPeakSum);
        EXPECT_EQ(m_memory->measured.noiseLevel, m_plain->measured.noiseLevel);
        EXPECT_TRUE(std::memcmp(&m_memory->measured, &m_plain->measured, sizeof(FrameMeasurements)) == 0)
            << "reduced image and background grid";
    }

    void ExpectSameCandidates(const char* step) {
        const FlakeAnalyzer& fast = m_memory->analyzer;
        const FlakeAnalyzer& plain = m_plain->analyzer;
        ASSERT_EQ(fast.candidateCount, plain.candidateCount) << step;
        EXPECT_TRUE(fast.candidates == plain.candidates) << step;
        EXPECT_TRUE(std::memcmp(&fast.candidateMap, &plain.candidateMap, sizeof(CandidateMap)) == 0) << step;
    }

    void ExpectSameGrains() {
        ASSERT_EQ(m_memory->findings.groupCount, m_plain->findings.groupCount);
        for (int g = 0; g < grainTableSize; ++g) {
            const Grain& fast = m_memory->grains.grains[static_cast<std::size_t>(g)];
            const Grain& plain = m_plain->grains.grains[static_cast<std::size_t>(g)];
            ASSERT_EQ(fast.count, plain.count) << "grain " << g;
            ASSERT_TRUE(
                std::equal(fast.pixels.begin(), fast.pixels.begin() + fast.count, plain.pixels.begin()))
                << "pixels of grain " << g;
        }
        EXPECT_TRUE(std::memcmp(&m_memory->findings.edges, &m_plain->findings.edges, sizeof(GrainEdges)) == 0)
            << "edges";
    }

    static bool Same(float a, float b) {
        return std::memcmp(&a, &b, sizeof a) == 0 || (std::isnan(a) && std::isnan(b));
    }

    static bool Same(const SubScores& a, const SubScores& b) {
        return Same(a.BG, b.BG) && Same(a.EgSp, b.EgSp) && Same(a.HST, b.HST) && Same(a.Cont, b.Cont) &&
               Same(a.Size, b.Size) && Same(a.PR, b.PR) && Same(a.DfNx, b.DfNx);
    }

    void ExpectSameScores() {
        for (std::size_t g = 0; g < grainTableSize; ++g) {
            EXPECT_EQ(m_memory->findings.singleLayer[g], m_plain->findings.singleLayer[g]) << "grain " << g;
            EXPECT_TRUE(Same(m_memory->findings.subScores[g], m_plain->findings.subScores[g]))
                << "grain " << g;
            EXPECT_TRUE(Same(m_memory->findings.scores[g], m_plain->findings.scores[g])) << "grain " << g;
        }
        EXPECT_EQ(m_memory->findings.totalFound, m_plain->findings.totalFound);
    }

    Settings m_settings;
    std::unique_ptr<AnalysisMemory> m_memory;
    std::unique_ptr<reference::PlainAnalysis> m_plain;
    FieldAnalysis m_field;
    RecordingSurface m_surface;
    RecordingSurface m_plainSurface;
    RecordingStatus m_status;
    RecordingStatus m_plainStatus;
};

} // namespace tessaro
