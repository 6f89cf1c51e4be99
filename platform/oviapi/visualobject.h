// What is seen on the screen: the signals of every visual object.
#pragma once

#include <memory>

#include <oviapi/export.h>
#include <oviapi/geometry.h>
#include <oviapi/object.h>
#include <oviapi/virtualkey.h>

namespace OviAPI {

class Container;
class PaintDevice;

// What is held during a mouse event.
enum MouseFlags : long {
    MouseLeft = 1,
    MouseRight = 2,
    MouseShift = 4,
    MouseControl = 8,
    MouseMiddle = 16,
    MouseAlt = 32,
};

// One element of the tree of windows, panels and controls. Points to its parent and does not own
// it; either may be destroyed first. User-interface thread only.
//
// Every onSomething is a signal and its default handling. It returns true when the event has been
// dealt with: the control's own reaction is then left out. Default handling returns false. A
// handler may delete the object. An exception that leaves a handler ends the innermost local loop
// and is thrown on by whoever runs it: WForm::execModal, WMenu::trackPopupMenu, MsgBox,
// Application::procTaskEvents or Application::messagePump.
class OVIAPI_API VisualObject : public virtual Object {
public:
    VisualObject();
    ~VisualObject() override;

    // The object with the focus is asked first, then its parents up to the form.
    virtual bool onKeyDown(VirtualKey key);
    virtual bool onKeyUp(VirtualKey key);
    // A character typed by a key that onKeyDown did not handle.
    virtual bool onChar(wchar_t character);

    // x, y: pixels in the object's client area. flags: MouseFlags, with the button itself among
    // them when it goes down. A double click comes as down, up, double click, up; one that is not
    // handled counts as a second press.
    virtual bool onLButtonDown(int x, int y, long flags);
    virtual bool onLButtonUp(int x, int y, long flags);
    virtual bool onLButtonDblClk(int x, int y, long flags);
    virtual bool onRButtonDown(int x, int y, long flags);
    virtual bool onRButtonUp(int x, int y, long flags);
    virtual bool onRButtonDblClk(int x, int y, long flags);
    virtual bool onMouseMove(int x, int y, long flags);
    // delta: 120 a notch, positive away from the user. Goes up to the parents when not handled.
    virtual bool onMouseWheel(int x, int y, int delta, long flags);
    virtual bool onMouseLeave();

    virtual bool onGetFocus();
    virtual bool onLostFocus();
    // The object stands at another place or has another size.
    virtual bool onMove();
    // The client area has another size.
    virtual bool onSize();
    virtual bool onEnable(bool enabled);
    virtual bool onShow(bool shown);
    // A message of the post queue. The receiver owns it from now on.
    virtual bool onPost(void* message);

    // Paints the client area. False: the control paints itself. Called during a paint event only.
    virtual bool doPaint(PaintDevice* device);

    // The language or the character set of the texts has changed: load them again. Called for
    // every living visual object by Application::notifyCharsetChanged, with the application as
    // sender. The result is not used.
    virtual SlotResult onCharsetChanged(Object* sender);

    Container* parent() const { return m_parent; }
    // Null takes the object out of its parent.
    virtual void setParent(Container* parent);

    // The children of a container stand in the order of stacking, the front one first; a new child
    // stands in front of the others. Null at the ends.
    VisualObject* nextSibling() const;
    VisualObject* previousSibling() const;

    // Puts a message at the end of the post queue: onPost is called with it by the event loop. When
    // the object or the application dies first, discard is called instead (null: nothing is done).
    void post(void* message, void (*discard)(void*) = nullptr);

    // Expires when the object is destroyed: tells, after a handler has run, whether it still lives.
    std::weak_ptr<const void> life() const { return m_life; }

protected:
    // Whether the object is listed among its parent's children. A form is not: it is a window of
    // its own above its parent.
    virtual bool isChild() const { return true; }

private:
    friend class Container;

    void leaveParent();

    Container* m_parent = nullptr;
    std::shared_ptr<const void> m_life;
};

} // namespace OviAPI

OVIAPI_SIGNAL(OviAPI::VisualObject, onKeyDown);
OVIAPI_SIGNAL(OviAPI::VisualObject, onKeyUp);
OVIAPI_SIGNAL(OviAPI::VisualObject, onChar);
OVIAPI_SIGNAL(OviAPI::VisualObject, onLButtonDown);
OVIAPI_SIGNAL(OviAPI::VisualObject, onLButtonUp);
OVIAPI_SIGNAL(OviAPI::VisualObject, onLButtonDblClk);
OVIAPI_SIGNAL(OviAPI::VisualObject, onRButtonDown);
OVIAPI_SIGNAL(OviAPI::VisualObject, onRButtonUp);
OVIAPI_SIGNAL(OviAPI::VisualObject, onRButtonDblClk);
OVIAPI_SIGNAL(OviAPI::VisualObject, onMouseMove);
OVIAPI_SIGNAL(OviAPI::VisualObject, onMouseWheel);
OVIAPI_SIGNAL(OviAPI::VisualObject, onMouseLeave);
OVIAPI_SIGNAL(OviAPI::VisualObject, onGetFocus);
OVIAPI_SIGNAL(OviAPI::VisualObject, onLostFocus);
OVIAPI_SIGNAL(OviAPI::VisualObject, onMove);
OVIAPI_SIGNAL(OviAPI::VisualObject, onSize);
OVIAPI_SIGNAL(OviAPI::VisualObject, onEnable);
OVIAPI_SIGNAL(OviAPI::VisualObject, onShow);
OVIAPI_SIGNAL(OviAPI::VisualObject, onPost);
