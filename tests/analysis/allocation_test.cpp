#include "analysis/candidates.h"
#include "analysis/decision.h"
#include "analysis/grouping.h"
#include "support/analysis_fixture.h"

#include <cstdlib>
#include <new>

namespace {

int allocations = 0; // of the whole test program

}

// Not inlined: a compiler that sees only one of them into its caller takes them for mismatched.
[[gnu::noinline]] void* operator new(std::size_t size) {
    ++allocations;
    if (void* memory = std::malloc(size))
        return memory;
    throw std::bad_alloc();
}

[[gnu::noinline]] void operator delete(void* memory) noexcept {
    std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

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
    const int before = allocations;
    AnalyseField();
    EXPECT_EQ(allocations, before);
    EXPECT_GT(field.findings.groupCount, 5);
}

TEST(AnalysisState, TakesLessThan64MegabytesWithTheSecondGrainTable) {
    EXPECT_LT(sizeof(AnalysisMemory) + sizeof(GrainTable), std::size_t{64} * 1000 * 1000);
}

} // namespace
} // namespace tessaro
