#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

namespace tessaro {

/// Writes JSON objects and arrays from left to right, without spaces. Numbers have so many decimals, whatever
/// the locale; one that is not finite is null. Bytes of a text that are no UTF-8 become U+FFFD.
class JsonWriter {
public:
    explicit JsonWriter(int decimals) : m_decimals(decimals) {}

    void Open(char bracket);
    void Close(char bracket);
    void Key(std::string_view name);

    void Value(int value) { Token(std::to_string(value)); }
    void Value(std::uint64_t value) { Token(std::to_string(value)); }
    void Value(bool value) { Token(value ? "true" : "false"); }
    void Value(double value);
    void Value(std::string_view value);

    template<typename Type>
    void Member(std::string_view name, Type value) {
        Key(name);
        Value(value);
    }

    /// What comes next, bracket or value, begins a line.
    void BreakLine() { m_breakLine = true; }

    /// All that was written; the writer is used up.
    std::string Take() { return std::move(m_text); }

private:
    void Separate();
    void Token(std::string_view token);
    void Quote(std::string_view text);
    void Escape(std::string_view character);

    int m_decimals;
    std::string m_text;
    bool m_separate = false; // a comma is due before the next value
    bool m_breakLine = false;
};

} // namespace tessaro
