// What a user's program remembers between runs.
#pragma once

#include <cstdint>

#include <oviapi/font.h>
#include <oviapi/geometry.h>
#include <oviapi/string.h>
#include <xmlutils/serializable.h>

#include "app/export.h"
#include "app/terminaldesc.h"
#include "app/typicalconfirm.h"

// The options that every application of the library has; an application derives its own record to
// add others. Field names are the names of the XML elements. Reading never fails as a whole: every
// key has a fallback of its own.
class OVIEXT_API TypicalOptions : public XMLUtils::IXMLSerializableA {
public:
    enum Language : int32_t {
        DefaultLanguage = 0,
        Koi8Language = 1, // the language of a KOI8-R environment
    };

    enum FileAction : int32_t {
        NoAction = 0,
        LoadAction = 1,
        SaveAction = 2,
    };

    // Everything empty or 0, no terminal, the confirmation to be asked for.
    TypicalOptions() = default;
    TypicalOptions(const TypicalOptions&) = default;
    TypicalOptions& operator=(const TypicalOptions&) = default;

    void serialize(XMLUtils::XMLElementA& element, XMLUtils::XMLEncoding encoding) const override;
    // Reads every key. A key that is missing or bad takes its fallback; throws nothing.
    void deserialize(const XMLUtils::XMLElementA& element, XMLUtils::XMLEncoding encoding) override;
    // Reads the keys that depend on the screen: window geometry (relative to the available area)
    // and fonts. A key that is missing or bad leaves its field as it is; throws nothing.
    virtual void deserializeForTD(const XMLUtils::XMLElementA& element,
                                  XMLUtils::XMLEncoding encoding);
    virtual void initDefaults();
    virtual void initDefaultMainFormRect();
    virtual void initDefaultMainFormMaximized();
    virtual ~TypicalOptions() = default;

    // Whether a window there can be seen and used: at least 10 px of it inside the available area
    // of the screen, 10 x 10 px at least and twice the area at most.
    static bool isValidGeometry(int x, int y, int width, int height);
    static bool isValidGeometry(const OviAPI::Rect& rect);

    // Remember the directory of the last file loaded or saved. Null counts as empty.
    void setLastLoadDirectory(const wchar_t* dir);
    void setLastSaveDirectory(const wchar_t* dir);
    // The directory of the last file action, empty when there was none.
    const wchar_t* lastUsedDirectory() const;

    bool operator==(const TypicalOptions& other) const;

    // The field hides the type of the same name, which is written "enum TypicalOptions::Language".
    enum Language Language = DefaultLanguage;
    OviAPI::Rect MainFormRect;
    bool MainFormMaximized = false;
    OviAPI::Font FontControls; // font of role 1
    OviAPI::Font FontTree;     // font of role 3
    OviAPI::Font FontEdits;    // font of role 2
    WCharString LastLoadDirectory;
    WCharString LastSaveDirectory;
    int32_t LastAction = NoAction;
    TerminalDesc TermDesc; // the screen the options were last fitted to
    TypicalConfirm AdaptToTD;
};
