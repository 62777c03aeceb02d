#include "platform/standard/absent_serial_ports.h"

#include <gtest/gtest.h>

#include <array>

namespace tessaro {
namespace {

TEST(AbsentSerialPorts, WantNoLine) {
    AbsentSerialPorts ports;
    EXPECT_EQ(ports.PortName(3), "");
}

TEST(AbsentSerialPorts, FailWithANumberWhateverIsCalled) {
    AbsentSerialPorts ports;
    EXPECT_EQ(ports.Open("line 3"), SerialHandle::Invalid);
    std::array<std::uint8_t, 2> bytes = {};
    std::uint32_t count = 0;
    EXPECT_FALSE(ports.Write(SerialHandle::None, bytes, count));
    EXPECT_FALSE(ports.Read(SerialHandle::None, bytes, count));
    EXPECT_EQ(ports.LastError(), AbsentSerialPorts::noLineError);
    EXPECT_NE(AbsentSerialPorts::noLineError, 0);
}

} // namespace
} // namespace tessaro
