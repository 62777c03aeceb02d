#include "app/stage_choice.h"

#include <gtest/gtest.h>

namespace tessaro {
namespace {

std::string PortName(const std::string& stagePort, std::int32_t portNumber) {
    ProgramOptions options;
    options.stagePort = stagePort;
    return ChooseSerialPorts(options)->PortName(portNumber);
}

TEST(StageChoice, IsTheLineOfTheNumberWithoutAnOption) {
    const std::string name = PortName("", 4711);
    EXPECT_EQ(name, "/dev/ttyUSB4711");
}

TEST(StageChoice, IsAPathThatStandsForEveryNumber) {
    EXPECT_EQ(PortName("/dev/stage", 3), "/dev/stage");
    EXPECT_EQ(PortName("/dev/stage", 4), "/dev/stage");
}

TEST(StageChoice, IsNoLineAtAllWhereNoneIsWanted) {
    EXPECT_EQ(PortName("none", 3), "");
}

} // namespace
} // namespace tessaro
