#include "platform/qt/qt_resource_dialog.h"

#include "platform/qt/qt_resources.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QCloseEvent>
#include <QComboBox>
#include <QFontInfo>
#include <QKeyEvent>
#include <QLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QScreen>
#include <QScrollArea>
#include <QStyle>

#include <algorithm>
#include <cmath>
#include <utility>

namespace tessaro {
namespace {

// Leaves the motor controller's window, which reaches over the main window's edge, uncovered.
constexpr int gapBesideOwner = 66;

constexpr int designedLetters = 12;   // pixels of the letters that the resources are drawn for
constexpr QSize roomForFrame(10, 40); // as window managers draw it around a dialog
constexpr int lowestScrollArea = 100;

/// What only the program writes looks so, and can be read even where it is disabled.
void ShowAsOutput(QLineEdit& edit) {
    QPalette palette = edit.palette();
    for (const auto group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
        palette.setColor(group, QPalette::Base, palette.color(QPalette::Active, QPalette::Window));
        palette.setColor(group, QPalette::Text, palette.color(QPalette::Active, QPalette::WindowText));
    }
    edit.setPalette(palette);
}

} // namespace

QtResourceDialog::QtResourceDialog(int resource, QWidget* owner)
    : QDialog(owner, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowSystemMenuHint |
                         Qt::WindowCloseButtonHint),
      m_loaded(LoadDialog(resource, *this)) {
    GrowWithLetters();
    for (QWidget* control : findChildren<QWidget*>()) {
        if (const QVariant id = control->property("controlId"); id.isValid())
            Watch(control, id.toInt());
    }
    FitInto((owner != nullptr ? owner : this)->screen()->availableSize() - roomForFrame);
}

QWidget* QtResourceDialog::Control(int controlId) const {
    const auto found = m_controls.find(controlId);
    return found != m_controls.end() ? found->second : nullptr;
}

void QtResourceDialog::ShowAboveOwner() {
    m_waitsForOwner = !isModal() && parentWidget() != nullptr && !parentWidget()->isVisible();
    if (m_waitsForOwner)
        return;
    GiveKeysToFirst();
    show();
}

/// As if the Tab key had led there: a text is selected. Of radio buttons it is the one that is checked.
void QtResourceDialog::GiveKeysToFirst() {
    QWidget* first = nextInFocusChain();
    while (first != this && ((first->focusPolicy() & Qt::TabFocus) == 0 || !first->isEnabled()))
        first = first->nextInFocusChain();
    if (qobject_cast<QRadioButton*>(first) != nullptr) {
        for (QRadioButton* button : first->parentWidget()->findChildren<QRadioButton*>())
            first = button->isChecked() ? button : first;
    }
    first->setFocus(Qt::TabFocusReason);
}

void QtResourceDialog::ShowWaiting(const QWidget& owner) {
    for (QDialog* child : owner.findChildren<QDialog*>(QString(), Qt::FindDirectChildrenOnly)) {
        auto* dialog = dynamic_cast<QtResourceDialog*>(child);
        if (dialog == nullptr || !std::exchange(dialog->m_waitsForOwner, false))
            continue;
        dialog->setAttribute(Qt::WA_ShowWithoutActivating);
        dialog->show();
    }
}

void QtResourceDialog::Watch(QWidget* control, int controlId) {
    m_controls.emplace(controlId, control);
    if (auto* button = qobject_cast<QAbstractButton*>(control)) {
        connect(button, &QAbstractButton::clicked, this,
                [this, controlId] { Report(controlId, Notification::Clicked); });
    } else if (auto* edit = qobject_cast<QLineEdit*>(control)) {
        connect(edit, &QLineEdit::textChanged, this,
                [this, controlId] { Report(controlId, Notification::TextChanged); });
        edit->installEventFilter(this);
        if (edit->isReadOnly())
            ShowAsOutput(*edit);
    } else if (auto* combo = qobject_cast<QComboBox*>(control)) {
        connect(combo, &QComboBox::activated, this,
                [this, controlId] { Report(controlId, Notification::SelectionChanged); });
        combo->installEventFilter(this);
        combo->view()->setProperty("controlId", controlId);
        combo->view()->installEventFilter(this);
    }
}

/// On a desktop with larger letters than those of the resources everything is larger.
void QtResourceDialog::GrowWithLetters() {
    const double factor = static_cast<double>(QFontInfo(font()).pixelSize()) / designedLetters;
    if (factor <= 1)
        return;
    const auto grown = [factor](int pixels) { return static_cast<int>(std::ceil(pixels * factor)); };
    for (QWidget* widget : findChildren<QWidget*>())
        widget->setMinimumSize(grown(widget->minimumWidth()), grown(widget->minimumHeight()));
    resize(grown(width()), grown(height()));
}

/// As high as its contents need and the screen allows.
void QtResourceDialog::FitInto(const QSize& available) {
    auto* area = findChild<QScrollArea*>();
    if (area == nullptr)
        return;
    for (QLayout* part : findChildren<QLayout*>())
        part->invalidate(); // the area has asked for sizes before there were texts
    const QSize contents = area->widget()->minimumSizeHint();
    area->setMinimumSize(contents);
    const QSize whole = size().expandedTo(layout()->totalMinimumSize());
    area->setMinimumSize(contents.width() + style()->pixelMetric(QStyle::PM_ScrollBarExtent),
                         lowestScrollArea);
    resize(whole.boundedTo(available).expandedTo(layout()->totalMinimumSize()));
}

/// Focus that comes and goes, lists that open and close.
bool QtResourceDialog::eventFilter(QObject* watched, QEvent* event) {
    const int controlId = watched->property("controlId").toInt();
    const bool list = qobject_cast<QAbstractItemView*>(watched) != nullptr;
    switch (event->type()) {
    case QEvent::FocusIn:
        if (!list)
            Report(controlId, Notification::FocusGained);
        break;
    case QEvent::FocusOut:
        if (!list)
            Report(controlId, Notification::FocusLost);
        break;
    case QEvent::Show:
        if (list)
            Report(controlId, Notification::ListOpened);
        break;
    case QEvent::Hide:
        if (list)
            Report(controlId, Notification::ListClosed);
        break;
    default:
        break;
    }
    return QDialog::eventFilter(watched, event);
}

void QtResourceDialog::Report(int controlId, Notification notification) const {
    if (m_handler && !m_silent)
        m_handler(controlId, notification);
}

/// In a dialog that stands beside the others no key is a command: Escape would take the status lines away,
/// and Enter start the last operation once more.
void QtResourceDialog::keyPressEvent(QKeyEvent* event) {
    if (!isModal()) {
        event->accept();
        return;
    }
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        PressEnter();
        break;
    case Qt::Key_Escape:
        Report(commandCancel, Notification::Clicked);
        break;
    default:
        QDialog::keyPressEvent(event);
        break;
    }
}

/// The button that has the focus, else the default button, else the OK command without a button.
void QtResourceDialog::PressEnter() {
    if (auto* focused = qobject_cast<QPushButton*>(focusWidget())) {
        focused->click();
        return;
    }
    const QList<QPushButton*> buttons = findChildren<QPushButton*>();
    const auto standard = std::find_if(buttons.begin(), buttons.end(),
                                       [](const QPushButton* button) { return button->isDefault(); });
    if (standard != buttons.end())
        (*standard)->click();
    else
        Report(commandOk, Notification::Clicked);
}

void QtResourceDialog::closeEvent(QCloseEvent* event) {
    event->ignore();
    Report(commandCancel, Notification::Clicked);
}

/// With its frame, which it has not got yet: that of the other window.
QRect QtResourceDialog::PlaceRightOf(const QWidget& neighbour) {
    const QRect screen = neighbour.screen()->availableGeometry();
    const QRect taken = neighbour.frameGeometry();
    const QSize frame = taken.size() - neighbour.size();
    const int room = screen.right() - taken.right() - frame.width();
    if (findChild<QScrollArea*>() != nullptr && width() > room)
        resize(std::max(room, minimumSizeHint().width()), height());
    const QSize withFrame = size() + frame;
    const int left = std::min(taken.right() + 1 + gapBesideOwner, screen.right() + 1 - withFrame.width());
    return {QPoint(left, taken.top()), withFrame};
}

void QtResourceDialog::MoveTo(QRect place, const QWidget& neighbour) {
    const QRect screen = neighbour.screen()->availableGeometry();
    if (place.bottom() > screen.bottom())
        place.moveCenter(neighbour.frameGeometry().center());
    move(std::max(screen.left(), place.left()), std::max(screen.top(), place.top()));
}

void QtResourceDialog::PlaceBeside(const QWidget& neighbour) {
    QRect place = PlaceRightOf(neighbour);
    for (const QDialog* other : neighbour.findChildren<QDialog*>(QString(), Qt::FindDirectChildrenOnly)) {
        const QRect covered = other->frameGeometry();
        if (other != this && other->isVisible() && covered.intersects(place))
            place.moveTop(covered.bottom() + 1);
    }
    MoveTo(place, neighbour);
}

void QtResourceDialog::PlaceOverOthersBeside(const QWidget& neighbour) {
    MoveTo(PlaceRightOf(neighbour), neighbour);
}

} // namespace tessaro
