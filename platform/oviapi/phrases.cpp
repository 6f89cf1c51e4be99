#include <oviapi/phrases.h>

#include <algorithm>
#include <atomic>
#include <map>
#include <mutex>

#include <oviapi/text.h>

namespace OviAPI {

namespace {

constexpr EnglishPhrase english[] = {
    {Phrase::Ok, L"OK"},
    {Phrase::Cancel, L"Cancel"},
    {Phrase::Yes, L"Yes"},
    {Phrase::No, L"No"},

    {Phrase::NoColumns, L"No columns"},
    {Phrase::NoRows, L"No rows"},
    {Phrase::RowNotRead, L"The row could not be read."},
    {Phrase::RowsCopied, L"Only the first %ls rows have been copied."},

    {Phrase::NotANumber, L"This is not a number."},
    {Phrase::NotAnInteger, L"This is not a whole number."},
    {Phrase::OutOfRange, L"The number is outside the range of this column."},
    {Phrase::NotADate, L"This is not a date and time in the form of this column."},
    {Phrase::NotABoolean, L"This is neither true nor false."},
    {Phrase::NotHexadecimal, L"Bytes are written as pairs of hexadecimal digits."},
    {Phrase::TooLong, L"The value is longer than this column allows."},
    {Phrase::NotText, L"Values of this column cannot be entered as text."},

    {Phrase::ColumnReadOnly, L"This column cannot be changed."},
    {Phrase::LargeObjectOpened, L"A large object is opened to be changed."},
    {Phrase::SourceReadOnly, L"The source does not allow changes of this column."},
    {Phrase::ValueInPart, L"Only a part of the value can be shown here."},
    {Phrase::TableReadOnly, L"This table is open for reading only."},
    {Phrase::LargeObjectNotEdited, L"A large object is not edited in the table."},
    {Phrase::ConnectionReadOnly, L"The connection is for reading only."},
    {Phrase::CursorReadOnly, L"The query has been opened for reading only."},
    {Phrase::ColumnComputed, L"The value is computed and does not lie in a column of a table."},
    {Phrase::RowsNotKeyed,
     L"The rows cannot be changed: they do not come one by one from one table that has a key."},
    {Phrase::NotTextOfClient, L"The text holds characters that cannot be sent to the database."},

    {Phrase::ValueCut, L"The value is longer than its column; it is shown up to here."},
    {Phrase::TextNotValid,
     L"The stored text is not valid; replacement marks stand where it could not be read."},
    {Phrase::TypeMismatch, L"The stored value does not have the type of its column: %ls"},
    {Phrase::RowTooLong, L"A row of the answer is too long to be shown"},

    {Phrase::NullKey, L"An empty text is no value of this column. Ctrl+0 sets NULL."},
    {Phrase::DefaultNewRow, L"Only a cell of a new row can be left to the server."},
    {Phrase::MarkKeys, L"The space bar switches the mark, Ctrl+0 sets NULL."},
    {Phrase::ValueOpened, L"A text of several lines, or a long one, is not edited in the table."},
    {Phrase::NotStored, L"The change has not been stored."},
    {Phrase::StoredNow, L"Stored now: %ls"},
    {Phrase::NewRow, L"new row"},

    {Phrase::DbNoRow, L"There is no such row"},
    {Phrase::DbRowGone, L"The row has been deleted since the data were read"},
    {Phrase::DbDeadlock, L"Another session changed the same data; the transaction cannot go on"},
    {Phrase::DbLocked, L"The database is locked by another session"},
    {Phrase::DbSessionLost, L"The connection to the database is lost"},
    {Phrase::DbServerStopped, L"The database server has stopped"},
    {Phrase::DbCorruptFile, L"The file is damaged or is not a database"},
    {Phrase::DbDiskFull, L"The disk is full"},
    {Phrase::DbNoMemory, L"There is not enough memory"},
    {Phrase::DbInputOutput, L"A file could not be read or written"},
    {Phrase::DbCannotOpen, L"The database cannot be opened"},
    {Phrase::DbRefused, L"The database refused the change"},
    {Phrase::DbSqlText, L"The statement is not correct"},
    {Phrase::DbSeveralStatements,
     L"The text holds more than one statement; execute them one by one"},
    {Phrase::DbBadCall, L"The call is not allowed here"},
    {Phrase::DbStructureChanged,
     L"The structure of the table has changed; execute the statement again"},
    {Phrase::DbTooBig, L"The statement or a value is too long"},
    {Phrase::DbBadBind, L"A parameter value does not fit the statement"},
    {Phrase::DbCancelled, L"The statement was cancelled"},
    {Phrase::DbUndone, L"The statement was stopped because its transaction was rolled back"},
    {Phrase::DbBusy, L"Another statement is still running"},
    {Phrase::DbNotUpdatable, L"The answer cannot be changed row by row"},
    {Phrase::DbRowChanged, L"The row has been changed by another session since it was read"},
    {Phrase::DbOther, L"The database reported an error"},
    {Phrase::DbOutcomeUnknown, L"It is not known whether the statement was carried out"},

    {Phrase::DbDetailRow, L"row %ls"},
    {Phrase::DbDetailSessionBusy, L"the session is executing a statement"},
    {Phrase::DbDetailCursorBusy, L"on this cursor"},
    {Phrase::DbDetailFileMoved, L"the database file has been moved or deleted"},
    {Phrase::DbDetailRolledBack, L"the whole transaction has been rolled back"},
    {Phrase::DbDetailNotOneTable, L"it does not come row by row from one table"},
    {Phrase::DbDetailNoName, L"no database is named"},
    {Phrase::DbDetailNoDriver, L"there is no driver for %ls databases"},
    {Phrase::DbDetailFolder, L"%ls is a directory"},
    {Phrase::DbDetailNotFile, L"%ls is not a file"},
    {Phrase::DbDetailTempMake, L"Making a temporary file in %ls"},
    {Phrase::DbDetailTempWrite, L"Writing a temporary file"},
    {Phrase::DbDetailTempRead, L"Reading a temporary file"},
    {Phrase::DbDetailConnectionText, L"the connection text cannot be read; a sign such as @ or / "
                                     L"in a password is written by its number"},
    {Phrase::DbDetailNoAnswer, L"the server does not answer"},
    {Phrase::DbDetailCopy, L"COPY from or to the client is not possible here"},
    {Phrase::DbDetailZeroInText, L"a text cannot hold a zero character"},

    {Phrase::Undo, L"&Undo"},
    {Phrase::Redo, L"&Redo"},
    {Phrase::Cut, L"Cu&t"},
    {Phrase::Copy, L"&Copy"},
    {Phrase::Paste, L"&Paste"},
    {Phrase::Delete, L"&Delete"},
    {Phrase::SelectAll, L"Select &all"},

    {Phrase::FindWhat, L"Find"},
    {Phrase::ReplaceWith, L"Replace with"},
    {Phrase::LineNumber, L"Go to line"},
    {Phrase::MatchCase, L"Match &case"},
    {Phrase::WholeWord, L"Whole &word"},
    {Phrase::FindPrevious, L"Find previous"},
    {Phrase::FindNext, L"Find next"},
    {Phrase::Replace, L"&Replace"},
    {Phrase::ReplaceAll, L"Replace &all"},
    {Phrase::CloseBar, L"Close"},
    {Phrase::NotFound, L"Not found"},
    {Phrase::Wrapped, L"Went on at the other end"},
    {Phrase::Replaced, L"Replaced: %ls"},

    {Phrase::ChooseColor, L"Choose a color"},
    {Phrase::BasicColors, L"C&olors"},
    {Phrase::Red, L"&Red"},
    {Phrase::Green, L"&Green"},
    {Phrase::Blue, L"&Blue"},
    {Phrase::ColorCode, L"&Code"},
    {Phrase::OldColor, L"Now"},
    {Phrase::NewColor, L"New"},

    {Phrase::OpenFile, L"Open a file"},
    {Phrase::SaveFile, L"Save as"},
    {Phrase::OpenButton, L"&Open"},
    {Phrase::SaveButton, L"&Save"},
    {Phrase::FileName, L"File &name:"},
    {Phrase::FileType, L"Files of type:"},
    {Phrase::Folder, L"Folder:"},
    {Phrase::AllFiles, L"All files"},
    {Phrase::FileExists, L"There is a file \"%ls\" already.\nOverwrite it?"},
    {Phrase::FileMissing, L"There is no file \"%ls\"."},
};

// What has been loaded. Statements fail on threads of their own and say so in the user's language.
struct Catalogue {
    std::mutex mutex;
    std::map<int, std::wstring> texts; // by number; what is missing is English
    std::atomic<unsigned long> edition{0};
};

// Never destroyed: a worker may outlive the program's other objects.
Catalogue& catalogue()
{
    static auto* const one = new Catalogue; // kept to the end of the process
    return *one;
}

std::wstring builtIn(Phrase which)
{
    const auto* found = std::find_if(std::begin(english), std::end(english),
                                     [=](const EnglishPhrase& p) { return p.phrase == which; });
    return found == std::end(english) ? std::wstring() : found->text;
}

} // namespace

std::span<const EnglishPhrase> englishPhrases()
{
    return english;
}

std::wstring phrase(Phrase which)
{
    Catalogue& loaded = catalogue();
    const std::lock_guard lock(loaded.mutex);
    const auto found = loaded.texts.find(static_cast<int>(which));
    return found == loaded.texts.end() ? builtIn(which) : found->second;
}

std::wstring phrase(Phrase which, std::wstring_view argument)
{
    return substitute(phrase(which), argument);
}

void loadPhrases(const std::function<std::wstring(int number)>& loader)
{
    std::map<int, std::wstring> texts;
    if (loader) {
        for (const EnglishPhrase& each : english) {
            const int number = static_cast<int>(each.phrase);
            if (std::wstring text = loader(number); !text.empty())
                texts.emplace(number, std::move(text));
        }
    }
    Catalogue& loaded = catalogue();
    const std::lock_guard lock(loaded.mutex);
    loaded.texts.swap(texts);
    ++loaded.edition;
}

unsigned long phraseEdition() noexcept
{
    return catalogue().edition;
}

} // namespace OviAPI
