// What a dataset throws when it is asked for something it does not have.
#pragma once

#include <stdexcept>
#include <string>

#include <oviapi/export.h>

namespace OviAPI {

// A programming or setting-up error, told by a number. What the server refuses is a row error (see
// errorholder.h), not one of these.
class OVIAPI_API aCDataFailure : public std::runtime_error {
public:
    enum Code : int {
        IndexOutOfRange = 2, // no column, row or descriptor of this number
        NoCursor = 9,        // nothing has been opened
    };

    explicit aCDataFailure(int code);

    int code() const { return m_code; }

private:
    int m_code;
};

} // namespace OviAPI
