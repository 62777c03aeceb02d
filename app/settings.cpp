#include "app/settings.h"

#include <charconv>
#include <system_error>

namespace tessaro {
namespace {

bool IsSpace(char character) {
    return character == ' ' || (character >= '\t' && character <= '\r');
}

/// Walks along the line; every Take... returns false where the text stops being what the format asks for.
class LineReader {
public:
    explicit LineReader(std::string_view text) : m_rest(text) {}

    bool TakeComma() {
        if (m_rest.empty() || m_rest.front() != ',')
            return false;
        m_rest.remove_prefix(1);
        return true;
    }

    template<typename Number>
    bool Take(Number& value) {
        const std::string_view rest = AfterSpaceAndPlus();
        Number number{};
        const auto [end, error] = std::from_chars(rest.data(), rest.data() + rest.size(), number);
        if (error != std::errc())
            return false;
        value = number;
        m_rest = rest.substr(static_cast<std::size_t>(end - rest.data()));
        return true;
    }

private:
    /// Numbers may be preceded by white space and one plus sign, which std::from_chars does not take.
    std::string_view AfterSpaceAndPlus() const {
        std::string_view rest = m_rest;
        while (!rest.empty() && IsSpace(rest.front()))
            rest.remove_prefix(1);
        if (rest.size() > 1 && rest[0] == '+' && rest[1] != '-')
            rest.remove_prefix(1);
        return rest;
    }

    std::string_view m_rest;
};

} // namespace

int ReadSettingsLine(std::string_view text, Settings& settings) {
    LineReader line(text);
    int taken = 0;
    const auto take = [&](auto& field) {
        const bool parsed = (taken == 0 || line.TakeComma()) && line.Take(field);
        taken += parsed ? 1 : 0;
        return parsed;
    };
    [[maybe_unused]] const bool complete =
        take(settings.portNumber) && take(settings.targetContrast[0]) && take(settings.targetContrast[1]) &&
        take(settings.targetContrast[2]) && take(settings.contrastTolerance) && take(settings.xRange) &&
        take(settings.yRange) && take(settings.minimumFlakeArea) && take(settings.material) &&
        take(settings.scoreThreshold);
    return taken;
}

} // namespace tessaro
