#include <oviapi/datafailure.h>

namespace OviAPI {

namespace {

std::string sentence(int code)
{
    switch (code) {
    case aCDataFailure::IndexOutOfRange:
        return "The dataset has no such column or row.";
    case aCDataFailure::NoCursor:
        return "The dataset has not been opened.";
    default:
        return "The dataset failed with code " + std::to_string(code) + ".";
    }
}

} // namespace

aCDataFailure::aCDataFailure(int code)
    : std::runtime_error(sentence(code))
    , m_code(code)
{
}

} // namespace OviAPI
