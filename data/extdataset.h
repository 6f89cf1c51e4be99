// A dataset in memory, filled from any source of rows.
#pragma once

#include <optional>
#include <string>

#include <oviapi/memorydataset.h>

#include "app/export.h"

// Rows of named fields, read once from the first to the last.
class OVIEXT_API xDataSource {
public:
    // What a field holds. Any other number: nothing that is known.
    enum FieldKind : int {
        Integer = 1,
        LargeInteger = 2,
        String = 3,
        Memo = 4,
        ShortInteger = 5,
        Blob = 6,
        Double = 7,
        Float = 8,
        File = 9,
        Moment = 10, // date and time
    };

    virtual ~xDataSource();

    // Fields are counted from 1.
    virtual int FieldCount() const = 0;
    virtual std::wstring FieldName(int field) const = 0;
    virtual int GetFieldKind(int field) const = 0;
    // Characters of a text, bytes of a value of no fixed size; else it does not count.
    virtual long FieldSize(int field) const = 0;

    // Goes back to before the first row.
    virtual void Rewind() = 0;
    // Moves to the next row, at first to the first; false behind the last.
    virtual bool Next() = 0;
    // The value of the current row as text, nothing for NULL. A date and time is written
    // "yyyy-mm-dd hh:mi:ss[.f]".
    virtual std::optional<std::wstring> FieldText(int field) const = 0;
};

// Points to its source, which must stay as long as rows are read from it.
class OVIEXT_API WExtDataSet : public OviAPI::aCMemoryDataSet {
public:
    // The framework's data type of a field of this kind; 0 for a kind that is not known.
    static unsigned char DataTypeOfKind(int kind);

    // Makes one column for each field, with its name as name and title. The rows that there were
    // are gone.
    void InitByDataSource(xDataSource* source);
    // Fills the rows anew from the source. A text that is not a value of its column is NULL and
    // marked as not valid, with the reason. Returns the number of rows. Throws aCDataFailure
    // (NoCursor) without a source.
    long GetData();

private:
    xDataSource* m_source = nullptr;
};
