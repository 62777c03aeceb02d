#pragma once

#include <string>

namespace tessaro {

/// Lives while an application object of Qt's is made. Qt adopts the user's locale for the whole C library,
/// with which numbers would be printed with a decimal comma and reasons of the system in the user's language:
/// the end of the scope restores all of it but the encoding of text. And it spares the operator's terminal a
/// remark on a folder for sockets, which is missing without a login session and not needed. A program that
/// cannot start (no display) ends with status 1 and the reason.
class QtStartScope {
public:
    QtStartScope();
    ~QtStartScope();
    QtStartScope(const QtStartScope&) = delete;
    QtStartScope& operator=(const QtStartScope&) = delete;

private:
    std::string m_localeAtStart;
};

} // namespace tessaro
