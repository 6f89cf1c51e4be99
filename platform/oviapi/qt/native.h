// The native part of a visual object.
//
// Native owns a QWidget of any class and filters its events: each is first dispatched to the
// owner's virtual functions and slots, and reaches the QWidget only when those left it. No subclass
// of the QWidget is needed for that. A derived class of WVisualObject chooses its QWidget by
// overriding
//
//     std::unique_ptr<Native> MyView::makeNative()
//     {
//         return std::make_unique<Native>(*this, std::make_unique<MyScrollArea>());
//     }
//
// For a QAbstractScrollArea the surface is its viewport: doPaint and the mouse functions are called
// with its events and coordinates, onSize when its size changes, and children are placed on it.
//
// A handler may delete the owner. Code that has called a virtual function or emitted a signal tests
// a QPointer to the QWidget (or WVisualObject::life) before it touches either again. Whatever calls
// handlers from a toolkit callback does so inside barrier(), so that no exception passes through
// Qt.
#pragma once

#include <exception>
#include <functional>
#include <memory>
#include <vector>

#include <QEvent>
#include <QObject>
#include <QPointer>
#include <QWidget>

#include <oviapi/wvisualobject.h>

class QKeyEvent;
class QMouseEvent;
class QPaintEvent;
class QWheelEvent;

namespace OviAPI {

struct Native : public QObject {
    Native(WVisualObject& owner, std::unique_ptr<QWidget> widget);
    // surface: inside the widget; receives paint and mouse events and carries the children.
    Native(WVisualObject& owner, std::unique_ptr<QWidget> widget, QWidget* surface);
    // Destroys the widget, at once or, while an event is being handled, after it. No handler of any
    // object is called meanwhile.
    ~Native() override;

    WVisualObject& owner;
    QPointer<QWidget> widget;
    QPointer<QWidget> surface;
    // Set while the framework itself changes the geometry.
    bool placing = false;
    // The size of the surface that onSize was last called for.
    QSize clientSize;

    template<class W>
    W* as() const
    {
        return qobject_cast<W*>(widget.data());
    }

    bool eventFilter(QObject* object, QEvent* event) override;

    // Places the surface in a widget that is not shown and so gets no resize event.
    virtual void layOut();
    // Calls onSize when the surface has another size.
    void checkClientSize();

protected:
    // True: the event has been dealt with, or the owner has gone.
    virtual bool filterWidget(QEvent* event);
    virtual bool filterSurface(QEvent* event);
    // A key press that no handler wanted.
    virtual bool unhandledKey(QKeyEvent*) { return false; }

private:
    bool key(QKeyEvent* event);
    bool mouse(QMouseEvent* event);
    bool wheel(QWheelEvent* event);
    bool paint(QPaintEvent* event);
};

// Destroys a widget that belongs to no Native, at once or after the event that is being handled. No
// handler is called meanwhile.
void discardWidget(QWidget* widget);

// The QWidget of an object; null when it has none.
QWidget* widgetOf(const WVisualObject* object);
// The object a QWidget belongs to, or the nearest one around it; null when there is none.
WVisualObject* objectOf(const QWidget* widget);

// A loop of events inside a function. While it lives it is the innermost one, and an exception that
// leaves a handler is kept by it.
class LocalLoop {
public:
    // leave: called when an exception has been kept; has to make the loop end.
    explicit LocalLoop(std::function<void()> leave);
    // Exceptions that have not been thrown on pass to the loop outside.
    ~LocalLoop();
    LocalLoop(const LocalLoop&) = delete;
    LocalLoop& operator=(const LocalLoop&) = delete;

    bool failed() const { return !m_kept.empty(); }
    // Throws the exception that was kept first, if any.
    void rethrow();

    // Gives an exception to the innermost loop; without one it waits for the next that begins.
    static void keep(std::exception_ptr exception) noexcept;

private:
    std::function<void()> m_leave;
    std::vector<std::exception_ptr> m_kept;
    LocalLoop* m_outer;
};

// Counts the calls of handlers that run now.
class HandlerScope {
public:
    HandlerScope() { ++s_depth; }
    ~HandlerScope() { --s_depth; }
    HandlerScope(const HandlerScope&) = delete;
    HandlerScope& operator=(const HandlerScope&) = delete;
    static bool active() { return s_depth > 0; }

private:
    static int s_depth;
};

// Calls a function that may run handlers. An exception ends the innermost local loop, which throws
// it on.
template<class F>
void barrier(F&& function) noexcept
{
    HandlerScope scope;
    try {
        function();
    } catch (...) {
        LocalLoop::keep(std::current_exception());
    }
}

} // namespace OviAPI
