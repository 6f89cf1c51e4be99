// Releases of a source package, read from its change log.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "explorer/calendar.h"

// All texts are UTF-8 as the file holds them.
struct ChangelogRelease {
    std::string source;
    std::string version;
    std::string distribution;             // "unstable", ...
    std::string urgency;                  // lower case; empty when the entry does not tell
    std::string maintainer;               // name, without the address
    std::optional<CalendarTime> released; // nothing for a date that cannot be read
};

// Reads a Debian change log line by line. An entry begins with "source (version) distribution;
// urgency=x" and ends with " -- Name <address>  date"; every other line is skipped, and so is an
// entry without an end.
class ChangelogReader {
public:
    // The release that the line ended, if it did.
    std::optional<ChangelogRelease> line(std::string_view text);

private:
    std::optional<ChangelogRelease> m_open;
};
