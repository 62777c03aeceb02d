#include "support/virtual_microscope.h"

#include "app/resource_ids.h"
#include "twin/exposure_way.h"

#include <algorithm>
#include <array>
#include <utility>

namespace tessaro {
namespace {

constexpr double secondsAMs = 1e-3;
constexpr double secondsAUs = 1e-6;
constexpr std::uint32_t restPumpMs = 100;

[[noreturn]] void ThrowUnknown(std::string_view feature) {
    throw CameraError("the simulated camera has no " + std::string(feature));
}

} // namespace

VirtualStage::VirtualStage(const StagePosition& start, const StageLimits& limits,
                           const ProgressAxes& progress)
    : m_axes(start, limits, 1.0), m_controller(m_axes, {}, progress), m_wire(m_controller) {}

std::size_t VirtualStage::Receive(std::string_view bytes, std::uint64_t nowMs) {
    const double now = Advance(nowMs);
    m_wire.Receive(bytes, now);
    return bytes.size();
}

std::string VirtualStage::Run(std::uint64_t nowMs) {
    Advance(nowMs);
    return std::exchange(m_said, {});
}

/// Whatever happens meanwhile happens at its own time.
double VirtualStage::Advance(std::uint64_t nowMs) {
    const double end = static_cast<double>(nowMs) * secondsAMs;
    while (m_wire.NextTime() <= end) {
        m_now = std::max(m_now, m_wire.NextTime());
        m_said += m_wire.Run(m_now);
    }
    m_now = std::max(m_now, end);
    return m_now;
}

bool VirtualStage::MovesAt(std::uint64_t nowMs) {
    const double now = Advance(nowMs);
    return std::ranges::any_of(std::array<std::size_t, stageAxisCount>{0, 1, 2},
                               [&](std::size_t axis) { return m_axes.MovesAt(axis, now); });
}

/// Knows no features but the one that says that its images are what the program needs.
class VirtualCamera::Device : public CameraDevice {
public:
    explicit Device(VirtualCamera& camera) : m_camera(camera) {}

    void Open() override {}
    bool IsOpen() const override { return true; }
    bool IsReadable(std::string_view) override { return false; }
    bool IsWritable(std::string_view) override { return false; }
    std::string GetEnumeration(std::string_view) override { return "BayerRG8"; }
    void SetEnumeration(std::string_view feature, std::string_view) override { ThrowUnknown(feature); }
    std::vector<std::string> SettableValues(std::string_view) override { return {}; }
    double GetFloat(std::string_view feature) override { ThrowUnknown(feature); }
    void SetFloat(std::string_view feature, double) override { ThrowUnknown(feature); }
    std::int64_t GetInteger(std::string_view feature) override { ThrowUnknown(feature); }
    void SetInteger(std::string_view feature, std::int64_t) override { ThrowUnknown(feature); }
    IntegerRange GetIntegerRange(std::string_view feature) override { ThrowUnknown(feature); }
    void SetBoolean(std::string_view feature, bool) override { ThrowUnknown(feature); }
    void SetMaxNumBuffer(int) override {}

    void StartGrabbing(int count) override {
        m_camera.CheckPresent();
        m_left = count;
    }
    bool IsGrabbing() const override { return m_left > 0; }
    GrabResult RetrieveResult(std::uint32_t) override {
        --m_left;
        m_camera.TakeImage();
        return {{true, twinSensorWidth, twinSensorHeight, m_camera.m_mosaic}, &m_camera, nullptr};
    }
    GrabResult GrabOne(std::uint32_t timeoutMilliseconds) override {
        StartGrabbing(1);
        return RetrieveResult(timeoutMilliseconds);
    }
    void RegisterConfiguration(Acquisition) override {}

private:
    VirtualCamera& m_camera;
    int m_left = 0;
};

VirtualCamera::VirtualCamera(VirtualClock& clock, VirtualStage& stage, const Wafer& wafer)
    : m_clock(clock), m_stage(stage), m_renderer(wafer), m_mosaic(twinMosaicBytes) {}

std::unique_ptr<CameraDevice> VirtualCamera::CreateFirstDevice() {
    CheckPresent();
    return std::make_unique<Device>(*this);
}

void VirtualCamera::CheckPresent() const {
    if (!present)
        throw CameraError("the simulated camera does not answer");
}

/// The commands that came before the exposure have to act before it, so it is drawn when it is over.
void VirtualCamera::TakeImage() {
    CheckPresent();
    const double begins = static_cast<double>(m_clock.now + timing.exposureBeginsMs) * secondsAMs;
    m_clock.now += timing.lastsMs;
    m_stage.MovesAt(m_clock.now);
    const ExposureWay way = WayDuring(begins, exposure.exposureTimeUs * secondsAUs,
                                      [this](double time) { return m_stage.PositionAt(time); });
    exposedAtZ.push_back(way.places[way.places.size() / 2].z);
    m_renderer.Render(way, exposure, noiseSeed++, m_mosaic);
}

VirtualMicroscope::VirtualMicroscope(const Wafer& wafer, const MicroscopeSetUp& setUp)
    : stage(setUp.start, setUp.limits, setUp.progress), ports(ui.clock, stage),
      camera(ui.clock, stage, wafer), globals(std::make_unique<Globals>(ui.folders)),
      curve(curveText, ui.clock, true),
      services(*globals, ui.Adapters(), {camera, ports}, {&curve, setUp.scanListener}) {
    ui.windows.RegisterWindowClass({"main", &m_window});
    globals->windows.main = ui.windows.MakeWindow({"main", "Main"});
    globals->windows.controlPanel =
        ui.dialogs.CreateModeless(resource::controlPanel, globals->windows.main, m_dialog);
    globals->stage.Open(globals->windows.main);
    services.camera.InitializeCamera();
}

void VirtualMicroscope::LetItRest() {
    while (stage.MovesAt(ui.clock.now))
        Wait(restPumpMs);
}

StagePosition VirtualMicroscope::Where() {
    stage.MovesAt(ui.clock.now);
    return stage.PositionAt(static_cast<double>(ui.clock.now) * secondsAMs);
}

} // namespace tessaro
