#include "app/globals.h"
#include "platform/fake/memory_folders.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>

namespace tessaro {
namespace {

TEST(Globals, AreMadeInTheOrderThatStartUpNeeds) {
    MemoryFolders folders;
    const auto globals = std::make_unique<Globals>(folders);
    const auto at = [](const auto& member) { return reinterpret_cast<std::uintptr_t>(&member); };
    const std::array order = {at(globals->stage), at(globals->camera),  at(globals->screen),
                              at(globals->scan),  at(globals->folders), at(globals->analyzer)};
    EXPECT_TRUE(std::is_sorted(order.begin(), order.end())) << "members are made from the lowest on";
}

} // namespace
} // namespace tessaro
