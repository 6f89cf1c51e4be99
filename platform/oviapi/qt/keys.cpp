#include "keys.h"

#include <oviapi/visualobject.h>

#include "convert.h"

namespace OviAPI {

namespace {

struct KeyPair {
    int number;
    Qt::Key qt;
};

// Where several Qt keys have one number, the first is the one that goes back.
constexpr KeyPair pairs[] = {
    {KeyEscape, Qt::Key_Escape},
    {KeyBackspace, Qt::Key_Backspace},
    {KeyDelete, Qt::Key_Delete},
    {KeyEnter, Qt::Key_Return},
    {KeyEnter, Qt::Key_Enter},
    {KeyInsert, Qt::Key_Insert},
    {KeyHome, Qt::Key_Home},
    {KeyEnd, Qt::Key_End},
    {KeyClear, Qt::Key_Clear},
    {KeyLeft, Qt::Key_Left},
    {KeyUp, Qt::Key_Up},
    {KeyRight, Qt::Key_Right},
    {KeyDown, Qt::Key_Down},
    {KeyPageUp, Qt::Key_PageUp},
    {KeyPageDown, Qt::Key_PageDown},
    {KeyPause, Qt::Key_Pause},
    {KeyShift, Qt::Key_Shift},
    {KeyControl, Qt::Key_Control},
    {KeyAlt, Qt::Key_Alt},
    {KeyAlt, Qt::Key_AltGr},
    {KeySuper, Qt::Key_Meta},
    {KeySuper, Qt::Key_Super_L},
    {KeySuper, Qt::Key_Super_R},
    {KeyCapsLock, Qt::Key_CapsLock},
    {KeyNumLock, Qt::Key_NumLock},
    {KeyScrollLock, Qt::Key_ScrollLock},
    {KeyMenu, Qt::Key_Menu},
    {KeyPrint, Qt::Key_Print},
    {KeyHelp, Qt::Key_Help},
    {KeySpace, Qt::Key_Space},
    {KeyMinus, Qt::Key_Minus},
    {KeyEqual, Qt::Key_Equal},
    {KeyPlus, Qt::Key_Plus},
    {KeyAsterisk, Qt::Key_Asterisk},
    {KeyTab, Qt::Key_Tab},
    {KeyTab, Qt::Key_Backtab},
    {KeyComma, Qt::Key_Comma},
    {KeyPeriod, Qt::Key_Period},
    {KeySlash, Qt::Key_Slash},
    {KeyBackslash, Qt::Key_Backslash},
    {KeySemicolon, Qt::Key_Semicolon},
    {KeyApostrophe, Qt::Key_Apostrophe},
    {KeyLeftBracket, Qt::Key_BracketLeft},
    {KeyRightBracket, Qt::Key_BracketRight},
    {KeyGrave, Qt::Key_QuoteLeft},
};

// Keys that follow each other on both sides.
struct KeyRange {
    int first;
    int last;
    int qtFirst;
};

constexpr KeyRange ranges[] = {
    {Key0, Key9, Qt::Key_0},
    {KeyA, KeyZ, Qt::Key_A},
    {KeyF1, KeyF24, Qt::Key_F1},
};

// The digit of a key in the upper row, whatever it types: together with Control or Shift most
// layouts make another sign of it, some type their digits with Shift only. 0 for other keys.
int digitByPlace(const QKeyEvent& event)
{
    constexpr quint32 firstPlace = 10; // of the 1, as the desktop numbers its keys; 0 is the last
    const quint32 place = event.nativeScanCode();
    if (place < firstPlace || place > firstPlace + 9)
        return KeyNone;
    return place == firstPlace + 9 ? int{Key0} : static_cast<int>(Key0 + 1 + place - firstPlace);
}

} // namespace

int keyboardKey(int qt)
{
    for (const KeyRange& range : ranges) {
        if (qt >= range.qtFirst && qt <= range.qtFirst + range.last - range.first)
            return range.first + qt - range.qtFirst;
    }
    for (const KeyPair& pair : pairs) {
        if (pair.qt == qt)
            return pair.number;
    }
    return KeyNone;
}

Qt::Key qtKey(int number)
{
    for (const KeyRange& range : ranges) {
        if (number >= range.first && number <= range.last)
            return static_cast<Qt::Key>(range.qtFirst + number - range.first);
    }
    for (const KeyPair& pair : pairs) {
        if (pair.number == number)
            return pair.qt;
    }
    return Qt::Key_unknown;
}

VirtualKey toVirtualKey(const QKeyEvent& event)
{
    int modifiers = ModifierNone;
    const auto add = [&](Qt::KeyboardModifier qt, KeyModifier own) {
        if (event.modifiers() & qt)
            modifiers |= own;
    };
    add(Qt::ShiftModifier, ModifierShift);
    add(Qt::ControlModifier, ModifierControl);
    add(Qt::AltModifier, ModifierAlt);
    add(Qt::MetaModifier, ModifierSuper);
    add(Qt::KeypadModifier, ModifierKeypad);
    const std::wstring text = fromQString(event.text());
    int number = keyboardKey(event.key());
    const bool shift = (modifiers & ModifierShift) != 0;
    if ((modifiers & ModifierControl) != 0 && (shift || number == KeyNone)) {
        if (const int digit = digitByPlace(event); digit != KeyNone)
            number = digit;
    }
    return {number, modifiers, text.empty() ? wchar_t{0} : text.front(), event.isAutoRepeat()};
}

long toMouseFlags(Qt::MouseButtons buttons, Qt::KeyboardModifiers modifiers)
{
    long flags = 0;
    if (buttons & Qt::LeftButton)
        flags |= MouseLeft;
    if (buttons & Qt::RightButton)
        flags |= MouseRight;
    if (buttons & Qt::MiddleButton)
        flags |= MouseMiddle;
    if (modifiers & Qt::ShiftModifier)
        flags |= MouseShift;
    if (modifiers & Qt::ControlModifier)
        flags |= MouseControl;
    if (modifiers & Qt::AltModifier)
        flags |= MouseAlt;
    return flags;
}

} // namespace OviAPI
