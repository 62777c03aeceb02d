#include <QByteArray>

#include <gtest/gtest.h>

// Every test has a QtUserInterface, and with it an application object, of its own.
int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    return RUN_ALL_TESTS();
}
