// Small pictures by number.
#pragma once

#include <string>
#include <vector>

#include <oviapi/export.h>
#include <oviapi/geometry.h>
#include <oviapi/picture.h>

namespace OviAPI {

class ResourceManager;

// Pictures of one size, numbered from 0, with every resolution they were drawn at. A value: copies
// share the pixels, and a control that is given a list keeps a copy. Numbers out of range give a
// null picture or do nothing. Needs no application object.
class OVIAPI_API ImageList {
public:
    // Takes the size from the first picture that is added.
    ImageList() = default;
    // In pixels. A size without a positive side counts as none.
    explicit ImageList(Size size);

    // {0, 0} while there is none.
    Size size() const { return m_size; }
    int count() const { return static_cast<int>(m_entries.size()); }

    // Appends a picture and returns its number; -1 when it is null or of another size.
    int add(const Picture& picture);
    // Cuts a strip from left to right into pictures of this width and of the strip's height and
    // appends them; what is left over at its end is dropped. Returns how many were added, 0 when
    // the strip is null, too narrow or of another height.
    int addStrip(const Picture& strip, int width);
    // Appends a strip, or one picture (width 0), from the resources, light grey made transparent.
    // Returns how many were added.
    int load(const ResourceManager& resources, int id, int width = 0);

    // Returns false, and changes nothing, when the picture is null or of another size.
    bool replace(int index, const Picture& picture);
    Picture get(int index) const;
    // The pictures behind it take the numbers before theirs.
    void remove(int index);
    // Keeps the size.
    void clear() { m_entries.clear(); }

    // What the picture says, for assistive technology: read out behind the text it stands beside.
    void setName(int index, const wchar_t* name);
    std::wstring name(int index) const;

private:
    struct Entry {
        Picture picture;
        std::wstring name;
    };
    bool inRange(int index) const { return index >= 0 && index < count(); }
    bool fits(const Picture& picture) const;

    Size m_size;
    std::vector<Entry> m_entries;
};

} // namespace OviAPI
