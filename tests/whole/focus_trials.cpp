#include "focus_trials.h"

#include "simulated_field/reproducible_random.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <stdexcept>

namespace tessaro {
namespace {

constexpr double waferSideMm = 4.0;
constexpr double fromEdgeUm = 1500.0;  // much blurred, the dark beside the wafer would show
constexpr double steepestTilt = 0.002; // um of Z per um
constexpr double farthestFocusUm = 50.0;
constexpr double leastFlakeUm2 = 150.0;
constexpr double halfWidthUm = frameWidth / framePixelsPerUm / 2.0;
constexpr double halfHeightUm = frameHeight / framePixelsPerUm / 2.0;
constexpr double edgeUm = 5.0;                    // between flake and the field's edge
constexpr std::uint32_t betweenSearchesMs = 1000; // the operator looks, and moves the mouse
constexpr double msPerSecond = 1000.0;

WaferOptions OptionsOf(std::uint64_t seed) {
    ReproducibleRandom random(seed * 7919U);
    WaferOptions options;
    options.seed = seed;
    options.sideMm = waferSideMm;
    options.tiltUmPerUm = {random.Between(-steepestTilt, steepestTilt),
                           random.Between(-steepestTilt, steepestTilt)};
    options.focusZUm = random.Between(-farthestFocusUm, farthestFocusUm);
    return options;
}

Extent ExtentOf(const Outline& outline) {
    Extent extent;
    for (const Vertex& corner : outline)
        extent.Add(corner);
    return extent;
}

/// Of the centre of a field that shows the flake whole, near the middle of the wafer.
std::optional<Extent> PlacesAround(const Extent& flake, double sideUm) {
    const Extent places = {{std::max(flake.high.x + edgeUm - halfWidthUm, fromEdgeUm),
                            std::max(flake.high.y + edgeUm - halfHeightUm, fromEdgeUm)},
                           {std::min(flake.low.x - edgeUm + halfWidthUm, sideUm - fromEdgeUm),
                            std::min(flake.low.y - edgeUm + halfHeightUm, sideUm - fromEdgeUm)}};
    if (places.low.x > places.high.x || places.low.y > places.high.y)
        return std::nullopt;
    return places;
}

StagePosition PlaceOn(const Wafer& wafer, std::uint64_t seed) {
    ReproducibleRandom random(seed * 104'729U);
    const std::vector<WaferFlake>& flakes = wafer.Flakes();
    const auto first = static_cast<std::size_t>(random.Uniform() * static_cast<double>(flakes.size()));
    for (std::size_t i = 0; i < flakes.size(); ++i) {
        const WaferFlake& flake = flakes[(first + i) % flakes.size()];
        if (flake.AreaUm2() < leastFlakeUm2)
            continue;
        if (const auto places = PlacesAround(ExtentOf(flake.outline), wafer.SideUm())) {
            const double x = random.Between(places->low.x, places->high.x);
            const double y = random.Between(places->low.y, places->high.y);
            return {x, y, wafer.FocusZ(x, y)};
        }
    }
    throw std::runtime_error("no flake on this wafer is large enough");
}

void Focus(VirtualMicroscope& microscope, FocusManner manner, FocusTrial& trial) {
    AutoFocus& focus = microscope.services.autoFocus;
    const std::int32_t speed = microscope.globals->focusControl.focusSpeed;
    if (manner != FocusManner::Fine)
        focus.CoarseFocus(focus.Hint(), 2000, speed);
    if (manner == FocusManner::CoarsePanelFine) {
        microscope.Wait(betweenSearchesMs);
        focus.CoarseFocus(focus.Hint(), 1000, speed / 2);
    }
    if (manner == FocusManner::Coarse)
        return;
    if (manner != FocusManner::Fine)
        microscope.Wait(betweenSearchesMs);
    trial.result = focus.FineFocus(focus.Hint(), 0);
    if (manner == FocusManner::CoarseFineTwice) {
        microscope.Wait(betweenSearchesMs);
        trial.result = focus.FineFocus(focus.Hint(), 0);
    }
}

double Quantile(std::vector<double> values, double share) {
    if (values.empty())
        return 0.0;
    std::ranges::sort(values);
    const double place = std::ceil(share * static_cast<double>(values.size())) - 1.0;
    return values[static_cast<std::size_t>(std::max(place, 0.0))];
}

} // namespace

FlakeField::FlakeField(std::uint64_t seed) : wafer(OptionsOf(seed)), place(PlaceOn(wafer, seed)) {}

MicroscopeSetUp FlakeField::SetUp() const {
    return {.start = place, .limits = UsualLimitsAround(place)};
}

FocusTrial TryToFocus(const FlakeField& field, std::uint64_t seed, const FocusConditions& conditions) {
    ReproducibleRandom random(seed * 15'485'863U + static_cast<std::uint64_t>(conditions.mostDefocusUm));
    FocusTrial trial;
    trial.defocusUm = random.Between(-conditions.mostDefocusUm, conditions.mostDefocusUm);
    MicroscopeSetUp setUp = field.SetUp();
    setUp.start.z += trial.defocusUm;
    setUp.progress = conditions.progress;
    VirtualMicroscope microscope(field.wafer, setUp);
    microscope.camera.timing = conditions.timing;
    microscope.camera.exposure.gainDb = conditions.gainDb;
    microscope.camera.exposure.exposureTimeUs *=
        conditions.level / defaultSubstrateLevel / std::pow(10.0, conditions.gainDb / 20.0);
    microscope.camera.noiseSeed = seed * 100'000U;
    microscope.globals->focusControl.focusSpeed = conditions.speed;
    microscope.globals->focusControl.xTilt = conditions.xTilt;

    const std::uint64_t start = microscope.ui.clock.now;
    Focus(microscope, conditions.manner, trial);
    trial.seconds = static_cast<double>(microscope.ui.clock.now - start) / msPerSecond;
    microscope.LetItRest();
    trial.errorUm = microscope.Z() - field.place.z;
    trial.curve = microscope.curveText.str();
    trial.exposedAtZ = microscope.camera.exposedAtZ;
    return trial;
}

FocusTally::FocusTally(const std::vector<FocusTrial>& all) : trials(static_cast<int>(all.size())) {
    std::vector<double> errors;
    std::vector<double> seconds;
    for (const FocusTrial& trial : all) {
        const double error = std::abs(trial.errorUm);
        within3 += error <= 3.0 ? 1 : 0;
        within10 += error <= 10.0 ? 1 : 0;
        within30 += error <= 30.0 ? 1 : 0;
        errors.push_back(error);
        seconds.push_back(trial.seconds);
    }
    medianUm = Quantile(errors, 0.5);
    ninetiethUm = Quantile(errors, 0.9);
    medianSeconds = Quantile(seconds, 0.5);
    longestSeconds = Quantile(seconds, 1.0);
}

} // namespace tessaro
