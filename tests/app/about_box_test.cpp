#include "app/about_box.h"
#include "platform/fake/fake_dialogs.h"

#include <gtest/gtest.h>

namespace tessaro {
namespace {

constexpr auto owner = static_cast<WindowHandle>(5);

/// The results of one dialog that is given these commands while it is open.
int ResultOf(const std::vector<int>& commands, FakeDialogs& dialogs) {
    AboutBox box(dialogs);
    int result = -2;
    dialogs.whileModal = [&](WindowHandle dialog) {
        EXPECT_EQ(dialogs.dialogs.at(dialog).owner, owner);
        for (const int command : commands)
            dialogs.Notify(dialog, command, Notification::Clicked);
        if (dialogs.dialogs.at(dialog).ended)
            result = dialogs.dialogs.at(dialog).result;
    };
    box.Show(owner);
    return result;
}

TEST(AboutBox, IsDialog103) {
    FakeDialogs dialogs;
    ResultOf({}, dialogs);
    EXPECT_EQ(dialogs.modalResources, std::vector<int>{103});
    EXPECT_TRUE(dialogs.dialogs.empty()) << "and gone afterwards";
}

TEST(AboutBox, EndsWithOkAndWithEscape) {
    FakeDialogs dialogs;
    EXPECT_EQ(ResultOf({1}, dialogs), 1);
    EXPECT_EQ(ResultOf({2}, dialogs), 2);
}

TEST(AboutBox, StaysOpenForAnythingElse) {
    FakeDialogs dialogs;
    EXPECT_EQ(ResultOf({0, 3, 1000, -1}, dialogs), -2);
}

} // namespace
} // namespace tessaro
