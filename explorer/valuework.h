// What is done with a whole value, piece by piece: the window goes on living meanwhile.
#pragma once

#include <cstdint>
#include <exception>
#include <memory>
#include <string>

#include <oviapi/atomicfile.h>

#include "explorer/backgroundtask.h"
#include "explorer/texts.h"
#include "explorer/valuecontent.h"
#include "explorer/valuereader.h"
#include "explorer/valuestore.h"

// Why a file cannot become a value.
class ValueFault : public std::exception {
public:
    explicit ValueFault(TextId reason)
        : m_reason(reason)
    {
    }
    TextId reason() const { return m_reason; }
    const char* what() const noexcept override { return "the file cannot become the value"; }

private:
    TextId m_reason;
};

// An object that goes before its work is done leaves no trace of it.
class ValueWork {
public:
    enum class State { Going, Waiting, Done }; // Waiting: nothing to be done for the moment

    virtual ~ValueWork() = default;
    // Does one piece. Throws DorX, std::system_error whose text is a sentence, ValueFault.
    virtual State step() = 0;
    virtual int percent() const = 0;
    // What is being done, for the user.
    virtual TextId text() const = 0;
};

// Writes a value to a file, which is replaced as a whole at the end.
class ValueSaver : public ValueWork {
public:
    ValueSaver(ValueStore& store, const std::wstring& path);

    State step() override;
    int percent() const override;
    TextId text() const override { return TextValueSaving; }

private:
    struct Ending;

    ValueStore& m_store;
    int64_t m_size;
    int64_t m_done = 0; // bytes
    std::string m_piece;
    std::shared_ptr<OviAPI::AtomicFileWriter> m_file;
    std::shared_ptr<Ending> m_ending; // while the file reaches the disk, on a thread
    std::unique_ptr<BackgroundTask> m_task;
};

// Makes the content of a file the value. The file is read twice: first to see whether it can be
// read and, for text, whether it is valid UTF-8, then without a break into the database, so that
// nothing else comes between the pieces.
class ValueLoader : public ValueWork {
public:
    ValueLoader(ValueStore& store, const std::wstring& path);
    ~ValueLoader() override;

    State step() override;
    int percent() const override;
    TextId text() const override { return m_checked ? TextValueStoring : TextValueLoading; }

private:
    class File;

    void look();
    void store();

    ValueStore& m_store;
    std::unique_ptr<File> m_file;
    int64_t m_size;
    int64_t m_done = 0; // bytes
    std::string m_piece;
    Utf8Check m_check;
    unsigned long m_sum = 0; // of the bytes that were looked at
    bool m_checked = false;
};

// Reads a value whole.
class ValueCollector : public ValueWork {
public:
    explicit ValueCollector(ValueStore& store);

    State step() override;
    int percent() const override;
    TextId text() const override { return TextValueReading; }
    // When the work is done.
    std::string& bytes() { return m_bytes; }

private:
    ValueStore& m_store;
    int64_t m_size;
    std::string m_bytes;
};

// Looks for bytes, from an offset to the end of the value.
class ValueFinder : public ValueWork {
public:
    // what: not empty.
    ValueFinder(ValueReader& reader, std::string what, int64_t from);

    State step() override;
    int percent() const override;
    TextId text() const override { return TextValueFinding; }
    // Where they begin; -1 when they are not there. When the work is done.
    int64_t found() const { return m_found; }

private:
    ValueReader& m_reader;
    std::string m_what;
    int64_t m_from;
    int64_t m_at;
    int64_t m_found = -1;
};
