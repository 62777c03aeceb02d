#pragma once

#include "platform/fake/scripted_serial_port.h"
#include "stage/stage_motion.h"
#include "support/shell_fixture.h"

#include <string>
#include <vector>

namespace tessaro {

/// The time-outs of the stage's line: 10 ms of silence, or 10 ms a byte and 50 ms.
inline constexpr SerialTimeouts stageTimeouts = {10, 10, 50, 10, 50};

using Texts = std::vector<std::string>;

inline std::string Terminated(std::string text) {
    return ScriptedSerialPorts::Terminated(std::move(text));
}

inline ScriptedSerialPorts::Reply Answered(std::string text) {
    return ScriptedSerialPorts::Answered(std::move(text));
}

/// The stage link on a line whose script is followed to the letter, with the shell around it.
class StageFixture : public ShellFixture {
protected:
    StageFixture() {
        stage.machine.serial = &line;
        stage.hComm = SerialHandle::None;
    }

    /// The line as an opening leaves it, without what an opening says to the controller.
    void BeOnline() {
        stage.hComm = line.Open("line 3");
        line.SetTimeouts(stage.hComm, stageTimeouts);
        line.calls.clear();
    }

    Texts Progress() const { return ui.dialogs.TextsOf(panel::progress); }

    ScriptedSerialPorts line{ui.clock, [](const std::string& breach) { ADD_FAILURE() << breach; }};
    StageMotion motion{stage, pump, status, ui.clock};
};

} // namespace tessaro
