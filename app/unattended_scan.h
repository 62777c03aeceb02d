#pragma once

#include "app/services.h"
#include "app/settings.h"
#include "app/terminal_status.h"
#include "app/unattended_options.h"
#include "scan/scan_listener.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tessaro {

/// How the program ends that ran one scan by itself.
namespace unattended_exit {
inline constexpr int completed = 0;     // the scan ran to its end
inline constexpr int notStarted = 1;    // there is no window to begin with
inline constexpr int stopped = 3;       // ... or focusing failed
inline constexpr int deviceMissing = 4; // no camera or no stage: nothing was scanned
} // namespace unattended_exit

/// One scan without an operator: in place of waiting for messages, the program has this scan and close its
/// window.
class UnattendedScanRun : public ScanListener {
public:
    UnattendedScanRun(const UnattendedScan& options, std::function<bool()> interrupted)
        : m_options(options), m_interrupted(std::move(interrupted)) {}

    /// Before the windows show it: the origin, and whether the tilt is corrected.
    void SetUp(Globals& globals) const;

    /// The ranges of this scan in place of those of the settings, which get them back before they are
    /// written. A range that was typed meanwhile stays.
    void TakeRanges(Services& services);
    void GiveRangesBack(Settings& settings) const;

    /// Scans once, where there are camera and stage, and closes the main window as an operator would.
    void ScanAndClose(Services& services);

    int ExitCode() const { return m_exitCode; }

    /// What there is to say in the end; what went wrong goes to `errors`.
    void Tell(TerminalStatus& terminal, const WriteText& errors) const;

    /// Nothing where a scan was begun.
    std::vector<std::string> WhyItDidNotBegin() const;

    void ScanBegins() override {}
    void FieldFinished(const ScannedField& field) override;
    void ScanEnds(ScanEnd why) override { m_why = why; }

private:
    struct Range {
        std::int32_t ofSettings = 0; // mm
        std::int32_t ofScan = 0;
    };

    int Scan(Services& services);
    bool IsOver(Services& services) const;
    bool HasDevices(Services& services);
    static void GoToOrigin(Services& services);
    void TellWhatIsMissing(const WriteText& errors) const;
    void TellWhatWasLost(const WriteText& errors) const;

    UnattendedScan m_options;
    std::function<bool()> m_interrupted;
    Range m_xRange;
    Range m_yRange;
    const Globals* m_globals = nullptr; // while it scans
    std::optional<ScanEnd> m_why;       // of the last scan that has ended; nothing: none was begun
    int m_fields = 0;
    int m_found = 0; // single layers
    int m_fieldsWithoutImage = 0;
    bool m_cameraIsMissing = false;
    bool m_stageIsMissing = false;
    bool m_stageWasLost = false;
    int m_exitCode = unattended_exit::notStarted;
};

} // namespace tessaro
