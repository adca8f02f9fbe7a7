#include "text/internal/font_choice.h"

#include "text/internal/emoji.h"

#include <QFontDatabase>
#include <QRawFont>
#include <QTextBoundaryFinder>

#include <algorithm>
#include <cmath>

namespace framewright {

namespace {

constexpr QChar colorSelector = u'\uFE0F';

/// How far the centre of a mark may be from that of its letter: a fraction of the letter's width,
/// or ems for narrow letters. Slanted fonts shift their marks sideways.
constexpr double markTolerance = 0.4, minMarkTolerance = 0.12;
constexpr double maxMarkHeight = 1.4; ///< Ems above the baseline; fits two marks on a capital.

/// A family with wide coverage, for what neither a font nor its companion has.
QString widerFamily(QStringList const& families)
{
    if (families.contains(QStringLiteral("Libre Baskerville")))
        return QStringLiteral("DejaVu Serif");
    if (families.contains(QStringLiteral("JetBrains Mono")))
        return QStringLiteral("DejaVu Sans Mono");
    return QStringLiteral("DejaVu Sans");
}

QStringList letterFamilies(QFont const& font)
{
    QStringList families = font.families();
    families.removeAll(emojiFamily());
    for (QString const& family :
         {widerFamily(families), QStringLiteral("Inter"), QStringLiteral("DejaVu Sans")}) {
        if (!families.contains(family) && QFontDatabase::hasFamily(family))
            families.append(family);
    }
    return families;
}

/// `font` with this family and no fallbacks.
QFont only(QString const& family, QFont font)
{
    font.setFamilies({family});
    font.setStyleStrategy(QFont::StyleStrategy(font.styleStrategy() | QFont::NoFontMerging));
    font.setLetterSpacing(QFont::AbsoluteSpacing, 0);
    return font;
}

bool isGreek(QChar c)
{
    return c.script() == QChar::Script_Greek && c.isLetter();
}

/// Whether marks in this script are simply drawn above or below their letters.
bool isPlainScript(QChar c)
{
    switch (c.script()) {
    case QChar::Script_Latin:
    case QChar::Script_Greek:
    case QChar::Script_Cyrillic:
    case QChar::Script_Common:
        return !c.isSurrogate();
    default:
        return false;
    }
}

/// Whether it is a letter with marks, precomposed or not.
bool hasMarks(QString const& cluster)
{
    return cluster[0].decompositionTag() == QChar::Canonical ||
           std::any_of(cluster.begin() + 1, cluster.end(),
                       [](QChar c) { return c.category() == QChar::Mark_NonSpacing; });
}

/// A cluster shaped in one font.
struct ShapedCluster {
    ShapedCluster(QString const& text, QFont const& font)
    {
        QTextLayout layout(text, font);
        layout.beginLayout();
        QTextLine line = layout.createLine();
        line.setLineWidth(1e7);
        layout.endLayout();
        width = line.naturalTextWidth();
        baseline = line.y() + line.ascent();
        runs = layout.glyphRuns();
    }

    double width = 0, baseline = 0;
    QList<QGlyphRun> runs;
};

/// Whether the font has all glyphs of a cluster and positions its marks on the letter.
bool sets(QFont const& font, QString const& cluster)
{
    QRawFont const raw = QRawFont::fromFont(font);
    if (!std::ranges::all_of(cluster, [&](QChar c) { return raw.supportsCharacter(c); }))
        return false;
    ShapedCluster const set(cluster, font), letter(cluster.left(1), font);
    double const em = font.pixelSize();
    double const tolerance = std::max(markTolerance * letter.width, minMarkTolerance * em);
    if (set.runs.size() != 1 || set.width > letter.width + minMarkTolerance * em)
        return false;
    QGlyphRun const& run = set.runs.front();
    auto const indexes = run.glyphIndexes();
    auto const positions = run.positions();
    for (qsizetype n = 0; n < indexes.size(); ++n) {
        QRectF const ink = raw.boundingRect(indexes[n]).translated(positions[n]);
        if (std::abs(ink.center().x() - letter.width / 2) > tolerance ||
            ink.top() < set.baseline - maxMarkHeight * em)
            return false;
    }
    return true;
}

} // namespace

FontChoice::FontChoice(QFont font, QString const& text)
    : m_font(std::move(font)),
      m_letters(QRawFont::fromFont(m_font)),
      m_families(letterFamilies(m_font)),
      m_greekFamily(greekFamilyFor(text))
{
}

/// Two adjacent Greek letters make a word; one among others is a symbol.
QString FontChoice::greekFamilyFor(QString const& text) const
{
    QString letters;
    bool hasWords = false;
    for (qsizetype n = 0; n < text.size(); ++n) {
        if (!isGreek(text[n]))
            continue;
        hasWords = hasWords || (n > 0 && isGreek(text[n - 1]));
        if (!letters.contains(text[n]))
            letters.append(text[n]);
    }
    if (!hasWords)
        return {};
    auto const hasAll = [&](QString const& family) {
        QRawFont const raw = QRawFont::fromFont(only(family, m_font));
        return std::ranges::all_of(letters, [&](QChar c) { return raw.supportsCharacter(c); });
    };
    auto const found = std::ranges::find_if(m_families, hasAll);
    return found == m_families.begin() || found == m_families.end() ? QString() : *found;
}

FontChoice::Choice FontChoice::choose(QString const& piece) const
{
    Choice made;
    qsizetype from = 0;
    for (TextSpan const& emoji : emojiRanges(piece)) {
        addWords(piece.mid(from, emoji.start - from), made);
        addEmoji(piece.mid(emoji.start, emoji.length), made);
        from = emoji.start + emoji.length;
    }
    addWords(piece.mid(from), made);
    return made;
}

void FontChoice::addWords(QString const& words, Choice& to) const
{
    QTextBoundaryFinder clusters(QTextBoundaryFinder::Grapheme, words);
    qsizetype from = 0;
    for (qsizetype next = clusters.toNextBoundary(); next > 0; next = clusters.toNextBoundary()) {
        addCluster(words.mid(from, next - from), to);
        from = next;
    }
}

void FontChoice::addCluster(QString const& cluster, Choice& to) const
{
    if (!m_greekFamily.isEmpty() && isGreek(cluster[0])) {
        addIn(m_greekFamily, cluster, to);
        return;
    }
    bool const hasGlyph = cluster.size() == 1 && m_letters.supportsCharacter(cluster[0]);
    if (hasGlyph || !isPlainScript(cluster[0]) || !hasMarks(cluster)) {
        to.text += cluster;
        return;
    }
    // A font may have the precomposed letter, or letter and mark, or both.
    QString const composed = cluster.normalized(QString::NormalizationForm_C);
    QString const decomposed = cluster.normalized(QString::NormalizationForm_D);
    for (QString const& family : m_families) {
        QFont const font = only(family, m_font);
        for (QString const& spelled : {composed, decomposed}) {
            if (!sets(font, spelled))
                continue;
            if (family == m_families.front())
                to.text += spelled;
            else
                addIn(family, spelled, to);
            return;
        }
    }
    to.text += cluster;
}

void FontChoice::addIn(QString const& family, QString const& text, Choice& to) const
{
    // Adjacent clusters share a range, so that they are shaped together.
    auto& formats = to.formats;
    QStringList const families = QStringList(family) + m_font.families();
    if (!formats.isEmpty() && formats.back().start + formats.back().length == to.text.size() &&
        formats.back().format.fontFamilies().toStringList() == families) {
        formats.back().length += int(text.size());
    } else {
        QTextCharFormat format;
        format.setFontFamilies(families);
        formats.append({int(to.text.size()), int(text.size()), format});
    }
    to.text += text;
}

/// Removes the emoji selectors, which are redundant once the family is fixed: the font lacks them,
/// and Qt would split sequences to look for them elsewhere.
void FontChoice::addEmoji(QString const& emoji, Choice& to) const
{
    QString shown = emoji;
    shown.remove(colorSelector);
    QTextCharFormat format;
    format.setFontFamilies(QStringList(emojiFamily()) + m_font.families());
    // The font engine draws nothing when asked to embolden or slant bitmap glyphs.
    format.setFontWeight(QFont::Normal);
    format.setFontItalic(false);
    to.formats.append({int(to.text.size()), int(shown.size()), format});
    to.text += shown;
}

} // namespace framewright
