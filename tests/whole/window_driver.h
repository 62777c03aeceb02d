#pragma once

#include "leaks.h"
#include "platform/picture.h"
#include "support/background_program.h"
#include "support/panel_places.h"
#include "support/program.h"
#include "support/temporary_folder.h"
#include "support/test_display.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

namespace tessaro {

inline constexpr int widestTitleAndMenu = 100;
inline constexpr int widestFrame = 10;
inline constexpr const char* mainTitle = "Tessaro Searching";
inline constexpr const char* popupTitle = "Motor Controller";
inline constexpr const char* panelTitle = "Control Panel";

// Entries of the menus by key: Alt+F opens the first menu with its first entry chosen.
inline const std::map<std::string, std::pair<int, int>> menuPlaces = {
    {"Import Image", {0, 0}},
    {"Save Image", {0, 1}},
    {"Control Panel", {0, 2}},
    {"Exit", {0, 3}},
    {"XY Stage Configuration", {1, 0}},
    {"Auto Contrast Once", {1, 1}},
    {"Auto focusing", {1, 2}},
    {"Capture", {1, 3}},
    {"Stop/Start Grabbing", {1, 4}},
    {"Red image", {2, 0}},
    {"Green Image", {2, 1}},
    {"Blue image", {2, 2}},
    {"Original image", {2, 3}},
    {"Show BackGround", {2, 4}},
    {"BackGround fitting", {2, 5}},
    {"Configuration", {3, 0}},
    {"Find Single Layers", {3, 1}},
    {"Noise Rejection", {3, 2}},
    {"Grouping", {3, 3}},
    {"Discern Contrast", {3, 4}},
    {"Setting XY stage", {4, 0}},
    {"Start", {4, 1}},
    {"Pause/Resume", {4, 2}},
    {"Information", {5, 0}},
};

inline std::vector<std::filesystem::path> FilesBelow(const std::filesystem::path& folder) {
    std::vector<std::filesystem::path> files;
    std::error_code error;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder, error))
        if (entry.is_regular_file())
            files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    return files;
}

/// The operator's program in a real window of a display of its own, with a desktop of its own, driven by
/// mouse and keys.
class WindowDriver : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(display.IsThere()) << "Xvfb could not be started";
        std::filesystem::create_directories(screenshots);
        std::filesystem::create_directories(ImageData());
    }

    void TearDown() override {
        if (program != nullptr)
            program->ExitStatus();
        EXPECT_EQ(ReadText(Errors()), "");
    }

    /// Without the motor controller's window, which stands before the image; closing it only hides it.
    void Start(const std::vector<std::pair<std::string, std::string>>& extra = {}) {
        StartWithPopup(extra);
        display.Close(popupTitle);
        ASSERT_TRUE(Eventually([this] { return !display.Shows(popupTitle); }));
        display.Activate(mainTitle);
        GiveKeysToTheWindow();
    }

    void StartWithPopup(const std::vector<std::pair<std::string, std::string>>& extra = {}) {
        std::vector<std::pair<std::string, std::string>> environment = {{"DISPLAY", display.Name()},
                                                                        {"HOME", home.Path().string()},
                                                                        {"XDG_CONFIG_HOME", ""},
                                                                        {"QT_QPA_PLATFORM", "xcb"},
                                                                        LeaksToKnow()};
        environment.insert(environment.end(), extra.begin(), extra.end());
        program =
            std::make_unique<BackgroundProgram>(TESSARO_PROGRAM, arguments, environment, Errors().string(),
                                                (home.Path() / "output.txt").string());
        ASSERT_TRUE(
            Eventually([this] { return display.Shows(mainTitle) && display.Shows("Control Panel"); }));
        ASSERT_TRUE(Eventually([this] { return display.Shows(popupTitle); }));
        display.Activate(mainTitle);
        GiveKeysToTheWindow();
    }

    /// The pointer moving over the main window takes the keys to it from the program's other windows.
    void GiveKeysToTheWindow() {
        int column = 400;
        ASSERT_TRUE(Eventually([&] {
            display.MoveTo(++column, 400);
            return display.ActiveTitle() == std::string(mainTitle) + "\n";
        }));
    }

    void Menu(const std::string& entry) {
        GiveKeysToTheWindow();
        const auto [menu, row] = menuPlaces.at(entry);
        std::vector<std::string> keys{"alt+f"};
        keys.insert(keys.end(), static_cast<std::size_t>(menu), "Right");
        keys.insert(keys.end(), static_cast<std::size_t>(row), "Down");
        keys.push_back("Return");
        display.Keys(keys);
    }

    /// Whether the window shows the picture, pixel by pixel. Finds out where the
    /// image begins.
    bool ShowsPicture(const Picture& picture, const std::string& screenshot) {
        const auto screen = display.Screenshot(screenshots / (screenshot + ".png"));
        if (!screen.has_value())
            return false;
        for (imageTop = 10; imageTop < widestTitleAndMenu; ++imageTop)
            for (imageLeft = 0; imageLeft < widestFrame; ++imageLeft)
                if (LiesAtImagePosition(picture, *screen))
                    return true;
        return false;
    }

    bool LiesAtImagePosition(const Picture& picture, const Picture& screen) const {
        const int rows = std::min(picture.height, screen.height - imageTop);
        for (int y = 0; y < rows; ++y)
            for (int x = 0; x < picture.width; ++x)
                if (!std::equal(picture.Pixel(x, y), picture.Pixel(x, y) + 3,
                                screen.Pixel(x + imageLeft, y + imageTop)))
                    return false;
        return true;
    }

    void ClickPanel(int controlId) {
        const PanelPlace place = panelPlaces.at(controlId);
        display.ClickIn(panelTitle, place.x, place.y);
    }

    /// What an edit of the control panel shows at the beginning of its text; empty when there is no panel.
    std::string PanelText(int controlId) const {
        const PanelPlace place = panelPlaces.at(controlId);
        return display.PartOfWindow(panelTitle, place.x - panelTextReach, place.y - panelTextHalfHeight,
                                    2 * panelTextReach, 2 * panelTextHalfHeight);
    }

    /// In an edit of the control panel, in place of what is there.
    void TypeIntoPanel(int controlId, const std::string& text) {
        ClickPanel(controlId);
        ASSERT_TRUE(Eventually([this] { return display.ActiveTitle() == std::string(panelTitle) + "\n"; }));
        display.Keys({"ctrl+a"});
        display.Type(text);
    }

    void Exit() {
        Menu("Exit");
        ASSERT_TRUE(Eventually([this] { return program->ExitStatus().has_value(); }));
        EXPECT_EQ(program->ExitStatus(), 0);
    }

    std::filesystem::path ImageData() const { return home.Path() / "Desktop" / "Image_Data"; }
    std::filesystem::path ConfigFile() const { return ImageData() / "Config.txt"; }
    std::filesystem::path Errors() const { return home.Path() / "errors.txt"; }
    std::string Output() const { return ReadText(home.Path() / "output.txt"); }

    std::vector<std::filesystem::path> SavedImages() const {
        std::vector<std::filesystem::path> files = FilesBelow(home.Path() / "Desktop");
        std::erase_if(files, [](const auto& file) { return file.extension() != ".jpg"; });
        return files;
    }

    std::vector<std::string> arguments = {"--camera", "none", "--stage-port", "none"};
    const std::filesystem::path screenshots = TESSARO_SCREENSHOTS;
    TemporaryFolder home;
    TestDisplay display;
    std::unique_ptr<BackgroundProgram> program;
    int imageTop = 0;
    int imageLeft = 0;
};

} // namespace tessaro
