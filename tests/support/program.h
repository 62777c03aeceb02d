#pragma once

#include "support/temporary_folder.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <sys/wait.h>
#include <vector>

namespace tessaro {

/// How a program ended and what it wrote.
struct ProgramRun {
    int exitStatus = -1;
    std::string output;
    std::string errors;
};

inline std::string ReadText(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

inline std::string ShellQuoted(const std::string& word) {
    std::string quoted = "'";
    for (const char character : word)
        quoted += character == '\'' ? std::string("'\\''") : std::string(1, character);
    return quoted + "'";
}

/// Runs a program to its end, without input. `before` is put before it on the shell's line ("ulimit -f 1;").
inline ProgramRun RunProgram(const std::string& program, const std::vector<std::string>& arguments,
                             const std::string& before = {}) {
    const TemporaryFolder folder;
    const std::filesystem::path output = folder.Path() / "output";
    const std::filesystem::path errors = folder.Path() / "errors";
    std::string command = before + ShellQuoted(program);
    for (const std::string& argument : arguments)
        command += ' ' + ShellQuoted(argument);
    command += " </dev/null >" + ShellQuoted(output.string()) + " 2>" + ShellQuoted(errors.string());
    const int status = std::system(command.c_str());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, ReadText(output), ReadText(errors)};
}

} // namespace tessaro
