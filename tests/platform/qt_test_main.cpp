#include "platform/qt/qt_runtime.h"

#include <QByteArray>

#include <gtest/gtest.h>

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    // QtRuntime promises to take no notice of these: Qt would end the program for lack of such a platform.
    qputenv("QT_QPA_PLATFORM", "no-such-platform");
    qputenv("QT_QPA_PLATFORMTHEME", "gtk3");
    qputenv("DISPLAY", ":4711");
    const tessaro::QtRuntime runtime;
    return RUN_ALL_TESTS();
}
