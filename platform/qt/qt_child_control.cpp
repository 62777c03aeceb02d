#include "platform/qt/qt_child_control.h"

#include <QLabel>
#include <QLineEdit>

namespace tessaro {
namespace {

constexpr double fontPixels = 11.0; // of the screen, as the texts that are drawn beside the controls
constexpr double pointsPerInch = 72.0;

/// The area behind the controls is white on every desktop, a dark one included.
constexpr const char* labelStyle = "color: black; background: transparent;";
constexpr const char* editStyle =
    "QLineEdit { color: black; background: white; border: 1px solid #707070; padding: 0px; }"
    "QLineEdit:focus { border-color: #0060C0; }";

QWidget* MakeControl(QWidget& client, ChildKind kind) {
    if (kind == ChildKind::Edit) {
        auto* edit = new QLineEdit(&client);
        edit->setStyleSheet(QString::fromLatin1(editStyle));
        return edit;
    }
    auto* label = new QLabel(&client);
    label->setTextFormat(Qt::PlainText);
    label->setStyleSheet(QString::fromLatin1(labelStyle));
    label->setAttribute(Qt::WA_TransparentForMouseEvents);
    return label;
}

} // namespace

QWidget* MakeChildControl(QWidget& client, const ChildDescription& description) {
    QWidget* control = MakeControl(client, description.kind);
    const double ratio = client.devicePixelRatioF();
    QFont font = control->font();
    font.setPointSizeF(fontPixels / ratio * pointsPerInch / client.logicalDpiY());
    control->setFont(font);
    const auto scaled = [ratio](int pixels) { return qRound(pixels / ratio); };
    control->setGeometry(scaled(description.x), scaled(description.y), scaled(description.width),
                         scaled(description.height));
    SetControlText(*control, description.text);
    control->show();
    return control;
}

void SetControlText(QWidget& control, const std::string& text) {
    const QString shown = QString::fromStdString(text);
    if (auto* edit = qobject_cast<QLineEdit*>(&control))
        edit->setText(shown);
    else if (auto* label = qobject_cast<QLabel*>(&control))
        label->setText(shown);
}

std::string ControlText(const QWidget& control) {
    if (const auto* edit = qobject_cast<const QLineEdit*>(&control))
        return edit->text().toStdString();
    const auto* label = qobject_cast<const QLabel*>(&control);
    return label != nullptr ? label->text().toStdString() : std::string();
}

} // namespace tessaro
