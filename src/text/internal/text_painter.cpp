#include "text/internal/text_painter.h"

#include "text/internal/placed_text.h"
#include "text/internal/text_masks.h"

namespace framewright {

namespace {

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

/// Composites the masks.
class Blending {
public:
    Blending(CaptionStyle const& style, TextMasks const& masks)
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
            text.layOver(emojiAt(x, y));
        below.layOver(text);
        return below;
    }

private:
    /// As translucent as the letters.
    Pixel emojiAt(int x, int y) const
    {
        QRgb const color = reinterpret_cast<QRgb const*>(m_masks.emoji->constScanLine(y))[x];
        auto const part = [&](int value) { return float(value) / 255 * m_text.alpha; };
        return {part(qRed(color)), part(qGreen(color)), part(qBlue(color)), part(qAlpha(color))};
    }

    TextMasks const& m_masks;
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
    TextMasks const masks(text, area);
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
