#pragma once

#include <filesystem>
#include <optional>

namespace tessaro {

class FileChooser {
public:
    virtual ~FileChooser() = default;

    /// Lets the operator choose an existing file; messages are dispatched meanwhile. Nothing when there was
    /// no choice, or no dialog could be shown.
    virtual std::optional<std::filesystem::path> ChooseFileToOpen() = 0;
};

} // namespace tessaro
