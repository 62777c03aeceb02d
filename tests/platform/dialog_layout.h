#pragma once

#include "tests/platform/qt_machine.h"

#include <QFont>
#include <QRect>
#include <QString>
#include <QWidget>

#include <array>
#include <map>
#include <ostream>
#include <string>
#include <vector>

class QLabel;

namespace tessaro::dialog_layout {

// What is asked of every dialog as it is laid out, on whatever desktop.

/// The widest texts that the program writes into each edit, or that are typed there; by the edit's id.
using WidestTexts = std::map<int, std::vector<std::string>>;

const WidestTexts& WidestTextsOf(int resource);
const std::string& TitleOf(int resource);

/// How large everything is on a desktop, and how large its letters are besides.
struct Desktop {
    const char* scale = "1";
    double letters = 1;

    friend std::ostream& operator<<(std::ostream& out, const Desktop& desktop) {
        return out << "scale " << desktop.scale << ", letters " << desktop.letters;
    }
};

inline constexpr std::array<Desktop, 5> desktops = {{{"1"}, {"1.25"}, {"1.5"}, {"1", 1.25}, {"1", 1.5}}};

/// While it is there, what is shown is shown on that desktop.
class DesktopScope {
public:
    explicit DesktopScope(const Desktop& desktop) { qputenv(variable, desktop.scale); }
    ~DesktopScope() { qunsetenv(variable); }
    DesktopScope(const DesktopScope&) = delete;
    DesktopScope& operator=(const DesktopScope&) = delete;

private:
    static constexpr const char* variable = "QT_SCALE_FACTOR";
};

void EnlargeLetters(double factor);

/// Within its window.
QRect Place(const QWidget& widget);

const QWidget* ControlOf(const QWidget& dialog, int controlId); // null when there is none
const QLabel* LabelOf(const QWidget& dialog, const std::string& text);

void ExpectThatNothingIsCutOff(const QWidget& dialog, const WidestTexts& widest);

/// Of the widgets that lie in the same one; and none reaches beyond it.
void ExpectThatNothingOverlaps(const QWidget& dialog);

/// Edits that only the program writes have the window's colour, the others have not.
void ExpectThatOutputsLookLikeOutputs(const QWidget& dialog);

/// The ids where the tab key leads, from where the focus is until it is there again.
std::vector<int> TabStops(QtMachine& machine);

/// Whether there is a letter for every character, and not the box that stands for a missing one.
bool HasLettersFor(const QString& text, const QFont& font);

} // namespace tessaro::dialog_layout
