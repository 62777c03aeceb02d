#include "support/watched_memory.h"

#include <cstdlib>
#include <new>

namespace tessaro {

std::size_t blocksTaken = 0;
std::size_t refusedBlock = 0;
std::size_t refusedNothrowBlock = 0;

} // namespace tessaro

namespace {

void* Take(std::size_t size) noexcept {
    if (tessaro::refusedBlock != 0 && size == tessaro::refusedBlock)
        return nullptr;
    return std::malloc(size > 0 ? size : 1);
}

void* TakeWithoutThrowing(std::size_t size) noexcept {
    if (tessaro::refusedNothrowBlock != 0 && size == tessaro::refusedNothrowBlock)
        return nullptr;
    return Take(size);
}

} // namespace

// Not inlined: a compiler that sees only one of them into its caller takes them for mismatched.
[[gnu::noinline]] void* operator new(std::size_t size) {
    ++tessaro::blocksTaken;
    if (void* memory = Take(size))
        return memory;
    throw std::bad_alloc();
}
[[gnu::noinline]] void* operator new[](std::size_t size) {
    return ::operator new(size);
}
[[gnu::noinline]] void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return TakeWithoutThrowing(size);
}
[[gnu::noinline]] void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return TakeWithoutThrowing(size);
}

[[gnu::noinline]] void operator delete(void* memory) noexcept {
    std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
[[gnu::noinline]] void operator delete[](void* memory) noexcept {
    std::free(memory);
}
[[gnu::noinline]] void operator delete[](void* memory, std::size_t) noexcept {
    std::free(memory);
}
