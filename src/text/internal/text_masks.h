#pragma once

#include "text/internal/placed_text.h"
#include "text/internal/soft_blur.h"

#include <QImage>
#include <QPainterPath>

#include <optional>

namespace framewright {

/// The parts of a text, drawn separately into a region of the canvas: how much of each pixel they
/// cover, without colours except those of emoji.
class TextMasks {
public:
    TextMasks(PlacedText const& text, QRect const& area);

    Coverage letters;
    std::optional<Coverage> outline; ///< Includes the letters.
    std::optional<Coverage> box;
    std::optional<Coverage> shadow;
    std::optional<QImage> emoji; ///< Premultiplied.

private:
    void drawLetters();
    void drawEmoji();
    void drawEmoji(PlacedGlyphs const& glyphs);
    void drawBox();
    void drawShadow();
    QTransform toArea() const;
    bool isSeen(TextLine const& line) const;
    Coverage filled(QPainterPath const& path) const;

    PlacedText const& m_text;
    QRect m_area;
};

} // namespace framewright
