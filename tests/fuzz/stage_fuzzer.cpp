#include "platform/fake/fake_user_interface.h"
#include "platform/fake/scripted_serial_port.h"
#include "stage/stage_motion.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

// Any bytes from the stage's controller, cut into pieces at any time, through opening, queries and moves, in
// virtual time.
//
// The input: how many writes the line survives (0: all), then pieces. Each is a time in ms since the piece
// before it (0 to 255, from 250 on in steps of 500), a length and as many bytes. The moves follow from the
// number of pieces.

namespace tessaro {
namespace {

constexpr std::uint64_t longestMoveMs = 2'500; // of silence, with what is read and pumped around it

/// Takes the input apart; gives zeros when it has run out.
class Input {
public:
    Input(const std::uint8_t* data, std::size_t size) : m_data(data), m_end(data + size) {}

    bool Empty() const { return m_data == m_end; }
    std::uint8_t Byte() { return Empty() ? std::uint8_t{0} : *m_data++; }

private:
    const std::uint8_t* m_data;
    const std::uint8_t* m_end;
};

std::uint64_t Pause(std::uint8_t byte) {
    return byte < 250 ? byte : (byte - 249U) * 500U;
}

void Require(bool condition) {
    if (!condition)
        std::abort();
}

/// A stage with its shell on a line that says what the input holds.
class Bench {
public:
    explicit Bench(Input& input) {
        line.remembersCalls = false;
        line.TakeAnyWrite();
        if (const std::size_t writes = input.Byte(); writes > 0)
            line.HangUpAfterWrites(writes);
        while (!input.Empty())
            TakePiece(input);
        stage.machine = {&line, &ui.boxes, &ui.clock};
    }

    void Run() {
        stage.Open(WindowHandle::None);
        Require(ui.clock.now < 1'000);
        Check();
        for (const int axis : {axisX, axisY, axisZ})
            Require(std::isfinite(stage.QueryPosition(axis)));
        motion.MoveAxisTo(axisZ, 0.625 * static_cast<double>(m_pieces));
        Check();
        motion.MoveXY(1000.0, 100.0 * static_cast<double>(m_pieces));
        Check();
        motion.MoveAxisBy(static_cast<int>(m_pieces % axisCount), -12.5);
        Check();
        stage.SetStoredPosition(axisX, 0.0); // it lasts as long as the way says
        stage.SetStoredPosition(axisY, 0.0);
        motion.MoveXYTogether(300.0, 400.0, 800);
        Check();
        stage.Open(WindowHandle::None);
        Check();
    }

private:
    void TakePiece(Input& input) {
        m_lastArrival += Pause(input.Byte());
        const std::size_t length = input.Byte();
        std::string bytes;
        while (bytes.size() < length && !input.Empty())
            bytes.push_back(static_cast<char>(input.Byte()));
        m_bytes += bytes.size();
        ++m_pieces;
        line.Arrive(m_lastArrival, std::move(bytes));
    }

    /// Every byte may be progress, which restarts a wait; the time is finite all the same.
    void Check() {
        for (const double um : stage.position)
            Require(std::isfinite(um));
        Require(std::memchr(stage.commandText.data(), 0, stage.commandText.size()) != nullptr);
        Require(std::memchr(stage.ioBuffer.data(), 0, stage.ioBuffer.size()) != nullptr);
        Require(ui.clock.now < m_lastArrival + (m_bytes + 10) * longestMoveMs);
    }

    std::uint64_t m_lastArrival = 0;
    std::size_t m_bytes = 0;
    std::size_t m_pieces = 0;

    FakeUserInterface ui;
    ProgramWindows windows;
    ScriptedSerialPorts line{ui.clock};
    StageLink stage;
    ScanState scan;
    LiveTimer liveTimer;
    ShownPosition shownPosition;
    StatusLines status{ui.dialogs, windows, stage, shownPosition};
    LiveView liveView{liveTimer, ui.messages, windows};
    MessagePump pump{ui.clock, ui.messages, ui.boxes, liveView, status, scan, stage, windows};
    StageMotion motion{stage, pump, status, ui.clock};
};

} // namespace
} // namespace tessaro

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    if (std::freopen("/dev/null", "w", stdout) == nullptr) // the link says all that it sends
        std::abort();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    tessaro::Input input(data, size);
    tessaro::Bench(input).Run();
    return 0;
}
