#include "compare/image_check.h"
#include "platform/picture.h"
#include "platform/qt/qt_picture_files.h"
#include "support/temporary_folder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <variant>
#include <vector>

namespace tessaro {
namespace {

/// A scan of two fields: the first shows nothing and lies at the origin, the second has a flake.
class ImageCheck : public testing::Test {
protected:
    ImageCheck() {
        fields[0].field = 1;
        fields[0].images = {Save("a.jpg"), Save("adetail.jpg")};
        fields[1].field = 2;
        fields[1].column = 1;
        fields[1].found = 1;
        fields[1].images = {Save("b.jpg"), Save("bdetail.jpg")};
    }

    std::vector<std::uint8_t> Encoded(const char* type) {
        return std::get<std::vector<std::uint8_t>>(pictures.Encode(Picture(8, 8), type));
    }
    std::string Save(const std::string& name) { return folder.Write(name, Encoded("image/jpeg")); }

    std::vector<std::string> Faults() { return CheckImages(fields, pictures).faults; }
    std::vector<std::string> Others() { return CheckImages(fields, pictures).others; }
    void ExpectFault(const std::string& fault) { EXPECT_EQ(Faults(), std::vector<std::string>{fault}); }

    TemporaryFolder folder;
    QtPictureFiles pictures;
    std::vector<ReportedField> fields = std::vector<ReportedField>(2);
};

TEST_F(ImageCheck, IsContentWhereDiskAndReportAgree) {
    EXPECT_EQ(Faults(), std::vector<std::string>());
    EXPECT_EQ(Others(), std::vector<std::string>());
}

TEST_F(ImageCheck, MissesAFile) {
    std::filesystem::remove(fields[1].images[0]);
    ExpectFault("'" + fields[1].images[0] + "' cannot be read");
}

TEST_F(ImageCheck, SeesWhatIsNoJpegFile) {
    folder.Write("b.jpg", Encoded("image/png"));
    ExpectFault("'" + fields[1].images[0] + "' is no JPEG file");
    folder.Write("b.jpg", {});
    ExpectFault("'" + fields[1].images[0] + "' is no JPEG file");
}

TEST_F(ImageCheck, SeesAFileThatIsCutShort) {
    std::vector<std::uint8_t> bytes = Encoded("image/jpeg");
    bytes.resize(bytes.size() / 2);
    folder.Write("b.jpg", bytes);
    ASSERT_EQ(Faults().size(), 1U);
    EXPECT_NE(Faults()[0].find("b.jpg' is damaged: "), std::string::npos) << Faults()[0];
}

TEST_F(ImageCheck, NamesAFileThatTheReportDoesNotNameAndIsContent) {
    const std::string other = Save("c.jpg");
    EXPECT_EQ(Others(), std::vector<std::string>{other});
    EXPECT_EQ(Faults(), std::vector<std::string>());
}

TEST_F(ImageCheck, SeesAFileThatTheReportNamesTwice) {
    fields[1].images[1] = fields[1].images[0];
    ExpectFault("'" + fields[1].images[0] + "' is in the report twice");
    EXPECT_EQ(Others(), std::vector<std::string>{(folder.Path() / "bdetail.jpg").string()});
}

TEST_F(ImageCheck, WantsTwoImagesOfAFieldWithAFlake) {
    std::filesystem::remove(fields[1].images[1]);
    fields[1].images.pop_back();
    ExpectFault("scan 1, field 2: 1 images, 1 found");
    fields[1].problems = {"no room on the disk"};
    EXPECT_EQ(Faults(), std::vector<std::string>()) << "it says why there is only one";
}

TEST_F(ImageCheck, WantsNoneOfAFieldWithoutAFlakeBesideTheOrigin) {
    fields[1].found = 0;
    ExpectFault("scan 1, field 2: 2 images, 0 found");
}

TEST_F(ImageCheck, LetsTheFieldAtTheOriginHaveNone) {
    for (const std::string& image : fields[0].images)
        std::filesystem::remove(image);
    fields[0].images.clear();
    EXPECT_EQ(Faults(), std::vector<std::string>());
}

} // namespace
} // namespace tessaro
