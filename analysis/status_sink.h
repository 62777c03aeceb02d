#pragma once

#include <cstdint>
#include <string_view>

namespace tessaro {

/// What the analysis tells the operator while it runs.
class StatusSink {
public:
    virtual ~StatusSink() = default;

    /// One line for the program's message line; the text is valid during the call only.
    virtual void ShowInformation(std::string_view text) = 0;

    /// The number of single layers found since the scan began.
    virtual void ShowTotalFound(std::int32_t total) = 0;
};

} // namespace tessaro
