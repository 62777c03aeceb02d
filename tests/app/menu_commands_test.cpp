#include "app/menu_commands.h"
#include "support/recording_operations.h"

#include <gtest/gtest.h>

#include <set>

namespace tessaro {
namespace {

using Calls = std::vector<std::string>;

struct Entry {
    std::uint32_t id;
    Calls calls;
};

// The whole menu, by the numbers that the resource carries.
const std::vector<Entry>& Menu() {
    static const std::vector<Entry> menu = {
        {104, {"about"}},
        {105, {"destroy"}},
        {32776, {"grab 4", "statistics", "show channel 1", "wait 2000"}},
        {32777, {"grab 4", "statistics", "show channel 3", "wait 2000"}},
        {32780, {"grab 4", "show frame"}},
        {32783, {"grab 4", "statistics", "show channel 2", "wait 2000"}},
        {32787, {"decide"}},
        {32788, {"live view 0", "configure contrast", "live view 1"}},
        {32791, {"reject noise"}},
        {32794, {"find candidates 1"}},
        {32800, {"scan"}},
        {32801, {"configure stage"}},
        {32804, {"session folders 0", "save plain", "save detail"}},
        {32806, {"group grains"}},
        {32807, {"show channel 4"}},
        {32809, {"control camera 1"}},
        {32810, {"open port configuration"}},
        {32811, {"fine focus"}},
        {32814, {"open panel"}},
        {32816, {"live view 0", "choose import"}},
        {32817, {"live view 0"}},
        {32818, {"show background 0"}},
        {32820,
         {"reset model", "fit model", "show background 1", "fit model", "show background 1", "fit model",
          "show background 1"}},
    };
    return menu;
}

void PrintTo(const Entry& entry, std::ostream* out) {
    *out << entry.id;
}

class MenuCommand : public testing::TestWithParam<Entry> {};

TEST_P(MenuCommand, RunsItsOperationsInOrder) {
    RecordingOperations operations;
    RunMenuCommand(operations, GetParam().id);
    EXPECT_EQ(operations.calls, GetParam().calls);
}

INSTANTIATE_TEST_SUITE_P(Menu, MenuCommand, testing::ValuesIn(Menu()),
                         [](const auto& entry) { return std::to_string(entry.param.id); });

TEST(MenuCommands, DoNothingForAnyOtherId) {
    std::set<std::uint32_t> known;
    for (const Entry& entry : Menu())
        known.insert(entry.id);
    EXPECT_FALSE(known.contains(32802)) << "Stop is the pump's";
    EXPECT_FALSE(known.contains(32812)) << "Pause/Resume is the pump's";
    for (std::uint32_t id = 0; id <= 65535; ++id) {
        if (known.contains(id))
            continue;
        RecordingOperations operations;
        RunMenuCommand(operations, id);
        ASSERT_EQ(operations.calls, Calls{}) << id;
    }
}

TEST(MenuCommands, ConfigurationLeavesALiveViewThatWasOffOff) {
    RecordingOperations operations;
    operations.liveView = 0;
    RunMenuCommand(operations, 32788);
    EXPECT_EQ(operations.calls, (Calls{"live view 0", "configure contrast"}));
}

TEST(MenuCommands, ConfigurationGoesByTheLastSwitchEvenIfThatHappenedMeanwhile) {
    RecordingOperations switchedOn;
    switchedOn.liveView = 0;
    switchedOn.onCall = [&](const std::string& call) {
        if (call == "configure contrast")
            switchedOn.SwitchLiveView(1); // before that it was off
    };
    RunMenuCommand(switchedOn, 32788);
    EXPECT_EQ(switchedOn.liveView, 1);
    EXPECT_EQ(switchedOn.calls, (Calls{"live view 0", "configure contrast", "live view 1"}));

    RecordingOperations switchedOnAndOff;
    switchedOnAndOff.liveView = 0;
    switchedOnAndOff.onCall = [&](const std::string& call) {
        if (call != "configure contrast")
            return;
        switchedOnAndOff.SwitchLiveView(1);
        switchedOnAndOff.SwitchLiveView(0); // before that it was on
    };
    RunMenuCommand(switchedOnAndOff, 32788);
    EXPECT_EQ(switchedOnAndOff.liveView, 1);
}

TEST(MenuCommands, ConfigurationTakesAnyValueButZeroForOn) {
    RecordingOperations operations;
    operations.liveView = 2;
    RunMenuCommand(operations, 32788);
    EXPECT_EQ(operations.calls, (Calls{"live view 0", "configure contrast", "live view 1"}));
}

TEST(MenuCommands, ImportImageLoadsTheChosenFileAndLeavesTheLiveViewOff) {
    RecordingOperations operations;
    operations.onCall = [&](const std::string& call) {
        if (call == "choose import")
            operations.hasImportFile = true;
    };
    RunMenuCommand(operations, 32816);
    EXPECT_EQ(operations.calls, (Calls{"live view 0", "choose import", "load import", "statistics"}));
    EXPECT_EQ(operations.liveView, 0);
}

TEST(MenuCommands, ImportImageCancelledLoadsTheFileOfTheTimeBefore) {
    RecordingOperations operations;
    operations.hasImportFile = true;
    RunMenuCommand(operations, 32816);
    EXPECT_EQ(operations.calls, (Calls{"live view 0", "choose import", "load import", "statistics"}));
}

TEST(MenuCommands, ImportImageCancelledTheFirstTimeStopsTheLiveViewAllTheSame) {
    RecordingOperations operations;
    RunMenuCommand(operations, 32816);
    EXPECT_EQ(operations.calls, (Calls{"live view 0", "choose import"}));
    EXPECT_EQ(operations.liveView, 0);
}

TEST(MenuCommands, StopStartGrabbingTurnsTheLiveViewAround) {
    RecordingOperations operations;
    RunMenuCommand(operations, 32817);
    RunMenuCommand(operations, 32817);
    operations.liveView = 2;
    RunMenuCommand(operations, 32817);
    EXPECT_EQ(operations.calls, (Calls{"live view 0", "live view 1", "live view 0"}));
}

} // namespace
} // namespace tessaro
