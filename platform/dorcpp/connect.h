// Connections to a database.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include <dorcpp/connectioninfo.h>
#include <dorcpp/dorx.h>
#include <dorcpp/types.h>
#include <oviapi/export.h>

namespace DorCPP {

class Session;

// A client's hold on a session. A session stays open as long as a connection that created or keeps
// it, or a cursor on it, exists; connections attached without keeping it only look it up. A
// connection object belongs to one thread; several may share a session from several threads.
class OVIAPI_API DorConnect {
public:
    DorConnect();
    virtual ~DorConnect();
    DorConnect(const DorConnect&) = delete;
    DorConnect& operator=(const DorConnect&) = delete;

    // Opens a session and leaves the one held before.
    //
    // database   of the embedded engine: a file path, ":memory:" for a database of this session
    //            alone, or "sqlite:PATH", which may end in "?mode=ro" or "?mode=rw". The file must
    //            exist.
    //            Of a server: "postgresql://USER@HOST:PORT/NAME" or "host=... dbname=...". What it
    //            leaves open comes from a service, the environment and the client's password file.
    // options    words parted by blanks, commas or semicolons, may be null: "create" makes a
    //            missing file, "readonly" is ModeReadOnly, "timeout=N" waits N milliseconds for a
    //            lock.
    // user, password   of a server; win over the text, empty or null ones leave it. Not used by an
    //            embedded database. Never shown in a message.
    // mode       see Mode.
    // verify     reads the whole file and refuses a damaged one; nothing on a server.
    // registered whether attach finds the session.
    //
    // Returns the channel number, from 1. Throws DorX: CodeCannotOpen, CodeCorruptFile, CodeLocked,
    // CodeBadCall for an option it does not know.
    int createCS(const char* user, const char* password, const char* database, const char* options,
                 int mode, bool verify, bool registered);

    // Takes the session with this channel number; with keep the session stays open for this object
    // too. Throws DorX (CodeSessionLost) when there is none.
    void attach(int channel, bool keep);

    // Leaves the session. Nothing happens when there is none.
    void close();

    bool isOpen() const;
    // The channel number of the session, 0 when there is none.
    int channel() const { return m_channel; }
    // The mode given to createCS; effective: as it is in force, so with ModeReadOnly also when the
    // database cannot be written.
    int mode(bool effective) const;

    ConnectionInfo info() const;

    // Whether a transaction is open. False while an asynchronous statement runs on the session.
    bool inTransaction() const;

    // The session; throws DorX (CodeSessionLost) when there is none.
    std::shared_ptr<Session> session() const;

private:
    std::shared_ptr<Session> m_kept;
    std::weak_ptr<Session> m_session;
    int m_channel = 0;
};

// Whether this is the name of a database on a server.
OVIAPI_API bool isServerName(std::string_view database);
// The name of a database without the passwords in it: for what people see and files keep.
OVIAPI_API std::string withoutPasswords(std::string_view database);

} // namespace DorCPP
