#include "app/settings.h"

#include "app/number_text.h"

namespace tessaro {
namespace {

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
        return TakeNumber(m_rest, value);
    }

private:
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
