#pragma once

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <optional>
#include <poll.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace tessaro {

/// Asks again and again until the condition holds; false when it still does not after so long.
inline bool Eventually(const std::function<bool()>& condition,
                       std::chrono::milliseconds limit = std::chrono::seconds(30)) {
    constexpr int pauseMs = 20; // leaves the processor to the program that is waited for
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline)
            return condition();
        poll(nullptr, 0, pauseMs);
    }
    return true;
}

/// A program that runs beside the test, with extra environment; killed at the end if it still runs.
class BackgroundProgram {
public:
    BackgroundProgram(const std::string& program, const std::vector<std::string>& arguments,
                      const std::vector<std::pair<std::string, std::string>>& environment = {},
                      const std::string& errorFile = "/dev/null",
                      const std::string& outputFile = "/dev/null") {
        m_process = fork();
        if (m_process != 0)
            return;
        for (const auto& [name, value] : environment)
            setenv(name.c_str(), value.c_str(), 1);
        if (std::freopen(errorFile.c_str(), "a", stderr) == nullptr ||
            std::freopen(outputFile.c_str(), "a", stdout) == nullptr)
            _exit(126);
        std::vector<char*> words{const_cast<char*>(program.c_str())};
        for (const std::string& argument : arguments)
            words.push_back(const_cast<char*>(argument.c_str()));
        words.push_back(nullptr);
        execvp(program.c_str(), words.data());
        _exit(127);
    }

    ~BackgroundProgram() {
        if (!IsRunning())
            return;
        kill(m_process, SIGKILL);
        int status = 0;
        waitpid(m_process, &status, 0);
    }
    BackgroundProgram(const BackgroundProgram&) = delete;
    BackgroundProgram& operator=(const BackgroundProgram&) = delete;

    pid_t Process() const { return m_process; }

    bool IsRunning() {
        int status = 0;
        if (m_exitStatus.has_value() || m_process <= 0)
            return false;
        if (waitpid(m_process, &status, WNOHANG) == 0)
            return true;
        m_exitStatus = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
        return false;
    }

    /// Of a program that has ended by itself; nothing while it runs, 128 and more after a signal.
    std::optional<int> ExitStatus() { return IsRunning() ? std::nullopt : m_exitStatus; }

private:
    pid_t m_process = -1;
    std::optional<int> m_exitStatus;
};

} // namespace tessaro
