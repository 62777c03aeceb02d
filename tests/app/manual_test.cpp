#include "tests/app/source_literals.h"

#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace tessaro {
namespace {

const std::filesystem::path root = TESSARO_SOURCE_FOLDER;
const std::string any = "…"; // what the manual writes for a number or a name

/// Whatever goes to the operator goes through one of these.
constexpr std::array<std::string_view, 15> speakers = {
    "ShowInformation(",     "ShowProgress(", "ShowError(",    "ShowWarning(", "AskYesNo(",
    "EndSearch(",           "FocusAt(",      "MoveByKey(",    "errors(",      "AddProblem(",
    "std::fprintf(stderr,", "std::printf(",  "PictureError{", "FolderError{", "OptionError{"};

std::string Text(const std::filesystem::path& file) {
    std::ifstream in(file);
    EXPECT_TRUE(in.is_open()) << file;
    return {std::istreambuf_iterator<char>(in), {}};
}

std::string Manual() {
    return Text(root / "docs/manual.md");
}

/// From its heading to the end: the reference tables stand last.
std::string ManualFrom(const std::string& heading) {
    const std::string manual = Manual();
    const std::size_t start = manual.find("\n## " + heading + "\n");
    EXPECT_NE(start, std::string::npos) << heading;
    return start != std::string::npos ? manual.substr(start) : "";
}

/// The operator's program: no tools, no tests, no fakes.
std::vector<std::string> Sources() {
    std::vector<std::string> sources;
    for (const char* folder : {"app", "camera", "imaging", "analysis", "stage", "focus", "scan",
                               "platform/qt", "platform/posix", "platform/standard"})
        for (const auto& entry : std::filesystem::directory_iterator(root / folder))
            if (entry.path().extension() == ".cpp" || entry.path().extension() == ".h")
                sources.push_back(Text(entry.path()));
    return sources;
}

std::vector<std::string> Split(const std::string& text, const std::string& by) {
    std::vector<std::string> pieces;
    std::size_t start = 0;
    for (std::size_t at = text.find(by); at != std::string::npos; at = text.find(by, start)) {
        pieces.push_back(text.substr(start, at - start));
        start = at + by.size();
    }
    pieces.push_back(text.substr(start));
    return pieces;
}

std::string Trimmed(const std::string& text) {
    static const std::regex ends("^ +| +$");
    return std::regex_replace(text, ends, "");
}

/// Lines of a literal as the manual writes them.
std::vector<std::string> LinesOf(const std::string& literal) {
    static const std::regex conversion("%[-+0-9.]*l?[dfgsu]");
    static const std::regex percent("%%");
    static const std::regex tab("\t");
    std::string text = std::regex_replace(literal, conversion, any);
    text = std::regex_replace(text, percent, "%");
    text = std::regex_replace(text, tab, "");
    return Split(text, "\n");
}

/// Of all literals of the sources, one to a line.
std::string AllTexts() {
    std::string texts;
    for (const std::string& source : Sources())
        for (const std::string& literal : SourceLiterals(source).All())
            for (const std::string& line : LinesOf(literal))
                texts += line + "\n";
    return texts;
}

std::set<std::string> TextsForTheOperator() {
    std::set<std::string> texts;
    for (const std::string& source : Sources())
        for (const std::string_view speaker : speakers)
            for (const std::string& literal : SourceLiterals(source).GivenTo(speaker))
                for (const std::string& line : LinesOf(literal))
                    texts.insert(Trimmed(line));
    texts.erase("");
    return texts;
}

std::vector<std::string> Matches(const std::string& text, const char* pattern) {
    const std::regex expression(pattern);
    std::vector<std::string> found;
    for (auto at = std::sregex_iterator(text.begin(), text.end(), expression); at != std::sregex_iterator();
         ++at)
        found.push_back((*at)[1]);
    return found;
}

/// What is to be pressed, checked or chosen.
std::set<std::string> ButtonsOf(const std::string& dialog) {
    std::set<std::string> buttons;
    for (const std::string& widget : Split(dialog, "<widget class="))
        for (const char* kind : {"\"QPushButton\"", "\"QCheckBox\"", "\"QRadioButton\""})
            if (widget.starts_with(kind))
                buttons.insert(Matches(widget, "<property name=\"text\">\\s*<string>([^<]*)</string>").at(0));
    return buttons;
}

/// What is written as code in the first cells of the tables of messages.
std::vector<std::string> ListedMessages() {
    std::vector<std::string> messages;
    const std::string tables = ManualFrom("When something goes wrong");
    for (const std::string& cell : Matches(tables, "\n\\|([^|\n]*)")) {
        const std::vector<std::string> found = Matches(cell, "`([^`]+)`");
        messages.insert(messages.end(), found.begin(), found.end());
    }
    return messages;
}

/// As a heading is linked to: small letters, and hyphens for spaces.
std::string AnchorOf(const std::string& heading) {
    static const std::regex dropped("[^a-z0-9_ -]");
    static const std::regex space(" ");
    std::string small = heading;
    for (char& letter : small)
        letter = letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
    return std::regex_replace(std::regex_replace(small, dropped, ""), space, "-");
}

std::set<std::string> AnchorsIn(const std::string& file) {
    std::set<std::string> anchors;
    for (const std::string& heading : Matches("\n" + Text(root / "docs" / file), "\n#+ ([^\n]+)"))
        anchors.insert(AnchorOf(heading));
    return anchors;
}

TEST(SourceLiterals, JoinThoseInARowAndLeaveCommentsOut) {
    const std::string source = "Say(\"one\" // \"two\"\n  \"three\\n\", '\"', 1'000, \"four \\\"five\\\"\");";
    EXPECT_EQ(SourceLiterals(source).All(), (std::vector<std::string>{"onethree\n", "four \"five\""}));
}

TEST(SourceLiterals, AreThoseInsideTheBracketsOfASpeaker) {
    const std::string source = "Say(a ? F(\"one\") : \"two\"); Other(\"three\"); Say(x); Say({\"four\"});";
    EXPECT_EQ(SourceLiterals(source).GivenTo("Say("), (std::vector<std::string>{"one", "two", "four"}));
}

TEST(Manual, NamesEveryMenuAndEveryEntry) {
    const std::string table = ManualFrom("Every menu entry");
    const std::string menu = Text(root / "resources/menu_109.ui");
    std::vector<std::string> names = Matches(menu, "<property name=\"text\">\\s*<string>([^<]*)</string>");
    const std::vector<std::string> titles =
        Matches(menu, "<property name=\"title\">\\s*<string>([^<]*)</string>");
    ASSERT_EQ(names.size(), 25U);
    ASSERT_EQ(titles.size(), 6U);
    names.insert(names.end(), titles.begin(), titles.end());
    for (const std::string& name : names) {
        const std::string shown = std::regex_replace(name, std::regex("&amp;"), "");
        EXPECT_NE(table.find('"' + shown + '"'), std::string::npos) << shown;
    }
}

TEST(Manual, NamesEveryButtonOfTheDialogs) {
    const std::string manual = Manual();
    std::set<std::string> buttons;
    for (const auto& entry : std::filesystem::directory_iterator(root / "resources"))
        if (entry.path().extension() == ".ui")
            buttons.merge(ButtonsOf(Text(entry.path())));
    ASSERT_GT(buttons.size(), 30U);
    for (const std::string& button : buttons)
        EXPECT_NE(manual.find('"' + button + '"'), std::string::npos) << button;
}

TEST(Manual, ListsMessagesThatTheProgramHas) {
    const std::string texts = AllTexts();
    const std::vector<std::string> messages = ListedMessages();
    ASSERT_GT(messages.size(), 100U);
    for (const std::string& message : messages)
        for (const std::string& piece : Split(message, any))
            EXPECT_NE(texts.find(piece), std::string::npos) << message;
}

TEST(Manual, HasEveryTextThatGoesToTheOperator) {
    const std::string tables = ManualFrom("When something goes wrong");
    const std::set<std::string> texts = TextsForTheOperator();
    ASSERT_GT(texts.size(), 70U);
    for (const std::string& text : texts)
        EXPECT_NE(tables.find(text), std::string::npos) << text;
}

TEST(Manual, ShowsPicturesThatAreThere) {
    const std::vector<std::string> pictures = Matches(Manual(), "!\\[[^\\]]+\\]\\(([^)]+)\\)");
    ASSERT_GE(pictures.size(), 20U);
    for (const std::string& picture : pictures)
        EXPECT_TRUE(std::filesystem::is_regular_file(root / "docs" / picture)) << picture;
}

TEST(Manual, LinksToFilesThatAreThere) {
    const std::vector<std::string> files = Matches(Manual(), "[^!]\\[[^\\]]+\\]\\(([^)#]+)");
    ASSERT_FALSE(files.empty());
    for (const std::string& file : files)
        EXPECT_TRUE(std::filesystem::is_regular_file(root / "docs" / file)) << file;
}

TEST(Manual, LinksToHeadingsThatAreThere) {
    const std::regex link("\\]\\(([^)#]*)#([^)]+)\\)");
    const std::string manual = Manual();
    auto at = std::sregex_iterator(manual.begin(), manual.end(), link);
    ASSERT_NE(at, std::sregex_iterator());
    for (; at != std::sregex_iterator(); ++at) {
        const std::string file = (*at)[1].length() > 0 ? (*at)[1].str() : "manual.md";
        EXPECT_TRUE(AnchorsIn(file).contains((*at)[2])) << at->str();
    }
}

} // namespace
} // namespace tessaro
