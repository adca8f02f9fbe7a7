#include "text/internal/text_layout.h"

#include "text/internal/font_choice.h"
#include "text/internal/line_breaking.h"
#include "text/letter_case.h"

#include <QHash>
#include <QRawFont>
#include <QTextBoundaryFinder>
#include <QTextLayout>

#include <algorithm>

namespace framewright {

namespace {

/// The em size at which lines are shaped; see `layOut`. At this one the emoji font's bitmaps have
/// their stored size.
constexpr int emPixels = 109;

constexpr double minLineHeight = 1.12, maxLineHeight = 1.35; ///< In ems, between baselines.
constexpr double minInkGap = 0.04; ///< In ems, between the ink of two lines.

/// A line as shaped by the text engine, starting at (0, 0) on the baseline.
struct ShapedLine {
    std::vector<PlacedGlyphs> glyphs;
    double width = 0;
    QRectF ink;
};

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

void move(PlacedGlyphs& glyphs, QPointF const& by)
{
    auto positions = glyphs.run.positions();
    for (QPointF& position : positions)
        position += by;
    glyphs.run.setPositions(positions);
    glyphs.ink.translate(by);
}

QFont sized(QFont font)
{
    font.setPixelSize(emPixels);
    font.setHintingPreference(QFont::PreferNoHinting);
    font.setStyleStrategy(
        QFont::StyleStrategy(QFont::PreferAntialias | QFont::NoSubpixelAntialias));
    return font;
}

/// Shapes lines of text in one font and its fallbacks.
class LineShaper {
public:
    /// `text` is the whole text, of which parts will be shaped.
    LineShaper(CaptionStyle const& style, QString const& text, FontRegistry const& fonts)
        : m_font(sized(fonts.find(style.fontName).font)),
          m_choice(m_font, text),
          m_spacing(double(style.letterSpacing) / style.fontSize * emPixels)
    {
    }

    QFont const& font() const { return m_font; }

    /// The letter spacing used for a text.
    double spacingIn(QString const& text) const { return isJoinedScript(text) ? 0 : m_spacing; }

    ShapedLine set(QString const& text, Qt::LayoutDirection direction) const
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

private:
    /// With spacing so negative that letters run backwards, a line extends to the left of its
    /// origin. Moves it right and corrects its width.
    static void moveToOrigin(ShapedLine& line)
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
            move(glyphs, {-left, 0});
    }

    static void add(QGlyphRun const& run, ShapedLine& to)
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

    QFont m_font;
    FontChoice m_choice;
    double m_spacing;
};

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
    Pieces(QString const& paragraph, LineShaper const& setter, Qt::LayoutDirection direction,
           double maxWidth)
        : m_paragraph(paragraph), m_setter(setter), m_direction(direction)
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
            std::max(0.0, m_setter.set(text, m_direction).width + m_setter.spacingIn(text));
        return *m_widths.insert(text, width);
    }

    QString const& m_paragraph;
    LineShaper const& m_setter;
    Qt::LayoutDirection m_direction;
    QHash<QString, double> m_widths;
    std::vector<Piece> m_pieces;
};

std::vector<ShapedLine> linesOf(QString const& paragraph, LineShaper const& setter, double maxWidth)
{
    auto const direction = paragraph.isRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight;
    Pieces const pieces(paragraph, setter, direction, maxWidth);
    std::vector<WordPiece> measures;
    for (Piece const& piece : pieces.all())
        measures.push_back(piece.measure);
    std::vector<ShapedLine> lines;
    std::size_t next = 0;
    for (std::size_t const count : balancedLines(measures, maxWidth)) {
        Piece const& first = pieces.all()[next];
        Piece const& last = pieces.all()[next + count - 1];
        lines.push_back(setter.set(paragraph.mid(first.start, last.end - first.start), direction));
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
            move(glyphs, place);
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
    LineShaper const setter(style, drawn, fonts);
    double const unit = double(style.fontSize) / emPixels;
    std::vector<ShapedLine> lines;
    for (QString const& paragraph : drawn.split(u'\n')) {
        auto more = linesOf(paragraph.trimmed(), setter, maxWidth / unit);
        std::ranges::move(more, std::back_inserter(lines));
    }
    while (!lines.empty() && isBlank(lines.back()))
        lines.pop_back();
    lines.erase(lines.begin(), std::ranges::find_if_not(lines, isBlank));
    return stacked(std::move(lines), lineMetrics(setter.font(), style.uppercase), unit);
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
