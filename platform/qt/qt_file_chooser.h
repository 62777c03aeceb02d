#pragma once

#include "platform/file_chooser.h"

namespace tessaro {

class QtMessageLoop;

class QtFileChooser : public FileChooser {
public:
    explicit QtFileChooser(QtMessageLoop& messages) : m_messages(messages) {}

    std::optional<std::filesystem::path> ChooseFileToOpen() override;

private:
    QtMessageLoop& m_messages;
    std::filesystem::path m_folder; // where the last file was chosen
};

} // namespace tessaro
