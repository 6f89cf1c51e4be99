// A part of a table as text for the clipboard.
#pragma once

#include <functional>
#include <string>

#include <oviapi/export.h>
#include <oviapi/recordgeometry.h>

namespace OviAPI {

class aCDataSet;

// Text: columns are separated by tabs and rows end with a line feed, as spreadsheets exchange them.
// A cell that holds a tab, a line end or a double quote stands in double quotes, with the quotes in
// it doubled. NULL and DEFAULT are nothing at all, an empty text is "" where it would otherwise
// read as NULL. A single cell is its plain text, without quotes and line feed.
//
// HTML: the same cells as a table, with line breaks, blanks and tabs kept.
struct OVIAPI_API RecordCopy {
    static constexpr int64_t maxCells = 1'000'000;

    std::wstring text;
    std::wstring html;
    int64_t rows = 0; // rows copied
    bool cut = false; // the range had more, or a row could not be read

    // Makes both forms of the range. captions: the first row holds those of the columns.
    static RecordCopy make(aCDataSet& dataSet, const RecordSelection::Range& range, bool captions);
    static std::wstring quoted(std::wstring_view cell);
    static std::wstring escaped(std::wstring_view cell);
};

} // namespace OviAPI
