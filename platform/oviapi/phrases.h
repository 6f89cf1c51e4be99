// The texts that the platform itself shows to a user, by name.
#pragma once

#include <functional>
#include <span>
#include <string>
#include <string_view>

#include <oviapi/export.h>

namespace OviAPI {

// The value is the number of the text in the application's resources. Where a comment names an
// argument, the text has one placeholder for it.
enum class Phrase : int {
    // buttons of message boxes
    Ok = 60011,
    Cancel = 60012,
    Yes = 60013,
    No = 60014,

    // a record view
    NoColumns = 61001,
    NoRows = 61002,
    RowNotRead = 61003,
    RowsCopied = 61004, // number of rows

    // why a text is not a value of a column
    NotANumber = 61011,
    NotAnInteger = 61012,
    OutOfRange = 61013,
    NotADate = 61014,
    NotABoolean = 61015,
    NotHexadecimal = 61016,
    TooLong = 61017,
    NotText = 61018,

    // why a cell cannot be edited
    ColumnReadOnly = 61021,
    LargeObjectOpened = 61022,
    SourceReadOnly = 61023,
    ValueInPart = 61024,
    TableReadOnly = 61025,
    LargeObjectNotEdited = 61026,
    ConnectionReadOnly = 61051,
    CursorReadOnly = 61052,
    ColumnComputed = 61053,
    RowsNotKeyed = 61054,
    NotTextOfClient = 61055,

    // what is wrong with a stored value or row
    ValueCut = 61031,
    TextNotValid = 61032,
    TypeMismatch = 61033, // the stored value
    RowTooLong = 61034,

    // editing in a record view
    NullKey = 61041,
    DefaultNewRow = 61042,
    MarkKeys = 61043,
    ValueOpened = 61044,
    NotStored = 61045,
    StoredNow = 61046, // the value
    NewRow = 61047,

    // errors of the database client, one for each kind
    DbNoRow = 61101,
    DbRowGone = 61102,
    DbDeadlock = 61103,
    DbLocked = 61104,
    DbSessionLost = 61105,
    DbServerStopped = 61106,
    DbCorruptFile = 61107,
    DbDiskFull = 61108,
    DbNoMemory = 61109,
    DbInputOutput = 61110,
    DbCannotOpen = 61111,
    DbRefused = 61112,
    DbSqlText = 61113,
    DbSeveralStatements = 61114,
    DbBadCall = 61115,
    DbStructureChanged = 61116,
    DbTooBig = 61117,
    DbBadBind = 61118,
    DbCancelled = 61119,
    DbUndone = 61120,
    DbBusy = 61121,
    DbNotUpdatable = 61122,
    DbRowChanged = 61123,
    DbOther = 61124,
    DbOutcomeUnknown = 61125, // what may follow the loss of a connection

    // what follows such a sentence where the engine has said nothing
    DbDetailRow = 61131, // row number
    DbDetailSessionBusy = 61132,
    DbDetailCursorBusy = 61133,
    DbDetailFileMoved = 61134,
    DbDetailRolledBack = 61135,
    DbDetailNotOneTable = 61136,
    DbDetailNoName = 61137,
    DbDetailNoDriver = 61138, // kind of database
    DbDetailFolder = 61139,   // path
    DbDetailNotFile = 61140,  // path
    DbDetailTempMake = 61141, // folder
    DbDetailTempWrite = 61142,
    DbDetailTempRead = 61143,
    DbDetailConnectionText = 61144,
    DbDetailNoAnswer = 61145,
    DbDetailCopy = 61146,
    DbDetailZeroInText = 61147,

    // the menu of an editor
    Undo = 61201,
    Redo = 61202,
    Cut = 61203,
    Copy = 61204,
    Paste = 61205,
    Delete = 61206,
    SelectAll = 61207,

    // the find bar of an editor
    FindWhat = 61211,
    ReplaceWith = 61212,
    LineNumber = 61213,
    MatchCase = 61214,
    WholeWord = 61215,
    FindPrevious = 61216,
    FindNext = 61217,
    Replace = 61218,
    ReplaceAll = 61219,
    CloseBar = 61220,
    NotFound = 61221,
    Wrapped = 61222,
    Replaced = 61223, // number of places

    // the choice of a colour
    ChooseColor = 61231,
    BasicColors = 61232,
    Red = 61233,
    Green = 61234,
    Blue = 61235,
    ColorCode = 61236,
    OldColor = 61237,
    NewColor = 61238,

    // the choice of a file
    OpenFile = 61241,
    SaveFile = 61242,
    OpenButton = 61243,
    SaveButton = 61244,
    FileName = 61245,
    FileType = 61246,
    Folder = 61247,
    AllFiles = 61248,
    FileExists = 61249,  // name of the file
    FileMissing = 61250, // name of the file
};

struct EnglishPhrase {
    Phrase phrase;
    const wchar_t* text;
};

// Every phrase in English, as it is built in.
OVIAPI_API std::span<const EnglishPhrase> englishPhrases();

// The phrase in the language that was loaded last, else in English; valid in every thread.
OVIAPI_API std::wstring phrase(Phrase which);
// With the argument in the place of the placeholder; nothing else in the text counts as a format.
OVIAPI_API std::wstring phrase(Phrase which, std::wstring_view argument);

// Takes every phrase from the loader, which is called with its number and gives an empty text for
// one that it does not have; a null loader means English for all. The application object calls it
// when a language has been set. What has been shown already is not touched: views ask again when
// Application::notifyCharsetChanged tells them.
OVIAPI_API void loadPhrases(const std::function<std::wstring(int number)>& loader);

// Counts the loads, for those who keep texts made of phrases.
OVIAPI_API unsigned long phraseEdition() noexcept;

} // namespace OviAPI
