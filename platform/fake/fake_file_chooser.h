#pragma once

#include "platform/file_chooser.h"

namespace tessaro {

class FakeFileChooser : public FileChooser {
public:
    std::optional<std::filesystem::path> ChooseFileToOpen() override {
        ++asked;
        return choice;
    }

    std::optional<std::filesystem::path> choice;
    int asked = 0;
};

} // namespace tessaro
