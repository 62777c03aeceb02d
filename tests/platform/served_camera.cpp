#include "tests/platform/served_camera.h"

#include <array>
#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

namespace tessaro {

namespace {

std::array<int, 2> Pipe() {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0)
        throw std::runtime_error("no pipe");
    return ends;
}

} // namespace

void ServedCamera::PlugIn() {
    const auto [childInput, input] = Pipe();
    const auto [output, childOutput] = Pipe();
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, childInput, STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, childOutput, STDOUT_FILENO);
    std::string program = TESSARO_CAMERA_SERVER;
    std::string addressArgument = address;
    std::array<char*, 3> arguments{program.data(), addressArgument.data(), nullptr};
    const int failure =
        posix_spawn(&m_process, program.c_str(), &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(childInput);
    close(childOutput);
    m_input = input;
    m_output = output;
    if (failure != 0)
        throw std::runtime_error("the camera's program cannot be started");
    WaitForLine("ready\n");
}

void ServedCamera::Unplug() {
    if (m_process < 0)
        return;
    kill(m_process, SIGKILL);
    waitpid(m_process, nullptr, 0);
    close(m_input);
    close(m_output);
    m_process = -1;
}

void ServedCamera::Freeze() {
    kill(m_process, SIGSTOP);
    waitpid(m_process, nullptr, WUNTRACED); // its threads stop one after the other
}

void ServedCamera::Thaw() {
    kill(m_process, SIGCONT);
}

void ServedCamera::Tell(const std::string& command) {
    const std::string line = command + '\n';
    if (write(m_input, line.data(), line.size()) != static_cast<ssize_t>(line.size()))
        throw std::runtime_error("the camera's program is gone");
    WaitForLine("done\n");
}

void ServedCamera::WaitForLine(const std::string& line) {
    std::string got;
    char character = 0;
    while (got.size() < line.size() && read(m_output, &character, 1) == 1)
        got += character;
    if (got != line)
        throw std::runtime_error("the camera's program said '" + got + "'");
}

} // namespace tessaro
