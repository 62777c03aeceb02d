#include "app/camera_choice.h"
#include "app/globals.h"
#include "app/program.h"
#include "app/program_options.h"
#include "app/stage_choice.h"
#include "app/unattended_program.h"
#include "focus/focus_curve.h"
#include "platform/posix/interrupts.h"
#include "platform/posix/standard_streams.h"
#include "platform/qt/qt_user_interface.h"
#include "scan/report_lines.h"
#include "scan/scan_report.h"

#include <csignal>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <memory>
#include <optional>
#include <ostream>
#include <span>
#include <streambuf>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace {

constexpr int usageError = 2;

constexpr int failed = 1;

int Print(std::string_view text) {
    if (std::fwrite(text.data(), 1, text.size(), stdout) == text.size() && std::fflush(stdout) == 0)
        return 0;
    std::fprintf(stderr, "tessaro: standard output cannot be written\n");
    return failed;
}

int Refuse(const tessaro::OptionError& error) {
    std::fprintf(stderr, "tessaro: %s\nTry 'tessaro --help'.\n", error.reason.c_str());
    return usageError;
}

/// What is in the file stays; the position is its end.
bool OpenToAppend(const std::string& name, std::ofstream& file) {
    file.open(name, std::ios::app);
    if (!file.is_open())
        return false;
    file.seekp(0, std::ios::end);
    file.clear(); // a pipe has no end to go to
    return true;
}

/// False when it cannot be written. Nothing is held back in the program: a line goes out as one.
bool OpenAnew(const std::string& name, std::ofstream& file) {
    file.rdbuf()->pubsetbuf(nullptr, 0);
    file.open(name, std::ios::binary);
    return file.is_open();
}

bool IsReportToOutput(const tessaro::ProgramOptions& options) {
    return options.report == "-" || (!options.report.empty() && tessaro::IsStandardOutput(options.report));
}

/// Standard output, wherever it was set aside to.
class OutputBuffer : public std::streambuf {
public:
    std::FILE* file = stdout;

protected:
    std::streamsize xsputn(const char* text, std::streamsize length) override {
        return static_cast<std::streamsize>(std::fwrite(text, 1, static_cast<std::size_t>(length), file));
    }
    int sync() override { return std::fflush(file) == 0 ? 0 : -1; }
};

bool IsSet(const char* variable) {
    const char* value = std::getenv(variable);
    return value != nullptr && *value != '\0';
}

/// Qt would end the program where there is no display, or none that answers: the first platform that works.
void DoWithoutDisplay() {
    if (IsSet("QT_QPA_PLATFORM"))
        return;
    std::string platforms = IsSet("DISPLAY") ? "xcb;" : "";
    platforms += IsSet("WAYLAND_DISPLAY") ? "wayland;" : "";
    setenv("QT_QPA_PLATFORM", (platforms + "offscreen").c_str(), 1);
}

tessaro::WriteText WriterTo(std::FILE* file) {
    return [file](std::string_view text) {
        std::fwrite(text.data(), 1, text.size(), file);
        std::fflush(file);
    };
}

/// What the program says of its devices is for who looks for a fault in them; here it would tear the status
/// line apart. A report that goes to the standard output has it for itself.
tessaro::UnattendedConsole MakeConsole(OutputBuffer* report) {
    const bool isTerminal = tessaro::OutputIsTerminal();
    std::FILE* output = tessaro::SetStandardOutputAside();
    if (report != nullptr) {
        report->file = output != nullptr ? output : stdout;
        return {WriterTo(stderr), {}, WriterTo(stderr), tessaro::Interrupted};
    }
    if (output == nullptr)
        return {[](std::string_view) {}, {}, WriterTo(stderr), tessaro::Interrupted};
    const auto width = [output] { return tessaro::TerminalColumns(output); };
    return {WriterTo(output), isTerminal ? tessaro::TerminalWidth(width) : nullptr, WriterTo(stderr),
            tessaro::Interrupted};
}

void TellMissingLines(const tessaro::ReportLines& lines) {
    if (lines.Missing() > 0)
        std::fprintf(stderr, "tessaro: %d lines of the report could not be written\n", lines.Missing());
}

int Start(std::span<const std::string_view> arguments) {
    using namespace tessaro;
    const auto parsed = ParseProgramOptions(arguments);
    if (const auto* error = std::get_if<OptionError>(&parsed))
        return Refuse(*error);
    const auto& options = std::get<ProgramOptions>(parsed);
    if (options.help)
        return Print(ProgramHelp());
    if (options.version)
        return Print("tessaro " TESSARO_VERSION "\n");

    const auto cameras = ChooseCameras(options);
    if (const auto* error = std::get_if<OptionError>(&cameras))
        return Refuse(*error);
    std::ofstream curveFile;
    if (!options.focusCurve.empty() && !OpenToAppend(options.focusCurve, curveFile))
        return Refuse({"--focus-curve: '" + options.focusCurve + "' cannot be written"});
    std::ofstream reportFile;
    OutputBuffer outputBuffer;
    std::ostream output(&outputBuffer);
    const bool reportToOutput = IsReportToOutput(options);
    if (!options.report.empty() && !reportToOutput && !OpenAnew(options.report, reportFile))
        return Refuse({"--report: '" + options.report + "' cannot be written"});
    std::optional<UnattendedConsole> console;
    if (options.scan.has_value()) {
        HearInterrupts();
        DoWithoutDisplay();
        console = MakeConsole(reportToOutput ? &outputBuffer : nullptr);
    }
    QtUserInterface ui;
    std::optional<FocusCurve> curve;
    if (curveFile.is_open())
        curve.emplace(curveFile, ui.Adapters().clock, curveFile.tellp() <= 0);
    if (options.focusSpeed.has_value())
        ProgramGlobals().focusControl.focusSpeed = *options.focusSpeed;
    std::optional<ReportLines> reportLines;
    std::optional<ScanReport> report;
    if (!options.report.empty())
        report.emplace(StateToReport(ProgramGlobals()),
                       reportLines.emplace(reportToOutput ? output : reportFile));
    ScanReport* const listener = report.has_value() ? &*report : nullptr;
    const std::unique_ptr<SerialPorts> serial = ChooseSerialPorts(options);
    const Devices devices = {*std::get<std::unique_ptr<CameraRuntime>>(cameras), *serial};
    const Listeners listeners = {curve.has_value() ? &*curve : nullptr, listener, listener, listener};
    if (console.has_value()) {
        const int status = RunUnattendedProgram(ProgramGlobals(), ui.Adapters(), devices, listeners,
                                                *options.scan, *console);
        if (reportLines.has_value())
            TellMissingLines(*reportLines);
        return status;
    }
    return RunProgram(ProgramGlobals(), ui.Adapters(), devices, listeners);
}

} // namespace

int main(int argc, char** argv) {
    tessaro::OccupyClosedStreams();
    // A reader that goes away and a file-size limit show as failed writes.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    try {
        const std::vector<std::string_view> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
        return Start(arguments);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "tessaro: %s\n", error.what());
        return failed;
    }
}
