#pragma once

#include "platform/file_chooser.h"

#include <functional>
#include <optional>

namespace tessaro {

class FakeFileChooser : public FileChooser {
public:
    std::optional<std::filesystem::path> ChooseFileToOpen() override {
        ++asked;
        if (whileChoosing)
            whileChoosing();
        return choice;
    }

    std::optional<std::filesystem::path> choice;
    std::function<void()> whileChoosing; // what happens while it is open
    int asked = 0;
};

} // namespace tessaro
