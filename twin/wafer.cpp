#include "twin/wafer.h"

#include "simulated_field/random_shapes.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace tessaro {
namespace {

constexpr double umPerMm = 1000.0;
constexpr double cellUm = 100.0;

// What reflects more than the substrate, layer on layer, ends as a mirror, far beyond what the sensor can
// tell.
constexpr double mirrorTransmission = 4.0;

ChannelValues LimitedTransmission(const ChannelValues& contrastPercent) {
    ChannelValues transmission = Transmission(contrastPercent);
    for (double& channel : transmission)
        channel = std::clamp(channel, 0.0, mirrorTransmission);
    return transmission;
}

Outline ScratchOutline(const WaferScratch& scratch) {
    const double length = Distance(scratch.from, scratch.to);
    if (length == 0.0)
        return {};
    const double x = (scratch.to.y - scratch.from.y) / length * scratch.widthUm / 2.0;
    const double y = (scratch.from.x - scratch.to.x) / length * scratch.widthUm / 2.0;
    return {{scratch.from.x + x, scratch.from.y + y},
            {scratch.to.x + x, scratch.to.y + y},
            {scratch.to.x - x, scratch.to.y - y},
            {scratch.from.x - x, scratch.from.y - y}};
}

Extent ExtentOf(const WaferMark& mark) {
    Extent extent;
    for (const Vertex& corner : mark.outline)
        extent.Add(corner);
    for (const Disc& disc : mark.discs)
        extent.Add(Disc{disc.centre, disc.radius + mark.edgeWidthUm / 2.0});
    return extent;
}

} // namespace

Wafer::Wafer(const WaferOptions& options, const WaferContents& contents)
    : m_sideUm(options.sideMm * umPerMm), m_tilt(options.tiltUmPerUm), m_focusZUm(options.focusZUm),
      m_flakes(contents.flakes),
      m_cellsPerSide(static_cast<std::size_t>(std::max(1.0, std::ceil(m_sideUm / cellUm)))),
      m_cells(m_cellsPerSide * m_cellsPerSide) {
    const ChannelValues single = SingleLayerContrastPercent(options.material, options.substrate);
    for (const WaferScratch& scratch : contents.scratches)
        AddMark({.outline = ScratchOutline(scratch), .transmission = Transmission(scratchContrastPercent)});
    for (const WaferFlake& flake : contents.flakes)
        AddMark({.outline = flake.outline,
                 .transmission = LimitedTransmission(LayerContrastPercent(single, flake.layers))});
    for (const WaferStain& stain : contents.stains)
        AddMark({.discs = stain.discs,
                 .edgeWidthUm = stain.edgeWidthUm,
                 .transmission = Transmission(stain.contrastPercent)});
}

double Wafer::FocusZ(double x, double y) const {
    return m_focusZUm + m_tilt.x * x + m_tilt.y * y;
}

std::vector<const WaferMark*> Wafer::MarksBetween(Vertex low, Vertex high) const {
    const CellRange range = CellsBetween(low, high);
    std::vector<std::uint32_t> numbers;
    for (std::size_t row = range.firstRow; row <= range.lastRow; ++row)
        for (std::size_t column = range.firstColumn; column <= range.lastColumn; ++column) {
            const std::vector<std::uint32_t>& cell = m_cells[row * m_cellsPerSide + column];
            numbers.insert(numbers.end(), cell.begin(), cell.end());
        }
    std::ranges::sort(numbers);
    numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
    std::vector<const WaferMark*> marks;
    for (const std::uint32_t number : numbers) {
        const WaferMark& mark = m_marks[number];
        const Extent& extent = mark.extent;
        if (extent.low.x <= high.x && extent.high.x >= low.x && extent.low.y <= high.y &&
            extent.high.y >= low.y)
            marks.push_back(&mark);
    }
    return marks;
}

/// The cells at the edge also hold what lies beside the wafer.
Wafer::CellRange Wafer::CellsBetween(Vertex low, Vertex high) const {
    const auto cell = [this](double position) {
        const auto last = static_cast<double>(m_cellsPerSide - 1);
        return static_cast<std::size_t>(std::clamp(std::floor(position / cellUm), 0.0, last));
    };
    return {.firstColumn = cell(low.x),
            .lastColumn = cell(high.x),
            .firstRow = cell(low.y),
            .lastRow = cell(high.y)};
}

void Wafer::AddMark(WaferMark mark) {
    mark.extent = ExtentOf(mark);
    if (!(mark.extent.low.x <= mark.extent.high.x))
        return;
    const CellRange range = CellsBetween(mark.extent.low, mark.extent.high);
    for (std::size_t row = range.firstRow; row <= range.lastRow; ++row)
        for (std::size_t column = range.firstColumn; column <= range.lastColumn; ++column)
            m_cells[row * m_cellsPerSide + column].push_back(static_cast<std::uint32_t>(m_marks.size()));
    m_marks.push_back(std::move(mark));
}

} // namespace tessaro
