#include "tests/platform/qt_machine.h"
#include "tests/platform/recording_procedures.h"

#include <QByteArray>
#include <QLocale>

#include <gtest/gtest.h>

#include <clocale>
#include <cstdio>
#include <string>

namespace tessaro {
namespace {

// A program of its own: the locale is adopted once, when the first application object is made.

bool HasDecimalComma() {
    const std::string before = std::setlocale(LC_NUMERIC, nullptr);
    std::setlocale(LC_NUMERIC, "");
    const bool comma = std::string(std::localeconv()->decimal_point) == ",";
    std::setlocale(LC_NUMERIC, before.c_str());
    return comma;
}

TEST(QtLocale, KeepsTheDecimalPointUnderALocaleWithAComma) {
    if (!HasDecimalComma())
        GTEST_SKIP() << "the locale de_DE.UTF-8 is not installed";
    QtMachine machine;
    char text[20];
    std::snprintf(text, sizeof text, "%.1f", -12.5);
    EXPECT_STREQ(text, "-12.5");
    float number = 0;
    EXPECT_EQ(std::sscanf("6.25", "%f", &number), 1);
    EXPECT_EQ(number, 6.25F);
    EXPECT_EQ(QLocale().toString(1.5), QStringLiteral("1.5"));
    RecordingDialogProcedure procedure;
    const WindowHandle dialog = machine.ui.dialogs.CreateModeless(129, WindowHandle::None, procedure);
    machine.ui.dialogs.ShowModeless(dialog);
    machine.DispatchAll();
    machine.ui.dialogs.SetItemText(dialog, 1017, text);
    EXPECT_EQ(machine.ui.dialogs.ItemText(dialog, 1017, 10), "-12.5");
    std::snprintf(text, sizeof text, "%.1f", -12.5);
    EXPECT_STREQ(text, "-12.5") << "nor does a dialog adopt it";
}

TEST(QtLocale, LeavesReasonsInEnglishAndTextInTheUsersEncoding) {
    if (!HasDecimalComma())
        GTEST_SKIP() << "the locale de_DE.UTF-8 is not installed";
    QtMachine machine;
    for (const int category : {LC_NUMERIC, LC_MESSAGES, LC_TIME, LC_COLLATE, LC_MONETARY, LC_MEASUREMENT})
        EXPECT_STREQ(std::setlocale(category, nullptr), "C") << category;
    EXPECT_STREQ(std::setlocale(LC_CTYPE, nullptr), "de_DE.UTF-8");
}

} // namespace
} // namespace tessaro

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("LC_ALL", "de_DE.UTF-8");
    return RUN_ALL_TESTS();
}
