#include "text/internal/line_shaper.h"

#include <QRawFont>
#include <QTextLayout>

#include <algorithm>

namespace framewright {

namespace {

/// Whether letters are joined, so that letter spacing would break them apart.
bool isJoinedScript(QString const& text)
{
    return std::ranges::any_of(text, [](QChar c) {
        switch (c.script()) {
        case QChar::Script_Arabic:
        case QChar::Script_Syriac:
        case QChar::Script_Nko:
        case QChar::Script_Mongolian:
        case QChar::Script_Devanagari:
        case QChar::Script_Bengali:
        case QChar::Script_Gurmukhi:
            return true;
        default:
            return false;
        }
    });
}

/// Whether a font has bitmap glyphs. Asking such a font for a contour would permanently corrupt the
/// sizes the engine reports for it.
bool isColored(QRawFont const& font)
{
    return !font.fontTable("CBLC").isEmpty() || !font.fontTable("sbix").isEmpty();
}

QFont sized(QFont font)
{
    font.setPixelSize(emPixels);
    font.setHintingPreference(QFont::PreferNoHinting);
    font.setStyleStrategy(
        QFont::StyleStrategy(QFont::PreferAntialias | QFont::NoSubpixelAntialias));
    return font;
}

/// With spacing so negative that letters run backwards, a line extends to the left of its
/// origin. Moves it right and corrects its width.
void moveToOrigin(ShapedLine& line)
{
    double left = 0, right = 0;
    for (PlacedGlyphs const& glyphs : line.glyphs) {
        auto const positions = glyphs.run.positions();
        auto const advances =
            glyphs.run.rawFont().advancesForGlyphIndexes(glyphs.run.glyphIndexes());
        for (qsizetype n = 0; n < positions.size(); ++n) {
            if (advances[n].x() <= 0)
                continue; // Marks.
            left = std::min(left, positions[n].x());
            right = std::max(right, positions[n].x() + advances[n].x());
        }
    }
    if (left == 0)
        return;
    line.width = right - left;
    line.ink.translate(-left, 0);
    for (PlacedGlyphs& glyphs : line.glyphs)
        glyphs.moveBy({-left, 0});
}

void add(QGlyphRun const& run, ShapedLine& to)
{
    QRawFont const font = run.rawFont();
    auto const indexes = run.glyphIndexes();
    auto const positions = run.positions();
    QRectF ink;
    for (qsizetype n = 0; n < indexes.size(); ++n) {
        QRectF const bounds = font.boundingRect(indexes[n]);
        if (bounds.isEmpty())
            continue;
        ink |= bounds.translated(positions[n]);
    }
    if (ink.isEmpty())
        return; // Spaces.
    to.ink |= ink;
    to.glyphs.push_back({run, ink, isColored(font)});
}

} // namespace

void PlacedGlyphs::moveBy(QPointF const& offset)
{
    auto positions = run.positions();
    for (QPointF& position : positions)
        position += offset;
    run.setPositions(positions);
    ink.translate(offset);
}

LineShaper::LineShaper(CaptionStyle const& style, QString const& text, FontRegistry const& fonts)
    : m_font(sized(fonts.find(style.fontName).font)),
      m_choice(m_font, text),
      m_spacing(double(style.letterSpacing) / style.fontSize * emPixels)
{
}

double LineShaper::spacingIn(QString const& text) const
{
    return isJoinedScript(text) ? 0 : m_spacing;
}

ShapedLine LineShaper::shape(QString const& text, Qt::LayoutDirection direction) const
{
    double const spacing = spacingIn(text);
    QFont font = m_font;
    font.setLetterSpacing(QFont::AbsoluteSpacing, spacing);
    FontChoice::Choice const chosen = m_choice.choose(text);
    QTextLayout layout(chosen.text, font);
    QTextOption option(Qt::AlignLeft | Qt::AlignAbsolute);
    option.setTextDirection(direction);
    option.setUseDesignMetrics(true);
    option.setWrapMode(QTextOption::NoWrap);
    layout.setTextOption(option);
    layout.setFormats(chosen.formats);
    layout.beginLayout();
    QTextLine line = layout.createLine();
    if (line.isValid()) {
        line.setLineWidth(1e7);
        line.setPosition({0, -line.ascent()});
    }
    layout.endLayout();

    ShapedLine made;
    if (!line.isValid())
        return made;
    for (QGlyphRun const& run : layout.glyphRuns())
        add(run, made);
    // The engine adds spacing after the last letter too.
    made.width = std::max(0.0, line.naturalTextWidth() - spacing);
    if (spacing < 0)
        moveToOrigin(made);
    return made;
}

} // namespace framewright
