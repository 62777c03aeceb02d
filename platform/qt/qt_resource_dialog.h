#pragma once

#include "platform/dialogs.h"

#include <QDialog>

#include <functional>
#include <map>

namespace tessaro {

/// A dialog of the resources. It never closes by itself: the close button is a command, and in a modal dialog
/// Enter and Escape are. Where the screen is too small for it, what lies in its scroll area is scrolled.
class QtResourceDialog : public QDialog {
public:
    using CommandHandler = std::function<void(int controlId, Notification)>;

    /// Lays the dialog out; commands are reported once the handler is set.
    QtResourceDialog(int resource, QWidget* owner);

    bool IsLoaded() const { return m_loaded; }
    QWidget* Control(int controlId) const; // null when there is none
    void SetHandler(CommandHandler handler) { m_handler = std::move(handler); }

    /// Shows it; a modeless one whose owner is still hidden not before ShowWaiting: a window manager keeps a
    /// dialog above an owner only if it knew the owner first.
    void ShowAboveOwner();

    /// The dialogs that wait for this window, which is shown now. The keys stay with it.
    static void ShowWaiting(const QWidget& owner);

    /// No command is reported any more.
    void Silence() { m_silent = true; }

    /// To the right of its owner as far as the screen reaches, narrower where that helps, below a dialog that
    /// stands there already. Where the screen ends before that, over the middle of the owner.
    void PlaceBeside(const QWidget& neighbour);

    /// The same without regard to other dialogs, which wait while this one is there.
    void PlaceOverOthersBeside(const QWidget& neighbour);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void GiveKeysToFirst();
    void Watch(QWidget* control, int controlId);
    void GrowWithLetters();
    void FitInto(const QSize& available);
    QRect PlaceRightOf(const QWidget& neighbour);
    void MoveTo(QRect place, const QWidget& neighbour);
    void Report(int controlId, Notification notification) const;
    void PressEnter();

    std::map<int, QWidget*> m_controls;
    CommandHandler m_handler;
    bool m_silent = false;
    bool m_waitsForOwner = false;
    bool m_loaded = false;
};

} // namespace tessaro
