#include "analyze/report_json.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <string_view>

namespace tessaro {
namespace {

constexpr int decimals = 6;

/// Length of the UTF-8 character at the start of the text, 0 when there is none.
std::size_t CharacterLength(std::string_view text) {
    const auto byte = [&](std::size_t i) { return static_cast<std::uint8_t>(text[i]); };
    const std::uint8_t lead = byte(0);
    const std::size_t length = lead < 0x80                    ? 1
                               : lead >= 0xC2 && lead <= 0xDF ? 2
                               : lead >= 0xE0 && lead <= 0xEF ? 3
                               : lead >= 0xF0 && lead <= 0xF4 ? 4
                                                              : 0;
    if (length == 0 || length > text.size())
        return 0;
    for (std::size_t i = 1; i < length; ++i) {
        if (byte(i) < 0x80 || byte(i) > 0xBF)
            return 0;
    }
    const bool overlong = (lead == 0xE0 && byte(1) < 0xA0) || (lead == 0xF0 && byte(1) < 0x90);
    const bool surrogate = lead == 0xED && byte(1) > 0x9F;
    const bool beyondUnicode = lead == 0xF4 && byte(1) > 0x8F;
    return overlong || surrogate || beyondUnicode ? 0 : length;
}

/// Writes one JSON object or array after the other into a line.
class JsonLine {
public:
    void Key(std::string_view name) {
        Separate();
        Quote(name);
        m_text += ':';
        m_separate = false;
    }

    void Open(char bracket) {
        Separate();
        m_text += bracket;
        m_separate = false;
    }

    void Close(char bracket) {
        m_text += bracket;
        m_separate = true;
    }

    void Value(int value) { Token(std::to_string(value)); }
    void Value(bool value) { Token(value ? "true" : "false"); }
    void Value(std::string_view value) {
        Separate();
        Quote(value);
    }
    void Value(double value) {
        if (!std::isfinite(value)) {
            Token("null");
            return;
        }
        std::array<char, 400> digits{}; // the largest double has 309 before the point
        const auto [end, error] = std::to_chars(digits.data(), digits.data() + digits.size(), value,
                                                std::chars_format::fixed, decimals);
        Token(std::string_view(digits.data(), static_cast<std::size_t>(end - digits.data())));
    }

    template<typename Type>
    void Member(std::string_view name, Type value) {
        Key(name);
        Value(value);
    }

    std::string Take() { return std::move(m_text); }

private:
    void Separate() {
        if (m_separate)
            m_text += ',';
        m_separate = true;
    }

    void Token(std::string_view token) {
        Separate();
        m_text += token;
    }

    void Quote(std::string_view text) {
        m_text += '"';
        while (!text.empty()) {
            const std::size_t length = CharacterLength(text);
            if (length == 0)
                m_text += "\\ufffd";
            else
                Escape(text.substr(0, length));
            text.remove_prefix(length == 0 ? 1 : length);
        }
        m_text += '"';
    }

    void Escape(std::string_view character) {
        constexpr std::string_view hex = "0123456789abcdef";
        const auto code = static_cast<std::uint8_t>(character[0]);
        if (code == '"' || code == '\\') {
            m_text += '\\';
            m_text += character;
        } else if (code < 0x20) {
            m_text += "\\u00";
            m_text += hex[code >> 4U];
            m_text += hex[code & 15U];
        } else {
            m_text += character;
        }
    }

    std::string m_text;
    bool m_separate = false;
};

void WriteGrain(JsonLine& json, const GrainReport& grain) {
    json.Open('{');
    json.Member("grain", grain.grain);
    json.Member("reducedPixels", grain.reducedPixels);
    json.Member("pixels", grain.pixels);
    json.Member("left", grain.left);
    json.Member("right", grain.right);
    json.Member("minRow", grain.minRow);
    json.Member("maxRow", grain.maxRow);
    json.Member("score", double{grain.score});
    json.Member("BG", double{grain.subScores.BG});
    json.Member("Cont", double{grain.subScores.Cont});
    json.Member("Size", double{grain.subScores.Size});
    json.Member("EgSp", double{grain.subScores.EgSp});
    json.Member("PR", double{grain.subScores.PR});
    json.Member("HST", double{grain.subScores.HST});
    json.Member("DfNx", double{grain.subScores.DfNx});
    json.Member("single", grain.single);
    json.Close('}');
}

} // namespace

std::string ReportJson(const PictureReport& report) {
    JsonLine json;
    json.Open('{');
    json.Member("file", std::string_view(report.file));
    json.Member("noise", double{report.noise});
    json.Key("bgPeak");
    json.Open('[');
    for (const double peak : report.bgPeak)
        json.Value(peak);
    json.Close(']');
    json.Member("candidates", report.candidates);
    json.Member("live", report.live);
    json.Member("groups", report.groups);
    json.Member("kept", report.kept);
    json.Key("grains");
    json.Open('[');
    for (const GrainReport& grain : report.grains)
        WriteGrain(json, grain);
    json.Close(']');
    json.Member("found", report.found);
    json.Member("overflow", report.overflow);
    json.Close('}');
    return json.Take();
}

} // namespace tessaro
