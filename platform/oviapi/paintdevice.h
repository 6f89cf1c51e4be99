// What a painter draws on.
#pragma once

#include <memory>

#include <oviapi/export.h>
#include <oviapi/geometry.h>

namespace OviAPI {

class Picture;

// Three kinds: a window during its paint event (the framework makes it and hands it to doPaint), a
// picture, and the client device of a window at any other time. A painter on the last one measures;
// what is drawn through it asks the window to repaint itself, and inside that window's paint event
// it is drawn at once. Several painters may work on one device.
class OVIAPI_API PaintDevice {
public:
    // A device on which no painter succeeds.
    PaintDevice();
    // Draws on the picture, which must outlive the device's painters. Of several resolutions only
    // the first one is kept.
    explicit PaintDevice(Picture& picture);
    ~PaintDevice();
    PaintDevice(const PaintDevice&) = delete;
    PaintDevice& operator=(const PaintDevice&) = delete;
    PaintDevice(PaintDevice&&) noexcept;
    PaintDevice& operator=(PaintDevice&&) noexcept;

    bool isNull() const { return !m_native; }
    // True for a client device outside the paint event of its window.
    bool measuresOnly() const;
    Size size() const;
    // The part that has to be painted; the whole device where nothing limits it.
    Rect clipRect() const;
    // Device pixels per pixel.
    double pixelRatio() const;

    struct Native;
    // For the framework's own code.
    explicit PaintDevice(std::shared_ptr<Native> native);
    const std::shared_ptr<Native>& native() const { return m_native; }

private:
    std::shared_ptr<Native> m_native;
};

} // namespace OviAPI
