#include "text/internal/text_painter.h"

#include "text/internal/soft_blur.h"
#include "text/internal/text_boxes.h"
#include "text/internal/text_layout.h"

#include <QImage>
#include <QPainter>
#include <QPainterPathStroker>

#include <algorithm>
#include <cmath>
#include <optional>

namespace framewright {

namespace {

constexpr double pointsAcross = 1080; ///< The width of any canvas in points.
constexpr double edgeFraction = 0.03; ///< The margin at the canvas's edges, relative to its width.
constexpr double maxScale = 50, minScale = 0.01;
constexpr double farAway = 1e6; ///< In pixels; fractions get lost beyond.

double finite(double value, double fallback, double least, double most)
{
    return std::isfinite(value) ? std::clamp(value, least, most) : fallback;
}

/// The style, normalized and with invisible parts switched off.
CaptionStyle drawnStyle(CaptionStyle const& style)
{
    CaptionStyle drawn = normalized(style).style;
    drawn.backgroundEnabled = drawn.backgroundEnabled && drawn.backgroundColor.alpha > 0;
    drawn.outlineEnabled =
        drawn.outlineEnabled && drawn.strokeColor.alpha > 0 && drawn.strokeWidth > 0;
    drawn.shadowEnabled = drawn.shadowEnabled && drawn.shadowOpacity > 0;
    return drawn;
}

/// The maximal line width, leaving room for box and outline on the canvas if possible.
double widestLine(CaptionStyle const& style, double scale)
{
    double const asked = style.maxWidthFraction * pointsAcross / scale;
    double const around = std::max(style.backgroundEnabled ? style.padding : 0,
                                   style.outlineEnabled ? style.strokeWidth : 0);
    return std::min(asked, std::max(pointsAcross / scale - 2.0 * around, asked / 2));
}

QRectF boxOf(TextLine const& line, double padding)
{
    double const half = line.width / 2;
    double const left = std::min(-half, line.ink.left()), right = std::max(half, line.ink.right());
    // Accents on capitals may extend into the padding.
    double const reach = padding / 2;
    double const top = std::min(line.letterTop, line.ink.top() + reach);
    double const bottom = std::max(line.letterBottom, line.ink.bottom() - reach);
    return QRectF(QPointF(left, top), QPointF(right, bottom))
        .adjusted(-padding, -padding, padding, padding);
}

/// The shadow's vertical offset in points.
double shadowDrop(CaptionStyle const& style)
{
    return 2 + style.shadowRadius / 4;
}

/// A text laid out and positioned on the canvas.
class PlacedText {
public:
    PlacedText(TextBlock const& block, FontRegistry const& fonts)
        : style(drawnStyle(block.style)),
          unit(block.canvas.width / pointsAcross * finite(block.scale, 1, minScale, maxScale)),
          layout(layOut(block.text, style,
                        widestLine(style, finite(block.scale, 1, minScale, maxScale)), fonts))
    {
        for (TextLine const& line : layout.lines) {
            if (line.isBlank())
                continue;
            drawn |= reachOf(line);
            if (style.backgroundEnabled)
                rows.push_back(boxOf(line, style.padding));
        }
        place(block);
        double const blurred = shadowSigma() > 0 ? blurReach(shadowSigma()) / unit : 0;
        shadowReach = style.shadowEnabled ? blurred + shadowDrop(style) : 0;
    }

    /// From points to pixels of the canvas.
    QTransform transform() const { return QTransform(unit, 0, 0, unit, origin.x(), origin.y()); }

    /// The bounds of a line with its outline and box, without its shadow, in points.
    QRectF reachOf(TextLine const& line) const
    {
        double const outline = style.outlineEnabled ? style.strokeWidth : 0;
        QRectF const reach = line.ink.adjusted(-outline, -outline, outline, outline);
        return style.backgroundEnabled ? reach | boxOf(line, style.padding) : reach;
    }

    /// The standard deviation of the shadow's blur, in pixels.
    double shadowSigma() const { return style.shadowRadius / 2 * unit; }

    /// The pixels of the canvas that the text may cover.
    QRect visible(PixelSize canvas) const
    {
        if (drawn.isEmpty())
            return {};
        QRectF const all = transform().mapRect(
            drawn.adjusted(-shadowReach, -shadowReach, shadowReach, shadowReach));
        return all.adjusted(-1, -1, 1, 1)
            .intersected(QRectF(0, 0, canvas.width, canvas.height))
            .toAlignedRect();
    }

    CaptionStyle style;
    double unit; ///< Pixels per point.
    TextLayout layout;
    std::vector<QRectF> rows; ///< The box's rows, in points.
    QRectF drawn;             ///< The bounds without the shadow, in points.
    double shadowReach = 0;   ///< How far the shadow extends beyond, in points.
    QPointF origin;           ///< The position of the layout's (0, 0), in pixels.

private:
    void place(TextBlock const& block)
    {
        double const x = finite(block.x, block.canvas.width / 2.0, -farAway, farAway);
        double const y = finite(block.y, block.canvas.height / 2.0, -farAway, farAway);
        double const height = layout.height * unit;
        double const above = block.anchor == TextBlock::Anchor::top      ? 0
                             : block.anchor == TextBlock::Anchor::center ? height / 2
                                                                         : height;
        origin = {x, y - above};
        if (block.edges == TextBlock::Edges::inside)
            moveInside(block.canvas);
        origin = {std::round(origin.x() * 2) / 2, std::round(origin.y() * 2) / 2};
    }

    void moveInside(PixelSize canvas)
    {
        double const free = edgeFraction * canvas.width;
        QRectF const there = transform().mapRect(drawn);
        if (there.height() > canvas.height - 2 * free)
            origin.ry() += canvas.height / 2.0 - there.center().y();
        else
            origin.ry() += std::max(0.0, free - there.top()) -
                           std::max(0.0, there.bottom() - (canvas.height - free));
    }
};

/// A colour, not premultiplied, with components from 0 to 1.
struct Paint {
    float red, green, blue, alpha;

    explicit Paint(RGBAColor const& color)
        : red(float(color.red)),
          green(float(color.green)),
          blue(float(color.blue)),
          alpha(float(color.alpha))
    {
    }
};

/// A premultiplied pixel, with components from 0 to 1.
struct Pixel {
    float red = 0, green = 0, blue = 0, alpha = 0;

    /// Replaces this much of the pixel with paint.
    void replace(Paint const& paint, float coverage)
    {
        float const rest = 1 - coverage, part = coverage * paint.alpha;
        red = red * rest + paint.red * part;
        green = green * rest + paint.green * part;
        blue = blue * rest + paint.blue * part;
        alpha = alpha * rest + part;
    }

    void layOver(Pixel const& above)
    {
        float const rest = 1 - above.alpha;
        red = red * rest + above.red;
        green = green * rest + above.green;
        blue = blue * rest + above.blue;
        alpha = alpha * rest + above.alpha;
    }
};

/// Draws the parts of a text as separate masks of a region of the canvas.
class Masks {
public:
    Masks(PlacedText const& text, QRect const& area) : m_text(text), m_area(area) {}

    /// The letters, and the letters with their outline, of visible lines.
    void drawLetters()
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

    void drawEmoji()
    {
        for (TextLine const& line : m_text.layout.lines) {
            for (PlacedGlyphs const& glyphs : line.glyphs) {
                if (glyphs.isColored && isSeen(line))
                    drawEmoji(glyphs);
            }
        }
    }

    void drawBox()
    {
        if (m_text.style.backgroundEnabled)
            box = filled(toArea().map(boxAround(m_text.rows, m_text.style.cornerRadius)));
    }

    /// Call it last: it needs the other masks.
    void drawShadow()
    {
        if (!m_text.style.shadowEnabled)
            return;
        shadow = box ? *box : outline ? *outline : letters;
        if (!box && emoji) {
            for (int y = 0; y < shadow->height; ++y) {
                for (int x = 0; x < shadow->width; ++x) {
                    float& sample = shadow->row(y)[x];
                    sample = std::max(sample, emojiPixel(x, y).alpha);
                }
            }
        }
        drop(*shadow, int(std::lround(shadowDrop(m_text.style) * m_text.unit)));
        blur(*shadow, m_text.shadowSigma());
    }

    Pixel emojiPixel(int x, int y) const
    {
        QRgb const color = reinterpret_cast<QRgb const*>(emoji->constScanLine(y))[x];
        return {qRed(color) / 255.0F, qGreen(color) / 255.0F, qBlue(color) / 255.0F,
                qAlpha(color) / 255.0F};
    }

    Coverage letters;
    std::optional<Coverage> outline; ///< Includes the letters.
    std::optional<Coverage> box;
    std::optional<Coverage> shadow;
    std::optional<QImage> emoji; ///< Premultiplied.

private:
    QTransform toArea() const
    {
        return m_text.transform() * QTransform::fromTranslate(-m_area.x(), -m_area.y());
    }

    bool isSeen(TextLine const& line) const
    {
        double const reach = m_text.shadowReach;
        QRectF const drawn = m_text.reachOf(line).adjusted(-reach, -reach, reach, reach);
        return !line.isBlank() &&
               toArea().mapRect(drawn).intersects(QRectF(0, 0, m_area.width(), m_area.height()));
    }

    Coverage filled(QPainterPath const& path) const
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

    /// The font engine scales bitmap glyphs badly, so they are drawn at the layout's size, which is
    /// their own, and scaled as an image.
    void drawEmoji(PlacedGlyphs const& glyphs)
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

    static void drop(Coverage& coverage, int rows)
    {
        rows = std::min(rows, coverage.height);
        auto const count = std::ptrdiff_t(rows) * coverage.width;
        std::shift_right(coverage.samples.begin(), coverage.samples.end(), count);
        std::fill_n(coverage.samples.begin(), count, 0.0F);
    }

    PlacedText const& m_text;
    QRect m_area;
};

/// Composites the masks.
class Blending {
public:
    Blending(CaptionStyle const& style, Masks const& masks)
        : m_masks(masks),
          m_text(style.textColor),
          m_stroke(style.strokeColor),
          m_box(style.backgroundColor),
          m_shadow(RGBAColor{0, 0, 0, style.shadowOpacity})
    {
    }

    Pixel at(int x, int y) const
    {
        Pixel below, text;
        if (m_masks.shadow) {
            float const coverage = m_masks.shadow->row(y)[x];
            if (m_masks.box)
                below.replace(m_shadow, coverage * m_box.alpha);
            else
                text.replace(m_shadow, coverage);
        }
        if (m_masks.box)
            below.replace(m_box, m_masks.box->row(y)[x]);
        if (m_masks.outline)
            text.replace(m_stroke, m_masks.outline->row(y)[x]);
        text.replace(m_text, m_masks.letters.row(y)[x]);
        if (m_masks.emoji)
            text.layOver(faded(m_masks.emojiPixel(x, y)));
        below.layOver(text);
        return below;
    }

private:
    Pixel faded(Pixel const& pixel) const
    {
        float const part = m_text.alpha;
        return {pixel.red * part, pixel.green * part, pixel.blue * part, pixel.alpha * part};
    }

    Masks const& m_masks;
    Paint m_text, m_stroke, m_box, m_shadow;
};

std::uint8_t byteOf(float part)
{
    return std::uint8_t(part * 255 + 0.5F);
}

} // namespace

PlacedImage paintText(TextBlock const& block, FontRegistry const& fonts)
{
    PlacedText const text(block, fonts);
    QRect const area = text.visible(block.canvas);
    if (area.isEmpty())
        return {};
    Masks masks(text, area);
    masks.drawLetters();
    masks.drawEmoji();
    masks.drawBox();
    masks.drawShadow();

    PlacedImage image{area.x(), area.y(), area.width(), area.height(), {}};
    image.pixels.reserve(std::size_t(image.width) * std::size_t(image.height) * 4);
    Blending const blending(text.style, masks);
    for (int y = 0; y < image.height; ++y) {
        for (int x = 0; x < image.width; ++x) {
            Pixel const pixel = blending.at(x, y);
            for (float const part : {pixel.red, pixel.green, pixel.blue, pixel.alpha})
                image.pixels.push_back(byteOf(part));
        }
    }
    return image;
}

} // namespace framewright
