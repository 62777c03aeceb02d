#include "twin/stage/line_link.h"

#include <filesystem>
#include <stdexcept>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace tessaro {
namespace {

constexpr const char* terminalFolder = "/dev/pts";

[[noreturn]] void Fail(const std::string& path, const std::string& reason) {
    throw std::runtime_error("cannot link the stage's line at '" + path + "': " + reason);
}

bool IsToTerminal(const std::filesystem::path& link) {
    std::error_code none;
    return std::filesystem::read_symlink(link, none).parent_path() == terminalFolder;
}

} // namespace

LineLink::LineLink(std::string path, const std::string& terminal)
    : m_path(std::move(path)), m_terminal(terminal) {
    std::error_code error;
    const auto status = std::filesystem::symlink_status(m_path, error);
    if (std::filesystem::exists(status) && !IsToTerminal(m_path))
        Fail(m_path, "something else is there");
    // Made beside it and put in its place: there is no moment without one.
    const std::string fresh = m_path + "." + std::to_string(getpid());
    std::filesystem::create_symlink(m_terminal, fresh, error);
    if (error)
        Fail(m_path, error.message());
    std::filesystem::rename(fresh, m_path, error);
    if (!error)
        return;
    std::error_code none;
    std::filesystem::remove(fresh, none);
    Fail(m_path, error.message());
}

LineLink::~LineLink() {
    std::error_code none;
    if (std::filesystem::read_symlink(m_path, none) == m_terminal)
        std::filesystem::remove(m_path, none);
}

} // namespace tessaro
