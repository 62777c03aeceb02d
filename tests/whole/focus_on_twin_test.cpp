#include "focus_trials.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>

namespace tessaro {
namespace {

std::string FromEnvironment(const char* name, const std::string& usual) {
    const char* value = std::getenv(name);
    return value == nullptr ? usual : value;
}

std::vector<int> Numbers(const std::string& text) {
    std::vector<int> numbers;
    std::istringstream all(text);
    for (std::string number; std::getline(all, number, ',');)
        numbers.push_back(std::stoi(number));
    return numbers;
}

/// The table; and all curves, where TESSARO_FOCUS_CURVES names a folder.
TEST(FocusLab, Table) {
    const int seeds = Numbers(FromEnvironment("TESSARO_FOCUS_SEEDS", "3"))[0];
    const auto speeds = Numbers(FromEnvironment("TESSARO_FOCUS_SPEEDS", "200"));
    const auto grabs = Numbers(FromEnvironment("TESSARO_FOCUS_GRABS", "40"));
    const auto manners = Numbers(FromEnvironment("TESSARO_FOCUS_MANNERS", "0,1,2,3"));
    const auto ranges = Numbers(FromEnvironment("TESSARO_FOCUS_RANGES", "900,30,300,300"));
    const bool told = FromEnvironment("TESSARO_FOCUS_TOLD", "0") == "1";
    const double gain = std::stod(FromEnvironment("TESSARO_FOCUS_GAIN", "0"));
    const std::string folder = FromEnvironment("TESSARO_FOCUS_CURVES", "");
    testing::internal::CaptureStdout();
    for (const int manner : manners)
        for (const int grab : grabs)
            for (const int speed : speeds) {
                FocusConditions conditions;
                conditions.manner = static_cast<FocusManner>(manner);
                conditions.mostDefocusUm = ranges[static_cast<std::size_t>(manner)];
                conditions.speed = speed;
                conditions.gainDb = gain;
                conditions.timing.lastsMs = static_cast<std::uint32_t>(grab);
                conditions.timing.exposureBeginsMs = grab > 60 ? static_cast<std::uint32_t>(grab) - 45 : 5;
                conditions.progress = {true, true, told};
                std::vector<FocusTrial> trials;
                std::string acc;
                int ok = 0;
                for (unsigned seed = 1; seed <= static_cast<unsigned>(seeds); ++seed) {
                    const FlakeField field(seed);
                    trials.push_back(TryToFocus(field, seed, conditions));
                    ok += trials.back().result;
                    if (!folder.empty()) {
                        std::ofstream out(folder + "/m" + std::to_string(manner) + "-g" +
                                          std::to_string(grab) + "-s" + std::to_string(speed) + "-" +
                                          std::to_string(seed) + ".csv");
                        out << "# focus " << field.place.z << " defocus " << trials.back().defocusUm
                            << " error " << trials.back().errorUm << '\n'
                            << trials.back().curve << "# exposed at";
                        for (const double z : trials.back().exposedAtZ)
                            out << ' ' << z - field.place.z;
                        out << '\n';
                    }
                }
                const FocusTally t(trials);
                std::fprintf(stderr,
                             "gain %.0f m%d told%d grab %d speed %4d: <3 %3d <10 %3d <30 %3d of %d, median "
                             "%.1f p90 %.1f, s %.1f max %.1f, moving %d, result1 %d\n",
                             gain, manner, told, grab, speed, t.within3, t.within10, t.within30, t.trials,
                             t.medianUm, t.ninetiethUm, t.medianSeconds, t.longestSeconds, t.moving, ok);
            }
    testing::internal::GetCapturedStdout();
}

TEST(FocusLab, Static) {
    const int seeds = Numbers(FromEnvironment("TESSARO_FOCUS_SEEDS", "3"))[0];
    testing::internal::CaptureStdout();
    for (unsigned seed = 1; seed <= static_cast<unsigned>(seeds); ++seed) {
        const FlakeField field(seed);
        VirtualMicroscope m(field.wafer, field.SetUp());
        m.camera.exposure.gainDb = std::stod(FromEnvironment("TESSARO_FOCUS_GAIN", "0"));
        m.camera.exposure.exposureTimeUs /= std::pow(10.0, m.camera.exposure.gainDb / 20.0);
        for (double d :
             {-900., -700., -500., -400., -350., -300., -275., -250., -225., -200., -175., -150., -125.,
              -100., -80.,  -60.,  -50.,  -40.,  -35.,  -30.,  -25.,  -20.,  -15.,  -12.,  -10.,  -8.,
              -6.,   -5.,   -4.,   -3.,   -2.,   -1.,   0.,    1.,    2.,    3.,    4.,    5.,    6.,
              8.,    10.,   12.,   15.,   20.,   25.,   30.,   40.,   60.,   100.,  200.}) {
            m.stage.Put({field.place.x, field.place.y, field.place.z + d}, m.ui.clock.now);
            m.services.focusView.GrabAndDraw();
            const float score = m.services.focusView.FocusScore();
            m.services.focusView.UpdateFocusMeasures();
            std::fprintf(stderr, "%u %.2f %.5f %.4f\n", seed, m.Z() - field.place.z,
                         static_cast<double>(score), static_cast<double>(m.globals->focusValue));
        }
    }
    testing::internal::GetCapturedStdout();
}

} // namespace
} // namespace tessaro
