// A picture in memory.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include <oviapi/color.h>
#include <oviapi/export.h>
#include <oviapi/geometry.h>

namespace OviAPI {

// A value: copies share their pixels until one of them changes. Sizes and places are in
// device-independent pixels; a picture may hold the same image at 1, 2 and 3 times the resolution,
// and drawing takes the one that fits the device. Needs no application object.
class OVIAPI_API Picture {
public:
    // A null picture.
    Picture();
    // Filled with one opaque colour. ratio: device pixels per pixel. Null when a side is not
    // positive or the image would have more than 64 million device pixels.
    Picture(Size size, Color fill, double ratio = 1.0);
    ~Picture();
    Picture(const Picture& other);
    Picture(Picture&& other) noexcept;
    Picture& operator=(const Picture& other);
    Picture& operator=(Picture&& other) noexcept;

    // Decodes the bytes of a PNG, BMP or JPEG file, told apart by their content. ratio: the
    // resolution they were drawn for. Null when they cannot be decoded.
    static Picture fromFileBytes(std::string_view bytes, double ratio = 1.0);

    bool isNull() const { return !m_native; }
    // 0 for a null picture.
    int width() const;
    int height() const;
    Size size() const { return {width(), height()}; }

    // Adds the same image at another resolution, made by fromFileBytes with its ratio. Returns
    // false when its size differs from this picture's or a null picture is involved.
    bool addVariant(const Picture& other);

    // Makes every pixel of this colour fully transparent.
    void setTransparentColor(Color color);

    // The part of the picture inside the rectangle, at every resolution; null when they do not
    // meet. For cutting a strip of images.
    Picture copy(const Rect& part) const;

    // 0xAARRGGBB of the image at 1 device pixel per pixel, or of the nearest resolution to it; not
    // premultiplied. 0 outside the picture.
    uint32_t pixel(int x, int y) const;

    // Writes the image of the highest resolution as a PNG file, replacing the file as a whole.
    // Returns false when the picture is null or the file cannot be written.
    bool savePng(const std::wstring& path) const;

    struct Native;
    // For the framework's own code.
    explicit Picture(std::shared_ptr<Native> native);
    const Native* native() const { return m_native.get(); }

private:
    friend class PaintDevice;
    Native& detached();

    std::shared_ptr<Native> m_native;
};

using Bitmap = Picture;

} // namespace OviAPI
