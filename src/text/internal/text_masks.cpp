#include "text/internal/text_masks.h"

#include "text/internal/text_boxes.h"

#include <QPainter>
#include <QPainterPathStroker>

#include <algorithm>
#include <cmath>

namespace framewright {

namespace {

/// Moves everything down by `rows`.
void drop(Coverage& coverage, int rows)
{
    rows = std::min(rows, coverage.height);
    auto const count = std::ptrdiff_t(rows) * coverage.width;
    std::shift_right(coverage.samples.begin(), coverage.samples.end(), count);
    std::fill_n(coverage.samples.begin(), count, 0.0F);
}

} // namespace

TextMasks::TextMasks(PlacedText const& text, QRect const& area) : m_text(text), m_area(area)
{
    drawLetters();
    drawEmoji();
    drawBox();
    drawShadow(); // Last: it needs the other masks.
}

void TextMasks::drawLetters()
{
    QPainterPath filledLetters, outlined;
    filledLetters.setFillRule(Qt::WindingFill);
    outlined.setFillRule(Qt::WindingFill);
    QPainterPathStroker stroker;
    stroker.setWidth(2.0 * m_text.style.strokeWidth * m_text.unit);
    stroker.setJoinStyle(Qt::RoundJoin);
    stroker.setCapStyle(Qt::RoundCap);
    stroker.setCurveThreshold(0.05);
    for (TextLine const& line : m_text.layout.lines) {
        if (!isSeen(line))
            continue;
        QPainterPath const contours = toArea().map(m_text.layout.contours(line));
        filledLetters.addPath(contours);
        if (m_text.style.outlineEnabled)
            outlined.addPath(stroker.createStroke(contours));
    }
    letters = filled(filledLetters);
    if (m_text.style.outlineEnabled) {
        outline = filled(outlined);
        for (std::size_t n = 0; n < outline->samples.size(); ++n)
            outline->samples[n] = std::max(outline->samples[n], letters.samples[n]);
    }
}

void TextMasks::drawEmoji()
{
    for (TextLine const& line : m_text.layout.lines) {
        for (PlacedGlyphs const& glyphs : line.glyphs) {
            if (glyphs.isColored && isSeen(line))
                drawEmoji(glyphs);
        }
    }
}

/// The font engine scales bitmap glyphs badly, so they are drawn at the layout's size, which is
/// their own, and scaled as an image.
void TextMasks::drawEmoji(PlacedGlyphs const& glyphs)
{
    if (!emoji) {
        emoji.emplace(m_area.size(), QImage::Format_ARGB32_Premultiplied);
        emoji->fill(Qt::transparent);
    }
    QRect const ink = glyphs.ink.adjusted(-2, -2, 2, 2).toAlignedRect();
    QImage drawn(ink.size(), QImage::Format_ARGB32_Premultiplied);
    drawn.fill(Qt::transparent);
    {
        QPainter painter(&drawn);
        painter.drawGlyphRun(-ink.topLeft(), glyphs.run);
    }
    double const factor = m_text.layout.unit * m_text.unit;
    QSize const size(std::max(1, int(std::lround(drawn.width() * factor))),
                     std::max(1, int(std::lround(drawn.height() * factor))));
    QPointF const place = toArea().map(QPointF(ink.topLeft()) * m_text.layout.unit);
    QPainter painter(&*emoji);
    painter.drawImage(place.toPoint(),
                      drawn.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
}

void TextMasks::drawBox()
{
    if (m_text.style.backgroundEnabled)
        box = filled(toArea().map(boxAround(m_text.rows, m_text.style.cornerRadius)));
}

void TextMasks::drawShadow()
{
    if (!m_text.style.shadowEnabled)
        return;
    shadow = box ? *box : outline ? *outline : letters;
    if (!box && emoji) {
        for (int y = 0; y < shadow->height; ++y) {
            auto const* const colors = reinterpret_cast<QRgb const*>(emoji->constScanLine(y));
            for (int x = 0; x < shadow->width; ++x) {
                float& sample = shadow->row(y)[x];
                sample = std::max(sample, float(qAlpha(colors[x])) / 255);
            }
        }
    }
    drop(*shadow, int(std::lround(shadowDrop(m_text.style) * m_text.unit)));
    blur(*shadow, m_text.shadowSigma());
}

QTransform TextMasks::toArea() const
{
    return m_text.transform() * QTransform::fromTranslate(-m_area.x(), -m_area.y());
}

bool TextMasks::isSeen(TextLine const& line) const
{
    double const reach = m_text.shadowReach;
    QRectF const drawn = m_text.reachOf(line).adjusted(-reach, -reach, reach, reach);
    return !line.isBlank() &&
           toArea().mapRect(drawn).intersects(QRectF(0, 0, m_area.width(), m_area.height()));
}

Coverage TextMasks::filled(QPainterPath const& path) const
{
    QImage image(m_area.size(), QImage::Format_Alpha8);
    image.fill(0);
    {
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.fillPath(path, Qt::white);
    }
    Coverage made{image.width(), image.height(), {}};
    made.samples.resize(std::size_t(made.width) * std::size_t(made.height));
    for (int y = 0; y < made.height; ++y) {
        std::ranges::transform(image.constScanLine(y), image.constScanLine(y) + made.width,
                               made.row(y), [](uchar value) { return float(value) / 255; });
    }
    return made;
}

} // namespace framewright
