#include "focus/focus_curve.h"
#include "tests/focus/search_fixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <streambuf>
#include <utility>

namespace tessaro {
namespace {

constexpr const char* header = "started,number,search,pass,step,ms,z_um,score,focus_value,outcome";

Texts LinesOf(const std::string& text) {
    Texts lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);)
        lines.push_back(line);
    return lines;
}

class FocusCurveTest : public testing::Test {
protected:
    Texts Lines() const { return LinesOf(out.str()); }

    VirtualClock clock; // at 14:07 on 15 March 2024
    std::ostringstream out;
};

TEST_F(FocusCurveTest, BeginsWithTheNamesOfItsColumns) {
    const FocusCurve curve(out, clock, true);
    EXPECT_EQ(out.str(), std::string(header) + "\n");
}

TEST_F(FocusCurveTest, DoesNotNameThemAgainWhereAFileIsContinued) {
    FocusCurve curve(out, clock, false);
    EXPECT_EQ(out.str(), "");
    SearchRecord(&curve, "fine").End("stopped", 0.0, {});
    EXPECT_EQ(Lines().size(), 1U);
}

TEST_F(FocusCurveTest, HasALineForEachStepAndOneForTheEnd) {
    FocusCurve curve(out, clock, false);
    clock.now = 5000;
    SearchRecord record(&curve, "coarse");
    clock.now = 5040;
    record.Add(0, 7, -12.5, {30.0F, 0.25F, 1.0F / 3.0F, 9.875F});
    clock.now = 7000;
    clock.localTime.minute = 8; // the search keeps when it has started
    record.End("peak passed", 20.625, {30.0F, 0.25F, 0.5F, 4.0F});
    EXPECT_EQ(Lines(), (Texts{"2024-03-15 14:07:00,1,coarse,0,7,40,-12.500,0.333333,9.875,",
                              "2024-03-15 14:07:00,1,coarse,,,2000,20.625,0.5,4,peak passed"}));
}

TEST_F(FocusCurveTest, HasAsManyColumnsInEveryLine) {
    FocusCurve curve(out, clock, true);
    SearchRecord record(&curve, "fine");
    record.Add(2, 19, 1e9, {0.0F, 0.0F, 1e-12F, 1e12F});
    record.End("in focus already", -0.001, {});
    for (const std::string& line : Lines())
        EXPECT_EQ(std::count(line.begin(), line.end(), ','), 9) << line;
}

TEST_F(FocusCurveTest, NumbersSearchesInTheOrderOfTheirBeginning) {
    FocusCurve curve(out, clock, false);
    SearchRecord outer(&curve, "fine");
    SearchRecord inner(&curve, "coarse");
    outer.End("outer", 0.0, {});
    inner.End("inner", 0.0, {});
    SearchRecord(&curve, "fine").End("next", 0.0, {});
    EXPECT_EQ(Lines(), (Texts{"2024-03-15 14:07:00,1,fine,,,0,0.000,0,0,outer",
                              "2024-03-15 14:07:00,2,coarse,,,0,0.000,0,0,inner",
                              "2024-03-15 14:07:00,3,fine,,,0,0.000,0,0,next"}));
}

TEST_F(FocusCurveTest, IsNotWrittenWhereNobodyWantsIt) {
    SearchRecord record(nullptr, "fine");
    EXPECT_FALSE(record.IsWanted());
    record.Add(0, 0, 0.0, {});
    record.End("stopped", 0.0, {});
}

/// Keeps what is written to itself until it is flushed, and takes so many lines.
class Disk : public std::streambuf {
public:
    explicit Disk(int lines) : m_lines(lines) {}

    std::string flushed;
    int flushes = 0;

protected:
    int_type overflow(int_type character) override {
        m_pending.push_back(static_cast<char>(character));
        return character;
    }
    int sync() override {
        ++flushes;
        if (m_lines-- <= 0)
            return -1;
        flushed += std::exchange(m_pending, {});
        return 0;
    }

private:
    int m_lines;
    std::string m_pending;
};

TEST_F(FocusCurveTest, IsFlushedLineByLine) {
    Disk disk(100);
    std::ostream stream(&disk);
    FocusCurve curve(stream, clock, true);
    EXPECT_EQ(LinesOf(disk.flushed), Texts{header});
    SearchRecord record(&curve, "fine");
    record.Add(0, 0, 0.0, {});
    EXPECT_EQ(LinesOf(disk.flushed).size(), 2U);
    record.End("stopped", 0.0, {});
    EXPECT_EQ(LinesOf(disk.flushed).size(), 3U);
}

TEST_F(FocusCurveTest, ThatCannotBeWrittenIsToldOnce) {
    Disk disk(2);
    std::ostream stream(&disk);
    testing::internal::CaptureStderr();
    FocusCurve curve(stream, clock, true);
    SearchRecord record(&curve, "fine");
    record.Add(0, 0, 0.0, {});
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    testing::internal::CaptureStderr();
    for (int step = 1; step < 10; ++step)
        record.Add(1, step, 0.0, {});
    record.End("stopped", 0.0, {});
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "tessaro: the focus curve cannot be written any more\n");
    EXPECT_EQ(LinesOf(disk.flushed).size(), 2U);
}

/// Searches and their curve.
class RecordedSearch : public SearchFixture {
protected:
    void SetUp() override { liveTimer.on = 0; }

    Texts Column(std::size_t index) const {
        Texts values;
        for (const std::string& written : LinesOf(curveText.str())) {
            std::istringstream in(written);
            std::string value;
            for (std::size_t i = 0; i <= index; ++i)
                std::getline(in, value, ',');
            values.push_back(value);
        }
        return values;
    }
    static constexpr std::size_t numberColumn = 1;
    static constexpr std::size_t searchColumn = 2;
    static constexpr std::size_t passColumn = 3;
    static constexpr std::size_t stepColumn = 4;
    static constexpr std::size_t outcomeColumn = 9;
};

TEST_F(RecordedSearch, HasTheStepsOfBothPasses) {
    BeFlat(0.5F, 2.0F);
    EXPECT_EQ(autoFocus.FineFocus(autoFocus.Hint(), 1), 1);
    EXPECT_EQ(Column(passColumn),
              (Texts{"0", "1", "1", "1", "1", "2", "2", "2", "2", "2", "2", "2", "2", ""}));
    EXPECT_EQ(Column(stepColumn),
              (Texts{"0", "0", "1", "2", "3", "0", "1", "2", "3", "4", "5", "6", "7", ""}));
    EXPECT_EQ(Column(outcomeColumn).back(), "best of the second pass");
    EXPECT_EQ(LinesOf(curveText.str())[1], "2024-03-15 14:07:00,1,fine,1,0,341,-1.875,0.5,2,")
        << "the first frame, a pump, and a step of 291 ms";
}

TEST_F(RecordedSearch, ShowsASweepWithinAClimbAsASearchOfItsOwn) {
    BeFlat(0.5F, 0.75F);
    autoFocus.FineFocus(autoFocus.Hint(), 1);
    const Texts numbers = Column(numberColumn);
    ASSERT_EQ(numbers.size(), 1U + 92U + 13U);
    EXPECT_EQ(numbers[0], "1");
    EXPECT_EQ(std::count(numbers.begin() + 1, numbers.begin() + 93, "2"), 92);
    EXPECT_EQ(std::count(numbers.begin() + 93, numbers.end(), "1"), 13);
    EXPECT_EQ(Column(searchColumn)[1], "coarse");
    EXPECT_EQ(Column(outcomeColumn)[92], "all samples taken");
    EXPECT_EQ(Column(stepColumn)[91], "89");
}

struct OutcomeCase {
    float score;
    float value;
    std::uint64_t stopAt; // 0: nobody stops it
    bool isFine;
    const char* outcome;
};

class SearchOutcome : public RecordedSearch, public testing::WithParamInterface<OutcomeCase> {};

TEST_P(SearchOutcome, IsTheLastOfTheLine) {
    const OutcomeCase& example = GetParam();
    BeFlat(example.score, example.value);
    if (example.stopAt > 0)
        StopScanAt(example.stopAt);
    if (example.isFine)
        autoFocus.FineFocus(autoFocus.Hint(), 1);
    else
        autoFocus.CoarseFocus(autoFocus.Hint(), 150, 50);
    EXPECT_EQ(Column(outcomeColumn).back(), example.outcome);
}

INSTANTIATE_TEST_SUITE_P(Outcomes, SearchOutcome,
                         testing::Values(OutcomeCase{1.0F, 11.0F, 0, true, "in focus already"},
                                         OutcomeCase{1.0F, 2.0F, 150, true, "aborted"},
                                         OutcomeCase{1.0F, 2.0F, 45, true, "stopped"},
                                         OutcomeCase{1.0F, 2.0F, 5, false, "stopped"},
                                         OutcomeCase{1.0F, 2.0F, 5000, false, "stopped"},
                                         OutcomeCase{11.0F, 2.0F, 0, false, "already sharp"},
                                         OutcomeCase{1.0F, 2.0F, 0, false, "all samples taken"}));

TEST_F(RecordedSearch, OfAPeakSaysThatItWasPassedOrFound) {
    Be([](double z) { return 0.05 + Peak(3.0, 4.0, z); },
       [](double z) { return z > 3.0 ? 10.5 : 9.0 + z / 4.0; });
    autoFocus.CoarseFocus(autoFocus.Hint(), 150, 50);
    EXPECT_EQ(Column(outcomeColumn).back(), "peak passed");
    motion.MoveAxisTo(axisZ, 0.0);
    focus.xTilt = 1.0F;
    autoFocus.FineFocus(autoFocus.Hint(), 1);
    EXPECT_EQ(Column(outcomeColumn).back(), "in focus");
}

TEST_F(RecordedSearch, DoesNotMindACurveThatCannotBeWritten) {
    curveText.setstate(std::ios::badbit);
    BeFlat(0.5F, 2.0F);
    testing::internal::CaptureStderr();
    EXPECT_EQ(autoFocus.FineFocus(autoFocus.Hint(), 1), 1);
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(ClimbSteps().size(), 12U);
}

} // namespace
} // namespace tessaro
