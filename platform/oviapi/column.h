// The description of a column: what its values are and how a view shows them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <oviapi/celltext.h>
#include <oviapi/color.h>
#include <oviapi/export.h>
#include <oviapi/font.h>
#include <oviapi/picture.h>
#include <oviapi/string.h>

namespace OviAPI {

class aCRecordView;
class Painter;

// Copying copies everything that can be seen, so that a view can carry widths over from one dataset
// to the next. Owned by its dataset (AddColDef).
class OVIAPI_API aCColumn {
public:
    // How a cell is shown and edited; any other number is Text.
    enum DisplayKind : int { DisplayText = 0, DropDown = 2, CheckMark = 3, ImageCell = 4 };

    aCColumn();
    // size: see below. width, minWidth: pixels, 0 for the view's choice. displayKind: DisplayKind.
    aCColumn(const wchar_t* name, unsigned char dataType, long size, const wchar_t* title,
             short width, short minWidth, int displayKind);
    virtual ~aCColumn();
    aCColumn(const aCColumn& other);
    aCColumn& operator=(const aCColumn& other);

    // Draws the header cell; called only when customHeader is set. col: from 1.
    virtual void DrawHeader(Painter* painter, int col, aCRecordView* view);

    // Bytes of a value in the row.
    size_t rowBytes() const;
    // Characters that the display text of a value may have, without a terminator.
    size_t displaySize() const;

    aCString name;              // in the source
    aCString caption;           // the title in the header
    unsigned char dataType = 0; // DataType
    unsigned char dbmsType = 0; // type code of the database client, 0 unknown
    long size = 0;              // text types: characters with the terminator; others: bytes
    aCString format;            // of dates, see celltext.h; empty for the default
    int blobType = 0;           // of a large object in the new row
    long blobSize = 0;          // bytes
    bool readOnly = false;

    int displayKind = DisplayText;
    int16_t width = 0;    // pixels; 0 until a view has chosen one
    int16_t minWidth = 0; // pixels
    bool customHeader = false;
    bool fixedWidth = false; // a view does not let the user change the width

    Picture headerPicture;
    int headerImage = -1; // index into the view's header images, -1 none
    Font headerFont;      // empty: the view's
    Color headerColor{ColorNumber::ButtonText};
    Color headerBackground{ColorNumber::ButtonFace};
    uint32_t headerAlign; // TextFlags; centred at first

    Font cellFont;                 // empty: the view's
    uint32_t cellAlign;            // TextFlags; by the data type when autoAlign is set
    bool autoAlign = true;         // numbers stand to the right
    std::vector<aCString> choices; // of a drop-down list
};

} // namespace OviAPI
