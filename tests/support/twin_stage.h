#pragma once

#include "support/running_twin.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <string>
#include <vector>

namespace tessaro {

/// The stage of a running simulated microscope: what it was told, and where it truly is. Its files are in a
/// folder of the test's.
class TwinStage {
public:
    explicit TwinStage(const std::string& folder) : m_folder(folder) {}

    /// Options for the microscope.
    std::vector<std::string> Options() const {
        return {"--stage-link", LinkPath(), "--stage-log", LogPath()};
    }

    /// Without a camera: needs nothing that another one on this machine could have.
    std::vector<std::string> OptionsAlone() const {
        std::vector<std::string> options = Options();
        options.insert(options.end(), {"--camera-address", "none"});
        return options;
    }

    std::string LinkPath() const { return m_folder + "/stage"; }

    /// The commands that it has received, without their times.
    std::vector<std::string> Commands() const {
        std::vector<std::string> commands;
        std::string rest = ReadText(LogPath());
        for (std::size_t end = rest.find('\n'); end != std::string::npos; end = rest.find('\n')) {
            const std::string line = rest.substr(0, end);
            commands.push_back(line.substr(line.rfind(' ') + 1));
            rest.erase(0, end + 1);
        }
        return commands;
    }

    /// Those that are no questions.
    std::vector<std::string> Orders() const {
        std::vector<std::string> orders = Commands();
        std::erase_if(orders, IsQuestion);
        return orders;
    }

    static bool IsQuestion(const std::string& command) {
        return command == "p" || command == "P" || command == "Q";
    }

    /// In um: [X, Y, Z].
    static std::array<double, 3> Place(RunningTwin& twin) {
        std::array<double, 3> um = {};
        const std::string answer = twin.Say("where");
        EXPECT_EQ(std::sscanf(answer.c_str(), "ok %lf,%lf,%lf", &um[0], &um[1], &um[2]), 3) << answer;
        return um;
    }

    static bool Moves(RunningTwin& twin) { return twin.Say("where").ends_with(" moving"); }

private:
    std::string LogPath() const { return m_folder + "/stage.log"; }

    std::string m_folder;
};

} // namespace tessaro
