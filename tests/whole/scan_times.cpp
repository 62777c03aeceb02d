#include "app/camera_settling.h"
#include "app/main_window.h"
#include "app/program_operations.h"
#include "app/services.h"
#include "platform/aravis/aravis_cameras.h"
#include "platform/posix/standard_streams.h"
#include "platform/qt/qt_serial_port.h"
#include "platform/qt/qt_user_interface.h"
#include "scan/report_lines.h"
#include "scan/scan_report.h"
#include "support/running_twin.h"
#include "support/temporary_folder.h"
#include "text/number_reading.h"

#include <chrono>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// Where the time of a field goes: the operator's program scans a simulated wafer in real time, with a clock
// at each step. Needs the camera's port, 127.0.0.1:3956.

namespace tessaro {
namespace {

using Clock = std::chrono::steady_clock;

constexpr const char* help =
    "Usage: tessaro-scan-times [OPTION]...\n"
    "Scans a simulated wafer without a display and says how long each step of a field takes.\n"
    "\n"
    "  --range MM         side of the area, 1 to 10 (2)\n"
    "  --time-factor F    the stage moves so many times as fast (1)\n"
    "  --help             says this\n";

constexpr int usageError = 2;
constexpr int failed = 1;
constexpr double pumpMs = 200.0;      // behind every move
constexpr double travelMs = 400.0;    // of 400 um, half of them speeding up by 10,000 um/s^2
constexpr float usefulThreshold = 35; // of the score

/// How often something was done, and how long it took.
class Times {
public:
    template<typename Action>
    decltype(auto) Measure(const std::string& name, Action action) {
        const Clock::time_point start = Clock::now();
        struct AtEnd {
            Times& times;
            const std::string& name;
            Clock::time_point start;
            ~AtEnd() { times.Add(name, start); }
        } const atEnd{*this, name, start};
        return action();
    }
    void Add(const std::string& name, Clock::time_point start) {
        Sum& sum = m_sums[name];
        sum.ms += std::chrono::duration<double, std::milli>(Clock::now() - start).count();
        ++sum.times;
    }

    double Total(const std::string& name) const { return m_sums.contains(name) ? m_sums.at(name).ms : 0.0; }
    int Count(const std::string& name) const { return m_sums.contains(name) ? m_sums.at(name).times : 0; }

private:
    struct Sum {
        double ms = 0.0;
        int times = 0;
    };
    std::map<std::string, Sum> m_sums;
};

/// The steps of a field, each timed.
class TimedWork : public FieldWork {
public:
    TimedWork(FieldWork& work, Times& times) : m_work(work), m_times(times) {}

    void GrabFrame(int exposures) override {
        m_times.Measure("grab", [&] { m_work.GrabFrame(exposures); });
    }
    void ComputeFrameStatistics() override {
        m_times.Measure("statistics", [&] { m_work.ComputeFrameStatistics(); });
    }
    void ShowFrame() override {
        m_times.Measure("drawing", [&] { m_work.ShowFrame(); });
    }
    void FindCandidates(bool paint) override {
        m_times.Measure("analysis", [&] { m_work.FindCandidates(paint); });
    }
    void RejectNoise() override {
        m_times.Measure("analysis", [&] { m_work.RejectNoise(); });
    }
    void GroupGrains() override {
        m_times.Measure("analysis", [&] { m_work.GroupGrains(); });
    }
    void DecideSingleLayers() override {
        m_times.Measure("decision", [&] { m_work.DecideSingleLayers(); });
    }

private:
    FieldWork& m_work;
    Times& m_times;
};

/// Encoding, as it is timed.
class TimedPictures : public PictureFiles {
public:
    TimedPictures(PictureFiles& pictures, Times& times) : m_pictures(pictures), m_times(times) {}

    std::vector<std::string> EncoderTypes() override { return m_pictures.EncoderTypes(); }
    std::variant<std::vector<std::uint8_t>, PictureError> Encode(const Picture& picture,
                                                                 std::string_view type) override {
        return m_times.Measure("encoding", [&] { return m_pictures.Encode(picture, type); });
    }
    std::variant<Picture, PictureError> Decode(std::span<const std::uint8_t> file) override {
        return m_pictures.Decode(file);
    }

private:
    PictureFiles& m_pictures;
    Times& m_times;
};

/// Fields as wholes, and what lies between them.
class TimedFields : public ScanListener {
public:
    TimedFields(ScanReport& report, Times& times) : m_report(report), m_times(times) {}

    void ScanBegins() override { m_report.ScanBegins(); }
    void FieldBegins() override {
        m_report.FieldBegins();
        m_begun = Clock::now();
        if (m_fields > 0)
            m_times.Add("between fields", m_finished);
        else
            m_first = m_begun;
    }
    void FieldFinished(const ScannedField& field) override {
        m_times.Measure("report", [&] { m_report.FieldFinished(field); });
        m_times.Add("field", m_begun);
        m_finished = Clock::now();
        ++m_fields;
    }
    void ScanEnds(ScanEnd why) override {
        m_completed = why == ScanEnd::Completed;
        m_report.ScanEnds(why);
    }

    int Fields() const { return m_fields; }
    bool Completed() const { return m_completed; }
    double AllMs() const { return std::chrono::duration<double, std::milli>(m_finished - m_first).count(); }

private:
    ScanReport& m_report;
    Times& m_times;
    Clock::time_point m_first;
    Clock::time_point m_begun;
    Clock::time_point m_finished;
    int m_fields = 0;
    bool m_completed = false;
};

/// The operator's program up to its first scan, on this machine's adapters.
class TimedProgram {
public:
    explicit TimedProgram(const std::string& stagePath)
        : m_serial(stagePath), m_pictures(m_ui.Adapters().pictures, times),
          m_globals(std::make_unique<Globals>(m_ui.Adapters().folders)),
          m_services(*m_globals, WithPictures(), {m_cameras, m_serial}), m_operations(m_services),
          m_window(m_operations, m_globals->mainWindow) {}
    ~TimedProgram() {
        m_globals->camera.grabResult = GrabResult();
        m_globals->camera.camera.reset();
    }
    TimedProgram(const TimedProgram&) = delete;
    TimedProgram& operator=(const TimedProgram&) = delete;

    /// False where camera or stage are missing.
    bool SetUp() {
        m_globals->grainTable = std::make_unique<GrainTable>();
        WindowSystem& windows = m_services.ui.windows;
        windows.RegisterWindowClass({"Tessaro", &m_window, 0, 0});
        m_globals->windows.main =
            windows.MakeWindow({"Tessaro", "Times", WindowStyle::Overlapped, 0, 0, 1242, 1108});
        windows.Show(m_globals->windows.main);
        windows.Update(m_globals->windows.main);
        m_services.screen.SetUp();
        m_globals->stage.Open(m_globals->windows.main);
        m_services.pump.PumpMessages(100);
        m_services.camera.InitializeCamera();
        m_services.camera.ControlCamera(camera_mode::openAndAdjust);
        CameraSettling camera(m_services, [] { return false; });
        camera.Wait();
        return m_globals->stage.offline == 0 && camera.GivesImages();
    }

    void Scan(int rangeMm, TimedFields& fields) {
        Globals& g = *m_globals;
        g.settings.xRange = rangeMm;
        g.settings.yRange = rangeMm;
        g.settings.scoreThreshold = usefulThreshold;
        g.scan.originX = static_cast<std::int32_t>(g.stage.position[axisX]);
        g.scan.originY = static_cast<std::int32_t>(g.stage.position[axisY]);
        g.focusControl.tiltCorrection = 0;
        m_services.controlPanel.ShowRanges();
        TimedWork work(m_services.currentField, times);
        ScanRun({work, m_services.images, m_services.tiltPlane, g.focusControl, g.stage,
                 m_services.stageMotion, m_services.pump, m_services.liveView, g.liveTimer, m_services.status,
                 g.scan, g.settings, g.findings.totalFound, &fields})
            .RunScan();
    }

    const Globals& State() const { return *m_globals; }

    Times times;

private:
    UserInterface WithPictures() {
        const UserInterface ui = m_ui.Adapters();
        return {ui.clock,   ui.messages, ui.windows, ui.dialogs, ui.boxes,
                ui.chooser, ui.drawing,  ui.folders, m_pictures};
    }

    QtUserInterface m_ui;
    AravisCameras m_cameras{"127.0.0.1"};
    QtSerialPorts m_serial;
    TimedPictures m_pictures;
    std::unique_ptr<Globals> m_globals;
    Services m_services;
    ProgramOperations m_operations;
    MainWindow m_window;
};

void WriteTable(std::FILE* out, const Times& times, const TimedFields& fields) {
    const auto row = [&](const char* name, double ms) { std::fprintf(out, "| %s | %.1f |\n", name, ms); };
    const auto mean = [&](const char* name) { return times.Total(name) / fields.Fields(); };
    const double between = times.Total("between fields") / times.Count("between fields");
    std::fprintf(out, "%d fields, %.1f a minute, means in ms\n\n| step | ms |\n|---|---|\n", fields.Fields(),
                 (fields.Fields() - 1) * 60'000.0 / fields.AllMs());
    row("from field to field", fields.AllMs() / (fields.Fields() - 1));
    row("between fields: move and pump", between);
    row("of it the pump behind the move", pumpMs);
    row("of it commands, travel, arrival, question", between - pumpMs);
    row("a field", mean("field"));
    row("of it four exposures", mean("grab"));
    row("of it statistics", mean("statistics"));
    row("of it drawing the frame", mean("drawing"));
    row("of it candidates, noise, grains", mean("analysis"));
    row("of it decision and marks, with saving", mean("decision"));
    row("of that encoding", mean("encoding"));
    row("of it the report's line", mean("report"));
    std::fprintf(
        out, "%d images were encoded, in %.1f ms each; 400 um take %.0f ms at the stage's own speed\n",
        times.Count("encoding"),
        times.Count("encoding") > 0 ? times.Total("encoding") / times.Count("encoding") : 0.0, travelMs);
}

int MeasureTimes(int rangeMm, double timeFactor) {
    std::FILE* const out = SetStandardOutputAside(); // the program tells there what its devices do
    if (out == nullptr)
        return failed;
    const TemporaryFolder home;
    const std::string stage = home.Path() / "stage";
    setenv("HOME", home.Path().c_str(), 1);
    setenv("XDG_CONFIG_HOME", "", 1);
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    const RunningTwin twin(TESSARO_TWIN,
                           {"--quiet", "--wafer-mm", std::to_string(rangeMm + 2), "--at", "600,600,0",
                            "--time-factor", std::to_string(timeFactor), "--stage-link", stage});
    if (!twin.IsReady()) {
        std::fprintf(stderr, "tessaro-scan-times: the simulated microscope does not start: %s\n",
                     twin.Errors().c_str());
        return failed;
    }
    TimedProgram program(stage);
    if (!program.SetUp()) {
        std::fputs("tessaro-scan-times: camera or stage are missing\n", stderr);
        return failed;
    }
    std::ofstream file(home.Path() / "report.jsonl", std::ios::binary);
    ReportLines lines(file);
    ScanReport report(StateToReport(program.State()), lines);
    TimedFields fields(report, program.times);
    program.Scan(rangeMm, fields);
    if (fields.Fields() < 2 || !fields.Completed())
        return failed;
    WriteTable(out, program.times, fields);
    return 0;
}

} // namespace
} // namespace tessaro

int main(int argc, char** argv) {
    using namespace tessaro;
    int rangeMm = 2;
    double timeFactor = 1.0;
    const std::vector<std::string_view> arguments(argv + 1, argv + argc);
    for (std::size_t i = 0; i < arguments.size(); i += 2) {
        const std::string_view value = i + 1 < arguments.size() ? arguments[i + 1] : "";
        if (arguments[i] == "--help") {
            std::fputs(help, stdout);
            return 0;
        }
        const bool taken = arguments[i] == "--range" ? ReadNumber(value, 1, 10, rangeMm)
                                                     : arguments[i] == "--time-factor" &&
                                                           ReadNumber(value, 0.01, 1000.0, timeFactor);
        if (!taken) {
            std::fputs("tessaro-scan-times: wrong usage\nTry 'tessaro-scan-times --help'.\n", stderr);
            return usageError;
        }
    }
    return MeasureTimes(rangeMm, timeFactor);
}
