#include "text/json_writer.h"

#include "text/plain_text.h"

#include <cmath>
#include <cstddef>

namespace tessaro {
namespace {

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

} // namespace

void JsonWriter::Open(char bracket) {
    Separate();
    m_text += bracket;
    m_separate = false;
}

void JsonWriter::Close(char bracket) {
    m_text += bracket;
    m_separate = true;
}

void JsonWriter::Key(std::string_view name) {
    Separate();
    Quote(name);
    m_text += ':';
    m_separate = false;
}

void JsonWriter::Value(double value) {
    Token(std::isfinite(value) ? NumberText(value, m_decimals) : "null");
}

void JsonWriter::Value(std::string_view value) {
    Separate();
    Quote(value);
}

void JsonWriter::Separate() {
    if (m_separate)
        m_text += ',';
    if (m_breakLine)
        m_text += '\n';
    m_separate = true;
    m_breakLine = false;
}

void JsonWriter::Token(std::string_view token) {
    Separate();
    m_text += token;
}

void JsonWriter::Quote(std::string_view text) {
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

void JsonWriter::Escape(std::string_view character) {
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

} // namespace tessaro
