// What the tests of editing share: a dataset that tells what it sends, on either engine.
#pragma once

#include <clocale>
#include <string>
#include <vector>

#include "../conformance/support.h"
#include "data/dordataset.h"

namespace Editing {

using Conformance::Client;
using Conformance::Engine;
using Texts = std::vector<std::string>;
using WideTexts = std::vector<std::wstring>;

// Keeps the texts of its changes, as they were before the database client has translated them.
class Recorder : public xCDorvexDataSet {
public:
    WideTexts sent;

protected:
    void ExecuteChange(DorCPP::DorCursor& cursor, const std::wstring& sql) override
    {
        sent.push_back(sql);
        xCDorvexDataSet::ExecuteChange(cursor, sql);
    }
};

class OnEngine : public Conformance::OnEngine {
protected:
    OnEngine() { setlocale(LC_ALL, "C.UTF-8"); } // as a started application does

    std::wstring schema() const { return {place.schema().begin(), place.schema().end()}; }
    // What another session sees.
    Texts stored(const std::string& sql) { return Client(place).answer(sql); }
};

// Data of one column from text; the text must be a value of it.
inline std::unique_ptr<std::byte[]> dataOf(const OviAPI::aCDataSet& data, int column,
                                           std::wstring_view text)
{
    auto value = data.AllocData(column, nullptr, OviAPI::ValueForm);
    EXPECT_EQ(data.TextToData(column, text, value.get()), OviAPI::TextFault::None);
    return value;
}

inline std::unique_ptr<std::byte[]> stampOf(const OviAPI::aCDataSet& data, int column,
                                            unsigned stamp)
{
    auto value = data.AllocData(column, nullptr, OviAPI::ValueForm);
    data.SetDataStamp(column, value.get(), stamp);
    return value;
}

inline short store(OviAPI::aCDataSet& data, int column, long row, std::wstring_view text)
{
    return data.StoreText(column, row, text);
}

inline short storeStamp(OviAPI::aCDataSet& data, int column, long row, unsigned stamp)
{
    return data.StoreCell(column, row, stampOf(data, column, stamp).get());
}

// Kind and code of the error of a row; 0, 0 without one.
inline std::pair<int, long> errorOf(const OviAPI::aCDataSet& data, long row)
{
    const auto* error = data.getRowError(row);
    return error ? std::pair(error->kind, error->code) : std::pair(0, 0L);
}

inline const std::pair<int, long> changed{OviAPI::aCErrorHolder::Refused, DorCPP::CodeRowChanged};
inline const std::pair<int, long> gone{OviAPI::aCErrorHolder::NoSuchRow, DorCPP::CodeRowGone};
inline const std::pair<int, long> noError{0, 0};

} // namespace Editing
