#include <dorcpp/errors.h>

#include <cerrno>
#include <cstring>
#include <system_error>

#include <dorcpp/charset.h>

namespace DorCPP {

const char* plainWords(int code)
{
    switch (code) {
    case CodeNoRow:
        return "There is no such row";
    case CodeRowGone:
        return "The row has been deleted since the data were read";
    case CodeDeadlock:
        return "Another session changed the same data; the transaction cannot go on";
    case CodeLocked:
        return "The database is locked by another session";
    case CodeSessionLost:
        return "The connection to the database is lost";
    case CodeServerStopped:
        return "The database server has stopped";
    case CodeCorruptFile:
        return "The file is damaged or is not a database";
    case CodeDiskFull:
        return "The disk is full";
    case CodeNoMemory:
        return "There is not enough memory";
    case CodeInputOutput:
        return "A file could not be read or written";
    case CodeCannotOpen:
        return "The database cannot be opened";
    case CodeRefused:
        return "The database refused the change";
    case CodeSqlText:
        return "The statement is not correct";
    case CodeSeveralStatements:
        return "The text holds more than one statement; execute them one by one";
    case CodeBadCall:
        return "The call is not allowed here";
    case CodeStructureChanged:
        return "The structure of the table has changed; execute the statement again";
    case CodeTooBig:
        return "The statement or a value is too long";
    case CodeBadBind:
        return "A parameter value does not fit the statement";
    case CodeCancelled:
        return "The statement was cancelled";
    case CodeUndone:
        return "The statement was stopped because its transaction was rolled back";
    case CodeBusy:
        return "Another statement is still running";
    case CodeNotUpdatable:
        return "The answer cannot be changed row by row";
    case CodeRowChanged:
        return "The row has been changed by another session since it was read";
    default:
        return "The database reported an error";
    }
}

DorX makeError(int code, std::string_view detail)
{
    const std::string text = convert(detail, Charset::Utf8, getStdCharset());
    return DorX(-1, code, plainWords(code), detail.empty() ? nullptr : text.c_str());
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

DorX makeSystemError(int error, std::string_view action)
{
    const bool full = error == ENOSPC || error == EDQUOT || error == EFBIG;
    const std::string detail = std::string(action) + ": " + std::generic_category().message(error);
    return makeEngineError(full ? CodeDiskFull : CodeInputOutput, error, detail);
}

} // namespace DorCPP
