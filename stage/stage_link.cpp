#include "stage/stage_link.h"

#include <algorithm>
#include <cstdio>
#include <string>

namespace tessaro {
namespace {

constexpr std::array<std::string_view, 3> stopCommands = {"n", "N", "O"};
constexpr std::int32_t invalidHandleError = 6; // what a write to a port that was never opened reports

} // namespace

int StageLink::WriteText(std::string_view text) {
    if (offline == 1)
        return 0;
    const std::string line(text); // with the terminator that goes over the line
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(line.c_str());
    bytesTransferred = 0;
    lastResult = hComm != nullptr && hComm->Write({bytes, line.size() + 1}, bytesTransferred) ? 1 : 0;
    if (lastResult == 1) {
        std::printf("\"%s\" was sent.\n", line.c_str());
        return 1;
    }
    offline = 1;
    std::snprintf(commandText.data(), commandText.size(), "Error for %s: %d", line.c_str(),
                  hComm != nullptr ? hComm->LastError() : invalidHandleError);
    return 0;
}

void StageLink::SendCommand(std::string_view text) {
    const std::string_view fitting = text.substr(0, ioBuffer.size() - 1);
    *std::copy(fitting.begin(), fitting.end(), ioBuffer.begin()) = '\0';
    WriteText({ioBuffer.data(), fitting.size()});
}

void StageLink::StopAxis(int axis) {
    if (axis >= axisX && axis <= axisZ)
        SendCommand(stopCommands[static_cast<std::size_t>(axis)]);
}

} // namespace tessaro
