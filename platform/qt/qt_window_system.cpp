#include "platform/qt/qt_window_system.h"

#include "platform/qt/qt_child_control.h"
#include "platform/qt/qt_frame_view.h"
#include "platform/qt/qt_message_loop.h"
#include "platform/qt/qt_resource_dialog.h"
#include "platform/qt/qt_resources.h"
#include "platform/qt/qt_window_table.h"
#include "platform/whole_characters.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QIcon>
#include <QMainWindow>
#include <QPointer>

#include <algorithm>
#include <cmath>
#include <functional>
#include <map>
#include <utility>
#include <vector>

namespace tessaro {
namespace {

// What title and frame take of a window's size on an ordinary desktop, and what its menu takes at most; in
// pixels of the screen.
constexpr int frameAcross = 8;
constexpr int frameAndTitleDown = 39;
constexpr int highestMenuDown = 41;

class ClassWindow : public QMainWindow {
public:
    ClassWindow(QWidget* owner, Qt::WindowFlags flags, std::function<void()> closing)
        : QMainWindow(owner, flags), m_closing(std::move(closing)) {}

protected:
    /// Closing is a message like any other.
    void closeEvent(QCloseEvent* event) override {
        event->ignore();
        m_closing();
    }

    QMenu* createPopupMenu() override { return nullptr; }

private:
    std::function<void()> m_closing;
};

Qt::WindowFlags FlagsOf(WindowStyle style) {
    if (style == WindowStyle::Overlapped)
        return Qt::Window;
    return Qt::Tool | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint;
}

/// Descriptions count pixels of the screen, widgets count by the desktop's scale. A menu that is higher on
/// this desktop makes the window higher, and takes nothing away from what is drawn on.
void Place(QMainWindow& window, const WindowDescription& description) {
    const double ratio = window.devicePixelRatioF();
    const auto scaled = [ratio](int pixels) { return static_cast<int>(std::ceil(pixels / ratio)); };
    const int width = scaled(description.width - frameAcross);
    const int client = description.height - frameAndTitleDown;
    const int menu = window.menuWidget() != nullptr ? window.menuWidget()->heightForWidth(width) : 0;
    const QPoint position(qRound(description.x / ratio), qRound(description.y / ratio));
    window.setGeometry(
        QRect(position, QSize(width, std::max(scaled(client), scaled(client - highestMenuDown) + menu))));
    window.move(position);
}

} // namespace

struct QtWindowSystem::State {
    State(QtWindowTable& table, QtMessageLoop& loop) : windows(table), messages(loop) {}

    WindowHandle Make(const WindowDescription& description, const WindowClass& windowClass);
    void AddMenu(ClassWindow& window, int resource, WindowHandle handle);
    void Destroy(WindowHandle handle);
    void ForgetChildrenOf(WindowHandle parent);
    QWidget* Child(WindowHandle handle);
    void HideWithOwned(QWidget* widget);
    void DestroyOwned(WindowHandle handle);

    QtWindowTable& windows;
    QtMessageLoop& messages;
    std::map<std::string, WindowClass> classes;
    std::map<WindowHandle, QPointer<ClassWindow>> made;
    std::map<WindowHandle, WindowHandle> parents; // of controls
    std::vector<WindowHandle> beingDestroyed;
};

QtWindowSystem::QtWindowSystem(QtWindowTable& windows, QtMessageLoop& messages)
    : m_state(std::make_unique<State>(windows, messages)) {}

/// Nothing is sent any more: who answered the messages may be gone.
QtWindowSystem::~QtWindowSystem() {
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); // what went after the last message
    for (const auto& [handle, window] : m_state->made) {
        for (const WindowHandle owned : m_state->windows.OwnedBy(window)) {
            if (!m_state->made.contains(owned))
                m_state->DestroyOwned(owned);
        }
    }
    for (const auto& [handle, window] : m_state->made) {
        m_state->ForgetChildrenOf(handle);
        m_state->windows.Remove(handle);
    }
    for (const auto& [handle, window] : m_state->made)
        delete window;
}

bool QtWindowSystem::RegisterWindowClass(const WindowClass& windowClass) {
    return m_state->classes.emplace(windowClass.name, windowClass).second;
}

WindowHandle QtWindowSystem::MakeWindow(const WindowDescription& description) {
    const auto found = m_state->classes.find(description.className);
    return found != m_state->classes.end() ? m_state->Make(description, found->second) : WindowHandle::None;
}

WindowHandle QtWindowSystem::State::Make(const WindowDescription& description,
                                         const WindowClass& windowClass) {
    const QtWindowTable::Entry* owner = windows.Find(description.owner);
    const auto handleHolder = std::make_shared<WindowHandle>(WindowHandle::None);
    auto* window = new ClassWindow(owner != nullptr ? owner->widget : nullptr, FlagsOf(description.style),
                                   [this, handleHolder] {
                                       messages.Post({*handleHolder, MessageKind::Close});
                                   });
    window->setWindowTitle(QString::fromStdString(description.title));
    window->setWindowIcon(LoadIcon(windowClass.iconResource));
    WindowProcedure* procedure = windowClass.procedure;
    auto* view =
        new QtFrameView(window, [this, procedure, handleHolder](MessageKind kind, std::uint32_t parameter,
                                                                std::uint32_t position) {
            if (windows.Find(*handleHolder) != nullptr)
                procedure->HandleMessage({*handleHolder, kind, parameter, position});
        });
    view->onFirstPaint = [this, handleHolder] { messages.Post({*handleHolder, MessageKind::Paint}); };
    view->GrowTo(description.width, description.height); // the screen may be too small to show all of it
    window->setCentralWidget(view);
    const WindowHandle handle = windows.Add(
        {window, procedure, view, &view->Pixels(), [this, handleHolder] { Destroy(*handleHolder); }});
    *handleHolder = handle;
    made.emplace(handle, window);
    if (windowClass.menuResource != 0)
        AddMenu(*window, windowClass.menuResource, handle);
    Place(*window, description);
    if (description.style == WindowStyle::ToolPopup)
        window->setAttribute(Qt::WA_ShowWithoutActivating);
    procedure->HandleMessage({handle, MessageKind::Create});
    return handle;
}

void QtWindowSystem::State::AddMenu(ClassWindow& window, int resource, WindowHandle handle) {
    LoadMenu(resource, window);
    for (QAction* action : window.findChildren<QAction*>()) {
        const QVariant id = action->property("commandId");
        if (!id.isValid())
            continue;
        QObject::connect(action, &QAction::triggered, [this, handle, command = id.toUInt()] {
            messages.Post({handle, MessageKind::Command, command});
        });
    }
}

void QtWindowSystem::Show(WindowHandle window) {
    const QtMessageLoop::QtCall call(m_state->messages);
    if (const QtWindowTable::Entry* entry = m_state->windows.Find(window)) {
        entry->widget->show();
        QtResourceDialog::ShowWaiting(*entry->widget);
    }
}

void QtWindowSystem::Hide(WindowHandle window) {
    const QtMessageLoop::QtCall call(m_state->messages);
    if (const QtWindowTable::Entry* entry = m_state->windows.Find(window))
        entry->widget->hide();
}

void QtWindowSystem::Update(WindowHandle window) {
    const QtWindowTable::Entry* entry = m_state->windows.Find(window);
    const bool isWindow = entry != nullptr && m_state->made.contains(window);
    auto* view = isWindow ? static_cast<QtFrameView*>(entry->client) : nullptr;
    if (view == nullptr || !entry->widget->isVisible() || !std::exchange(view->onFirstPaint, nullptr))
        return;
    entry->procedure->HandleMessage({window, MessageKind::Paint});
}

void QtWindowSystem::Destroy(WindowHandle window) {
    if (!m_state->parents.contains(window))
        m_state->Destroy(window);
}

void QtWindowSystem::State::Destroy(WindowHandle handle) {
    const QtWindowTable::Entry* entry = windows.Find(handle);
    if (entry == nullptr ||
        std::find(beingDestroyed.begin(), beingDestroyed.end(), handle) != beingDestroyed.end())
        return;
    QWidget* widget = entry->widget;
    WindowProcedure* procedure = entry->procedure;
    beingDestroyed.push_back(handle);
    HideWithOwned(widget); // the procedure may dispatch messages for a while
    messages.ForgetInputOfHidden();
    procedure->HandleMessage({handle, MessageKind::Destroy});
    std::erase(beingDestroyed, handle);
    for (const WindowHandle owned : windows.OwnedBy(widget))
        DestroyOwned(owned);
    ForgetChildrenOf(handle);
    windows.Remove(handle);
    messages.Forget(handle);
    made.erase(handle);
    const QtMessageLoop::QtCall call(messages);
    widget->hide();
    widget->deleteLater(); // it may be in the middle of an event
}

/// Boxes and menus of the window, too. Hiding takes the focus away, whereupon one may go that is still to be
/// hidden.
void QtWindowSystem::State::HideWithOwned(QWidget* widget) {
    const QtMessageLoop::QtCall call(messages);
    const QWidgetList children = widget->findChildren<QWidget*>();
    const std::vector<QPointer<QWidget>> still(children.begin(), children.end());
    for (const QPointer<QWidget>& child : still) {
        if (!child.isNull() && child->isWindow())
            child->hide();
    }
    widget->hide();
}

/// A window or a dialog, unless another of them has taken it along.
void QtWindowSystem::State::DestroyOwned(WindowHandle handle) {
    if (const QtWindowTable::Entry* entry = windows.Find(handle)) {
        const auto destroy = entry->destroy;
        destroy();
    }
}

void QtWindowSystem::State::ForgetChildrenOf(WindowHandle parent) {
    for (const auto& [child, itsParent] : parents) {
        if (itsParent != parent)
            continue;
        windows.Remove(child);
        messages.Forget(child);
    }
    std::erase_if(parents, [&](const auto& child) { return child.second == parent; });
}

WindowHandle QtWindowSystem::MakeChild(WindowHandle parent, const ChildDescription& description) {
    const QtWindowTable::Entry* entry = m_state->windows.Find(parent);
    if (entry == nullptr || !m_state->made.contains(parent))
        return WindowHandle::None;
    QWidget* control = MakeChildControl(*entry->client, description);
    const WindowHandle handle = m_state->windows.Add({control, nullptr, control, nullptr, {}});
    m_state->parents.emplace(handle, parent);
    return handle;
}

QWidget* QtWindowSystem::State::Child(WindowHandle handle) {
    return parents.contains(handle) ? windows.Find(handle)->widget : nullptr;
}

void QtWindowSystem::SetChildText(WindowHandle child, const std::string& text) {
    const QtMessageLoop::QtCall call(m_state->messages);
    if (QWidget* control = m_state->Child(child))
        SetControlText(*control, text);
}

std::string QtWindowSystem::ChildText(WindowHandle child, std::size_t maximumBytes) {
    const QWidget* control = m_state->Child(child);
    return control != nullptr ? WholeCharacters(ControlText(*control), maximumBytes) : std::string();
}

void QtWindowSystem::SetTitle(WindowHandle window, const std::string& title) {
    if (const QtWindowTable::Entry* entry = m_state->windows.Find(window))
        entry->widget->setWindowTitle(QString::fromStdString(title));
}

void QtWindowSystem::SetKeyboardFocus(WindowHandle window) {
    const QtMessageLoop::QtCall call(m_state->messages);
    const QtWindowTable::Entry* entry = m_state->windows.Find(window);
    if (entry == nullptr || entry->client == nullptr || entry->client->hasFocus())
        return;
    // Other programs keep the keys until the operator turns to this one.
    if (QApplication::activeWindow() != nullptr)
        entry->widget->activateWindow();
    entry->client->setFocus();
}

bool QtWindowSystem::IsLeftButtonHeld() const {
    return QGuiApplication::mouseButtons().testFlag(Qt::LeftButton);
}

bool QtWindowSystem::LoadAccelerators(int resource) {
    return HasAccelerators(resource);
}

} // namespace tessaro
