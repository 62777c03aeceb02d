#include "platform/qt/qt_message_loop.h"

#include "platform/qt/qt_frame_view.h"
#include "platform/qt/qt_window_table.h"

#include <QAbstractEventDispatcher>
#include <QApplication>
#include <QElapsedTimer>
#include <QKeyEvent>
#include <QMenu>
#include <QMenuBar>
#include <QMouseEvent>
#include <QPointer>
#include <QThread>
#include <QTimer>
#include <QWheelEvent>
#include <QWindow>

#include <algorithm>
#include <deque>
#include <functional>
#include <limits>
#include <map>
#include <optional>
#include <utility>

// Has menus and other shortcuts look at a key before its window gets it; true when one of them took it. Qt
// exports it for programs that make key events of their own, and declares it for its test library only.
Q_GUI_EXPORT bool qt_sendShortcutOverrideEvent(QObject* receiver, ulong timestamp, int key,
                                               Qt::KeyboardModifiers modifiers, const QString& text,
                                               bool autoRepeat, ushort count);

namespace tessaro {
namespace {

constexpr int notCapturing = -1;
constexpr std::size_t deepestNesting = 64; // messages that may be in dispatch at once

bool IsInput(QEvent::Type type) {
    switch (type) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseMove:
    case QEvent::Wheel:
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
        return true;
    default:
        return false;
    }
}

QWidget* TopLevelOf(const QObject* window) {
    const QWidgetList all = QApplication::topLevelWidgets();
    const auto found = std::find_if(all.begin(), all.end(),
                                    [&](const QWidget* widget) { return widget->windowHandle() == window; });
    return found != all.end() ? *found : nullptr;
}

/// While a menu is open every press is the menu's.
bool IsClientPosition(const QWidget& topLevel, QPoint position) {
    if (qobject_cast<QMenu*>(QApplication::activePopupWidget()) != nullptr)
        return false;
    const QWidget* child = topLevel.childAt(position);
    return qobject_cast<const QMenuBar*>(child) == nullptr;
}

/// What becomes of mouse and keys while Qt works.
enum class Input { Captured, Delivered };

using EventMaker = std::function<std::unique_ptr<QEvent>()>;

struct Waiting {
    Message message;
    QEvent::Type type = QEvent::None; // None: no event of Qt's
    EventMaker makeEvent;             // once more, to be delivered
    QPointer<QObject> receiver;
    EventMaker makeDoubleClick = {}; // follows a press that is the second of two
    EventMaker makeRelease = {};     // of the button that a press has pressed
    std::uint64_t dialogsBefore = 0; // dialogMessages when it was taken
};

/// Copies of a mouse event share its position with the mouse, which moves on while they wait: so it is made
/// anew.
EventMaker MakerOf(const QMouseEvent& event) {
    return [type = event.type(), position = event.position(), scene = event.scenePosition(),
            global = event.globalPosition(), button = event.button(), buttons = event.buttons(),
            modifiers = event.modifiers(), device = event.pointingDevice(), time = event.timestamp()] {
        auto made =
            std::make_unique<QMouseEvent>(type, position, scene, global, button, buttons, modifiers, device);
        made->setTimestamp(time);
        return made;
    };
}

EventMaker ReleaseMakerOf(const QMouseEvent& press) {
    return [position = press.position(), scene = press.scenePosition(), global = press.globalPosition(),
            button = press.button(), buttons = press.buttons() & ~Qt::MouseButtons(press.button()),
            modifiers = press.modifiers(), device = press.pointingDevice()] {
        return std::make_unique<QMouseEvent>(QEvent::MouseButtonRelease, position, scene, global, button,
                                             buttons, modifiers, device);
    };
}

EventMaker MakerOf(const QWheelEvent& event) {
    return [position = event.position(), global = event.globalPosition(), pixels = event.pixelDelta(),
            angle = event.angleDelta(), buttons = event.buttons(), modifiers = event.modifiers(),
            phase = event.phase(), inverted = event.inverted(), time = event.timestamp()] {
        auto made = std::make_unique<QWheelEvent>(position, global, pixels, angle, buttons, modifiers, phase,
                                                  inverted);
        made->setTimestamp(time);
        return made;
    };
}

EventMaker MakerOf(const QEvent& event) {
    if (const auto* mouse = dynamic_cast<const QMouseEvent*>(&event))
        return MakerOf(*mouse);
    if (const auto* wheel = dynamic_cast<const QWheelEvent*>(&event))
        return MakerOf(*wheel);
    return [copy = std::shared_ptr<QEvent>(event.clone())] { return std::unique_ptr<QEvent>(copy->clone()); };
}

/// Calls back for every event of the application.
class EventTap : public QObject {
public:
    template<typename Callback>
    explicit EventTap(Callback callback) : m_callback(std::move(callback)) {}

    bool eventFilter(QObject* receiver, QEvent* event) override { return m_callback(receiver, event); }

private:
    std::function<bool(QObject*, QEvent*)> m_callback;
};

} // namespace

struct QtMessageLoop::State {
    explicit State(QtWindowTable& table)
        : windows(table), tap([this](QObject* receiver, QEvent* event) { return Capture(receiver, event); }) {
        wakeUp.setSingleShot(true);
        wakeUp.setTimerType(Qt::PreciseTimer);
        QCoreApplication::instance()->installEventFilter(&tap);
    }

    /// True keeps the event from its window for now.
    bool Capture(QObject* receiver, QEvent* event) {
        if (event->type() == QEvent::ShortcutOverride)
            return KeepFromShortcuts(*event);
        if (!receiver->isWindowType() || !IsInput(event->type()) || event == dispatching)
            return false;
        // A loop of Qt's own (a drag) wants its events at once.
        if (QThread::currentThread()->loopLevel() != loopLevel)
            return false;
        QWidget* topLevel = TopLevelOf(receiver);
        if (topLevel == nullptr)
            return false;
        const bool follows = !queue.empty() && queue.back().receiver == receiver;
        if (event->type() == QEvent::MouseButtonDblClick && follows &&
            queue.back().type == QEvent::MouseButtonPress) {
            // Qt reports the second press once more as what it is.
            queue.back().makeDoubleClick = MakerOf(*event);
            return true;
        }
        if (event->type() == QEvent::MouseMove && follows && queue.back().type == QEvent::MouseMove)
            queue.pop_back(); // only the latest position matters
        Waiting waiting{MessageOf(*topLevel, *event), event->type(), MakerOf(*event), receiver};
        if (event->type() == QEvent::MouseButtonPress) {
            waiting.makeRelease = ReleaseMakerOf(static_cast<const QMouseEvent&>(*event));
        }
        Enqueue(std::move(waiting));
        return true;
    }

    /// Shortcuts would take a key as soon as Qt sees it, before what came earlier and waits in the queue: a
    /// menu that is opened by a key would hear of the keys before it. Accepted here, it comes as an ordinary
    /// key.
    bool KeepFromShortcuts(QEvent& event) const {
        if (offeringToShortcuts || QThread::currentThread()->loopLevel() != loopLevel)
            return false;
        event.accept();
        return true;
    }

    /// A key that is delivered is the shortcuts' first, as it would be from Qt.
    bool TakenByShortcut(const QEvent& event) {
        if (event.type() != QEvent::KeyPress || QGuiApplication::focusObject() == nullptr)
            return false;
        const auto& key = static_cast<const QKeyEvent&>(event);
        const bool outer = std::exchange(offeringToShortcuts, true);
        const bool isShortcut = qt_sendShortcutOverrideEvent(
            QGuiApplication::focusObject(), static_cast<ulong>(key.timestamp()), key.key(), key.modifiers(),
            key.text(), key.isAutoRepeat(), static_cast<ushort>(key.count()));
        offeringToShortcuts = outer;
        return isShortcut;
    }

    Message MessageOf(const QWidget& topLevel, const QEvent& event) {
        Message message;
        message.window = windows.HandleOf(&topLevel);
        if (event.type() == QEvent::KeyPress) {
            const auto& keyEvent = static_cast<const QKeyEvent&>(event);
            message.window = HandleWithin(topLevel, topLevel.focusWidget());
            message.kind = MessageKind::KeyDown;
            message.parameter = VirtualKey(keyEvent.key());
        }
        if (const bool press = event.type() == QEvent::MouseButtonPress;
            press || event.type() == QEvent::MouseButtonRelease || event.type() == QEvent::MouseMove) {
            const auto& mouse = static_cast<const QMouseEvent&>(event);
            const QPoint position = mouse.position().toPoint();
            message.window = TakerOf(mouse, topLevel);
            message.position = PositionInClient(topLevel, message.window, position);
            if (event.type() == QEvent::MouseMove)
                message.kind = MessageKind::MouseMove;
            else if (mouse.button() == Qt::LeftButton && (!press || IsClientPosition(topLevel, position)))
                message.kind = press ? MessageKind::LeftButtonPress : MessageKind::LeftButtonRelease;
        }
        return message;
    }

    /// What was pressed gets the mouse until all buttons are let go, wherever it is then.
    WindowHandle TakerOf(const QMouseEvent& mouse, const QWidget& topLevel) {
        const bool firstPress =
            mouse.type() == QEvent::MouseButtonPress && mouse.buttons() == Qt::MouseButtons(mouse.button());
        const bool nothingHeld = mouse.type() == QEvent::MouseMove && mouse.buttons() == Qt::NoButton;
        if (firstPress || nothingHeld || !IsWithin(topLevel, pressed))
            pressed = HandleWithin(topLevel, topLevel.childAt(mouse.position().toPoint()));
        const WindowHandle taker = pressed;
        if (mouse.buttons() == Qt::NoButton)
            pressed = WindowHandle::None;
        return taker;
    }

    bool IsWithin(const QWidget& topLevel, WindowHandle handle) const {
        const QtWindowTable::Entry* entry = windows.Find(handle);
        return entry != nullptr && entry->widget != nullptr && entry->widget->window() == &topLevel;
    }

    /// Of the control that the widget is, or else of the window.
    WindowHandle HandleWithin(const QWidget& topLevel, const QWidget* widget) const {
        return windows.HandleOf(widget != nullptr ? widget : &topLevel);
    }

    std::uint32_t PositionInClient(const QWidget& topLevel, WindowHandle handle, QPoint position) {
        const QtWindowTable::Entry* entry = windows.Find(handle);
        const QPoint inClient = entry != nullptr && entry->client != nullptr
                                    ? entry->client->mapFrom(&topLevel, position)
                                    : position;
        const QPointF pixels = QPointF(inClient) * topLevel.devicePixelRatioF();
        return PackPosition(qRound(pixels.x()), qRound(pixels.y()));
    }

    void Enqueue(Waiting waiting) {
        waiting.message.token = ++lastToken;
        queue.push_back(std::move(waiting));
    }

    bool TakeFront(Message& message) {
        if (queue.empty())
            return false;
        message = queue.front().message;
        if (queue.front().type != QEvent::None) {
            queue.front().dialogsBefore = dialogMessages;
            taken.push_back(std::move(queue.front()));
        }
        queue.pop_front();
        if (taken.size() > deepestNesting)
            taken.pop_front(); // that one was kept from its window
        return true;
    }

    /// The oldest that is none of the operator's input.
    bool TakePosted(Message& message) {
        const auto posted = std::find_if(queue.begin(), queue.end(),
                                         [](const Waiting& waiting) { return waiting.type == QEvent::None; });
        if (posted == queue.end())
            return false;
        message = posted->message;
        queue.erase(posted);
        return true;
    }

    /// What waits in the queue goes before input that Qt has not delivered yet.
    template<typename Take>
    bool Wait(Take take) {
        LetQtWork(queue.empty() ? QEventLoop::AllEvents : QEventLoop::ExcludeUserInputEvents,
                  Input::Delivered);
        while (!take()) {
            if (quitting)
                return false;
            LetQtWork(QEventLoop::WaitForMoreEvents, Input::Delivered);
        }
        return true;
    }

    void LetQtWork(QEventLoop::ProcessEventsFlags flags, Input input) {
        const int ours = input == Input::Captured ? QThread::currentThread()->loopLevel() : notCapturing;
        const int outerLevel = std::exchange(loopLevel, ours);
        ++insideQt;
        QCoreApplication::processEvents(flags);
        --insideQt;
        loopLevel = outerLevel;
        // Without a loop of Qt's own running, what was told to delete itself would wait for ever. Nothing of
        // Qt's is in the middle of an event now.
        if (insideQt == 0)
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    void Deliver(QObject* receiver, const EventMaker& makeEvent) {
        const std::unique_ptr<QEvent> event = makeEvent();
        const QEvent* outer = std::exchange(dispatching, event.get());
        ++insideQt;
        if (!TakenByShortcut(*event))
            QCoreApplication::sendEvent(receiver, event.get());
        --insideQt;
        dispatching = outer;
    }

    /// A question about the press keeps the window from hearing that the button was let go meanwhile.
    bool ReleaseWasLost(const Waiting& press) const {
        return press.dialogsBefore != dialogMessages &&
               std::none_of(queue.begin(), queue.end(), [&](const Waiting& waiting) {
                   return waiting.type == QEvent::MouseButtonRelease && waiting.receiver == press.receiver;
               });
    }

    bool TickWaits(WindowHandle window, std::uint32_t id) const {
        return std::any_of(queue.begin(), queue.end(), [&](const Waiting& waiting) {
            return waiting.message.kind == MessageKind::Timer && waiting.message.window == window &&
                   waiting.message.parameter == id;
        });
    }

    void RemoveTicks(WindowHandle window, std::optional<std::uint32_t> id) {
        std::erase_if(queue, [&](const Waiting& waiting) {
            return waiting.message.kind == MessageKind::Timer && waiting.message.window == window &&
                   (!id.has_value() || waiting.message.parameter == *id);
        });
    }

    QtWindowTable& windows;
    EventTap tap;
    QTimer wakeUp;
    std::deque<Waiting> queue;
    std::deque<Waiting> taken; // given out, with the event that Dispatch is going to deliver
    std::map<std::pair<WindowHandle, std::uint32_t>, std::unique_ptr<QTimer>> timers;
    WindowHandle pressed = WindowHandle::None; // as long as a button is held
    std::uint64_t lastToken = 0;
    std::uint64_t dialogMessages = 0; // that loops of dialogs have asked for
    const QEvent* dispatching = nullptr;
    int loopLevel = notCapturing; // of Qt's loops while ours captures input
    int insideQt = 0;             // calls into Qt that have not returned
    bool offeringToShortcuts = false;
    bool quitting = false;
    int exitCode = 0;
};

QtMessageLoop::QtMessageLoop(QtWindowTable& windows) : m_state(std::make_unique<State>(windows)) {}

QtMessageLoop::~QtMessageLoop() = default;

bool QtMessageLoop::TakeMessage(Message& message, std::uint32_t milliseconds) {
    State& state = *m_state;
    // Qt's share of the work is done even while messages wait, so that windows paint themselves under load.
    state.LetQtWork(QEventLoop::AllEvents, Input::Captured);
    QElapsedTimer waited;
    waited.start();
    while (!state.TakeFront(message)) {
        const qint64 left = qint64{milliseconds} - waited.elapsed();
        if (left <= 0)
            return false;
        state.wakeUp.start(static_cast<int>(std::min<qint64>(left, std::numeric_limits<int>::max())));
        state.LetQtWork(QEventLoop::WaitForMoreEvents, Input::Captured);
        state.wakeUp.stop();
    }
    return true;
}

bool QtMessageLoop::WaitMessage(Message& message) {
    State& state = *m_state;
    state.taken.clear(); // nobody decides about a message now
    return state.Wait([&] { return state.TakeFront(message); });
}

bool QtMessageLoop::WaitMessageInDialog(Message& message) {
    State& state = *m_state;
    ++state.dialogMessages;
    return state.Wait(
        [&] { return state.taken.empty() ? state.TakeFront(message) : state.TakePosted(message); });
}

void QtMessageLoop::Dispatch(const Message& message) {
    State& state = *m_state;
    const auto found = std::find_if(state.taken.begin(), state.taken.end(), [&](const Waiting& waiting) {
        return waiting.message.token == message.token;
    });
    if (found != state.taken.end()) {
        const Waiting waiting = std::move(*found);
        state.taken.erase(found);
        const WindowHandle window = waiting.message.window;
        if (waiting.receiver.isNull() ||
            (window != WindowHandle::None && state.windows.Find(window) == nullptr))
            return;
        state.Deliver(waiting.receiver, waiting.makeEvent);
        if (waiting.makeDoubleClick && !waiting.receiver.isNull())
            state.Deliver(waiting.receiver, waiting.makeDoubleClick);
        if (waiting.makeRelease && !waiting.receiver.isNull() && state.ReleaseWasLost(waiting))
            state.Deliver(waiting.receiver, waiting.makeRelease);
        return;
    }
    const QtWindowTable::Entry* entry = state.windows.Find(message.window);
    if (entry == nullptr || entry->procedure == nullptr)
        return;
    const auto destroy = entry->destroy; // the procedure may do that itself
    if (!entry->procedure->HandleMessage(message) && message.kind == MessageKind::Close)
        destroy();
}

void QtMessageLoop::SetTimer(WindowHandle window, std::uint32_t id, std::uint32_t milliseconds) {
    State& state = *m_state;
    KillTimer(window, id);
    if (state.windows.Find(window) == nullptr)
        return;
    auto timer = std::make_unique<QTimer>();
    timer->setTimerType(Qt::PreciseTimer);
    QObject::connect(timer.get(), &QTimer::timeout, [&state, window, id] {
        if (!state.TickWaits(window, id))
            state.Enqueue({{window, MessageKind::Timer, id}, QEvent::None, {}, {}});
    });
    timer->start(static_cast<int>(milliseconds));
    state.timers.insert_or_assign({window, id}, std::move(timer));
}

void QtMessageLoop::KillTimer(WindowHandle window, std::uint32_t id) {
    m_state->timers.erase({window, id});
    m_state->RemoveTicks(window, id);
}

void QtMessageLoop::PostQuit(int exitCode) {
    m_state->quitting = true;
    m_state->exitCode = exitCode;
}

bool QtMessageLoop::HasQuit() const {
    return m_state->quitting;
}

int QtMessageLoop::ExitCode() const {
    return m_state->exitCode;
}

void QtMessageLoop::Post(Message message) {
    m_state->Enqueue({message, QEvent::None, {}, {}});
}

QtMessageLoop::QtCall::QtCall(QtMessageLoop& messages) : m_messages(messages) {
    ++m_messages.m_state->insideQt;
}

QtMessageLoop::QtCall::~QtCall() {
    --m_messages.m_state->insideQt;
}

void QtMessageLoop::ForgetInputOfHidden() {
    std::erase_if(m_state->queue, [](const Waiting& waiting) {
        const auto* window = qobject_cast<const QWindow*>(waiting.receiver.data());
        return waiting.type != QEvent::None && (window == nullptr || !window->isVisible());
    });
}

void QtMessageLoop::Forget(WindowHandle window) {
    std::erase_if(m_state->timers, [&](const auto& timer) { return timer.first.first == window; });
    std::erase_if(m_state->queue, [&](const Waiting& waiting) { return waiting.message.window == window; });
}

} // namespace tessaro
