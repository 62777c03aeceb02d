#pragma once

#include "support/scan_fixture.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace tessaro {

/// A scan of two rows of two fields from (0, 0), where the stage stands, without a tilt.
class SmallScan : public ScanFixture {
protected:
    using Places = std::vector<std::pair<int, int>>; // row and column

    static constexpr std::uint64_t inThePump = 100; // a move takes 20 ms here, the wait behind it 200 ms

    SmallScan() {
        settings.xRange = 1;
        settings.yRange = 1;
        focus.tiltCorrection = 0;
        liveView.Switch(1);
    }

    /// The operator clicks while a command is carried out, or so long after it was sent.
    void StopAt(const std::string& command, std::uint64_t afterMs = 0, int time = 1) {
        When(
            command, [this, afterMs] { ClickIn(afterMs, true); }, time);
    }

    /// The end of every scan.
    void ExpectStopped() {
        EXPECT_EQ(told.ends, std::vector{ScanEnd::Stopped});
        EXPECT_EQ(Information().back(), "Scanning has completed.");
        const Texts progress = Progress();
        EXPECT_NE(std::find(progress.begin(), progress.end(), "Done"), progress.end());
        EXPECT_EQ(scan.scanning, 0);
        EXPECT_EQ(scan.stopRequested, 1) << "until the next start";
        EXPECT_EQ(liveTimer.on, 1);
        EXPECT_TRUE(LiveTimerRuns());
        EXPECT_EQ(ui.boxes.unexpected, 0);
        if (!field.calls.empty()) {
            EXPECT_EQ(field.calls.back(), "decide");
        }
    }

    Texts SentAfterTheStart() const {
        const Texts sent = arriving.Commands();
        return {sent.begin() + 2, sent.end()};
    }
};

} // namespace tessaro
