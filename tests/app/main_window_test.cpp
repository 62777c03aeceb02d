#include "app/main_window.h"
#include "support/recording_operations.h"

#include <gtest/gtest.h>

namespace tessaro {
namespace {

using Calls = std::vector<std::string>;

const Calls refresh = {"show position", "grab 1",         "show frame",
                       "statistics",    "focus measures", "progress: Noise:0.0  Focus:0.0",
                       "wait 10"};

Calls BeforeRefresh(Calls calls) {
    calls.insert(calls.end(), refresh.begin(), refresh.end());
    return calls;
}

class MainWindowTest : public testing::Test {
protected:
    Calls Handle(const Message& message) {
        operations.calls.clear();
        handled = window.HandleMessage(message);
        return operations.calls;
    }
    Calls Press(std::uint32_t key) { return Handle({handle, MessageKind::KeyDown, key}); }

    static constexpr auto handle = static_cast<WindowHandle>(77);
    RecordingOperations operations;
    MainWindowState state;
    MainWindow window{operations, state};
    bool handled = false;
};

TEST_F(MainWindowTest, StartsUnpaintedWithAStepOf400Micrometres) {
    EXPECT_EQ(state.firstPaint, 1);
    EXPECT_EQ(state.keyBusy, 0);
    EXPECT_EQ(state.enter_count, 0);
    EXPECT_EQ(state.keyStep, 400);
}

TEST_F(MainWindowTest, WhenMadeOpensTheControlPanelAfterAMoment) {
    EXPECT_EQ(Handle({handle, MessageKind::Create}), (Calls{"adopt 77", "wait 10", "open panel"}));
    EXPECT_TRUE(handled);
}

TEST_F(MainWindowTest, WhenDestroyedTakesTheStageBackBeforeItQuits) {
    EXPECT_EQ(Handle({handle, MessageKind::Destroy}),
              (Calls{"stop live timer", "move to origin", "wait 100", "quit 0", "close dialogs"}));
    EXPECT_TRUE(handled);
}

TEST_F(MainWindowTest, OnItsFirstPaintAdjustsTheCameraAndStartsTheLiveView) {
    EXPECT_EQ(Handle({handle, MessageKind::Paint}),
              (Calls{"control camera 1", "live view 1", "focus measures", "show position"}));
    EXPECT_TRUE(handled);
    EXPECT_EQ(state.firstPaint, 0);
}

TEST_F(MainWindowTest, OnLaterPaintsDoesNothing) {
    Handle({handle, MessageKind::Paint});
    EXPECT_EQ(Handle({handle, MessageKind::Paint}), Calls{});
    EXPECT_TRUE(handled);
}

TEST_F(MainWindowTest, TicksOfTheLiveTimerShowAndMeasureANewFrame) {
    EXPECT_EQ(Handle({handle, MessageKind::Timer, 1}),
              (Calls{"grab 1", "show frame", "statistics", "focus measures"}));
    EXPECT_TRUE(handled);
}

TEST_F(MainWindowTest, IgnoresOtherTimersAndEveryTickDuringAScan) {
    EXPECT_EQ(Handle({handle, MessageKind::Timer, 0}), Calls{});
    EXPECT_EQ(Handle({handle, MessageKind::Timer, 2}), Calls{});
    EXPECT_TRUE(handled);
    operations.scanning = true;
    EXPECT_EQ(Handle({handle, MessageKind::Timer, 1}), Calls{});
    EXPECT_TRUE(handled);
}

TEST_F(MainWindowTest, TakesTheKeyboardWhileThePointerIsOverIt) {
    EXPECT_EQ(Handle({handle, MessageKind::MouseMove, 0, PackPosition(3, 4)}), Calls{"take keyboard"});
    EXPECT_TRUE(handled);
}

TEST_F(MainWindowTest, ProbesThePixelUnderAPress) {
    const std::uint32_t position = PackPosition(12, 34);
    EXPECT_EQ(Handle({handle, MessageKind::LeftButtonPress, 0, position}),
              Calls{"probe " + std::to_string(34 * 65536 + 12)});
    EXPECT_TRUE(handled);
}

TEST_F(MainWindowTest, RunsTheCommandInTheLowWord) {
    EXPECT_EQ(Handle({handle, MessageKind::Command, 32791}), Calls{"reject noise"});
    EXPECT_EQ(Handle({handle, MessageKind::Command, 0x00010000U | 105U}), Calls{"destroy"});
    EXPECT_TRUE(handled);
}

TEST_F(MainWindowTest, AnswersUnknownCommandsWithoutDoingAnything) {
    for (const std::uint32_t id : {0U, 32802U, 32812U, 65535U}) {
        EXPECT_EQ(Handle({handle, MessageKind::Command, id}), Calls{}) << id;
        EXPECT_TRUE(handled) << id;
    }
}

TEST_F(MainWindowTest, LeavesEveryOtherMessageToThePlatform) {
    for (const MessageKind kind : {MessageKind::Close, MessageKind::LeftButtonRelease, MessageKind::Other}) {
        EXPECT_EQ(Handle({handle, kind, 1}), Calls{});
        EXPECT_FALSE(handled);
    }
}

struct KeyAction {
    std::uint32_t key;
    Calls calls; // before the refresh that follows every key
};

class MainWindowKey : public MainWindowTest, public testing::WithParamInterface<KeyAction> {};

TEST_P(MainWindowKey, ActsAndThenRefreshesTheImage) {
    EXPECT_EQ(Press(GetParam().key), BeforeRefresh(GetParam().calls));
    EXPECT_TRUE(handled);
    EXPECT_EQ(state.keyBusy, 0);
}

INSTANTIATE_TEST_SUITE_P(Keys, MainWindowKey,
                         testing::Values(KeyAction{13,
                                                   {"session folders 0", "save plain", "save detail",
                                                    "information: Image saved."}},
                                         KeyAction{33, {"information: Page up key press", "move 2 by 3"}},
                                         KeyAction{34, {"information: Page down key press", "move 2 by -3"}},
                                         KeyAction{37, {"move 0 by -400", "information: left key pressed"}},
                                         KeyAction{38, {"move 1 by 400", "information: up key pressed"}},
                                         KeyAction{39, {"move 0 by 400", "information: right key pressed"}},
                                         KeyAction{40, {"move 1 by -400", "information: down key pressed"}}),
                         [](const auto& entry) { return "Code" + std::to_string(entry.param.key); });

TEST_F(MainWindowTest, RefreshesTheImageForEveryOtherKeyToo) {
    for (std::uint32_t key = 0; key <= 255; ++key) {
        if (key == 13 || key == 33 || key == 34 || (key >= 37 && key <= 40))
            continue;
        ASSERT_EQ(Press(key), refresh) << key;
    }
}

TEST_F(MainWindowTest, MovesByTheKeyStep) {
    state.keyStep = 25;
    EXPECT_EQ(Press(39)[0], "move 0 by 25");
    EXPECT_EQ(Press(40)[0], "move 1 by -25");
    EXPECT_EQ(Press(33)[1], "move 2 by 3") << "Z has a step of its own";
}

TEST_F(MainWindowTest, ShowsNoiseAndFocusWithOneDecimalAfterAKey) {
    operations.noise = 1.26F;
    operations.focus = 12.34F;
    EXPECT_EQ(Press(65)[5], "progress: Noise:1.3  Focus:12.3");
}

TEST_F(MainWindowTest, SavesOnEveryEnter) {
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(Press(13)[1], "save plain");
        EXPECT_EQ(state.enter_count, 0);
    }
}

TEST_F(MainWindowTest, DropsKeysThatArriveWhileOneIsHandled) {
    operations.whileWaiting = [&] { window.HandleMessage({handle, MessageKind::KeyDown, key::left}); };
    EXPECT_EQ(Press(39), BeforeRefresh({"move 0 by 400", "information: right key pressed"}));
    operations.whileWaiting = nullptr;
    EXPECT_EQ(Press(37)[0], "move 0 by -400") << "the next one counts again";
}

TEST_F(MainWindowTest, DropsKeysDuringTheMoveItself) {
    operations.onCall = [&](const std::string& call) {
        if (call == "move 1 by 400")
            window.HandleMessage({handle, MessageKind::KeyDown, key::enter});
    };
    EXPECT_EQ(Press(38), BeforeRefresh({"move 1 by 400", "information: up key pressed"}));
}

TEST_F(MainWindowTest, StillRunsCommandsAndTicksWhileAKeyIsHandled) {
    operations.whileWaiting = [&] {
        window.HandleMessage({handle, MessageKind::Command, 32791});
        window.HandleMessage({handle, MessageKind::Timer, 1});
    };
    Calls expected = refresh;
    for (const char* call : {"reject noise", "grab 1", "show frame", "statistics", "focus measures"})
        expected.emplace_back(call);
    EXPECT_EQ(Press(65), expected);
}

} // namespace
} // namespace tessaro
