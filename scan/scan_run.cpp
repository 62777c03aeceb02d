#include "scan/scan_run.h"

#include "app/number_text.h"
#include "scan/scan_area.h"

namespace tessaro {
namespace {

constexpr std::int32_t scanSpeed = 2000; // um/s
constexpr int exposures = 4;
constexpr std::uint32_t originPumpMs = 10;
constexpr std::uint32_t stepPumpMs = 200;
constexpr float fieldsPerMinute = 80.0F; // assumed, not measured

/// A single run. What counts its fields is its own, since another one may run inside it.
class Run {
public:
    explicit Run(const ScanReach& reach) : m_reach(reach) {}

    void Do() {
        Begin();
        if (Prepare() && GoToOrigin())
            ScanRows();
        End();
    }

private:
    void Begin();
    bool Prepare();
    bool GoToOrigin();
    void ScanRows();
    bool ScanForward();
    bool ScanBackward();
    bool StepAlongRow(double um);
    bool NextRow();
    void ProcessField(std::int32_t column);
    void ShowPercentage();
    void End();

    bool StopIsRequested() const { return m_reach.scan.stopRequested == 1; }
    bool PumpFor(std::uint32_t milliseconds) { return m_reach.pump.PumpMessages(milliseconds) != 0; }

    /// Each part of a run says whether it goes on. A part that does not returns this.
    bool EndsAs(ScanEnd why) {
        m_why = why;
        return false;
    }

    ScanReach m_reach;
    bool m_wasLive = false;
    std::int32_t m_columnCount = 0;
    std::int32_t m_rowCount = 0;
    std::int32_t m_row = 0;
    // 64 bits: the widest area that can be typed has more fields than 32 bits count.
    std::int64_t m_fieldTotal = 0;
    std::int64_t m_fieldsDone = 0; // steps between fields
    ScanEnd m_why = ScanEnd::Completed;
};

void Run::Begin() {
    m_reach.totalFound = 0;
    m_reach.liveView.Switch(0);
    m_wasLive = m_reach.liveTimer.previous != 0; // a search for the focus switches, too, and remembers anew
    m_reach.scan.scanning = 1;
    m_reach.scan.stopRequested = 0;
    m_reach.status.ShowInformation("scanning...");
    if (m_reach.listener != nullptr)
        m_reach.listener->ScanBegins();
    m_columnCount = FieldsAlong(m_reach.settings.xRange);
    m_rowCount = FieldsAlong(m_reach.settings.yRange);
    m_fieldTotal = std::int64_t{m_columnCount} * m_rowCount;
    m_reach.stage.SetSpeed(axisX, scanSpeed);
    m_reach.stage.SetSpeed(axisY, scanSpeed);
    m_reach.images.MakeSessionFolders(1);
}

/// A known plane begins with the height of the origin as a step from where Z stands: that is meant.
bool Run::Prepare() {
    if (m_reach.focus.tiltCorrection != 1)
        return true;
    bool isKnown = true;
    if (m_reach.focus.tiltMeasured == 1)
        m_reach.motion.MoveAxisBy(axisZ, m_reach.scan.zOrigin);
    else
        isKnown = m_reach.tilt.MeasureTilt(m_reach.focus) == 1;
    if (StopIsRequested())
        return EndsAs(ScanEnd::Stopped);
    if (!isKnown)
        return EndsAs(ScanEnd::FocusFailed);
    return true;
}

bool Run::GoToOrigin() {
    m_reach.motion.MoveXY(m_reach.scan.originX, m_reach.scan.originY);
    m_reach.status.ShowStagePosition();
    if (!PumpFor(originPumpMs) || StopIsRequested())
        return EndsAs(ScanEnd::Stopped);
    return true;
}

/// The way back along X is absolute: it cancels what the steps have drifted.
void Run::ScanRows() {
    while (m_row < m_rowCount) {
        if (!ScanForward() || !NextRow() || StopIsRequested() || !ScanBackward())
            return;
        m_reach.motion.MoveAxisTo(axisX, m_reach.scan.originX);
        if (!NextRow())
            return;
    }
}

/// Without any column it takes one field and one step all the same.
bool Run::ScanForward() {
    for (std::int32_t column = 0; column < m_columnCount + 1; ++column) {
        ProcessField(column);
        if (column == m_columnCount - 1)
            return true;
        if (!StepAlongRow(fieldStepUm))
            return false;
    }
    return true;
}

bool Run::ScanBackward() {
    for (std::int32_t column = m_columnCount - 1; column >= 0; --column) {
        ProcessField(column);
        if (column == 0)
            return true;
        if (!StepAlongRow(-fieldStepUm))
            return false;
    }
    return true;
}

bool Run::StepAlongRow(double um) {
    m_reach.motion.MoveAxisBy(axisX, um);
    if (StopIsRequested())
        return EndsAs(ScanEnd::Stopped);
    if (m_reach.focus.tiltCorrection == 1)
        m_reach.tilt.ApplyTiltZ(m_reach.focus, 1);
    if (!PumpFor(stepPumpMs) || StopIsRequested())
        return EndsAs(ScanEnd::Stopped);
    if (m_reach.scan.scanning == 0)
        return EndsAs(ScanEnd::Interrupted);
    ++m_fieldsDone;
    return true;
}

/// Z stays as it is: the first field of a row is taken at the height of the last one of the row before.
bool Run::NextRow() {
    m_reach.motion.MoveAxisBy(axisY, fieldStepUm);
    ++m_row;
    if (!PumpFor(stepPumpMs))
        return EndsAs(ScanEnd::Stopped);
    return true;
}

void Run::ProcessField(std::int32_t column) {
    if (m_reach.listener != nullptr)
        m_reach.listener->FieldBegins();
    m_reach.work.GrabFrame(exposures);
    const ScannedField field = {m_row, column, m_reach.stage.position};
    m_reach.work.ComputeFrameStatistics();
    m_reach.work.ShowFrame();
    m_reach.status.ShowStagePosition();
    ShowPercentage();
    AnalyseFrame(m_reach.work, false);
    if (m_reach.listener != nullptr)
        m_reach.listener->FieldFinished(field);
}

/// The additional row of an odd number of rows counts its steps, too: above 100% and below no minutes is
/// meant. An area without a column has no fields that could be counted, and is scanned by its rows.
void Run::ShowPercentage() {
    const std::int64_t total = m_fieldTotal != 0 ? m_fieldTotal : m_rowCount;
    const std::int64_t done = m_fieldTotal != 0 ? m_fieldsDone : m_row;
    const float minutes = static_cast<float>(total - done) / fieldsPerMinute;
    m_reach.status.ShowInformation(Formatted("%d%% finished, %.1f minute left",
                                             static_cast<int>(done * 100 / total),
                                             static_cast<double>(minutes)));
}

void Run::End() {
    if (m_why == ScanEnd::Completed && StopIsRequested())
        m_why = ScanEnd::Stopped; // between two rows, or behind the last one: even if every field is done
    m_reach.status.ShowInformation("Scanning has completed.");
    m_reach.status.ShowProgress("Done");
    m_reach.motion.MoveXY(m_reach.scan.originX, m_reach.scan.originY);
    m_reach.status.ShowStagePosition();
    if (m_wasLive)
        m_reach.liveView.Switch(1);
    m_reach.scan.scanning = 0;
    if (m_reach.listener != nullptr)
        m_reach.listener->ScanEnds(m_why);
}

} // namespace

void ScanRun::RunScan() {
    Run(m_reach).Do();
}

} // namespace tessaro
