#include "compare/image_check.h"

#include "text/whole_file.h"

#include <array>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <set>
#include <span>
#include <system_error>

namespace tessaro {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t imagesOfField = 2; // the frame, and what the window showed

bool MayHave(const ReportedField& field, std::size_t count) {
    const bool isAtOrigin = field.row == 0 && field.column == 0;
    if (count == imagesOfField)
        return field.found > 0 || isAtOrigin;
    if (count == 0 && field.found == 0)
        return true;
    return count < imagesOfField && !field.problems.empty();
}

/// Nothing where the file is a whole JPEG picture.
std::optional<std::string> FaultOf(const std::string& file, PictureFiles& pictures) {
    const std::optional<std::string> text = ReadWholeFile(file);
    if (!text)
        return "cannot be read";
    constexpr std::array<unsigned char, 2> jpegBegins = {0xFF, 0xD8};
    const std::span<const std::uint8_t> bytes(reinterpret_cast<const std::uint8_t*>(text->data()),
                                              text->size());
    if (bytes.size() < jpegBegins.size() || bytes[0] != jpegBegins[0] || bytes[1] != jpegBegins[1])
        return "is no JPEG file";
    const auto decoded = pictures.Decode(bytes);
    const PictureError* const error = std::get_if<PictureError>(&decoded);
    return error == nullptr ? std::nullopt : std::optional("is damaged: " + error->reason);
}

void CheckNumber(const ReportedField& field, std::vector<std::string>& faults) {
    if (!MayHave(field, field.images.size()))
        faults.push_back("scan " + std::to_string(field.scan) + ", field " + std::to_string(field.field) +
                         ": " + std::to_string(field.images.size()) + " images, " +
                         std::to_string(field.found) + " found");
}

void LookBeside(const fs::path& folder, const std::set<fs::path>& named, std::vector<std::string>& others) {
    std::error_code error;
    std::set<fs::path> files;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder, error))
        files.insert(entry.path());
    for (const fs::path& file : files)
        if (!named.contains(file))
            others.push_back(file.string());
}

} // namespace

ImageFindings CheckImages(const std::vector<ReportedField>& fields, PictureFiles& pictures) {
    ImageFindings findings;
    std::vector<std::string>& faults = findings.faults;
    std::set<fs::path> named;
    std::set<fs::path> folders;
    for (const ReportedField& field : fields) {
        CheckNumber(field, faults);
        for (const std::string& image : field.images) {
            if (!named.insert(image).second)
                faults.push_back("'" + image + "' is in the report twice");
            folders.insert(fs::path(image).parent_path());
            if (const std::optional<std::string> fault = FaultOf(image, pictures))
                faults.push_back("'" + image + "' " + *fault);
        }
    }
    for (const fs::path& folder : folders)
        LookBeside(folder, named, findings.others);
    return findings;
}

} // namespace tessaro
