#include "text/internal/text_layout.h"

#include "text/internal/line_breaking.h"
#include "text/letter_case.h"

#include <QHash>
#include <QRawFont>
#include <QTextBoundaryFinder>

#include <algorithm>

namespace framewright {

namespace {

constexpr double minLineHeight = 1.12, maxLineHeight = 1.35; ///< In ems, between baselines.
constexpr double minInkGap = 0.04; ///< In ems, between the ink of two lines.

/// Vertical metrics, in ems.
struct LineMetrics {
    double height;  ///< Between baselines.
    double capital; ///< The height of capitals.
    double below;   ///< The descent of Latin letters.
};

LineMetrics lineMetrics(QFont const& font, bool isUppercase)
{
    QRawFont const raw = QRawFont::fromFont(font);
    double const em = emPixels;
    double const capital = raw.capHeight() > 0 ? raw.capHeight() / em : 0.7;
    double below = 0.12;
    if (!isUppercase) {
        for (quint32 const glyph : raw.glyphIndexesForString(QStringLiteral("gjpy")))
            below = std::max(below, raw.boundingRect(glyph).bottom() / em);
    }
    double const natural = (raw.ascent() + raw.descent()) / em;
    return {std::clamp(natural, minLineHeight, maxLineHeight), std::clamp(capital, 0.4, 1.0),
            std::min(below, 0.4)};
}

bool isSpace(QChar c)
{
    return c.isSpace() && c != QChar::Nbsp;
}

/// The text as drawn: line breaks as "\n", without control characters, in capitals if the style
/// asks for them.
QString drawnText(std::string const& utf8, bool isUppercase)
{
    // Don't decode more than is drawn: a character takes at most four bytes.
    QString text = QString::fromUtf8(
        utf8.data(), qsizetype(std::min(utf8.size(), std::size_t(maxCharacters) * 4)));
    text.truncate(maxCharacters);
    text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    for (QChar& c : text) {
        if (c == u'\r' || c == u'\v' || c == u'\f' || c == QChar::LineSeparator ||
            c == QChar::ParagraphSeparator || c.unicode() == 0x85)
            c = u'\n';
        else if (c != u'\n' && c.category() == QChar::Other_Control)
            c = u' ';
    }
    return isUppercase ? capitals(text) : text;
}

/// A part of a paragraph that stays on one line.
struct Piece {
    qsizetype start;
    qsizetype end; ///< Without the spaces that follow.
    WordPiece measure;
};

/// Splits a paragraph where lines may break, and words too long for a line between any clusters.
class Pieces {
public:
    Pieces(QString const& paragraph, LineShaper const& shaper, Qt::LayoutDirection direction,
           double maxWidth)
        : m_paragraph(paragraph), m_shaper(shaper), m_direction(direction)
    {
        QTextBoundaryFinder breaks(QTextBoundaryFinder::Line, paragraph);
        qsizetype start = 0;
        for (qsizetype next = breaks.toNextBoundary(); next > 0; next = breaks.toNextBoundary()) {
            addWord(start, next, maxWidth);
            start = next;
        }
        if (start < paragraph.size())
            addWord(start, paragraph.size(), maxWidth);
    }

    std::vector<Piece> const& all() const { return m_pieces; }

private:
    void addWord(qsizetype start, qsizetype next, double maxWidth)
    {
        qsizetype end = next;
        while (end > start && isSpace(m_paragraph[end - 1]))
            --end;
        double const width = widthOf(start, end);
        double const space = next > end ? widthOf(end, next) : 0;
        if (width <= maxWidth)
            m_pieces.push_back({start, end, {width, space}});
        else
            addParts(start, end, space, maxWidth);
    }

    /// Splits a word into parts of similar length.
    void addParts(qsizetype start, qsizetype end, double space, double maxWidth)
    {
        QString const word = m_paragraph.mid(start, end - start);
        QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, word);
        std::vector<WordPiece> clusters;
        std::vector<qsizetype> ends;
        qsizetype last = 0;
        for (qsizetype next = finder.toNextBoundary(); next > 0; next = finder.toNextBoundary()) {
            clusters.push_back({widthOf(start + last, start + next), 0});
            ends.push_back(start + next);
            last = next;
        }
        std::size_t from = 0;
        for (std::size_t const count : balancedLines(clusters, maxWidth)) {
            double width = 0;
            for (std::size_t n = from; n < from + count; ++n)
                width += clusters[n].width;
            qsizetype const partStart = from == 0 ? start : ends[from - 1];
            from += count;
            m_pieces.push_back({partStart, ends[from - 1], {width, 0}});
        }
        m_pieces.back().measure.space = space;
    }

    double widthOf(qsizetype start, qsizetype end)
    {
        QString const text = m_paragraph.mid(start, end - start);
        auto const known = m_widths.constFind(text);
        if (known != m_widths.constEnd())
            return *known;
        // Includes the letter spacing to the next piece.
        double const width =
            std::max(0.0, m_shaper.shape(text, m_direction).width + m_shaper.spacingIn(text));
        return *m_widths.insert(text, width);
    }

    QString const& m_paragraph;
    LineShaper const& m_shaper;
    Qt::LayoutDirection m_direction;
    QHash<QString, double> m_widths;
    std::vector<Piece> m_pieces;
};

std::vector<ShapedLine> linesOf(QString const& paragraph, LineShaper const& shaper, double maxWidth)
{
    auto const direction = paragraph.isRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight;
    Pieces const pieces(paragraph, shaper, direction, maxWidth);
    std::vector<WordPiece> measures;
    for (Piece const& piece : pieces.all())
        measures.push_back(piece.measure);
    std::vector<ShapedLine> lines;
    std::size_t next = 0;
    for (std::size_t const count : balancedLines(measures, maxWidth)) {
        Piece const& first = pieces.all()[next];
        Piece const& last = pieces.all()[next + count - 1];
        lines.push_back(
            shaper.shape(paragraph.mid(first.start, last.end - first.start), direction));
        next += count;
    }
    if (lines.empty())
        lines.emplace_back();
    return lines;
}

bool isBlank(ShapedLine const& line)
{
    return line.glyphs.empty();
}

/// Stacks the lines, far enough apart that their ink doesn't touch.
TextLayout stacked(std::vector<ShapedLine> set, LineMetrics const& shape, double unit)
{
    TextLayout layout;
    layout.unit = unit;
    double const em = emPixels;
    double baseline = (shape.below + shape.capital) * em;
    ShapedLine const* above = nullptr;
    double aboveBaseline = 0;
    for (ShapedLine& line : set) {
        if (above) {
            baseline = aboveBaseline + shape.height * em;
            double const gap = baseline + line.ink.top() - aboveBaseline - above->ink.bottom();
            if (!isBlank(line) && !isBlank(*above))
                baseline += std::max(0.0, minInkGap * em - gap);
        }
        TextLine made;
        made.baseline = baseline * unit;
        made.width = line.width * unit;
        made.letterTop = (baseline - (shape.capital + shape.below) * em) * unit;
        made.letterBottom = (baseline + shape.below * em) * unit;
        QPointF const place(-line.width / 2, baseline);
        QRectF const ink = line.ink.translated(place);
        made.ink = {ink.topLeft() * unit, ink.size() * unit};
        for (PlacedGlyphs& glyphs : line.glyphs) {
            glyphs.moveBy(place);
            made.glyphs.push_back(glyphs);
        }
        layout.height = made.letterBottom;
        layout.lines.push_back(std::move(made));
        above = &line;
        aboveBaseline = baseline;
    }
    return layout;
}

} // namespace

TextLayout layOut(std::string const& text, CaptionStyle const& style, double maxWidth,
                  FontRegistry const& fonts)
{
    QString const drawn = drawnText(text, style.uppercase);
    LineShaper const shaper(style, drawn, fonts);
    double const unit = double(style.fontSize) / emPixels;
    std::vector<ShapedLine> lines;
    for (QString const& paragraph : drawn.split(u'\n')) {
        auto more = linesOf(paragraph.trimmed(), shaper, maxWidth / unit);
        std::ranges::move(more, std::back_inserter(lines));
    }
    while (!lines.empty() && isBlank(lines.back()))
        lines.pop_back();
    lines.erase(lines.begin(), std::ranges::find_if_not(lines, isBlank));
    return stacked(std::move(lines), lineMetrics(shaper.font(), style.uppercase), unit);
}

QPainterPath TextLayout::contours(TextLine const& line) const
{
    QPainterPath path;
    for (PlacedGlyphs const& glyphs : line.glyphs) {
        if (glyphs.isColored)
            continue;
        QRawFont const font = glyphs.run.rawFont();
        auto const indexes = glyphs.run.glyphIndexes();
        auto const positions = glyphs.run.positions();
        for (qsizetype n = 0; n < indexes.size(); ++n)
            path.addPath(font.pathForGlyph(indexes[n]).translated(positions[n]));
    }
    path = QTransform::fromScale(unit, unit).map(path);
    path.setFillRule(Qt::WindingFill);
    return path;
}

} // namespace framewright
