#pragma once

#include <string_view>

namespace tessaro {

/// Hears what the program tells its operator, whether or not the control panel is open to show it.
class StatusListener {
public:
    virtual ~StatusListener() = default;

    virtual void InformationShown(std::string_view text) = 0; // the message line
    virtual void ProgressShown(std::string_view text) = 0;    // the motion and progress line
};

} // namespace tessaro
