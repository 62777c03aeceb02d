#pragma once

#include "app/globals.h"
#include "app/services.h"
#include "focus/focus_curve.h"
#include "platform/fake/fake_user_interface.h"
#include "scan/control_panel_ids.h"
#include "scan/scan_listener.h"
#include "support/virtual_serial_ports.h"
#include "twin/sensor_renderer.h"
#include "twin/stage/stage_wire.h"
#include "twin/wafer.h"

#include <cstdint>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace tessaro {

/// The simulated stage, its controller and its wire at the other end of a line.
class VirtualStage : public SerialFarEnd {
public:
    VirtualStage(const StagePosition& start, const StageLimits& limits, const ProgressAxes& progress);

    std::size_t Receive(std::string_view bytes, std::uint64_t nowMs) override;
    std::string Run(std::uint64_t nowMs) override;

    /// Where it truly is; of times up to the last call, and a little before.
    StagePosition PositionAt(double seconds) const { return m_axes.PositionAt(seconds); }
    bool MovesAt(std::uint64_t nowMs);

    ReplyFaultSettings& Faults() { return m_wire.Faults(); }

private:
    double Advance(std::uint64_t nowMs);

    StageAxes m_axes;
    StageController m_controller;
    StageWire m_wire;
    double m_now = 0.0; // s
    std::string m_said; // that nobody has asked for yet
};

/// When a grab exposes its image after it was asked for one, and when it has it.
struct GrabTiming {
    std::uint32_t exposureBeginsMs = 5;
    std::uint32_t lastsMs = 40;
};

/// A camera over the wafer, all of whose settings are fixed. Its images are rendered for where the stage was
/// during the exposure.
class VirtualCamera : public CameraRuntime, public GrabResult::BufferOwner {
public:
    VirtualCamera(VirtualClock& clock, VirtualStage& stage, const Wafer& wafer);

    void Initialize() override {}
    std::unique_ptr<CameraDevice> CreateFirstDevice() override;
    void Release(void*) noexcept override {}

    GrabTiming timing;
    ExposureSettings exposure;
    std::uint64_t noiseSeed = 1; // of the next image
    bool present = true;
    std::vector<double> exposedAtZ; // of each image, the middle of its exposure, um

private:
    class Device;
    void CheckPresent() const;
    void TakeImage();

    VirtualClock& m_clock;
    VirtualStage& m_stage;
    SensorRenderer m_renderer;
    std::vector<std::uint8_t> m_mosaic;
};

struct MicroscopeSetUp {
    StagePosition start;
    StageLimits limits = UsualLimitsAround({});
    ProgressAxes progress = usualProgressAxes;
    ScanListener* scanListener = nullptr; // must outlive the microscope
};

/// The operator's program on a simulated microscope, all in virtual time. Nothing is drawn: the program has
/// no bitmap of the screen.
class VirtualMicroscope {
public:
    /// The wafer must outlive it.
    explicit VirtualMicroscope(const Wafer& wafer, const MicroscopeSetUp& setUp = {});
    VirtualMicroscope(const VirtualMicroscope&) = delete;
    VirtualMicroscope& operator=(const VirtualMicroscope&) = delete;

    /// Lets time pass, messages included.
    void Wait(std::uint32_t milliseconds) { services.pump.PumpMessages(milliseconds); }

    /// Lets moves that nobody waits for any more come to their ends.
    void LetItRest();

    StagePosition Where();
    double Z() { return Where().z; }

    std::vector<std::string> Information() const { return ui.dialogs.TextsOf(panel::information); }

    FakeUserInterface ui;
    VirtualStage stage;
    VirtualSerialPorts ports;
    VirtualCamera camera;
    std::unique_ptr<Globals> globals;
    std::ostringstream curveText;
    FocusCurve curve;
    Services services;

private:
    class SilentDialog : public DialogProcedure {
    public:
        void Initialize(WindowHandle) override {}
        void Command(WindowHandle, int, Notification) override {}
    };
    class IgnoringWindow : public WindowProcedure {
    public:
        bool HandleMessage(const Message&) override { return true; }
    };

    IgnoringWindow m_window;
    SilentDialog m_dialog;
};

} // namespace tessaro
