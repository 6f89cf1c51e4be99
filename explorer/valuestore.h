// The value of one cell, of any length.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include <dorcpp/connect.h>

#include "data/dordataset.h"
#include "explorer/databasesession.h"

// Reads and replaces a value in pieces; its length matters to nobody's memory. All calls throw
// DorX. User-interface thread only.
class ValueStore {
public:
    static constexpr size_t PieceSize = size_t{256} * 1024; // bytes

    virtual ~ValueStore() = default;

    virtual bool isNull() = 0;
    // Whether the bytes are text in UTF-8.
    virtual bool isText() const = 0;
    // The type in SQL, "BLOB"; empty when there is nothing to say.
    virtual std::wstring typeName() const = 0;
    // Bytes.
    virtual int64_t size() = 0;
    // Bytes from an offset on; returns how many there were, less than size at the end only.
    virtual size_t read(int64_t offset, void* buffer, size_t size) = 0;

    // Why nothing can be stored, a sentence for the user; empty when it can.
    virtual std::wstring readOnlyReason() = 0;
    // Gives the pieces of a new value one after the other, an empty one at the end.
    using Pieces = std::function<std::string_view()>;
    // Replaces the value. What a piece throws is thrown on, and the old value stays.
    virtual void write(const Pieces& next) = 0;
    void write(std::string_view bytes);
    virtual void setNull() = 0;
};

// A value of the table that a dataset shows. Nothing is stored unless the row is still what it was
// when this object was made. The dataset and the connection may go: then every call throws.
class CellValue : public ValueStore, private OviAPI::aCDataSetViewer {
public:
    // column, row: from 1. Throws DorX when the row cannot be read.
    CellValue(xCDorvexDataSet& data, const DorCPP::DorConnect& connection, int column, long row);
    ~CellValue() override;
    CellValue(const CellValue&) = delete;
    CellValue& operator=(const CellValue&) = delete;

    // Whether the bytes themselves are what a user means by the value: it is text or bytes.
    bool isTextOrBytes() const;

    bool isNull() override;
    bool isText() const override;
    std::wstring typeName() const override;
    int64_t size() override;
    size_t read(int64_t offset, void* buffer, size_t size) override;
    std::wstring readOnlyReason() override;
    using ValueStore::write;
    void write(const Pieces& next) override;
    void setNull() override;

private:
    void onDataSetChanged() override {}
    void onDataSetDestroyed() override { m_data = nullptr; }

    xCDorvexDataSet& data() const;
    DorCPP::DorCursor& seated();
    uint64_t rowPrint(DorCPP::DorCursor& cursor);
    DorCPP::DorCursor& unchangedRow();
    void stored(DorCPP::DorCursor& cursor);

    xCDorvexDataSet* m_data; // null when it has gone
    bool m_readOnly;         // the connection is
    int m_column;
    long m_row;
    t_ParamDesc m_desc{};
    uint64_t m_shown = 0; // print of the row as it is shown
};

// What a cell of any other type shows, as text that cannot be stored here.
class ShownValue : public ValueStore {
public:
    ShownValue(std::wstring_view text, bool isNull, std::wstring typeName);

    bool isNull() override { return m_null; }
    bool isText() const override { return true; }
    std::wstring typeName() const override { return m_typeName; }
    int64_t size() override { return static_cast<int64_t>(m_bytes.size()); }
    size_t read(int64_t offset, void* buffer, size_t size) override;
    std::wstring readOnlyReason() override;
    using ValueStore::write;
    void write(const Pieces& next) override;
    void setNull() override;

private:
    std::string m_bytes;
    std::wstring m_typeName;
    bool m_null;
};

// The value of a cell: its bytes where it has any that the cell may not show whole, else what the
// cell shows. Throws DorX.
std::unique_ptr<ValueStore> valueOf(xCDorvexDataSet& data, const DorCPP::DorConnect& connection,
                                    int column, long row);
