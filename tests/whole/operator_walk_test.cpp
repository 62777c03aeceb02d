// The operator's way through the whole program on the simulated microscope, by mouse and keys: from the first
// look at a sample to a scan of it, and back on the next day. What is seen on the way are the manual's
// pictures.

#include "app/settings.h"
#include "platform/qt/qt_picture_files.h"
#include "scan/control_panel_ids.h"
#include "support/contrast_places.h"
#include "whole/wafer_truth.h"
#include "whole/window_on_twin.h"

#include <QByteArray>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace tessaro {
namespace {

constexpr auto patience = std::chrono::minutes(2); // for what takes long on a machine that is busy

/// The height of best focus, as the wafer is told to lie.
double FocusAt(double x, double y) {
    return 1.0 + 0.002 * x - 0.0015 * y;
}

constexpr double nearFocusUm = 6.0; // as nearly all climbs end; most within 3

// The scan area, well inside the wafer of 5 mm.
constexpr double originX = 600.0;
constexpr double originY = 600.0;
constexpr double farX = originX + 3000.0;
constexpr double farY = originY + 2000.0;

// Where the flake that is probed shows: message boxes cover the image's middle.
constexpr int flakeColumn = 300;
constexpr int flakeRow = 220;

constexpr double pixelsPerUm = 2.464;
constexpr int imageWidth = 1232;
constexpr int imageHeight = 1028;
constexpr std::array<double, 3> singleLayerContrast = {-12.0, -8.0, -2.0}; // percent: red, green, blue

constexpr const char* contrastTitle = "Color Contrast Configuration";
constexpr const char* questionTitle = "Warning";

namespace contrast {
constexpr int red = 1017;
constexpr int green = 1018;
constexpr int blue = 1019;
constexpr int tolerance = 1020;
constexpr int scoreThreshold = 1007;
constexpr int redUp = 1009;
constexpr int redDown = 1010;
constexpr int toleranceUp = 1027;
constexpr int toleranceDown = 1026;
constexpr int testNow = 1008;
constexpr int set = 1;
constexpr int done = 2;
} // namespace contrast

bool IsRed(const std::uint8_t* pixel) {
    return pixel[2] == 255 && pixel[1] == 0 && pixel[0] == 0;
}

bool IsBlack(const std::uint8_t* pixel) {
    return pixel[2] == 0 && pixel[1] == 0 && pixel[0] == 0;
}

class OperatorWalk : public WindowOnTwin {
protected:
    void SetUp() override {
        WindowOnTwin::SetUp();
        std::filesystem::create_directories(pictures);
        StartTwin({"--wafer-mm", "5", "--seed", "40", "--truth", Path("truth.json"), "--focus-z", "1",
                   "--tilt", "0.002,-0.0015", "--at", "1000,1000,1.5", "--time-factor", "3"});
        arguments.insert(arguments.end(), {"--report", Path("report.json")});
    }

    void TearDown() override {
        if (HasFailure())
            Keep("99-failed");
        WindowOnTwin::TearDown();
    }

    std::string Path(const char* name) const { return (home.Path() / name).string(); }

    // What is to be seen.

    /// The whole screen, as one of the manual's pictures.
    void Keep(const std::string& name) { display.Screenshot(pictures / (name + ".png")); }

    /// With this dialog, once it is drawn.
    void KeepWith(const std::string& title, const std::string& name) {
        const std::string grey = "\xef\xef\xef";
        ASSERT_TRUE(Eventually([&] { return display.PartOfWindow(title, 4, 4, 1, 1).ends_with(grey); }))
            << title;
        Keep(name);
    }

    std::optional<Picture> Look() { return display.Screenshot(screenshots / "walk-now.png"); }

    std::string PieceOfImage() const {
        return display.PartOfScreen(600, 300) + display.PartOfScreen(300, 300);
    }

    /// The program has come back from what it was told: noise makes each live image another, and there are
    /// none while it works. A click that came earlier would stop the stage.
    void WaitUntilLive() {
        for (int image = 0; image < 2; ++image) {
            const std::string before = PieceOfImage();
            ASSERT_TRUE(Eventually([&] { return PieceOfImage() != before; }, patience));
        }
    }

    void WaitUntilStill() {
        std::string before;
        ASSERT_TRUE(Eventually([&] {
            const std::string now = PieceOfImage();
            return std::exchange(before, now) == now;
        }));
    }

    /// The image lies between the menu bar and a strip of the window, which are bright, and keeps its place.
    void FindImage() {
        const auto screen = Look();
        ASSERT_TRUE(screen.has_value());
        const auto isBright = [&](int x, int y) { return screen->Pixel(x, y)[1] >= 200; };
        for (imageTop = widestTitleAndMenu; imageTop > 0 && !isBright(700, imageTop - 1); --imageTop) {
        }
        for (imageLeft = 0; imageLeft < widestFrame && !isBright(imageLeft, screen->height - 4);
             ++imageLeft) {
        }
    }

    template<typename Condition>
    int CountOnImage(Condition condition) {
        const auto screen = Look();
        int count = 0;
        for (int y = imageTop; screen.has_value() && y < imageTop + imageHeight; ++y)
            for (int x = imageLeft; x < imageLeft + imageWidth; ++x)
                count += condition(screen->Pixel(x, y)) ? 1 : 0;
        return count;
    }

    int CandidatesOnImage() { return CountOnImage(IsRed); }

    /// Frames are lines; candidates are single pixels, four apart.
    int FrameLinesOnImage() {
        return CountOnImage(
            [](const std::uint8_t* pixel) { return IsRed(pixel) && IsRed(pixel + 4) && IsRed(pixel + 8); });
    }

    // The control panel.

    std::string PositionBoxes() const {
        return PanelText(panel::positionX) + PanelText(panel::positionY) + PanelText(panel::positionZ);
    }

    /// At whatever height.
    bool IsAbove(double x, double y) { return StandsAt({x, y, Where()[2]}); }

    void MoveByPanel(double x, double y) {
        const std::string boxes = PositionBoxes();
        TypeIntoPanel(panel::targetX, std::to_string(std::lround(x)));
        TypeIntoPanel(panel::targetY, std::to_string(std::lround(y)));
        ClickPanel(panel::move);
        ASSERT_TRUE(
            Eventually([&] { return IsAbove(x, y) && IsIdle() && PositionBoxes() != boxes; }, patience));
        WaitUntilLive();
    }

    // The colour contrast dialog.

    void ClickContrast(int controlId) {
        const PanelPlace place = contrastPlaces.at(controlId);
        display.ClickIn(contrastTitle, place.x, place.y);
    }

    std::string ContrastText(int controlId) const {
        const PanelPlace place = contrastPlaces.at(controlId);
        return display.PartOfWindow(contrastTitle, place.x - contrastTextReach,
                                    place.y - contrastTextHalfHeight, 2 * contrastTextReach,
                                    2 * contrastTextHalfHeight);
    }

    /// Presses a button that finds the candidates anew, and waits until the edit shows it.
    int CandidatesAfter(int button, int edit) {
        const std::string before = ContrastText(edit);
        ClickContrast(button);
        EXPECT_TRUE(Eventually([&] { return ContrastText(edit) != before; })) << button;
        int last = -1;
        EXPECT_TRUE(Eventually([&] {
            const int now = CandidatesOnImage();
            return std::exchange(last, now) == now;
        }));
        return last;
    }

    void OpenContrastDialog() {
        Menu("Configuration");
        ASSERT_TRUE(Eventually([this] { return display.Shows(contrastTitle); }));
        ASSERT_TRUE(
            Eventually([this] { return display.ActiveTitle() == std::string(contrastTitle) + "\n"; }));
    }

    // The steps.

    void StartAndSeeTheWafer() {
        ASSERT_NO_FATAL_FAILURE(Start());
        ASSERT_NO_FATAL_FAILURE(WaitForTheWafer());
        FindImage();
        Keep("01-start");
    }

    /// Moves a single layer to a place of the image, holds the image and takes the flake's contrast.
    void ProbeAFlake() {
        const PlaceOnWafer flake = SingleLayerNear({1500.0, 1500.0}, 300.0, Path("truth.json"));
        const double x = std::round((flake.x + (imageWidth / 2 - flakeColumn) / pixelsPerUm) / 5.0) * 5.0;
        const double y = std::round((flake.y - (imageHeight / 2 - flakeRow) / pixelsPerUm) / 5.0) * 5.0;
        ASSERT_NO_FATAL_FAILURE(MoveByPanel(x, y));
        Menu("Stop/Start Grabbing");
        WaitUntilStill();
        const std::string still = PieceOfImage();
        Menu("Capture");
        ASSERT_TRUE(Eventually([&] { return PieceOfImage() != still; })) << "four exposures";
        const int column = static_cast<int>(std::lround(imageWidth / 2 + (flake.x - x) * pixelsPerUm));
        const int row = static_cast<int>(std::lround(imageHeight / 2 - (flake.y - y) * pixelsPerUm));
        display.Click(imageLeft + column, imageTop + row);
        const std::string title = "Pixel Analysis at Position: ." + std::to_string(column) + "," +
                                  std::to_string(imageHeight - row) + ".";
        ASSERT_TRUE(Eventually([&] { return display.Shows(title); })) << title;
        KeepWith(title, "02-probe");
        display.Keys({"Return"}); // Yes
        ASSERT_TRUE(Eventually([this] { return !display.Shows("Pixel Analysis"); }));
    }

    /// Scores come with folders to keep the images in.
    void SaveAnImage() {
        Menu("Save Image");
        ASSERT_TRUE(Eventually([this] { return SavedImages().size() == 2; }));
    }

    void WatchTheCandidates() {
        ASSERT_NO_FATAL_FAILURE(OpenContrastDialog());
        KeepWith(contrastTitle, "03-configuration");
        EXPECT_EQ(CandidatesOnImage(), 0) << "nothing is looked for yet";
        const int wide = CandidatesAfter(contrast::toleranceUp, contrast::tolerance);
        const int narrow = CandidatesAfter(contrast::toleranceDown, contrast::tolerance);
        EXPECT_GT(narrow, 0);
        EXPECT_GT(wide, narrow);
        EXPECT_EQ(CandidatesAfter(contrast::toleranceUp, contrast::tolerance), wide);
        Keep("04-candidates");
        EXPECT_EQ(CandidatesAfter(contrast::toleranceDown, contrast::tolerance), narrow);
        EXPECT_NE(CandidatesAfter(contrast::redUp, contrast::red), narrow);
        EXPECT_EQ(CandidatesAfter(contrast::redDown, contrast::red), narrow);
    }

    /// None counts yet: the threshold is 70.
    void TestNow() {
        const int black = CountOnImage(IsBlack);
        ClickContrast(contrast::testNow);
        ASSERT_TRUE(Eventually([&] { return CountOnImage(IsBlack) > black + fewestLabelPixels; }))
            << "scores";
        EXPECT_EQ(FrameLinesOnImage(), 0);
        Keep("05-test-now");
    }

    void SetTheThreshold() {
        ClickContrast(contrast::scoreThreshold);
        display.Keys({"ctrl+a"});
        display.Type("35.0");
        const std::string before = ContrastText(contrast::red);
        ClickContrast(contrast::set);
        ASSERT_TRUE(Eventually([&] { return ContrastText(contrast::red) != before; }))
            << "has a decimal again";
        const std::string information = PanelText(panel::information);
        ClickContrast(contrast::testNow);
        ASSERT_TRUE(Eventually([&] { return PanelText(panel::information) != information; })) << "found";
        EXPECT_TRUE(Eventually([this] { return FrameLinesOnImage() > 0; }));
        Keep("06-set");
    }

    void LeaveTheContrastDialog() {
        for (const int edit : rememberedEdits)
            contrastTexts.push_back(ContrastText(edit));
        ClickContrast(contrast::done);
        ASSERT_TRUE(Eventually([this] { return !display.Shows(contrastTitle); }));
        Menu("Stop/Start Grabbing");
        WaitUntilLive();
    }

    void SetTheOrigin() {
        ASSERT_NO_FATAL_FAILURE(MoveByPanel(originX, originY));
        originXText = PanelText(panel::positionX);
        TypeIntoPanel(panel::xRange, "3");
        TypeIntoPanel(panel::yRange, "2");
        const std::string before = PanelText(panel::information);
        ClickPanel(panel::setOrigin);
        ASSERT_TRUE(Eventually([&] { return PanelText(panel::information) != before; }));
        Keep("07-origin");
    }

    void RaiseByKey() {
        const double z = Where()[2];
        GiveKeysToTheWindow();
        display.Keys({"Page_Up"});
        ASSERT_TRUE(Eventually([&] { return Where()[2] > z + 2.0 && IsIdle(); }));
        WaitUntilLive();
    }

    /// From X max to Y max both axes go, X the longer way, which is the one that is waited for. Y is known to
    /// have arrived once it is sent there again.
    void FocusAtThreePlaces() {
        ASSERT_NO_FATAL_FAILURE(RaiseByKey());
        ASSERT_NO_FATAL_FAILURE(RaiseByKey());
        ASSERT_NO_FATAL_FAILURE(GoTo(panel::goToOrigin, originX, originY));
        ASSERT_NO_FATAL_FAILURE(Focus(originX, originY, panel::depthAtOrigin));
        ASSERT_NO_FATAL_FAILURE(GoTo(panel::goToFarX, farX, originY));
        ASSERT_NO_FATAL_FAILURE(Focus(farX, originY, panel::depthAtFarX));
        ASSERT_NO_FATAL_FAILURE(GoTo(panel::goToFarY, originX, farY));
        ASSERT_NO_FATAL_FAILURE(GoTo(panel::goToFarY, originX, farY));
        ASSERT_NO_FATAL_FAILURE(Focus(originX, farY, panel::depthAtFarY));
        Keep("08-depths");
    }

    void GoTo(int button, double x, double y) {
        const std::size_t commands = stage.Commands().size();
        ClickPanel(button);
        ASSERT_TRUE(Eventually(
            [&] { return stage.Commands().size() > commands && IsAbove(x, y) && IsIdle(); }, patience));
        WaitUntilLive();
    }

    void Focus(double x, double y, int depthEdit) {
        const std::string depth = PanelText(depthEdit);
        ClickPanel(panel::autoFocus);
        ASSERT_TRUE(Eventually([&] { return PanelText(depthEdit) != depth; }, patience));
        WaitUntilLive();
        EXPECT_NEAR(Where()[2], FocusAt(x, y), nearFocusUm) << x << ", " << y;
    }

    void WorkOutTheSlope() {
        const std::string xTilt = PanelText(panel::xTilt);
        const std::string yTilt = PanelText(panel::yTilt);
        ClickPanel(panel::slope);
        ASSERT_TRUE(
            Eventually([&] { return PanelText(panel::xTilt) != xTilt && PanelText(panel::yTilt) != yTilt; }));
        EXPECT_NE(PanelText(panel::xTilt), PanelText(panel::yTilt));
        Keep("09-slope");
    }

    void StartTheScan() {
        const std::string information = PanelText(panel::information);
        ClickPanel(panel::startScan);
        ASSERT_TRUE(Eventually([this] { return Fields().size() >= 4 && FrameLinesOnImage() > 0; }, patience));
        EXPECT_NE(PanelText(panel::information), information);
        Keep("10-scanning");
    }

    void StopTheScan() {
        ClickPanel(panel::stop);
        ASSERT_TRUE(Eventually([this] { return display.Shows(questionTitle); }));
        KeepWith(questionTitle, "11-stop-question");
        display.Activate(questionTitle);
        display.Keys({"Return"}); // Yes
        ASSERT_TRUE(Eventually([this] { return ReportSays(R"("end":"stopped")"); }));
        EXPECT_TRUE(Eventually([this] { return IsAbove(originX, originY); }));
        WaitUntilLive();
        EXPECT_EQ(PanelText(panel::positionX), originXText) << "back at the origin";
        Keep("12-stopped");
    }

    void LookAtTheImages() {
        for (const QJsonObject& field : Fields()) {
            const Position at = {field["x"].toDouble(), field["y"].toDouble(), field["z"].toDouble()};
            EXPECT_NEAR(at[2], FocusAt(at[0], at[1]), nearFocusUm + 1.0) << "Z follows the plane";
            for (const QJsonValue file : field["images"].toArray())
                EXPECT_EQ(ImageIn(file.toString().toStdString()).width, imageWidth);
        }
        const std::string detail = BestField()["images"].toArray().last().toString().toStdString();
        ASSERT_TRUE(detail.ends_with("detail.jpg")) << detail;
        const Picture image = ImageIn(detail);
        ASSERT_EQ(image.height, imageHeight);
        EXPECT_GT(ReddishPixels(image), fewestFramePixels);
        RunProgram("convert", {detail, (pictures / "13-detail-image.png").string()});
    }

    Settings ReadSettings() const {
        Settings settings;
        EXPECT_EQ(ReadSettingsLine(ReadText(ConfigFile()), settings), settingsFieldCount);
        return settings;
    }

    void ExitAndReadTheSettings() {
        for (const int edit : {panel::xRange, panel::yRange})
            rangeTexts.push_back(PanelText(edit));
        Exit();
        const Settings settings = ReadSettings();
        for (std::size_t c = 0; c < singleLayerContrast.size(); ++c)
            EXPECT_NEAR(settings.targetContrast[c], singleLayerContrast[c], 4.0) << c;
        EXPECT_NEAR(settings.contrastTolerance, 6.0, 2.0);
        EXPECT_EQ(settings.scoreThreshold, 35.0F);
        EXPECT_TRUE(ReadText(ConfigFile()).find(",3,2,100,4,35.000000") != std::string::npos)
            << ReadText(ConfigFile());
    }

    void FindTheSettingsAgain() {
        ASSERT_NO_FATAL_FAILURE(Start());
        ASSERT_NO_FATAL_FAILURE(WaitForTheWafer());
        EXPECT_EQ(PanelText(panel::xRange), rangeTexts[0]);
        EXPECT_EQ(PanelText(panel::yRange), rangeTexts[1]);
        ASSERT_NO_FATAL_FAILURE(OpenContrastDialog());
        for (std::size_t i = 0; i < rememberedEdits.size(); ++i)
            EXPECT_TRUE(Eventually([&] { return ContrastText(rememberedEdits[i]) == contrastTexts[i]; }))
                << rememberedEdits[i];
        Keep("14-settings-again");
        ClickContrast(contrast::done);
        ASSERT_TRUE(Eventually([this] { return !display.Shows(contrastTitle); }));
        Exit();
    }

    // What a scan leaves.

    bool ReportSays(const std::string& text) const {
        return ReadText(Path("report.json")).find(text) != std::string::npos;
    }

    std::vector<QJsonObject> Fields() const {
        std::vector<QJsonObject> fields;
        for (const QByteArray& line : QByteArray::fromStdString(ReadText(Path("report.json"))).split('\n')) {
            const QJsonObject field = QJsonDocument::fromJson(line).object();
            if (field.contains("field"))
                fields.push_back(field);
        }
        return fields;
    }

    /// The one with the most single layers.
    QJsonObject BestField() const {
        const std::vector<QJsonObject> fields = Fields();
        const auto best = std::ranges::max_element(
            fields, {}, [](const QJsonObject& field) { return field["found"].toInt(); });
        return best != fields.end() ? *best : QJsonObject();
    }

    static Picture ImageIn(const std::string& file) {
        const std::string bytes = ReadText(file);
        QtPictureFiles files;
        auto decoded = files.Decode({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
        const Picture* picture = std::get_if<Picture>(&decoded);
        return picture != nullptr ? *picture : Picture();
    }

    /// Near enough to red for lines that a JPEG file keeps.
    static int ReddishPixels(const Picture& image) {
        int count = 0;
        for (int y = 0; y < image.height; ++y)
            for (int x = 0; x < image.width; ++x)
                count += image.Pixel(x, y)[2] > 170 && image.Pixel(x, y)[1] < 90 ? 1 : 0;
        return count;
    }

    const std::filesystem::path pictures = screenshots / "walk";
    static constexpr int fewestLabelPixels = 50;
    static constexpr int fewestFramePixels = 100;
    static constexpr std::array<int, 5> rememberedEdits = {contrast::red, contrast::green, contrast::blue,
                                                           contrast::tolerance, contrast::scoreThreshold};
    std::string originXText;
    std::vector<std::string> contrastTexts;
    std::vector<std::string> rangeTexts;
};

TEST_F(OperatorWalk, GoesFromTheFirstLookToAScanAndFindsItsSettingsAgain) {
    ASSERT_NO_FATAL_FAILURE(StartAndSeeTheWafer());
    ASSERT_NO_FATAL_FAILURE(ProbeAFlake());
    ASSERT_NO_FATAL_FAILURE(SaveAnImage());
    ASSERT_NO_FATAL_FAILURE(WatchTheCandidates());
    ASSERT_NO_FATAL_FAILURE(TestNow());
    ASSERT_NO_FATAL_FAILURE(SetTheThreshold());
    ASSERT_NO_FATAL_FAILURE(LeaveTheContrastDialog());
    ASSERT_NO_FATAL_FAILURE(SetTheOrigin());
    ASSERT_NO_FATAL_FAILURE(FocusAtThreePlaces());
    ASSERT_NO_FATAL_FAILURE(WorkOutTheSlope());
    ASSERT_NO_FATAL_FAILURE(StartTheScan());
    ASSERT_NO_FATAL_FAILURE(StopTheScan());
    ASSERT_NO_FATAL_FAILURE(LookAtTheImages());
    ASSERT_NO_FATAL_FAILURE(ExitAndReadTheSettings());
    ASSERT_NO_FATAL_FAILURE(FindTheSettingsAgain());
}

class OperatorDialogs : public OperatorWalk {
protected:
    void KeepWindow(const std::string& title, const std::string& name) {
        display.WindowScreenshot(title, pictures / (name + ".png"));
    }

    /// Live images come between what the program draws: once there are new ones, a dialog is there as a
    /// whole.
    void OpenAndKeep(const std::string& entry, const std::string& title, const std::string& name) {
        Menu(entry);
        ASSERT_TRUE(Eventually([&] { return display.ActiveTitle() == title + "\n"; })) << title;
        WaitUntilLive();
        KeepWindow(title, name);
    }

    void CloseByKey(const char* key, const std::string& title) {
        display.Keys({key});
        ASSERT_TRUE(Eventually([&] { return !display.Shows(title); })) << title;
    }

    /// Of the image's pixels, those that are dark in green and blue.
    bool ShowsRedAlone() {
        const auto isRedAlone = [](const std::uint8_t* pixel) {
            return pixel[2] > 50 && pixel[1] == 0 && pixel[0] == 0;
        };
        return CountOnImage(isRedAlone) > imageWidth * imageHeight / 2;
    }

    /// As no camera sees anything: neighbouring pixels are alike.
    bool ShowsNoNoise() {
        const auto isLikeNext = [](const std::uint8_t* pixel) {
            return std::equal(pixel, pixel + 3, pixel + 4);
        };
        return CountOnImage(isLikeNext) > imageWidth * imageHeight / 10 * 9;
    }
};

TEST_F(OperatorDialogs, ShowTheMotorControllerTheStageAndThePort) {
    StartWithPopup();
    WaitForTheWafer();
    KeepWindow(popupTitle, "23-motor-controller");
    display.Close(popupTitle);
    ASSERT_TRUE(Eventually([this] { return !display.Shows(popupTitle); }));
    OpenAndKeep("Information", "About Tessaro", "22-about");
    CloseByKey("Return", "About Tessaro");
    OpenAndKeep("Setting XY stage", "XYZ stage configuration", "21-stage");
    CloseByKey("Escape", "XYZ stage configuration");
    OpenAndKeep("XY Stage Configuration", "XYZ stage Configuration", "20-port");
    Exit();
}

TEST_F(OperatorDialogs, ShowAChannelAndTheFittedBackground) {
    Start();
    WaitForTheWafer();
    FindImage();
    Menu("Red image");
    ASSERT_TRUE(Eventually([this] { return ShowsRedAlone(); }));
    Keep("24-channel");
    WaitUntilLive();
    Menu("Stop/Start Grabbing");
    Menu("BackGround fitting");
    ASSERT_TRUE(Eventually([this] { return ShowsNoNoise(); }));
    Keep("25-background");
    Exit();
}

} // namespace
} // namespace tessaro
