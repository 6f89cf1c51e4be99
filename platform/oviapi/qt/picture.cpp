#include <oviapi/picture.h>

#include <algorithm>
#include <cmath>
#include <system_error>

#include <QBuffer>
#include <QImageReader>

#include <oviapi/atomicfile.h>

#include "convert.h"
#include "picture_native.h"

namespace OviAPI {

namespace {

constexpr int64_t maxPixels = 64'000'000;
constexpr double minRatio = 0.25;
constexpr double maxRatio = 16.0;

bool isAcceptable(QSize pixels)
{
    return pixels.width() > 0 && pixels.height() > 0 &&
           int64_t{pixels.width()} * pixels.height() <= maxPixels;
}

double usableRatio(double ratio)
{
    return ratio >= minRatio && ratio <= maxRatio ? ratio : 1.0;
}

// Of the whole image, in device-independent pixels.
QSize logicalSize(const QImage& image)
{
    return image.deviceIndependentSize().toSize();
}

bool isReadable(const QByteArray& format)
{
    return format == "png" || format == "bmp" || format == "jpeg" || format == "jpg";
}

} // namespace

Picture::Picture() = default;
Picture::~Picture() = default;
Picture::Picture(Picture&& other) noexcept = default;
Picture& Picture::operator=(Picture&& other) noexcept = default;

Picture::Picture(std::shared_ptr<Native> native)
    : m_native(std::move(native))
{
}

Picture::Picture(Size size, Color fill, double ratio)
{
    ratio = usableRatio(ratio);
    const QSizeF device = QSizeF(toQSize(size)) * ratio;
    if (device.width() > static_cast<double>(maxPixels) ||
        device.height() > static_cast<double>(maxPixels) || !isAcceptable(device.toSize()))
        return;
    QImage image(device.toSize(), QImage::Format_ARGB32_Premultiplied);
    if (image.isNull())
        return;
    image.setDevicePixelRatio(ratio);
    image.fill(toQColor(fill));
    m_native = std::make_shared<Native>();
    m_native->variants.push_back(std::move(image));
}

Picture::Picture(const Picture& other)
    : m_native(other.m_native)
{
    if (!m_native || !m_native->painted)
        return;
    m_native = std::make_shared<Native>();
    for (const QImage& image : other.m_native->variants)
        m_native->variants.push_back(image.copy());
}

Picture& Picture::operator=(const Picture& other)
{
    if (this != &other)
        *this = Picture(other);
    return *this;
}

Picture Picture::fromFileBytes(std::string_view bytes, double ratio)
{
    const auto size = static_cast<qsizetype>(bytes.size());
    QByteArray data = QByteArray::fromRawData(bytes.data(), size);
    QBuffer buffer(&data);
    if (size == 0 || !buffer.open(QIODevice::ReadOnly))
        return Picture();
    QImageReader reader(&buffer);
    reader.setDecideFormatFromContent(true);
    if (!isReadable(reader.format()) || !isAcceptable(reader.size()))
        return Picture();
    QImage image = reader.read();
    if (image.isNull())
        return Picture();
    image.setDevicePixelRatio(usableRatio(ratio));
    return fromQImage(image);
}

int Picture::width() const
{
    return m_native ? logicalSize(m_native->variants.front()).width() : 0;
}

int Picture::height() const
{
    return m_native ? logicalSize(m_native->variants.front()).height() : 0;
}

// The pixels for this picture alone.
Picture::Native& Picture::detached()
{
    if (m_native.use_count() > 1)
        m_native = std::make_shared<Native>(*m_native);
    return *m_native;
}

bool Picture::addVariant(const Picture& other)
{
    if (isNull() || other.isNull() || size() != other.size())
        return false;
    const std::vector<QImage> added = other.m_native->variants;
    std::vector<QImage>& variants = detached().variants;
    for (const QImage& image : added) {
        std::erase_if(variants, [&](const QImage& old) {
            return old.devicePixelRatio() == image.devicePixelRatio();
        });
        variants.push_back(image);
    }
    std::sort(variants.begin(), variants.end(), [](const QImage& a, const QImage& b) {
        return a.devicePixelRatio() < b.devicePixelRatio();
    });
    return true;
}

void Picture::setTransparentColor(Color color)
{
    if (isNull())
        return;
    const QRgb key = toQColor(color).rgb();
    for (QImage& image : detached().variants) {
        for (int y = 0; y < image.height(); ++y) {
            auto* line = reinterpret_cast<QRgb*>(image.scanLine(y));
            std::replace(line, line + image.width(), key, QRgb{0});
        }
    }
}

Picture Picture::copy(const Rect& part) const
{
    const QRect wanted = toQRect(part) & QRect(0, 0, width(), height());
    if (isNull() || wanted.isEmpty())
        return Picture();
    auto native = std::make_shared<Native>();
    for (const QImage& image : m_native->variants) {
        const double ratio = image.devicePixelRatio();
        const QPoint from = (QPointF(wanted.topLeft()) * ratio).toPoint();
        const QSize pixels = (QSizeF(wanted.size()) * ratio).toSize();
        native->variants.push_back(image.copy(QRect(from, pixels)));
    }
    return Picture(std::move(native));
}

uint32_t Picture::pixel(int x, int y) const
{
    if (isNull() || x < 0 || y < 0 || x >= width() || y >= height())
        return 0;
    const QImage image = toQImage(*this, 1.0);
    const double ratio = image.devicePixelRatio();
    const int column = std::min(static_cast<int>(x * ratio), image.width() - 1);
    const int row = std::min(static_cast<int>(y * ratio), image.height() - 1);
    return image.pixel(column, row);
}

bool Picture::savePng(const std::wstring& path) const
{
    if (isNull())
        return false;
    QByteArray bytes;
    QBuffer buffer(&bytes);
    if (!buffer.open(QIODevice::WriteOnly) || !m_native->variants.back().save(&buffer, "PNG"))
        return false;
    try {
        writeFileAtomically(path, {bytes.constData(), static_cast<size_t>(bytes.size())});
    } catch (const std::system_error&) {
        return false; // the caller asked for a result, not for the reason
    }
    return true;
}

} // namespace OviAPI
