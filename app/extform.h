// The base of the library's forms.
#pragma once

#include <oviapi/font.h>
#include <oviapi/form.h>

#include "app/charsetindicator.h"
#include "app/export.h"

// A window with resources: it takes its icon from them, hands font changes down to the forms opened
// from it and to the controls inside, and follows those of the form it was opened from. Points to
// the resource manager, does not own it.
class OVIEXT_API WExtForm : public virtual OviAPI::WForm, public virtual qdCharsetIndicator {
public:
    // Which controls a font change is for.
    enum FontKind : int {
        fkControls = 0,   // all but record views, tree views and what is inside them
        fkRecordView = 1, // record views
        fkTree = 2,       // tree views
        fkEdit = 3,       // source editors
    };

    WExtForm();
    ~WExtForm() override;

    // The form's resource identifier and its resources, either of which may be missing: 0, null.
    void init(int id, OviAPI::ResourceManager* rm);
    // Creates the window and loads its icon.
    bool create() override;
    // The icons: picture id, and the large one id + 100; one serves for both where the other is
    // missing.
    void loadIcon(int id);

    // Follows the font changes of a parent that is a WExtForm.
    void setParent(OviAPI::Container* parent) override;

    // Applies a font change to this form, to what is inside and to the forms below.
    OviAPI::SlotResult slotFontChanged(OviAPI::Object* sender, FontKind kind, OviAPI::Font font);
    // Signal: emitted after the form has applied a font change. The function applies it to the form
    // itself, which takes its parent's font for the controls, and returns true.
    virtual bool onFontChanged(FontKind kind, OviAPI::Font font);
    // Gives the font to every control of the kind, from obj downwards. Null does nothing.
    void setSiblingsFont(OviAPI::VisualObject* obj, FontKind kind, OviAPI::Font font);

    // Hides the form and ends its modal loop.
    void closeModal(int result);
    void closeModal(wchar_t* result);

    // The framework's notification: calls the function with the form's resources.
    OviAPI::SlotResult onCharsetChanged(OviAPI::Object* sender) override;
    using qdCharsetIndicator::onCharsetChanged;

protected:
    int32_t formId = 0;

private:
    void setChildFont(OviAPI::VisualObject* child, FontKind kind, const OviAPI::Font& font);
};

OVIAPI_SIGNAL(WExtForm, onFontChanged);
