#include <dorcpp/errors.h>

#include <cerrno>
#include <cstring>
#include <system_error>

#include <dorcpp/charset.h>
#include <oviapi/text.h>

namespace DorCPP {

using OviAPI::Phrase;

Phrase phraseOf(int code)
{
    switch (code) {
    case CodeNoRow:
        return Phrase::DbNoRow;
    case CodeRowGone:
        return Phrase::DbRowGone;
    case CodeDeadlock:
        return Phrase::DbDeadlock;
    case CodeLocked:
        return Phrase::DbLocked;
    case CodeSessionLost:
        return Phrase::DbSessionLost;
    case CodeServerStopped:
        return Phrase::DbServerStopped;
    case CodeCorruptFile:
        return Phrase::DbCorruptFile;
    case CodeDiskFull:
        return Phrase::DbDiskFull;
    case CodeNoMemory:
        return Phrase::DbNoMemory;
    case CodeInputOutput:
        return Phrase::DbInputOutput;
    case CodeCannotOpen:
        return Phrase::DbCannotOpen;
    case CodeRefused:
        return Phrase::DbRefused;
    case CodeSqlText:
        return Phrase::DbSqlText;
    case CodeSeveralStatements:
        return Phrase::DbSeveralStatements;
    case CodeBadCall:
        return Phrase::DbBadCall;
    case CodeStructureChanged:
        return Phrase::DbStructureChanged;
    case CodeTooBig:
        return Phrase::DbTooBig;
    case CodeBadBind:
        return Phrase::DbBadBind;
    case CodeCancelled:
        return Phrase::DbCancelled;
    case CodeUndone:
        return Phrase::DbUndone;
    case CodeBusy:
        return Phrase::DbBusy;
    case CodeNotUpdatable:
        return Phrase::DbNotUpdatable;
    case CodeRowChanged:
        return Phrase::DbRowChanged;
    default:
        return Phrase::DbOther;
    }
}

std::string detailText(Phrase detail, std::string_view argument)
{
    return OviAPI::wideToUtf8(OviAPI::phrase(detail, OviAPI::utf8ToWide(argument)));
}

DorX makeError(int code, std::string_view detail)
{
    const std::string text = convert(detail, Charset::Utf8, getStdCharset());
    return DorX(-1, code, phraseOf(code), detail.empty() ? nullptr : text.c_str());
}

DorX makeError(int code, Phrase detail, std::string_view argument)
{
    return makeError(code, detailText(detail, argument));
}

DorX makeEngineError(int code, int engineCode, std::string_view detail)
{
    DorX x = makeError(code, detail);
    x.setEngineCode(engineCode);
    const bool everyday = code == CodeNoRow || code == CodeRowGone || code == CodeDeadlock ||
                          code == CodeLocked || code == CodeRefused || code == CodeRowChanged;
    if (!everyday)
        x.setSystemCode(engineCode);
    return x;
}

DorX makeSystemError(int error, Phrase action, std::string_view argument)
{
    const bool full = error == ENOSPC || error == EDQUOT || error == EFBIG;
    const std::string detail =
        detailText(action, argument) + ": " + std::generic_category().message(error);
    return makeEngineError(full ? CodeDiskFull : CodeInputOutput, error, detail);
}

} // namespace DorCPP
