#pragma once

#include "scan/field_work.h"

#include <functional>
#include <string>
#include <vector>

namespace tessaro {

/// A field that takes no time, and remembers what was done with it.
class ScriptedField : public FieldWork {
public:
    void GrabFrame(int exposures) override { Take("grab " + std::to_string(exposures)); }
    void ComputeFrameStatistics() override { Take("statistics"); }
    void ShowFrame() override { Take("show"); }
    void FindCandidates(bool paint) override { Take(paint ? "find and paint" : "find"); }
    void RejectNoise() override { Take("reject noise"); }
    void GroupGrains() override { Take("group"); }
    void DecideSingleLayers() override { Take("decide"); }

    std::vector<std::string> calls;
    std::function<void(const std::string& call)> onCall; // what happens in the middle of it

private:
    void Take(const std::string& call) {
        calls.push_back(call);
        if (onCall)
            onCall(call);
    }
};

} // namespace tessaro
