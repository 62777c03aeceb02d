#pragma once

#include "twin/service/fault.h"
#include "twin/stage/stage_axes.h"
#include "twin/stage/stage_controller.h"
#include "twin/stage/stage_line.h"
#include "twin/stage/stage_wire.h"
#include "twin/stage_position.h"

#include <cstdio>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace tessaro {

struct ServedStageOptions {
    StagePosition position;
    std::optional<StageLimits> limits; // none: the usual ones around the position
    double timeFactor = 1.0;
    ProgressAxes progressAxes = usualProgressAxes;
    std::string linkPath; // empty: no link
    std::string logPath;  // empty: no log
};

/// The stage with its controller and its line, within the main loop of the calling thread.
class ServedStage {
public:
    /// Throws std::runtime_error when it cannot be served.
    explicit ServedStage(const ServedStageOptions& options);

    /// Any thread may ask. Times are those of StageSeconds.
    StagePosition PositionAt(double time) const { return m_axes.PositionAt(time); }

    std::string LineName() const { return m_line.Name(); }
    void TellNewLineNames(std::function<void(const std::string& name)> tell) {
        m_line.TellNewNames(std::move(tell));
    }

    /// At once; false when it cannot stand there.
    bool Put(const StagePosition& position);

    /// "X,Y,Z moving" or "X,Y,Z standing", in um.
    std::string Where() const;

    /// Faults of the stage; others are left alone.
    void Set(const Fault& fault);
    void Clear(FaultKind kind);

private:
    struct CloseFile {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };

    void OpenLog(const std::string& path);
    void Log(std::string_view text, double now);
    void Switch(FaultKind kind, bool on);

    StageLimits m_limits;
    double m_start;
    std::unique_ptr<std::FILE, CloseFile> m_log;
    StageAxes m_axes;
    StageController m_controller;
    StageWire m_wire;
    StageLine m_line;
};

} // namespace tessaro
