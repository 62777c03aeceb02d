#include "platform/qt/qt_runtime.h"

#include <gtest/gtest.h>

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    const tessaro::QtRuntime runtime; // for the labels of the pictures that the window is compared with
    return RUN_ALL_TESTS();
}
