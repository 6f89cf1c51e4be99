// Replacing a file as a whole: a reader, a crash or a full disk sees the old content or the new
// one.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include <oviapi/export.h>

namespace OviAPI {

// Writes the bytes to a temporary file in the folder of the target, flushes it to the disk, renames
// it onto the target and flushes the folder. A symbolic link is followed: what it points to is
// replaced, also when it does not exist yet, and the link stays. An existing file keeps its
// permissions and, where the system allows it, its owner; a new one is readable and writable by its
// owner alone (0600). A file that the user may not write is not replaced. Other hard links of the
// target keep the old content.
// Throws std::system_error whose text is a sentence that names the file; the old file is then whole
// (or the new one, when only flushing the folder failed) and the temporary file is gone.
OVIAPI_API void writeFileAtomically(const std::wstring& path, std::string_view bytes);

// The same for what comes in pieces: the target is replaced by commit, and an object that goes
// without it leaves the old file as it was. Throws std::system_error as above; after that commit
// must not be called.
class OVIAPI_API AtomicFileWriter {
public:
    explicit AtomicFileWriter(const std::wstring& path);
    ~AtomicFileWriter();
    AtomicFileWriter(const AtomicFileWriter&) = delete;
    AtomicFileWriter& operator=(const AtomicFileWriter&) = delete;

    void append(std::string_view bytes);
    void commit();

private:
    struct State;
    std::unique_ptr<State> m_state;
};

// Removes temporary files that writers of this target left when they were killed. Those of a living
// process stay. Returns the number of files removed; what cannot be read or removed is left alone.
OVIAPI_API int cleanStaleTemporaries(const std::wstring& path);

} // namespace OviAPI
