// The line at the bottom of the main window.
#pragma once

#include <array>
#include <string>

#include "app/extpanel.h"

// Four fields in one line: the database, the number of rows, the place in the table, and what there
// is to say of the value there. A field whose text is cut shows it whole in the tool tip.
class StatusLine : public WExtPanel {
public:
    enum Field { Database, Rows, Place, Value, FieldCount };

    void setField(Field field, const std::wstring& text);
    const std::wstring& field(Field field) const { return m_texts[field]; }
    // Pixels that the line needs in its font.
    int wantedHeight() const;

    bool doPaint(OviAPI::PaintDevice* device) override;

private:
    std::array<std::wstring, FieldCount> m_texts;
};

// Where the fields end, pixels from the left, in a line of this width. wanted: pixels that each
// field would like to have; the middle ones get them, the first and the last share the rest.
std::array<int, StatusLine::FieldCount>
statusFieldEnds(const std::array<int, StatusLine::FieldCount>& wanted, int width);
