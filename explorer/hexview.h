// A value as hexadecimal numbers.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include <oviapi/dataset.h>
#include <oviapi/recordview.h>

#include "explorer/valuereader.h"

// Sixteen bytes a row, a column for each, and what they stand for in ASCII behind them. Reads the
// rows that are asked for. Points to the reader.
class HexData : public OviAPI::aCDataSet {
public:
    static constexpr int RowBytes = 16;
    static constexpr int Characters = RowBytes + 1; // column

    HexData();

    // Null: no rows.
    void setReader(ValueReader* reader);
    int64_t size() const { return m_reader ? m_reader->size() : 0; } // bytes
    long GetRowCount() override;
    short ToRow(short direction, long row, bool follow) override;
    bool IsUpdatable(int) override { return false; }

private:
    ValueReader* m_reader = nullptr;
    OviAPI::RowRecord m_row;
};

// The offset of each row stands in its header.
class HexView : public OviAPI::aCRecordView {
public:
    HexView();
    ~HexView() override;

    bool create() override;
    // After the value has been read anew; the place stays where it can.
    void setReader(ValueReader* reader);
    // Of the byte with the focus, from 0; of its row where the focus stands behind the bytes.
    int64_t offset() const;
    // False when the value is not as long.
    bool goTo(int64_t offset);

    void loadTexts();
    // Takes the size; the face is one whose characters have all the same width.
    void setFont(const OviAPI::Font& font) override;
    OviAPI::aCString GetRowCaption(long row) override;

private:
    void fitColumns();

    HexData m_data;
};

// An offset that a user has typed: decimal, or hexadecimal behind "0x".
std::optional<int64_t> offsetIn(std::wstring_view text);
// What is looked for: bytes in pairs of hexadecimal digits behind "0x", blanks between them do not
// count; anything else is text in UTF-8. Nothing for an empty text and for odd digits.
std::optional<std::string> soughtBytes(std::wstring_view text);
