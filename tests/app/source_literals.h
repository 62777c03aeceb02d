#pragma once

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tessaro {

/// Walks through the text of a C++ source and finds its string literals; those in a row are one. Comments
/// have none. Raw literals are not known: the sources have none.
class SourceLiterals {
public:
    explicit SourceLiterals(std::string_view source) : m_source(source) {}

    std::vector<std::string> All() { return UntilBracketCloses(); } // none closes that was not opened

    /// Those between a bracket, which `speaker` ends with, and its partner, wherever the speaker occurs.
    std::vector<std::string> GivenTo(std::string_view speaker) {
        std::vector<std::string> found;
        for (std::size_t at = m_source.find(speaker); at != std::string_view::npos;
             at = m_source.find(speaker, m_at)) {
            m_at = at + speaker.size();
            const std::vector<std::string> given = UntilBracketCloses();
            found.insert(found.end(), given.begin(), given.end());
        }
        return found;
    }

private:
    /// Or until the source ends.
    std::vector<std::string> UntilBracketCloses() {
        std::vector<std::string> literals;
        m_inRow = false;
        for (int depth = 1; depth > 0 && m_at < m_source.size();) {
            const char next = m_source[m_at];
            depth += next == '(' || next == '{' ? 1 : next == ')' || next == '}' ? -1 : 0;
            Step(literals);
        }
        return literals;
    }

    /// Over a comment, a literal or one character.
    void Step(std::vector<std::string>& literals) {
        const std::string_view rest = m_source.substr(m_at);
        if (rest.starts_with("//")) {
            m_at += std::min(rest.find('\n'), rest.size());
        } else if (rest.starts_with('\'') && !IsDigitSeparator()) {
            TakeQuoted('\'');
            m_inRow = false;
        } else if (rest.starts_with('"')) {
            const std::string literal = TakeQuoted('"');
            if (m_inRow)
                literals.back() += literal;
            else
                literals.push_back(literal);
            m_inRow = true;
        } else {
            m_inRow = m_inRow && std::isspace(static_cast<unsigned char>(rest.front())) != 0;
            ++m_at;
        }
    }

    bool IsDigitSeparator() const {
        return m_at > 0 && std::isalnum(static_cast<unsigned char>(m_source[m_at - 1])) != 0;
    }

    std::string TakeQuoted(char quote) {
        std::string text;
        for (++m_at; m_at < m_source.size() && m_source[m_at] != quote; ++m_at) {
            if (m_source[m_at] != '\\')
                text += m_source[m_at];
            else if (++m_at < m_source.size())
                text += Escaped(m_source[m_at]);
        }
        ++m_at;
        return text;
    }

    static char Escaped(char letter) { return letter == 'n' ? '\n' : letter == 't' ? '\t' : letter; }

    std::string_view m_source;
    std::size_t m_at = 0;
    bool m_inRow = false; // nothing but blanks since the last literal
};

} // namespace tessaro
