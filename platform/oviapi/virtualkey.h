// A key of the keyboard, as it comes with onKeyDown and onKeyUp.
#pragma once

#include <oviapi/export.h>

namespace OviAPI {

// Keys by number. Letters and digits follow each other: KeyA + 3 is the D key. A key that is not
// listed is KeyNone.
enum KeyboardKey : int {
    KeyNone = 0,
    KeyEscape = 1,
    KeyBackspace = 2,
    KeyDelete = 3,
    KeyEnter = 4, // both Enter keys
    KeyInsert = 5,
    KeyHome = 6,
    KeyEnd = 7,
    KeyClear = 8,
    KeyLeft = 9,
    KeyUp = 10,
    KeyRight = 11,
    KeyDown = 12,
    KeyPageUp = 13,
    KeyPageDown = 14,
    KeyPause = 15,
    KeyShift = 16,
    KeyControl = 17,
    KeyAlt = 18,
    KeySuper = 19,
    KeyCapsLock = 20,
    KeyNumLock = 21,
    KeyScrollLock = 22,
    KeyMenu = 23,
    KeyPrint = 24,
    KeyHelp = 25,
    KeySpace = 30,
    Key0 = 31, // to 40 for the 9
    Key9 = 40,
    KeyMinus = 41,
    KeyEqual = 42,
    KeyPlus = 43,
    KeyAsterisk = 44,
    KeyA = 45, // to 70 for Z
    KeyZ = 70,
    KeyTab = 71, // with Shift as well
    KeyComma = 72,
    KeyPeriod = 73,
    KeySlash = 74,
    KeyBackslash = 75,
    KeySemicolon = 76,
    KeyApostrophe = 77,
    KeyLeftBracket = 78,
    KeyRightBracket = 79,
    KeyGrave = 80,
    KeyF1 = 81, // to 104 for F24
    KeyF24 = 104,
};

// What is held together with a key.
enum KeyModifier : int {
    ModifierNone = 0,
    ModifierShift = 1,
    ModifierControl = 2,
    ModifierAlt = 4,
    ModifierSuper = 8,
    ModifierKeypad = 16, // the key lies on the numeric keypad
};

class VirtualKey {
public:
    constexpr VirtualKey() = default;
    // key: KeyboardKey. modifiers: KeyModifier bits. character: what the key types, 0 for none.
    constexpr VirtualKey(int key, int modifiers = 0, wchar_t character = 0, bool repeated = false)
        : m_key(key)
        , m_modifiers(modifiers)
        , m_character(character)
        , m_repeated(repeated)
    {
    }

    constexpr int getKeyboardKey() const { return m_key; }
    constexpr int modifiers() const { return m_modifiers; }
    constexpr bool shift() const { return (m_modifiers & ModifierShift) != 0; }
    constexpr bool control() const { return (m_modifiers & ModifierControl) != 0; }
    constexpr bool alt() const { return (m_modifiers & ModifierAlt) != 0; }
    constexpr wchar_t character() const { return m_character; }
    // Sent by the keyboard because the key is still held.
    constexpr bool repeated() const { return m_repeated; }

private:
    int m_key = KeyNone;
    int m_modifiers = ModifierNone;
    wchar_t m_character = 0;
    bool m_repeated = false;
};

} // namespace OviAPI
