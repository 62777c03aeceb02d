#include "platform/aravis/library_thread.h"

#include <gtest/gtest.h>

#include <future>
#include <memory>
#include <stdexcept>
#include <thread>

namespace tessaro {
namespace {

using std::chrono::steady_clock;

bool GoOn() {
    return true;
}

bool GiveUp() {
    return false;
}

TEST(LibraryThread, DoesItsWorkOnAThreadOfItsOwn) {
    LibraryThread thread(nullptr);
    std::thread::id there;
    EXPECT_TRUE(thread.Run([&] { there = std::this_thread::get_id(); }, GoOn));
    EXPECT_NE(there, std::thread::id());
    EXPECT_NE(there, std::this_thread::get_id());
}

TEST(LibraryThread, PassesExceptionsOnAndGoesOnWorking) {
    LibraryThread thread(nullptr);
    EXPECT_THROW(static_cast<void>(thread.Run([] { throw std::runtime_error("text"); }, GoOn)),
                 std::runtime_error);
    EXPECT_TRUE(thread.Run([] {}, GoOn));
}

TEST(LibraryThread, WaitsForEarlierWorkThatNobodyWaitedFor) {
    LibraryThread thread(nullptr);
    int done = 0;
    EXPECT_TRUE(thread.Post([&] { ++done; }, GoOn));
    EXPECT_TRUE(thread.Run([&] { done *= 10; }, GoOn));
    EXPECT_EQ(done, 10);
}

TEST(LibraryThread, LetsItsCallerWalkAwayAndDestroysItsChargeWhenItsWorkIsDone) {
    const auto charge = std::make_shared<int>();
    std::promise<void> goOn;
    auto thread = std::make_unique<LibraryThread>(std::make_shared<std::shared_ptr<int>>(charge));
    const auto waitForPermission = [permission = goOn.get_future().share()] { permission.wait(); };
    EXPECT_FALSE(thread->Run(waitForPermission, GiveUp));
    EXPECT_FALSE(thread->Run([] {}, GoOn)) << "it cannot be used any more";
    const LibraryThread::Ending ending = thread->End();
    thread.reset();
    EXPECT_FALSE(ending.HasEnded());
    EXPECT_FALSE(ending.WaitUntil(steady_clock::now()));
    EXPECT_EQ(charge.use_count(), 2);
    goOn.set_value();
    EXPECT_TRUE(ending.WaitUntil(steady_clock::now() + std::chrono::seconds(10)));
    EXPECT_EQ(charge.use_count(), 1);
}

} // namespace
} // namespace tessaro
