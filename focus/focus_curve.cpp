#include "focus/focus_curve.h"

#include "app/number_text.h"

#include <cstdio>

namespace tessaro {
namespace {

constexpr const char* columnNames = "started,number,search,pass,step,ms,z_um,score,focus_value,outcome";

std::string Text(const LocalTime& time) {
    return Formatted("%04d-%02d-%02d %02d:%02d:%02d", time.year, time.month, time.day, time.hour, time.minute,
                     time.second);
}

} // namespace

FocusCurve::FocusCurve(std::ostream& out, Clock& clock, bool writeHeader) : m_out(out), m_clock(clock) {
    if (writeHeader)
        Write(columnNames);
}

int FocusCurve::BeginSearch() {
    return ++m_searches;
}

void FocusCurve::Write(const std::string& line) {
    m_out << line << '\n' << std::flush;
    if (m_out || m_told)
        return;
    m_told = true;
    std::fprintf(stderr, "tessaro: the focus curve cannot be written any more\n");
}

SearchRecord::SearchRecord(FocusCurve* curve, std::string_view search) : m_curve(curve), m_search(search) {
    if (m_curve == nullptr)
        return;
    m_number = m_curve->BeginSearch();
    m_started = Text(m_curve->StartTime());
    m_start = m_curve->Now();
}

void SearchRecord::Add(int pass, int step, double z, const FocusFigures& figures) {
    if (m_curve != nullptr)
        m_curve->Write(Line(Formatted("%d,%d", pass, step), z, figures, ""));
}

void SearchRecord::End(std::string_view outcome, double z, const FocusFigures& figures) {
    if (m_curve != nullptr)
        m_curve->Write(Line(",", z, figures, outcome));
}

std::string SearchRecord::Line(const std::string& step, double z, const FocusFigures& figures,
                               std::string_view outcome) const {
    const auto milliseconds = static_cast<unsigned long long>(m_curve->Now() - m_start);
    return m_started +
           Formatted(",%d,%s,%s,%llu,%.3f,%.6g,%.6g,", m_number, m_search.c_str(), step.c_str(), milliseconds,
                     z, static_cast<double>(figures.laplaceM), static_cast<double>(figures.focusValue)) +
           std::string(outcome);
}

} // namespace tessaro
