// How a database is opened.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

// What the connection dialog asks for and the options remember. Never a password.
struct Connection {
    static constexpr int32_t DefaultWait = 1; // s
    static constexpr int32_t LongestWait = 10;
    static constexpr int32_t HighestPort = 65535;

    // The scheme of its engine, DorCPP::Engine.
    std::wstring engine = L"sqlite";
    // A database in a file: its path, and whether the file is read as a whole first.
    std::wstring path;
    bool verify = false;
    // A database on a server. Port 0: the engine's usual one. Parameters as in the name of a
    // database: "sslmode=require&connect_timeout=5".
    std::wstring host;
    int32_t port = 0;
    std::wstring database;
    std::wstring user;
    std::wstring parameters;
    enum Encryption : int32_t {
        AsUsual = 0, // as the client has it
        Never = 1,
        Always = 2,  // whoever the server is
        Checked = 3, // with a certificate for the name of the host
    };
    int32_t encryption = AsUsual;
    // Both. The wait for another program's lock, s.
    bool readOnly = false;
    int32_t lockWait = DefaultWait;

    bool isFile() const { return !path.empty(); }
    // The path, or "user@host:port/database".
    std::wstring title() const;
    // The name for the database client, in multibyte text.
    std::string databaseName() const;
    // The client's options.
    std::string clientOptions() const;

    bool operator==(const Connection&) const = default;
};

// The connections used last, the newest first; each database once.
class RecentConnections {
public:
    static constexpr size_t Most = 10;

    // Puts a connection in front. Another one to the same database goes, and the oldest beyond the
    // most.
    void add(const Connection& connection);
    // Out of range: nothing.
    void remove(size_t index);

    const std::vector<Connection>& all() const { return m_all; }
    bool operator==(const RecentConnections&) const = default;

private:
    std::vector<Connection> m_all;
};
