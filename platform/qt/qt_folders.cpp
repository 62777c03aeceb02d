#include "platform/qt/qt_folders.h"

#include <QDir>
#include <QFile>
#include <QSaveFile>
#include <QStandardPaths>
#include <QString>

#include <algorithm>
#include <new>
#include <system_error>

namespace tessaro {
namespace {

constexpr qint64 readAtATime = qint64{1} << 20U;

QString ToQString(const std::filesystem::path& path) {
    return QFile::decodeName(path.c_str());
}

/// A pipe or a device might keep the program waiting for ever, or never end.
bool IsOrdinaryFile(const std::filesystem::path& file) {
    std::error_code error;
    return std::filesystem::is_regular_file(file, error);
}

} // namespace

std::filesystem::path QtFolders::DesktopFolder() {
    QString folder = QStandardPaths::writableLocation(QStandardPaths::DesktopLocation);
    if (folder.isEmpty()) // settings that make no sense
        folder = QDir::homePath() + QStringLiteral("/Desktop");
    return {QFile::encodeName(folder).toStdString()};
}

bool QtFolders::CreateFolder(const std::filesystem::path& folder) {
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    return std::filesystem::is_directory(folder, error);
}

bool QtFolders::CanRead(const std::filesystem::path& path) {
    QFile file(ToQString(path));
    return IsOrdinaryFile(path) && file.open(QIODevice::ReadOnly);
}

std::variant<std::uint64_t, FolderError> QtFolders::Size(const std::filesystem::path& path) {
    std::error_code error;
    if (std::filesystem::exists(path, error) && !IsOrdinaryFile(path))
        return FolderError{"not a file"};
    const std::uintmax_t size = std::filesystem::file_size(path, error);
    if (error)
        return FolderError{error.message()};
    return std::uint64_t{size};
}

std::variant<std::vector<std::uint8_t>, FolderError> QtFolders::Read(const std::filesystem::path& path,
                                                                     std::size_t maximumBytes) {
    std::error_code error;
    if (std::filesystem::exists(path, error) && !IsOrdinaryFile(path))
        return FolderError{"not a file"};
    QFile file(ToQString(path));
    if (!file.open(QIODevice::ReadOnly))
        return FolderError{file.errorString().toStdString()};
    try {
        std::vector<std::uint8_t> bytes;
        while (bytes.size() < maximumBytes) {
            const std::size_t wanted =
                std::min(maximumBytes - bytes.size(), static_cast<std::size_t>(readAtATime));
            const QByteArray piece = file.read(static_cast<qint64>(wanted));
            if (piece.isEmpty())
                break;
            bytes.insert(bytes.end(), piece.begin(), piece.end());
        }
        if (file.error() != QFileDevice::NoError)
            return FolderError{file.errorString().toStdString()};
        return bytes;
    } catch (const std::bad_alloc&) {
        return FolderError{"not enough memory"};
    }
}

std::optional<FolderError> QtFolders::Replace(const std::filesystem::path& path,
                                              std::span<const std::uint8_t> content) {
    std::error_code error;
    if (std::filesystem::exists(path, error) && !IsOrdinaryFile(path))
        return FolderError{"not a file"};
    QSaveFile file(ToQString(path));
    const auto size = static_cast<qint64>(content.size());
    // The commit itself does not see that what it still had to write found no room.
    if (file.open(QIODevice::WriteOnly) &&
        file.write(reinterpret_cast<const char*>(content.data()), size) == size && file.flush() &&
        file.commit())
        return std::nullopt;
    return FolderError{file.errorString().toStdString()};
}

std::optional<FolderError> QtFolders::Create(const std::filesystem::path& path,
                                             std::span<const std::uint8_t> content) {
    std::error_code error;
    if (std::filesystem::exists(std::filesystem::symlink_status(path, error)))
        return FolderError{"there is a file of that name"};
    return Replace(path, content);
}

Folders& NativeFolders() {
    static QtFolders folders;
    return folders;
}

} // namespace tessaro
