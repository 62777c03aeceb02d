#pragma once

#include "support/background_program.h"
#include "support/local_client.h"
#include "support/program.h"
#include "support/temporary_folder.h"

#include <csignal>
#include <string>
#include <vector>

namespace tessaro {

/// The simulated microscope as a program beside the test, its camera at 127.0.0.1.
class RunningTwin {
public:
    explicit RunningTwin(const std::string& program, std::vector<std::string> options = {}) {
        options.insert(options.end(), {"--control", ControlPath()});
        m_program.emplace(program, options, std::vector<std::pair<std::string, std::string>>{},
                          Path("errors"), Path("output"));
        m_ready = Eventually([&] {
                      return Output().find("ready") != std::string::npos || !m_program->IsRunning();
                  }) &&
                  m_program->IsRunning();
    }

    bool IsReady() const { return m_ready; }
    std::string Output() const { return ReadText(Path("output")); }
    std::string Errors() const { return ReadText(Path("errors")); }
    std::string ControlPath() const { return Path("control"); }

    /// A command and its answer; empty when nobody answers.
    std::string Say(const std::string& command) { return LocalClient(ControlPath()).Ask(command); }

    void Signal(int signal) { kill(m_program->Process(), signal); }
    bool IsRunning() { return m_program->IsRunning(); }

    /// Waits for the end; -1 when it does not come.
    int ExitStatus() {
        Eventually([&] { return !m_program->IsRunning(); });
        return m_program->ExitStatus().value_or(-1);
    }

private:
    std::string Path(const char* name) const { return (m_folder.Path() / name).string(); }

    TemporaryFolder m_folder;
    std::optional<BackgroundProgram> m_program;
    bool m_ready = false;
};

} // namespace tessaro
