#pragma once

#include "platform/picture.h"
#include "platform/qt/qt_picture_files.h"
#include "support/background_program.h"
#include "support/program.h"

#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <system_error>
#include <unistd.h>
#include <variant>
#include <vector>

namespace tessaro {

/// A display of its own for one test, with a window manager, mouse, keyboard and screenshots.
class TestDisplay {
public:
    TestDisplay() {
        int ends[2] = {-1, -1};
        if (pipe(ends) != 0)
            return;
        m_server = std::make_unique<BackgroundProgram>(
            "Xvfb", std::vector<std::string>{"-displayfd", std::to_string(ends[1]), "-screen", "0",
                                             "1920x1080x24", "-nolisten", "tcp", "-noreset"});
        close(ends[1]);
        std::FILE* answer = fdopen(ends[0], "r"); // ends when the server says its number, or dies
        int number = -1;
        if (std::fscanf(answer, "%d", &number) == 1)
            m_name = ":" + std::to_string(number);
        std::fclose(answer);
        if (!IsThere())
            return;
        m_windowManager = std::make_unique<BackgroundProgram>(
            "openbox", std::vector<std::string>{"--sm-disable", "--config-file", "/dev/null"},
            std::vector<std::pair<std::string, std::string>>{{"DISPLAY", m_name}});
        Eventually([this] { return RunProgram("wmctrl", {"-m"}, Environment()).exitStatus == 0; });
    }

    TestDisplay(const TestDisplay&) = delete;
    TestDisplay& operator=(const TestDisplay&) = delete;

    bool IsThere() const { return !m_name.empty(); }
    const std::string& Name() const { return m_name; }

    void Type(const std::string& text) const { Operate({"type", "--delay", "1", text}); }
    void Keys(const std::vector<std::string>& keys) const {
        for (const std::string& key : keys)
            Operate({"key", key});
    }
    void MoveTo(int x, int y) const { Operate({"mousemove", std::to_string(x), std::to_string(y)}); }
    void Click(int x, int y) const {
        MoveTo(x, y);
        Operate({"click", "1"});
    }
    /// At a place of the window of that title.
    void ClickIn(const std::string& title, int x, int y) const {
        const std::vector<std::string> windows = Windows(title);
        if (!windows.empty())
            Operate({"mousemove", "--window", windows.front(), std::to_string(x), std::to_string(y), "click",
                     "1"});
    }
    void HoldButton() const { Operate({"mousedown", "1"}); }
    void LetGoOfButton() const { Operate({"mouseup", "1"}); }

    /// The visible windows whose title matches.
    std::vector<std::string> Windows(const std::string& titlePattern) const {
        std::vector<std::string> ids;
        std::string rest = Operate({"search", "--onlyvisible", "--name", titlePattern}).output;
        for (std::size_t end = rest.find('\n'); end != std::string::npos; end = rest.find('\n')) {
            ids.push_back(rest.substr(0, end));
            rest.erase(0, end + 1);
        }
        return ids;
    }
    /// The uppermost window at that place with its frame, by a number; the pointer is taken there.
    std::string WindowAt(int x, int y) const {
        MoveTo(x, y);
        const std::string answer = Operate({"getmouselocation"}).output; // "x:1 y:2 screen:0 window:3"
        const std::size_t begin = answer.rfind(':') + 1;
        return answer.substr(begin, answer.find('\n') - begin);
    }
    std::string ActiveTitle() const { return Operate({"getactivewindow", "getwindowname"}).output; }
    bool Shows(const std::string& titlePattern) const { return !Windows(titlePattern).empty(); }

    /// Gives the keyboard to the window, as its button in the task bar does.
    void Activate(const std::string& title) const {
        RunProgram("wmctrl", {"-F", "-a", title}, Environment());
    }

    /// Asks the window to close, as its close button does.
    void Close(const std::string& title) const { RunProgram("wmctrl", {"-F", "-c", title}, Environment()); }

    /// What is on the screen; the last one of each name is kept as a PNG file. Looking is quick, so that it
    /// can be done again and again; the files are made at the end.
    std::optional<Picture> Screenshot(const std::filesystem::path& file) {
        Keep(file, {"-window", "root"});
        const std::string bytes = ReadText(QuickFile(file));
        QtPictureFiles pictures;
        auto decoded = pictures.Decode({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
        if (Picture* picture = std::get_if<Picture>(&decoded))
            return std::move(*picture);
        return std::nullopt;
    }

    /// Of one window with the frame around it.
    void WindowScreenshot(const std::string& title, const std::filesystem::path& file) {
        const std::vector<std::string> windows = Windows(title);
        if (!windows.empty())
            Keep(file, {"-window", windows.front(), "-frame"});
    }

    /// A few pixels, as a PPM file holds them.
    std::string PartOfScreen(int x, int y) const {
        const std::string part = "32x4+" + std::to_string(x) + "+" + std::to_string(y);
        return RunProgram("import", {"-window", "root", "-depth", "8", "-crop", part, "ppm:-"}, Environment())
            .output;
    }

    /// A part of the window of that title, as a PPM file holds it; empty when there is none.
    std::string PartOfWindow(const std::string& title, int x, int y, int width, int height) const {
        const std::vector<std::string> windows = Windows(title);
        if (windows.empty())
            return {};
        const std::string part = std::to_string(width) + "x" + std::to_string(height) + "+" +
                                 std::to_string(x) + "+" + std::to_string(y);
        return RunProgram("import", {"-window", windows.front(), "-depth", "8", "-crop", part, "ppm:-"},
                          Environment())
            .output;
    }

    ~TestDisplay() {
        for (const std::filesystem::path& file : m_screenshots) {
            RunProgram("convert", {QuickFile(file), "-define", "png:compression-level=1", file.string()});
            std::error_code error;
            std::filesystem::remove(QuickFile(file), error);
        }
    }

private:
    static std::string QuickFile(const std::filesystem::path& file) { return file.string() + ".ppm"; }
    void Keep(const std::filesystem::path& file, std::vector<std::string> whatToImport) {
        m_screenshots.insert(file);
        whatToImport.insert(whatToImport.end(), {"-depth", "8", QuickFile(file)});
        RunProgram("import", whatToImport, Environment());
    }
    std::string Environment() const { return "DISPLAY=" + m_name + " "; }
    ProgramRun Operate(const std::vector<std::string>& arguments) const {
        return RunProgram("xdotool", arguments, Environment());
    }

    std::unique_ptr<BackgroundProgram> m_server;
    std::unique_ptr<BackgroundProgram> m_windowManager; // ends before its server
    std::string m_name;
    std::set<std::filesystem::path> m_screenshots;
};

} // namespace tessaro
