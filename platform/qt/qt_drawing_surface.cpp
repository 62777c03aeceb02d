#include "platform/qt/qt_drawing_surface.h"

#include <QColor>
#include <QFont>
#include <QFontMetrics>
#include <QImage>
#include <QPainter>
#include <QString>

#include <algorithm>

namespace tessaro {

namespace {

constexpr int fontPixels = 11;

void StorePixel(std::uint8_t* pixel, Colour colour) {
    pixel[0] = colour.blue;
    pixel[1] = colour.green;
    pixel[2] = colour.red;
    pixel[3] = 255;
}

/// The set-up installs DejaVu Sans; elsewhere Qt takes the sans-serif font that it finds. Whole-pixel hinting
/// and grey edges instead of coloured ones keep the small digits readable on a grey picture, whatever the
/// desktop asks.
QFont LabelFont() {
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPixelSize(fontPixels);
    font.setStyleHint(QFont::SansSerif);
    font.setStyleStrategy(QFont::NoSubpixelAntialias);
    font.setHintingPreference(QFont::PreferFullHinting);
    return font;
}

} // namespace

struct QtDrawingSurface::Area {
    std::int64_t left;
    std::int64_t top;
    std::int64_t right;
    std::int64_t bottom;
};

QtDrawingSurface::QtDrawingSurface(Picture& picture) : m_picture(picture) {}

void QtDrawingSurface::SetPixel(int x, int y, Colour colour) {
    if (x >= 0 && y >= 0 && x < m_picture.width && y < m_picture.height)
        StorePixel(m_picture.Pixel(x, y), colour);
}

void QtDrawingSurface::DrawFrame(const SurfaceRectangle& corners, int penWidth, Colour colour) {
    const auto [left, right] = std::minmax<std::int64_t>({corners.left, corners.right});
    const auto [top, bottom] = std::minmax<std::int64_t>({corners.top, corners.bottom});
    DrawOutline({left, top, right, bottom}, colour);
    if (penWidth >= 2) {
        DrawOutline({left, top - 1, right, bottom - 1}, colour);
        DrawOutline({left - 1, top, right - 1, bottom}, colour);
    }
}

void QtDrawingSurface::DrawOutline(const Area& area, Colour colour) {
    Fill({area.left, area.top, area.right, std::min(area.top + 1, area.bottom)}, colour);
    Fill({area.left, std::max(area.bottom - 1, area.top), area.right, area.bottom}, colour);
    Fill({area.left, area.top, std::min(area.left + 1, area.right), area.bottom}, colour);
    Fill({std::max(area.right - 1, area.left), area.top, area.right, area.bottom}, colour);
}

void QtDrawingSurface::Fill(const Area& area, Colour colour) {
    const int left = static_cast<int>(std::clamp<std::int64_t>(area.left, 0, m_picture.width));
    const int right = static_cast<int>(std::clamp<std::int64_t>(area.right, 0, m_picture.width));
    const int top = static_cast<int>(std::clamp<std::int64_t>(area.top, 0, m_picture.height));
    const int bottom = static_cast<int>(std::clamp<std::int64_t>(area.bottom, 0, m_picture.height));
    for (int y = top; y < bottom; ++y)
        for (int x = left; x < right; ++x)
            StorePixel(m_picture.Pixel(x, y), colour);
}

void QtDrawingSurface::DrawText(std::string_view text, const SurfaceRectangle& area, TextAlignment alignment,
                                Colour colour) {
    const QString line = QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
    if (line.isEmpty() || m_picture.width <= 0 || m_picture.height <= 0)
        return;
    QImage image(m_picture.pixels.data(), m_picture.width, m_picture.height, qsizetype{4} * m_picture.width,
                 QImage::Format_RGB32);
    const QFont font = LabelFont();
    const QFontMetrics metrics(font, &image);

    const std::int64_t width = metrics.horizontalAdvance(line);
    const std::int64_t left = alignment == TextAlignment::Right
                                  ? area.right - width
                                  : (std::int64_t{area.left} + area.right - width) >> 1;
    const std::int64_t top = alignment == TextAlignment::CentredBothWays
                                 ? (std::int64_t{area.top} + area.bottom - metrics.height()) >> 1
                                 : area.top;
    const std::int64_t baseline = top + metrics.ascent();
    // A glyph may reach a little beyond its own cell, but never by a whole line height.
    const std::int64_t margin = metrics.height();
    if (left + width < -margin || left > m_picture.width + margin || baseline < -margin ||
        baseline > m_picture.height + 2 * margin)
        return;
    QPainter painter(&image);
    painter.setFont(font);
    painter.setPen(QColor(colour.red, colour.green, colour.blue));
    painter.drawText(static_cast<int>(left), static_cast<int>(baseline), line);
}

} // namespace tessaro
