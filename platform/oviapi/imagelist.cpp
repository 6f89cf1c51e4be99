#include <oviapi/imagelist.h>

#include <oviapi/resourcemanager.h>

namespace OviAPI {

ImageList::ImageList(Size size)
{
    if (size.width > 0 && size.height > 0)
        m_size = size;
}

bool ImageList::fits(const Picture& picture) const
{
    return !picture.isNull() && (m_size == Size() || picture.size() == m_size);
}

int ImageList::add(const Picture& picture)
{
    if (!fits(picture))
        return -1;
    m_size = picture.size();
    m_entries.push_back({picture, {}});
    return count() - 1;
}

int ImageList::addStrip(const Picture& strip, int width)
{
    if (width <= 0)
        return 0;
    int added = 0;
    for (int left = 0; strip.width() - left >= width; left += width) {
        if (add(strip.copy({left, 0, left + width, strip.height()})) < 0)
            return added;
        ++added;
    }
    return added;
}

int ImageList::load(const ResourceManager& resources, int id, int width)
{
    Picture picture;
    if (!resources.loadTransparentPicture(id, &picture))
        return 0;
    return addStrip(picture, width == 0 ? picture.width() : width);
}

bool ImageList::replace(int index, const Picture& picture)
{
    if (!inRange(index) || !fits(picture))
        return false;
    m_entries[static_cast<size_t>(index)].picture = picture;
    return true;
}

Picture ImageList::get(int index) const
{
    return inRange(index) ? m_entries[static_cast<size_t>(index)].picture : Picture();
}

void ImageList::remove(int index)
{
    if (inRange(index))
        m_entries.erase(m_entries.begin() + index);
}

void ImageList::setName(int index, const wchar_t* name)
{
    if (inRange(index))
        m_entries[static_cast<size_t>(index)].name = name ? name : L"";
}

std::wstring ImageList::name(int index) const
{
    return inRange(index) ? m_entries[static_cast<size_t>(index)].name : std::wstring();
}

} // namespace OviAPI
