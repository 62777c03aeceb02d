#include "analysis/candidates.h"
#include "analysis/decision.h"
#include "analysis/grouping.h"
#include "support/analysis_fixture.h"
#include "support/watched_memory.h"

namespace tessaro {
namespace {

class Allocation : public AnalysisFixture {
protected:
    void AnalyseField() {
        Measure();
        FindCandidates(field, false);
        RejectNoise(field.analyzer);
        GroupGrains(field);
        DecideSingleLayers(field);
    }
};

TEST_F(Allocation, HappensForNoField) {
    field.surface = nullptr;
    field.status = nullptr;
    painter.Fill(substrate100);
    for (int i = 0; i < 40; ++i)
        painter.Disk(150 + painter.Below(900), 50 + painter.Below(900), 15 + painter.Below(20),
                     singleLayer100);
    const std::size_t before = blocksTaken;
    AnalyseField();
    EXPECT_EQ(blocksTaken, before);
    EXPECT_GT(field.findings.groupCount, 5);
}

TEST(AnalysisState, TakesLessThan64MegabytesWithTheSecondGrainTable) {
    EXPECT_LT(sizeof(AnalysisMemory) + sizeof(GrainTable), std::size_t{64} * 1000 * 1000);
}

} // namespace
} // namespace tessaro
