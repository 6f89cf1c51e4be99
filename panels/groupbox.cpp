#include "panels/groupbox.h"

#include <algorithm>
#include <utility>

#include "panels/framelabel.h"

namespace {

// Kept: a caption has this width whatever its text, which dialogs are laid out for.
constexpr int captionWidth = 70; // px

} // namespace

GroupBox::GroupBox()
{
    setStyle(style() | Border);
}

GroupBox::~GroupBox() = default;

bool GroupBox::Caption::doMove(int x, int y, int, int h)
{
    return WExtStatic::doMove(x, y, captionWidth, h);
}

bool GroupBox::create()
{
    const bool panelCreated = WPanel::create();
    caption.setBuddy(this);
    coverFrame(caption, parent());
    const bool captionCreated = caption.create();
    findShift();
    return panelCreated && captionCreated;
}

void GroupBox::findShift()
{
    shift = std::max(caption.font().size(), 0) / 2;
}

void GroupBox::setFont(const OviAPI::Font& font)
{
    WPanel::setFont(font);
    caption.setFont(font);
    findShift();
    fontChanged = true;
    move(x(), y(), width(), height());
}

bool GroupBox::move(int x, int y, int w, int h)
{
    return doMove(x, y, w, h); // all that the framework's move does
}

bool GroupBox::doMove(int x, int y, int w, int h)
{
    const int captionHeight = 2 * shift + 1;
    if (std::exchange(fontChanged, false)) {
        caption.move(x + shift, y - shift, captionWidth, captionHeight);
        return WPanel::doMove(x, y, w, h);
    }
    caption.move(x + shift, y, captionWidth, captionHeight);
    return WPanel::doMove(x, y + shift, w, h - shift);
}

void GroupBox::show(bool visible)
{
    caption.show(visible);
    WPanel::show(visible);
}

void GroupBox::enable(bool enabled)
{
    caption.enable(enabled);
    WPanel::enable(enabled);
}

// The caption second, so that it stands in front of the panel.
void GroupBox::setParent(OviAPI::Container* parent)
{
    WPanel::setParent(parent);
    caption.setParent(parent);
    coverFrame(caption, parent);
}

void GroupBox::setText(const wchar_t* text)
{
    caption.setText(text);
}

void GroupBox::getText(wchar_t* buf, int size) const
{
    caption.getText(buf, size);
}

void GroupBox::nativeGoes()
{
    caption.destroy();
}
