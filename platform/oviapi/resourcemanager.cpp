#include <oviapi/resourcemanager.h>

#include <oviapi/picture.h>
#include <oviapi/resourcefile.h>
#include <oviapi/text.h>

namespace OviAPI {

using ResourceFormat::anyLanguage;
using ResourceFormat::Key;
using ResourceFormat::Kind;

namespace {

using Data = std::optional<std::string_view>;

// In the language, in English, in any language; pictures that speak no language stand last.
Data findFor(const ResourceFile& file, Key key, int language)
{
    key.language = static_cast<uint32_t>(language);
    if (const Data data = file.find(key))
        return data;
    key.language = ResourceManager::English;
    if (const Data data = file.find(key))
        return data;
    key.language = anyLanguage;
    return file.find(key);
}

} // namespace

ResourceManager::ResourceManager(const wchar_t* path)
{
    std::optional<ResourceFile> file = ResourceFile::read(path ? path : L"", m_failure);
    if (file)
        m_file = std::make_unique<const ResourceFile>(*std::move(file));
}

ResourceManager::~ResourceManager() = default;

int ResourceManager::effective(int language) const
{
    return language == CurrentLanguage ? m_language : language;
}

bool ResourceManager::loadString(int id, wchar_t* buffer, int size, int language) const
{
    if (!m_file || !buffer || size <= 0 || id <= 0)
        return false;
    const Key key{Kind::String, static_cast<uint32_t>(id)};
    const Data text = findFor(*m_file, key, effective(language));
    if (!text)
        return false;
    copyText(buffer, static_cast<size_t>(size), utf8ToWide(*text));
    return true;
}

bool ResourceManager::loadPicture(int id, Picture* picture, int language) const
{
    if (!m_file || !picture || id <= 0)
        return false;
    Picture loaded;
    for (uint32_t scale = 1; scale <= ResourceFormat::maxScale; ++scale) {
        const Key key{Kind::Picture, static_cast<uint32_t>(id), anyLanguage, scale};
        const Data bytes = findFor(*m_file, key, effective(language));
        Picture variant = bytes ? Picture::fromFileBytes(*bytes, scale) : Picture();
        if (loaded.isNull())
            loaded = std::move(variant);
        else
            loaded.addVariant(variant);
    }
    if (loaded.isNull())
        return false;
    *picture = std::move(loaded);
    return true;
}

bool ResourceManager::loadTransparentPicture(int id, Picture* picture, Color transparent,
                                             int language) const
{
    if (!loadPicture(id, picture, language))
        return false;
    picture->setTransparentColor(transparent);
    return true;
}

bool ResourceManager::loadTransparentPicture(int id, Picture* picture, int language) const
{
    return loadTransparentPicture(id, picture, Color::LtGray, language);
}

} // namespace OviAPI
