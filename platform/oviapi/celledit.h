// Editing a cell of a record view: decisions that know neither window nor toolkit.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include <oviapi/geometry.h>
#include <oviapi/virtualkey.h>

namespace OviAPI {

class aCColumn;
class aCDataSet;

// How a cell is edited.
enum class CellWay {
    Field,    // as a line of text in its place
    Check,    // as a mark that is switched
    Opened,   // elsewhere: it has more than one line shows, or is a large object
    ReadOnly, // not at all
};

// Of a cell of the dataset's current row.
CellWay cellWay(aCDataSet& data, int column);

// Whether values stand at the right edge of their cells.
bool standsRight(const aCColumn& column);

// Whether the check mark of a cell of the current row is set.
bool isMarked(aCDataSet& data, int column);
// The text that stores the other state of the mark; NULL and DEFAULT become set.
std::wstring switchedMark(aCDataSet& data, int column);

// An open editor: what the cell held when it was opened, and what is in it now.
struct EditedText {
    std::wstring original;
    std::wstring text;
    bool none = false;    // the cell was NULL or left to the server: the editor began empty
    bool touched = false; // something has been typed, even if it is gone again
};

enum class StoreNeed {
    Nothing, // the cell holds this already
    Text,
    NullKey, // no value of this column, and NULL has a key of its own
};

StoreNeed storeNeed(const aCColumn& column, const EditedText& edited);

// What a key means in an open editor.
enum class FieldKey {
    Typing, // for the control
    GiveUp,
    Enter, // stores and goes one row down
    Leave, // stores, then the key is the view's
    Null,
    Default,
    Nothing, // kept from the control and the view
};

FieldKey fieldKey(VirtualKey key);

// What a key means in a view without an open editor.
enum class ViewKey {
    Other,
    Edit,
    List, // opens the editor with its list dropped down
    Null,
    Default,
    NewRow,
    NewRowBelow, // on the last row only
    DeleteRow,
    Paste,
    GiveUp,
};

ViewKey viewKey(VirtualKey key);

// The first cell of a text from the clipboard, and of that the first line.
std::wstring firstCell(std::wstring_view text);

// Where an editor stands: over the cell and the line around it, inside the area of the cells. A
// narrow cell gets one of the least width. Nothing for a cell of which nothing is seen.
std::optional<Rect> fieldRect(const Rect& cell, const Rect& cells, int leastWidth);

// Where a sentence of this size stands: below the place, above it when there is more room, and
// inside the bounds.
Rect tipRect(const Rect& place, Size size, const Rect& bounds);

} // namespace OviAPI
