#pragma once

#include "support/twin_stage.h"
#include "whole/window_driver.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace tessaro {

using Position = std::array<double, 3>; // um: [X, Y, Z]

/// The operator's program in a real window, with the simulated microscope's stage and camera behind it.
class WindowOnTwin : public WindowDriver {
protected:
    void StartTwin(const std::vector<std::string>& more) {
        std::vector<std::string> options = stage.Options();
        options.push_back("--quiet");
        options.insert(options.end(), more.begin(), more.end());
        twin = std::make_unique<RunningTwin>(TESSARO_TWIN, options);
        ASSERT_TRUE(twin->IsReady()) << twin->Errors();
        arguments = {"--camera", "127.0.0.1", "--stage-port", stage.LinkPath()};
    }

    Position Where() { return TwinStage::Place(*twin); }
    bool Stands() { return !TwinStage::Moves(*twin); }

    bool StandsAt(const Position& at) {
        const Position now = Where();
        for (std::size_t axis = 0; axis < at.size(); ++axis)
            if (std::abs(now[axis] - at[axis]) >= stepUm)
                return false;
        return true;
    }

    /// The wait for a move ends with a question where the axis is.
    bool IsIdle() { return Stands() && TwinStage::IsQuestion(stage.Commands().back()); }

    /// The camera is adjusted: the image is as bright as before, time and again. The contrast of a field that
    /// grows darker looks like one that gets out of focus.
    void WaitForTheWafer() {
        double last = 0.0;
        int alike = 0;
        ASSERT_TRUE(Eventually([&] {
            const double brightness = Brightness();
            alike = brightness > 100.0 && std::abs(brightness - last) < 0.3 ? alike + 1 : 0;
            last = brightness;
            return alike >= 4;
        }));
    }

    /// Mean of many pixels of the image.
    double Brightness() {
        const auto screen = display.Screenshot(screenshots / "brightness.png");
        double sum = 0.0;
        int count = 0;
        for (int y = 100; screen.has_value() && y < 1000; y += 5)
            for (int x = 50; x < 1200; x += 5, ++count)
                sum += screen->Pixel(x, y)[1];
        return count == 0 ? 0.0 : sum / count;
    }

    static constexpr double stepUm = 0.625;

    TwinStage stage{home.Path().string()};
    std::unique_ptr<RunningTwin> twin;
};

} // namespace tessaro
