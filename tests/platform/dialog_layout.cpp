#include "tests/platform/dialog_layout.h"

#include "tests/platform/operator_input.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFontMetrics>
#include <QGlyphRun>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollArea>
#include <QStyleOptionComboBox>
#include <QTextLayout>

#include <gtest/gtest.h>

#include <algorithm>

namespace tessaro::dialog_layout {
namespace {

int WidthOf(const QWidget& widget, const QString& text) {
    return widget.fontMetrics().horizontalAdvance(text);
}

/// As wide and as high as its text asks for.
void ExpectItsOwnSize(const QWidget& widget, const QString& text) {
    EXPECT_GE(widget.width(), widget.sizeHint().width()) << text.toStdString();
    EXPECT_GE(widget.height(), widget.sizeHint().height()) << text.toStdString();
}

void ExpectRoomForText(const QPushButton& button) {
    constexpr int besideText = 16;
    constexpr int aboveAndBelowText = 6;
    EXPECT_GE(button.width(), WidthOf(button, button.text()) + besideText) << button.text().toStdString();
    EXPECT_GE(button.height(), button.fontMetrics().height() + aboveAndBelowText)
        << button.text().toStdString();
}

void ExpectRoomForChoices(const QComboBox& box) {
    QStyleOptionComboBox option;
    option.initFrom(&box);
    const QRect field =
        box.style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, &box);
    for (int i = 0; i < box.count(); ++i)
        EXPECT_GE(field.width(), WidthOf(box, box.itemText(i))) << box.itemText(i).toStdString();
    EXPECT_GE(box.height(), box.minimumSizeHint().height());
}

void ExpectRoomForTexts(const QLineEdit& edit, const std::vector<std::string>& texts) {
    constexpr int frameAndMargins = 12;
    EXPECT_GE(edit.height(), edit.minimumSizeHint().height());
    for (const std::string& text : texts)
        EXPECT_GE(edit.width() - frameAndMargins, WidthOf(edit, QString::fromStdString(text)))
            << edit.objectName().toStdString() << ": " << text;
}

void ExpectNoneOverAnother(const QWidget& parent) {
    const auto children = parent.findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly);
    for (qsizetype i = 0; i < children.size(); ++i) {
        EXPECT_TRUE(parent.rect().contains(children[i]->geometry()))
            << children[i]->objectName().toStdString();
        for (qsizetype j = i + 1; j < children.size(); ++j)
            EXPECT_FALSE(children[i]->geometry().intersects(children[j]->geometry()))
                << children[i]->objectName().toStdString() << " and "
                << children[j]->objectName().toStdString();
    }
}

} // namespace

const WidestTexts& WidestTextsOf(int resource) {
    static const std::vector<std::string> position = {"-123456"};
    static const std::map<int, WidestTexts> texts = {
        {103, {}},
        {129,
         {{1003, {"-123.0"}},
          {1005, {"-123.0"}},
          {1006, {"-123.0"}},
          {1017, {"-123.00"}},
          {1018, {"-123.00"}},
          {1019, {"-123.00"}},
          {1020, {"-123.00"}},
          {1000, {"100000000"}},
          {1007, {"-12345.6"}},
          {1012, {"12345.6"}},
          {1015, {"123456.8"}}}},
        {130,
         {{1007, position},
          {1012, position},
          {1000, position},
          {1005, {"-123"}},
          {1006, {"-123"}},
          {1015, position}}},
        {137,
         {{1000, position},
          {1003, position},
          {1005, position},
          {1002, position},
          {1021, position},
          {1022, position},
          {1012, {"100"}},
          {1015, {"100"}},
          {1019, position},
          {1017, position},
          {1018, position},
          {1035, {"-0.1234"}},
          {1040, {"-0.1234"}},
          {1041, {"12345"}},
          {1006,
           {"Course Focusing step:90", "100% finished, 12.3 minute left", "Starting point is set here.",
            "Scanning has completed.", "Moving to Origin position.", "Course Focusing has started"}},
          {1007,
           {"time passed: 2000/2000", "ReadFile error: 2000/2000", "Focusing step:2-20",
            "Dist. to move 123456.0um", "Noise:123.4  Focus:12345.67"}},
          {1001, {"1234.567"}},
          {1020, {"1234.56"}},
          {1036, {"1234.56"}},
          {1037, {"1234.56"}},
          {1038, {"123456.78"}},
          {1039, {"1234.56"}}}},
        {141, {{1000, {"-123456"}}, {1003, {"-123456"}}, {1005, {"-123456"}}}}};
    return texts.at(resource);
}

const std::string& TitleOf(int resource) {
    static const std::map<int, std::string> titles = {{103, "About Tessaro"},
                                                      {129, "Color Contrast Configuration"},
                                                      {130, "XYZ stage configuration"},
                                                      {137, "Control Panel"},
                                                      {141, "XYZ stage Configuration"}};
    return titles.at(resource);
}

void EnlargeLetters(double factor) {
    QFont font = QApplication::font();
    font.setPointSizeF(font.pointSizeF() * factor);
    QApplication::setFont(font);
}

QRect Place(const QWidget& widget) {
    return {widget.mapTo(widget.window(), QPoint(0, 0)), widget.size()};
}

const QWidget* ControlOf(const QWidget& dialog, int controlId) {
    for (const QWidget* widget : dialog.findChildren<QWidget*>())
        if (widget->property("controlId").toInt() == controlId)
            return widget;
    return nullptr;
}

const QLabel* LabelOf(const QWidget& dialog, const std::string& text) {
    for (const QLabel* label : dialog.findChildren<QLabel*>())
        if (label->text().toStdString() == text)
            return label;
    return nullptr;
}

void ExpectThatNothingIsCutOff(const QWidget& dialog, const WidestTexts& widest) {
    for (const QLabel* label : dialog.findChildren<QLabel*>())
        ExpectItsOwnSize(*label, label->text());
    for (const QCheckBox* box : dialog.findChildren<QCheckBox*>())
        ExpectItsOwnSize(*box, box->text());
    for (const QRadioButton* button : dialog.findChildren<QRadioButton*>())
        ExpectItsOwnSize(*button, button->text());
    for (const QGroupBox* group : dialog.findChildren<QGroupBox*>())
        EXPECT_GE(group->width(), group->minimumSizeHint().width()) << group->title().toStdString();
    for (const QPushButton* button : dialog.findChildren<QPushButton*>())
        ExpectRoomForText(*button);
    for (const QComboBox* box : dialog.findChildren<QComboBox*>())
        ExpectRoomForChoices(*box);
    for (const auto& [id, texts] : widest) {
        const auto* edit = qobject_cast<const QLineEdit*>(ControlOf(dialog, id));
        ASSERT_NE(edit, nullptr) << id;
        ExpectRoomForTexts(*edit, texts);
    }
}

void ExpectThatNothingOverlaps(const QWidget& dialog) {
    ExpectNoneOverAnother(dialog);
    for (const QScrollArea* area : dialog.findChildren<QScrollArea*>())
        ExpectNoneOverAnother(*area->widget());
    for (const QGroupBox* group : dialog.findChildren<QGroupBox*>())
        ExpectNoneOverAnother(*group);
}

void ExpectThatOutputsLookLikeOutputs(const QWidget& dialog) {
    const QColor window = dialog.palette().color(QPalette::Active, QPalette::Window);
    const QColor text = dialog.palette().color(QPalette::Active, QPalette::WindowText);
    for (const QLineEdit* edit : dialog.findChildren<QLineEdit*>()) {
        const QPalette::ColorGroup group = edit->isEnabled() ? QPalette::Active : QPalette::Disabled;
        EXPECT_EQ(edit->palette().color(group, QPalette::Base) == window, edit->isReadOnly())
            << edit->objectName().toStdString();
        EXPECT_EQ(edit->palette().color(group, QPalette::Text), text) << edit->objectName().toStdString();
    }
}

std::vector<int> TabStops(QtMachine& machine) {
    const QWidget* first = QApplication::focusWidget();
    std::vector<int> stops;
    const QWidget* focused = first;
    constexpr std::size_t noEnd = 100;
    do {
        if (focused == nullptr)
            return stops;
        stops.push_back(focused->property("controlId").toInt());
        operator_input::Type(*focused, Qt::Key_Tab, Qt::NoModifier, QStringLiteral("\t"));
        machine.DispatchAll();
        focused = QApplication::focusWidget();
    } while (focused != first && stops.size() < noEnd);
    return stops;
}

bool HasLettersFor(const QString& text, const QFont& font) {
    QTextLayout layout(text, font);
    layout.beginLayout();
    layout.createLine();
    layout.endLayout();
    const QList<QGlyphRun> runs = layout.glyphRuns();
    return !runs.isEmpty() && std::none_of(runs.begin(), runs.end(), [](const QGlyphRun& run) {
        return run.glyphIndexes().contains(0);
    });
}

} // namespace tessaro::dialog_layout
