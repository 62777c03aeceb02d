#pragma once

#include "focus/focus_measures.h"
#include "platform/clock.h"

#include <cstdint>
#include <ostream>
#include <string>
#include <string_view>

namespace tessaro {

/// What the searches saw, step by step, as comma-separated values for a plot. Every line is flushed. What
/// cannot be written is told once on standard error, and no search minds.
class FocusCurve {
public:
    /// Begins with the line of column names, unless the file has it already.
    FocusCurve(std::ostream& out, Clock& clock, bool writeHeader);

    /// A search begins; returns its number. One may begin within another.
    int BeginSearch();

    void Write(const std::string& line);

    std::uint64_t Now() { return m_clock.TickMilliseconds(); }
    LocalTime StartTime() { return m_clock.Now(); }

private:
    std::ostream& m_out;
    Clock& m_clock;
    int m_searches = 0;
    bool m_told = false;
};

/// One search's lines of the curve, or none where no curve is wanted.
class SearchRecord {
public:
    SearchRecord(FocusCurve* curve, std::string_view search);

    bool IsWanted() const { return m_curve != nullptr; }

    /// Pass 0 is the frame before the first step. `z` in um, where the stage said that it was after the frame
    /// was taken.
    void Add(int pass, int step, double z, const FocusFigures& figures);

    /// Why it ended, where, and how sharp the last frame was.
    void End(std::string_view outcome, double z, const FocusFigures& figures);

private:
    std::string Line(const std::string& step, double z, const FocusFigures& figures,
                     std::string_view outcome) const;

    FocusCurve* m_curve;
    std::string m_search;
    std::string m_started;
    int m_number = 0;
    std::uint64_t m_start = 0;
};

} // namespace tessaro
