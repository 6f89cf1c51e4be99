// Strings and pictures by number, from a compiled resource file (typical.rrs).
#pragma once

#include <memory>
#include <string>

#include <oviapi/color.h>
#include <oviapi/export.h>

namespace OviAPI {

class Picture;
class ResourceFile;

// Languages: 1 English, 2 Russian. The file is read whole and checked when the manager is made; a
// damaged file is refused, and a manager that failed has no resources.
class OVIAPI_API ResourceManager {
public:
    static constexpr int CurrentLanguage = -1;
    static constexpr int English = 1;
    static constexpr int Russian = 2;

    // Null counts as an empty path.
    explicit ResourceManager(const wchar_t* path);
    ~ResourceManager();
    ResourceManager(const ResourceManager&) = delete;
    ResourceManager& operator=(const ResourceManager&) = delete;

    bool failed() const { return !m_file; }
    // A sentence; empty when the manager has not failed.
    const std::wstring& failure() const { return m_failure; }

    // A language that is not in the file behaves as English.
    void setLanguage(int language) { m_language = language; }
    int language() const { return m_language; }

    // Copies the text, cut to size - 1 characters and always terminated. language: CurrentLanguage
    // or a language; a text that is missing in it is taken in English. Returns false, and leaves
    // the buffer as it was, when there is no such text, no buffer, or size is not positive.
    bool loadString(int id, wchar_t* buffer, int size, int language = CurrentLanguage) const;

    // Replaces the picture with every resolution that the file holds of it. Pictures that are the
    // same in all languages serve any language. Returns false, and leaves the picture as it was,
    // when there is none or it cannot be decoded.
    bool loadPicture(int id, Picture* picture, int language = CurrentLanguage) const;

    // The same, with the pixels of one colour made transparent; light grey when none is named.
    bool loadTransparentPicture(int id, Picture* picture, Color transparent,
                                int language = CurrentLanguage) const;
    bool loadTransparentPicture(int id, Picture* picture, int language = CurrentLanguage) const;

private:
    int effective(int language) const;

    std::unique_ptr<const ResourceFile> m_file; // null: failed
    std::wstring m_failure;
    int m_language = English;
};

} // namespace OviAPI
