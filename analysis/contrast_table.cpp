#include "analysis/contrast_table.h"

#include "analysis/contrast.h"

#include <cmath>

namespace tessaro {

void ContrastTable::Prepare(const Settings& settings, const BackgroundGrid& background) {
    const RedCells redCells = ReadRedCells(background);
    if (!m_prepared || redCells != m_redCells) {
        m_redCells = redCells;
        Interpolate(background);
    }
    if (!m_prepared || settings.targetContrast != m_targets || settings.contrastTolerance != m_tolerance) {
        m_targets = settings.targetContrast;
        m_tolerance = settings.contrastTolerance;
        m_filled.reset();
    }
    m_prepared = true;
}

const ContrastTable::Matches& ContrastTable::MatchesAt(int x4, int y4) {
    const int gx = reduction * x4 / gridBlockWidth;
    const int gy = reduction * y4 / gridBlockHeight;
    const float background = std::trunc((AlongX(x4, gy) + AlongY(gx)[Index(y4)]) / 2);
    if (!(background >= 0 && background < 256)) {
        Fill(m_matchesElsewhere, background);
        return m_matchesElsewhere;
    }
    const auto intensity = static_cast<std::size_t>(background);
    if (!m_filled[intensity]) {
        Fill(m_matches[intensity], background);
        m_filled.set(intensity);
    }
    return m_matches[intensity];
}

ContrastTable::RedCells ContrastTable::ReadRedCells(const BackgroundGrid& background) {
    RedCells cells{};
    auto cell = cells.begin();
    for (int gx = 0; gx < gridSize; ++gx) {
        for (int gy = -1; gy <= gridSize; ++gy)
            *cell++ = background.Measured(red, gx, gy);
    }
    return cells;
}

void ContrastTable::Interpolate(const BackgroundGrid& background) {
    for (int x4 = 0; x4 < reducedWidth; ++x4) {
        const int x = reduction * x4;
        for (int gy = 0; gy < gridRowsAcross; ++gy) {
            m_alongX[Index(x4)][Index(gy)] =
                InterpolateAlongX(background, x / gridBlockWidth, gy, x % gridBlockWidth);
        }
    }
    for (int gx = 0; gx < gridSize; ++gx) {
        for (int y4 = 0; y4 < reducedHeight; ++y4) {
            const int y = reduction * y4;
            m_alongY[Index(gx)][Index(y4)] =
                InterpolateAlongY(background, gx, y / gridBlockHeight, y % gridBlockHeight);
        }
    }
}

void ContrastTable::Fill(Matches& matches, float background) const {
    for (std::size_t intensity = 0; intensity < matches.size(); ++intensity) {
        const float contrast = Contrast(static_cast<float>(intensity), background);
        matches[intensity] = 0;
        for (std::size_t channel = 0; channel < channelCount; ++channel) {
            if (WithinTolerance(contrast, m_targets[channel], m_tolerance))
                matches[intensity] = static_cast<std::uint8_t>(matches[intensity] | 1U << channel);
        }
    }
}

} // namespace tessaro
