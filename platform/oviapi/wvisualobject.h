// A visual object with a window or control of the desktop behind it.
#pragma once

#include <memory>
#include <string>

#include <oviapi/color.h>
#include <oviapi/export.h>
#include <oviapi/font.h>
#include <oviapi/geometry.h>
#include <oviapi/paintdevice.h>
#include <oviapi/visualobject.h>

namespace OviAPI {

class MoveObjectPositioner;
struct Native;

enum class CursorShape {
    Arrow,
    Wait,
    IBeam,
    Hand,
    Cross,
    SizeHorizontal,
    SizeVertical,
    SizeNWSE,
    SizeNESW,
    SizeAll,
    SplitHorizontal,
    SplitVertical,
};

// Made in two phases: the constructor, then create(). Everything can be set before create() and is
// applied by it. Owns its native part; the native part of the parent must exist before the child's.
class OVIAPI_API WVisualObject : public virtual VisualObject {
public:
    WVisualObject();
    ~WVisualObject() override;

    // Makes the native part. True when it exists afterwards; false when the application has not
    // been started or the parent has no native part.
    virtual bool create();
    bool isCreated() const { return m_native != nullptr; }
    // Destroys the native parts of this object and of everything inside it.
    void destroy();

    // Bits whose meaning the derived class gives; read by create().
    void setStyle(long style) { m_style = style; }
    long style() const { return m_style; }

    // Places the object, in pixels of the parent's client area, a form on the screen. A form's
    // position is that of its frame and its size that of its inside. move is what applications
    // call, doMove does the work and may be overridden to refuse: it returns false, and nothing
    // has moved. Sizes below 0 count as 0. onMove follows, and onSize when the size has changed.
    virtual bool move(int x, int y, int width, int height);
    virtual bool doMove(int x, int y, int width, int height);
    const Rect& geometry() const { return m_geometry; }
    int x() const { return m_geometry.left; }
    int y() const { return m_geometry.top; }
    int width() const { return m_geometry.right - m_geometry.left; }
    int height() const { return m_geometry.bottom - m_geometry.top; }

    // The area inside borders, menu bar and scroll bars.
    Size clientSize() const;
    int clientWidth() const { return clientSize().width; }
    int clientHeight() const { return clientSize().height; }
    // The part of it that can be seen, in the coordinates in which children are placed.
    virtual Rect visibleClientRect() const;

    Point toScreen(Point point) const;
    Point fromScreen(Point point) const;
    // A point of this object in the coordinates of another one.
    Point mapTo(const WVisualObject& other, Point point) const;

    // A child that is shown is seen while all its parents are. Children are shown at first, forms
    // are not.
    virtual void show(bool visible);
    bool isVisible() const;

    // An empty font is that of the parent.
    virtual void setFont(const Font& font);
    // The font that was set, else the one of the nearest parent that has one, else an empty font.
    Font font() const;
    // Takes the font of this role from the application, now and whenever role fonts change.
    void setFontRole(int role);
    int fontRole() const { return m_fontRole; }

    virtual void enable(bool enabled);
    // Switched on itself; a disabled parent disables what is inside without changing this.
    bool isEnabled() const { return m_enabled; }

    void setFocus();
    bool hasFocus() const;
    // The object with the focus in the active window; null when there is none.
    static WVisualObject* focusedObject();

    // Asks for a paint event; several requests become one.
    void repaint();
    void repaint(const Rect& rect);
    // Measures text outside a paint event.
    PaintDevice clientDevice() const;

    void setCursor(CursorShape shape);
    CursorShape cursor() const { return m_cursor; }
    // All mouse events come here until the capture is released.
    void capture();
    void releaseCapture();
    bool hasCapture() const { return m_captured; }

    void setTextColor(Color color);
    Color textColor() const { return m_textColor; }
    void setBackColor(Color color);
    Color backColor() const { return m_backColor; }

    // For assistive technology. Without a name the caption serves.
    void setAccessibleName(const wchar_t* name);
    const std::wstring& accessibleName() const { return m_accessibleName; }
    void setAccessibleDescription(const wchar_t* description);
    // Plain text; empty or null for none.
    void setToolTip(const wchar_t* text);
    const std::wstring& toolTip() const { return m_toolTip; }

    // Puts this object directly in front of a sibling. Returns false when they have not the same
    // parent. A form is raised above all windows by bringToFront.
    bool placeInFrontOf(WVisualObject& sibling);
    void bringToFront();

    // Asked by MoveObject::MoveInit to place this object. Not owned; null for none.
    void setPositioner(MoveObjectPositioner* positioner) { m_positioner = positioner; }
    MoveObjectPositioner* positioner() const { return m_positioner; }

    void setParent(Container* parent) override;

    // For the framework's own code: qt/native.h.
    Native* native() const { return m_native.get(); }

protected:
    // The nearest parent with a window of the desktop; null when there is none.
    WVisualObject* nativeParent() const;
    // Makes the native part, without a parent and not shown, with what the derived class keeps
    // applied to it. create() does the rest. Never null.
    virtual std::unique_ptr<Native> makeNative();
    // Whether create() shows the object.
    void setShown(bool shown) { m_shown = shown; }
    // Called before the native part is destroyed.
    virtual void nativeGoes() {}

private:
    friend class Container;
    friend struct Native;
    friend struct Toolkit;

    void attachNative();
    void adoptParent();
    void restack();
    void applyFont();
    void applyColors();
    void applyToolTip();
    void destroyNatives();
    void geometryChanged(const Rect& now);
    void passFocusOn();

    std::unique_ptr<Native> m_native;
    MoveObjectPositioner* m_positioner = nullptr;
    Rect m_geometry;
    Font m_font;
    Color m_textColor;
    Color m_backColor;
    std::wstring m_accessibleName;
    std::wstring m_accessibleDescription;
    std::wstring m_toolTip;
    long m_style = 0;
    int m_fontRole = 0;
    CursorShape m_cursor = CursorShape::Arrow;
    bool m_shown = true;
    bool m_enabled = true;
    bool m_captured = false;
    bool m_hasCursor = false;
    bool m_hasTextColor = false;
    bool m_hasBackColor = false;
};

} // namespace OviAPI
