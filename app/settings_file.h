#pragma once

#include "app/settings.h"
#include "platform/folders.h"

#include <filesystem>
#include <string>

namespace tessaro {

/// "%d,%f,%f,%f,%f,%d,%d,%d,%d,%f\n", whatever the locale.
std::string SettingsLine(const Settings& settings);

/// Takes the fields of the file's first line up to the first that does not parse; without the file nothing
/// changes.
void ReadSettingsFile(Folders& folders, const std::filesystem::path& file, Settings& settings);

/// Writes the line; a file that cannot be written stays as it was. False then.
bool WriteSettingsFile(Folders& folders, const std::filesystem::path& file, const Settings& settings);

} // namespace tessaro
