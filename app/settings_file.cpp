#include "app/settings_file.h"

#include <array>
#include <charconv>
#include <cstdint>
#include <string_view>
#include <variant>
#include <vector>

namespace tessaro {
namespace {

// Far more than ten numbers need; what lies behind is not looked at.
constexpr std::size_t longestSettings = std::size_t{1} << 20U;

void Append(std::string& line, std::int32_t value) {
    line += std::to_string(value);
}

/// Six decimals with a decimal point; "inf" and "nan" as printf would have them.
void Append(std::string& line, float value) {
    std::array<char, 64> digits; // the largest float has 39 digits before the point
    const auto [end, error] = std::to_chars(digits.data(), digits.data() + digits.size(),
                                            static_cast<double>(value), std::chars_format::fixed, 6);
    if (error == std::errc())
        line.append(digits.data(), end);
}

} // namespace

std::string SettingsLine(const Settings& settings) {
    std::string line;
    const auto append = [&line](auto value) {
        if (!line.empty())
            line += ',';
        Append(line, value);
    };
    append(settings.portNumber);
    for (const float contrast : settings.targetContrast)
        append(contrast);
    append(settings.contrastTolerance);
    append(settings.xRange);
    append(settings.yRange);
    append(settings.minimumFlakeArea);
    append(settings.material);
    append(settings.scoreThreshold);
    return line + "\n";
}

void ReadSettingsFile(Folders& folders, const std::filesystem::path& file, Settings& settings) {
    const auto content = folders.Read(file, longestSettings);
    if (const auto* bytes = std::get_if<std::vector<std::uint8_t>>(&content))
        ReadSettingsLine({reinterpret_cast<const char*>(bytes->data()), bytes->size()}, settings);
}

bool WriteSettingsFile(Folders& folders, const std::filesystem::path& file, const Settings& settings) {
    const std::string line = SettingsLine(settings);
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(line.data());
    return !folders.Replace(file, {bytes, line.size()}).has_value();
}

} // namespace tessaro
