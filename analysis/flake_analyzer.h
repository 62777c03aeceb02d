#pragma once

#include "analysis/background_parameters.h"
#include "analysis/reduced_image.h"
#include "imaging/frame_buffer.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

namespace tessaro {

/// A pixel whose contrast matches the target, until noise rejection clears it.
struct Candidate {
    std::int32_t live = 0; // 1 = live, 0 = removed
    std::int16_t x = 0;
    std::int16_t y = 0;

    friend bool operator==(const Candidate&, const Candidate&) = default;
};

inline constexpr int candidateCapacity = 20'000;

/// Marks of single pixels of the full frame: 32-bit integers [x 0..1231][y 0..1027], 1 = marked.
/// A position whose flat index x * 1028 + y falls outside the array reads 0 and cannot be marked, so that the
/// neighbours of a pixel on the frame's border may be asked for.
class PixelMap {
public:
    std::int32_t Get(int x, int y) const {
        const int flat = x * frameHeight + y;
        return flat >= 0 && flat < framePixelCount ? m_cells[static_cast<std::size_t>(flat)] : 0;
    }

    void Set(int x, int y, std::int32_t value) {
        const int flat = x * frameHeight + y;
        if (flat >= 0 && flat < framePixelCount)
            m_cells[static_cast<std::size_t>(flat)] = value;
    }

    /// Clears left .. left + width - 1, low .. low + height - 1; a box without cells clears nothing.
    void ClearBox(int left, int low, int width, int height) {
        for (int x = left; x < left + width; ++x) {
            const int first = std::clamp(x * frameHeight + low, 0, framePixelCount);
            const int last = std::clamp(x * frameHeight + low + height, first, framePixelCount);
            std::fill(m_cells.begin() + first, m_cells.begin() + last, 0);
        }
    }

private:
    std::array<std::int32_t, framePixelCount> m_cells = {};
};

/// Marks of reduced pixels: 32-bit integers [x4 0..307][y4 0..256], 1 = a live candidate lies there. Beside
/// the array like PixelMap: what falls outside it reads 0 and cannot be marked.
class CandidateMap {
public:
    std::int32_t Get(int x4, int y4) const {
        const int flat = x4 * reducedHeight + y4;
        return flat >= 0 && flat < reducedPixelCount ? m_cells[static_cast<std::size_t>(flat)] : 0;
    }

    void Set(int x4, int y4, std::int32_t value) {
        const int flat = x4 * reducedHeight + y4;
        if (flat >= 0 && flat < reducedPixelCount)
            m_cells[static_cast<std::size_t>(flat)] = value;
    }

private:
    std::array<std::int32_t, reducedPixelCount> m_cells = {};
};

/// What the analysis carries from step to step and, on purpose, from field to field: the candidate map keeps
/// marks of earlier fields. About 5.5 MB, so it lives in static storage or on the heap.
struct FlakeAnalyzer {
    std::array<Candidate, candidateCapacity> candidates = {};
    std::int32_t candidateCount = 0;
    std::int32_t secondCounter = 0; // cleared with the list and never counted up
    PixelMap pixelMap;
    CandidateMap candidateMap;
    std::int32_t useInterpolatedBackground = 1;
    BackgroundModel backgroundModel;
};

} // namespace tessaro
