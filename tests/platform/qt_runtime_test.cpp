#include "platform/qt/qt_runtime.h"

#include <QGuiApplication>

#include <gtest/gtest.h>

#include <clocale>
#include <string>

// The runtime is that of qt_test_main.cpp, which asks for another platform by the environment.

TEST(QtRuntime, TakesTheOffscreenPlatformWhateverTheEnvironmentSays) {
    EXPECT_EQ(QGuiApplication::platformName(), QStringLiteral("offscreen"));
}

TEST(QtRuntime, KeepsTheDecimalPointOfTheCLibrary) {
    EXPECT_EQ(std::setlocale(LC_NUMERIC, nullptr), std::string("C"));
}
