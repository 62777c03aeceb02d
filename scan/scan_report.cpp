#include "scan/scan_report.h"

#include "analysis/grain_json.h"
#include "focus/focus_measures.h"
#include "text/json_writer.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <system_error>
#include <utility>

namespace tessaro {
namespace {

constexpr std::size_t mostProblems = 100; // in one line

const char* EndText(ScanEnd why) {
    switch (why) {
    case ScanEnd::Completed:
        return "completed";
    case ScanEnd::Stopped:
        return "stopped";
    case ScanEnd::FocusFailed:
        return "focusing failed";
    case ScanEnd::Interrupted:
        return "interrupted";
    }
    return "";
}

template<typename Values>
void WriteList(JsonWriter& json, std::string_view key, const Values& values) {
    json.Key(key);
    json.Open('[');
    for (const auto& value : values)
        json.Value(value);
    json.Close(']');
}

void WriteTexts(JsonWriter& json, std::string_view key, const std::vector<std::string>& texts) {
    WriteList(json, key, std::vector<std::string_view>(texts.begin(), texts.end()));
}

/// In um of the stage. The middle of the frame is where the stage stood, X to the right and Y up.
std::array<double, 2> OnStage(const ScannedField& field, const std::array<double, 2>& inFrame) {
    return {field.position[axisX] + (inFrame[0] - frameWidth / 2.0) / framePixelsPerUm,
            field.position[axisY] + (inFrame[1] - frameHeight / 2.0) / framePixelsPerUm};
}

std::string AbsoluteText(const std::filesystem::path& file) {
    std::error_code error;
    const std::filesystem::path absolute = std::filesystem::absolute(file, error);
    return (error ? file : absolute).string();
}

} // namespace

void ScanReport::ScanBegins() {
    m_scans.emplace_back().number = ++m_begun;
}

/// What the operator saves between two fields belongs to none.
void ScanReport::FieldBegins() {
    m_scans.back().images.clear();
}

void ScanReport::FieldFinished(const ScannedField& field) {
    NoteLosses();
    Scan& scan = m_scans.back();
    ++scan.fields;
    scan.imageCount += static_cast<int>(scan.images.size());
    const std::string line = FieldLine(field);
    Write(line, "field " + std::to_string(scan.fields));
    scan.images.clear();
}

void ScanReport::ScanEnds(ScanEnd why) {
    NoteLosses();
    Write(EndLine(EndText(why)), "the end");
    m_scans.pop_back();
}

void ScanReport::ScanNotBegun(const std::vector<std::string>& reasons) {
    ScanBegins();
    for (const std::string& reason : reasons)
        AddProblem(reason);
    Write(EndLine("not begun"), "the end");
    m_scans.pop_back();
}

void ScanReport::ImageSaved(const std::filesystem::path& file) {
    if (!m_scans.empty())
        m_scans.back().images.push_back(AbsoluteText(file));
}

void ScanReport::ImageNotSaved(const std::filesystem::path& file, std::string_view reason) {
    AddProblem(AbsoluteText(file) + ": " + std::string(reason));
}

void ScanReport::WarningComes(const std::string& text) {
    AddProblem(text);
}

void ScanReport::QuestionAnswered(const std::string& text, bool yes) {
    AddProblem(text + (yes ? " Yes" : " No"));
}

/// Counts what it finds for the end of the scan.
std::string ScanReport::FieldLine(const ScannedField& field) {
    Scan& scan = m_scans.back();
    JsonWriter json(reportDecimals);
    json.Open('{');
    json.Member("scan", scan.number);
    json.Member("field", scan.fields);
    json.Member("row", field.row);
    json.Member("column", field.column);
    json.Member("x", field.position[axisX]);
    json.Member("y", field.position[axisY]);
    json.Member("z", field.position[axisZ]);
    json.Member("noise", double{m_state.measured.noiseLevel});
    json.Member("focus", double{MeasureFocus(m_state.measured.reduced).focusValue});
    WriteList(json, "bgPeak", m_state.frame.bgPeak);
    json.Member("camera", m_cameraWasThere);
    json.Member("stage", m_stageWasThere);

    const std::vector<GrainReport> grains = Grains();
    const auto found = static_cast<int>(
        std::count_if(grains.begin(), grains.end(), [](const GrainReport& grain) { return grain.single; }));
    scan.found += found;
    json.Member("found", found);
    WriteTexts(json, "images", scan.images);
    json.Key("grains");
    json.Open('[');
    for (const GrainReport& grain : grains) {
        json.Open('{');
        WriteGrainMembers(json, grain);
        const Grain& pixels = m_state.grains->grains[static_cast<std::size_t>(grain.grain)];
        WriteList(json, "centre", OnStage(field, GrainCentre(pixels)));
        json.Close('}');
    }
    json.Close(']');
    WriteTexts(json, "problems", Problems());
    json.Close('}');
    return json.Take();
}

/// None where there was no memory for them.
std::vector<GrainReport> ScanReport::Grains() const {
    return m_state.grains != nullptr ? ReportGrains(*m_state.grains, m_state.findings)
                                     : std::vector<GrainReport>();
}

std::vector<std::string> ScanReport::Problems() const {
    std::vector<std::string> problems = m_problems;
    if (m_problemsLeftOut > 0)
        problems.push_back("and " + std::to_string(m_problemsLeftOut) + " more");
    return problems;
}

std::string ScanReport::EndLine(std::string_view end) const {
    const Scan& scan = m_scans.back();
    JsonWriter json(reportDecimals);
    json.Open('{');
    json.Member("scan", scan.number);
    json.Member("end", end);
    json.Member("fields", scan.fields);
    json.Member("found", scan.found);
    json.Member("images", scan.imageCount);
    WriteTexts(json, "problems", Problems());
    json.Close('}');
    return json.Take();
}

/// Whether the last question to it had an answer: every move ends with one. A stage that is not asked,
/// because it is simulated, answers.
bool ScanReport::StageAnswers() const {
    const StageLink& stage = m_state.stage;
    return stage.offline != 0 || (stage.lastResult == 1 && stage.bytesTransferred > 0);
}

/// Told once when they go, and again when they go again.
void ScanReport::NoteLosses() {
    const bool cameraIsThere = m_state.camera.patternStandsIn == 0;
    const bool stageIsThere = m_state.stage.offline == 0;
    if (m_cameraWasThere && !cameraIsThere)
        AddProblem("no image from the camera: a test pattern stands in");
    if (m_stageWasThere && !stageIsThere)
        AddProblem("the stage is offline: its moves are simulated");
    if (m_stageAnswered && !StageAnswers())
        AddProblem("the stage does not answer: it may stand elsewhere");
    m_stageAnswered = StageAnswers();
    m_cameraWasThere = cameraIsThere;
    m_stageWasThere = stageIsThere;
}

void ScanReport::AddProblem(std::string text) {
    if (m_problems.size() < mostProblems)
        m_problems.push_back(std::move(text));
    else
        ++m_problemsLeftOut;
}

/// Problems of a line that could not be written are told in the next that can.
void ScanReport::Write(const std::string& line, const std::string& what) {
    if (m_lines.Write(line)) {
        m_problems.clear();
        m_problemsLeftOut = 0;
        m_lineIsMissing = false;
        return;
    }
    if (!m_lineIsMissing)
        AddProblem("the line of " + what + " of scan " + std::to_string(m_scans.back().number) +
                   " could not be written");
    m_lineIsMissing = true;
}

} // namespace tessaro
