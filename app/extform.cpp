#include "app/extform.h"

#include <limits>

#include <oviapi/picture.h>
#include <oviapi/recordview.h>
#include <oviapi/srcedit.h>
#include <oviapi/treeview.h>
#include <oviapi/typicalcontrol.h>

namespace {

constexpr int largeIconOffset = 100; // from the id of the icon to that of the large one
constexpr short wholeView = 0;

bool keepsItsOwnFont(OviAPI::VisualObject* object)
{
    return dynamic_cast<OviAPI::aCRecordView*>(object) || dynamic_cast<OviAPI::WTreeView*>(object);
}

} // namespace

WExtForm::WExtForm() = default;

WExtForm::~WExtForm() = default;

void WExtForm::init(int id, OviAPI::ResourceManager* rm)
{
    formId = id;
    setResource(rm, false);
}

bool WExtForm::create()
{
    const bool created = OviAPI::WForm::create();
    if (created)
        loadIcon(formId);
    return created;
}

void WExtForm::loadIcon(int id)
{
    if (!resource || id == 0)
        return;
    OviAPI::Picture icon;
    OviAPI::Picture large;
    const bool hasIcon = resource->loadTransparentPicture(id, &icon);
    const bool hasLarge = id <= std::numeric_limits<int>::max() - largeIconOffset &&
                          resource->loadTransparentPicture(id + largeIconOffset, &large);
    if (!hasLarge)
        setIcons(&icon, &icon);
    else if (!hasIcon)
        setIcons(&large, &large);
    else
        setIcons(&icon, &large);
}

void WExtForm::setParent(OviAPI::Container* parent)
{
    auto* before = dynamic_cast<WExtForm*>(this->parent());
    OviAPI::WForm::setParent(parent);
    auto* now = dynamic_cast<WExtForm*>(this->parent());
    if (before == now)
        return;
    if (before)
        OviAPI::disconnect<&WExtForm::onFontChanged>(*before, *this);
    if (now)
        OviAPI::connect<&WExtForm::onFontChanged>(*now, *this, &WExtForm::slotFontChanged);
}

OviAPI::SlotResult WExtForm::slotFontChanged(OviAPI::Object*, FontKind kind, OviAPI::Font font)
{
    onFontChanged(kind, font);
    setSiblingsFont(this, kind, font);
    OviAPI::emit<&WExtForm::onFontChanged>(*this, kind, font);
    return 0;
}

bool WExtForm::onFontChanged(FontKind kind, OviAPI::Font)
{
    const auto* form = dynamic_cast<OviAPI::WForm*>(parent());
    if (form && kind == fkControls)
        setFont(form->font());
    return true;
}

void WExtForm::setSiblingsFont(OviAPI::VisualObject* obj, FontKind kind, OviAPI::Font font)
{
    auto* control = dynamic_cast<OviAPI::WTypicalControl*>(obj);
    if (control && kind == fkControls && !keepsItsOwnFont(obj)) {
        control->setFont(font);
        control->repaint();
    }
    auto* container = dynamic_cast<OviAPI::Container*>(obj);
    if (!container)
        return;
    for (OviAPI::VisualObject* child = container->firstChild(); child;) {
        setChildFont(child, kind, font);
        OviAPI::VisualObject* next = child->nextSibling();
        if (next == child)
            break; // a list that points back at itself
        child = next;
    }
}

void WExtForm::setChildFont(OviAPI::VisualObject* child, FontKind kind, const OviAPI::Font& font)
{
    switch (kind) {
    case fkControls:
        if (!keepsItsOwnFont(child))
            setSiblingsFont(child, kind, font);
        break;
    case fkRecordView:
        if (auto* view = dynamic_cast<OviAPI::aCRecordView*>(child)) {
            view->SetFont(font, 1);
            view->ReShow(wholeView, false, true, false, nullptr); // columns and rows laid out again
            view->repaint();
        } else {
            setSiblingsFont(child, kind, font);
        }
        break;
    case fkTree:
        if (auto* tree = dynamic_cast<OviAPI::WTreeView*>(child))
            tree->setFont(font);
        else
            setSiblingsFont(child, kind, font);
        break;
    case fkEdit:
        if (auto* edit = dynamic_cast<OviAPI::CSrcEdit*>(child)) {
            edit->setFont(font);
            edit->repaint();
        } else {
            setSiblingsFont(child, kind, font);
        }
        break;
    default:
        break;
    }
}

void WExtForm::closeModal(int result)
{
    // NOLINTNEXTLINE(bugprone-parent-virtual-call): the window is hidden, the form is not closed
    OviAPI::WVisualObject::show(false);
    exitModal(result);
}

void WExtForm::closeModal(wchar_t* result)
{
    // NOLINTNEXTLINE(bugprone-parent-virtual-call): the window is hidden, the form is not closed
    OviAPI::WVisualObject::show(false);
    exitModal(result);
}

OviAPI::SlotResult WExtForm::onCharsetChanged(OviAPI::Object* sender)
{
    return onCharsetChanged(sender, resource);
}
