#include "tests/camera/camera_fixture.h"

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

class CameraMemory : public CameraFixture {};

TEST_F(CameraMemory, IsNeverTakenForAFrame) {
    Connect();
    scripted.remembersCalls = false;
    for (const int frames : {1, 4, 6}) {
        for (int image = 0; image < frames; ++image) {
            scripted.ThenBrokenImage();
            ThenEvenImage(50);
        }
        const int before = allocations;
        camera.GrabFrame(frames);
        EXPECT_EQ(allocations, before) << frames;
        EXPECT_EQ(WorkingByte(1, 1, 1), 50);
    }
    EXPECT_GT(allocations, 0) << "they are counted";
}

TEST_F(CameraMemory, IsNeverTakenForTheTestPattern) {
    const int before = allocations;
    camera.GrabFrame(4);
    EXPECT_EQ(allocations, before);
    EXPECT_EQ(session->testPatternPhase, 50U);
}

} // namespace
} // namespace tessaro
