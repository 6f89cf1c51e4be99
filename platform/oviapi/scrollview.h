// An area larger than its window.
#pragma once

#include <oviapi/container.h>
#include <oviapi/export.h>
#include <oviapi/form.h>
#include <oviapi/typicalcontrol.h>

namespace OviAPI {

// Holds children on an area that is as large as they need, and at least as large as the view;
// scroll bars appear when the view cannot show all of it. Children are placed in the coordinates of
// the area, and doPaint and the mouse functions are called in them.
class OVIAPI_API WScrollView : public virtual WTypicalControl, public virtual Form {
public:
    WScrollView();
    ~WScrollView() override;

    // The part of the area that can be seen has another size.
    virtual bool onVisClientSize();

    // The smallest size of the area; 0, 0 at first.
    void setContentSize(int width, int height);
    Size contentSize() const;
    // Shows this point of the area at the upper left corner, as far as the area reaches.
    void scrollTo(int x, int y);

    Rect visibleClientRect() const override;
    int visibleWidth() const;
    int visibleHeight() const;

protected:
    std::unique_ptr<Native> makeNative() override;

private:
    struct ScrollNative;

    void childrenChanged() override;

    Size m_content;
};

} // namespace OviAPI

OVIAPI_SIGNAL(OviAPI::WScrollView, onVisClientSize);
