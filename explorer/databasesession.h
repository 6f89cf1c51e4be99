// An open database and what is in it.
#pragma once

#include <exception>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <dorcpp/connect.h>
#include <dorcpp/dorx.h>

#include "explorer/connection.h"
#include "explorer/secret.h"
#include "explorer/texts.h"

// Why a database could not be opened.
class OpenFailure : public std::exception {
public:
    OpenFailure(TextId reason, std::wstring details)
        : m_reason(reason)
        , m_details(std::move(details))
    {
    }
    explicit OpenFailure(const DorCPP::DorX& error);

    // A sentence for the user.
    TextId reason() const { return m_reason; }
    // The words of the system or the engine, the latter in the present language; may be empty.
    // User-interface thread only.
    std::wstring details() const;
    const char* what() const noexcept override { return "the database cannot be opened"; }

private:
    TextId m_reason;
    std::wstring m_details;
    DorCPP::DorX m_error; // empty when the system has failed
};

struct DatabaseTable {
    std::wstring name;
    bool isView = false;
    std::wstring schema; // empty: the usual one

    bool operator==(const DatabaseTable&) const = default;
};

// Belongs to one thread at a time.
class DatabaseSession {
public:
    // name: a path or "sqlite:PATH" in multibyte text, or what else the database client knows.
    // Never waits longer than a second for a lock, nor for a pipe. Throws OpenFailure.
    explicit DatabaseSession(const std::string& name);
    // Waits for a lock as long as the connection says. Throws OpenFailure, also for what is too
    // long for the database client.
    DatabaseSession(const Connection& connection, const Secret& password);

    // As it was opened, without passwords; a path made absolute.
    const std::string& name() const { return m_name; }
    // The path of the file; empty for a database on a server.
    const std::string& path() const { return m_path; }
    std::wstring displayName() const; // the file's name without its folder
    std::wstring displayPath() const;
    // The engine, its version and what else is to be known of the connection, in the present
    // language: "SQLite 3.40.1, read-only".
    std::wstring connectionText() const;

    // Executes a statement without parameters and rows. Throws DorX.
    void execute(const char* sql);

    // What opens a database. May throw OpenFailure.
    using Open = std::function<std::unique_ptr<DatabaseSession>()>;

    DorCPP::DorConnect& connection() { return m_connection; }
    const std::vector<DatabaseTable>& tables() const { return m_tables; }
    // Reads the list of tables again. Throws DorX.
    void readTables();

private:
    void open(const char* user, const char* password, const char* options, bool verify);

    std::string m_name;
    std::string m_path;
    DorCPP::DorConnect m_connection;
    std::vector<DatabaseTable> m_tables;
};

// The file path that a database name stands for; empty when it names a server.
std::string databasePath(const std::string& name);

// The sentence of a failure, with the details below.
std::wstring textOf(const OpenFailure& failure);

// The engine's words of an error, in wide text.
std::wstring messageOf(const DorCPP::DorX& x);
