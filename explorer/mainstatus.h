// The line at the bottom of the main window.
#pragma once

#include <array>
#include <string>
#include <vector>

#include <oviapi/statusline.h>

// Up to five fields: the database, the number of rows, the place in the table, what there is to say
// of the value there, and the state of the connection. A field without a text takes no room. The
// whole line is read out and shown in the tool tip as well.
class MainStatus : public OviAPI::WStatusLine {
public:
    enum Field { Database, Rows, Place, Value, Connection, FieldCount };

    void setField(Field field, const std::wstring& text);
    const std::wstring& field(Field field) const { return m_texts[field]; }
    // Gives the fields their widths for the present font and the present width of the line.
    void fit();

private:
    void rebuild();

    std::array<std::wstring, FieldCount> m_texts;
    std::vector<Field> m_shown; // a pane each
};

// px that each field gets in a line of this width. wanted: what it would like to have, 0 for a
// field that is not shown. Rows, place and connection come first, with three quarters of the line
// at most; of the rest the value gets what the database leaves, and up to two thirds when both want
// more.
std::array<int, MainStatus::FieldCount>
statusWidths(const std::array<int, MainStatus::FieldCount>& wanted, int width);
