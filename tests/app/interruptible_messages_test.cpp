#include "app/interruptible_messages.h"
#include "app/resource_ids.h"
#include "support/shell_fixture.h"

namespace tessaro {
namespace {

class InterruptibleMessagesTest : public ShellFixture {
protected:
    bool Take(Message& message) { return messages.TakeMessage(message, 0); }

    bool interrupted = false;
    InterruptibleMessages messages{ui.messages, scan, windows, [this] { return interrupted; }};
};

TEST_F(InterruptibleMessagesTest, PassOnWhatComes) {
    ui.messages.Post({windows.main, MessageKind::KeyDown, key::left});
    Message message;
    ASSERT_TRUE(Take(message));
    EXPECT_EQ(message.parameter, key::left);
    EXPECT_FALSE(messages.LastIsStop());
    EXPECT_FALSE(Take(message));
}

TEST_F(InterruptibleMessagesTest, AreLedByAStopOnceInterruptedInAScan) {
    ui.messages.Post({windows.main, MessageKind::KeyDown, key::left});
    interrupted = true;
    scan.scanning = 1;
    Message message;
    ASSERT_TRUE(Take(message));
    EXPECT_EQ(message.window, windows.main);
    EXPECT_EQ(message.kind, MessageKind::Command);
    EXPECT_EQ(message.parameter, command::stop);
    EXPECT_TRUE(messages.LastIsStop());
}

TEST_F(InterruptibleMessagesTest, AskAgainForAStopThatWasForgottenAndForNoOther) {
    interrupted = true;
    scan.scanning = 1;
    scan.stopRequested = 1;
    Message message;
    EXPECT_FALSE(Take(message));
    scan.stopRequested = 0;
    EXPECT_TRUE(Take(message));
    EXPECT_TRUE(Take(message));
}

TEST_F(InterruptibleMessagesTest, AskForNoStopWhereNoScanRuns) {
    interrupted = true;
    Message message;
    EXPECT_FALSE(Take(message));
    EXPECT_FALSE(messages.LastIsStop());
}

TEST_F(InterruptibleMessagesTest, KnowTheStopOfTheMenuFromAClick) {
    Message message;
    ui.messages.Post({windows.main, MessageKind::Command, command::stop});
    ASSERT_TRUE(Take(message));
    EXPECT_TRUE(messages.LastIsStop());
    ui.messages.Post({windows.main, MessageKind::LeftButtonPress});
    ASSERT_TRUE(Take(message));
    EXPECT_FALSE(messages.LastIsStop());
}

} // namespace
} // namespace tessaro
