#pragma once

#include "analysis/frame_measurements.h"
#include "analysis/grain.h"
#include "analysis/grain_report.h"
#include "app/heard_message_boxes.h"
#include "camera/camera_session.h"
#include "imaging/frame_buffer.h"
#include "imaging/image_save_listener.h"
#include "scan/report_lines.h"
#include "scan/scan_listener.h"
#include "stage/stage_link.h"

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tessaro {

/// What a report reads when a field is finished.
struct ReportedState {
    const StageLink& stage;
    const CameraSession& camera;
    const FrameRecord& frame;
    const FrameMeasurements& measured;
    const GrainFindings& findings;
    const std::unique_ptr<GrainTable>& grains;
};

/// Says as JSON, a line for each field and one at the end of each scan, what scans find and what goes wrong.
/// Nothing is shown, taken or moved for it.
///
/// Scans are counted from 1 over the run of the program, fields from 1 within their scan. Problems are told
/// in the next line there is, also those from before the first scan or from between two.
class ScanReport : public ScanListener, public ImageSaveListener, public MessageBoxListener {
public:
    ScanReport(const ReportedState& state, ReportLines& lines) : m_state(state), m_lines(lines) {}

    void ScanBegins() override;
    void FieldBegins() override;
    void FieldFinished(const ScannedField& field) override;
    void ScanEnds(ScanEnd why) override;
    void ScanNotBegun(const std::vector<std::string>& reasons) override;

    void ImageSaved(const std::filesystem::path& file) override;
    void ImageNotSaved(const std::filesystem::path& file, std::string_view reason) override;

    void WarningComes(const std::string& text) override;
    void QuestionAnswered(const std::string& text, bool yes) override;

private:
    struct Scan {
        int number = 0;
        int fields = 0;
        int found = 0;
        int imageCount = 0;
        std::vector<std::string> images; // of the field in work
    };

    std::string FieldLine(const ScannedField& field);
    std::string EndLine(std::string_view end) const;
    std::vector<GrainReport> Grains() const;
    std::vector<std::string> Problems() const;
    bool StageAnswers() const;
    void NoteLosses();
    void AddProblem(std::string text);
    void Write(const std::string& line, const std::string& what);

    ReportedState m_state;
    ReportLines& m_lines;
    int m_begun = 0;
    std::vector<Scan> m_scans; // those that run, the innermost last
    std::vector<std::string> m_problems;
    int m_problemsLeftOut = 0;
    bool m_cameraWasThere = true;
    bool m_stageWasThere = true;
    bool m_stageAnswered = true;
    bool m_lineIsMissing = false;
};

} // namespace tessaro
