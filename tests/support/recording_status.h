#pragma once

#include "analysis/status_sink.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tessaro {

/// Keeps what the analysis told, in order.
class RecordingStatus : public StatusSink {
public:
    void ShowInformation(std::string_view text) override { lines.emplace_back(text); }
    void ShowTotalFound(std::int32_t total) override { lines.push_back("total " + std::to_string(total)); }

    std::vector<std::string> lines;
};

} // namespace tessaro
