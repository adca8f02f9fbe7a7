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

/// How far from the middle of its letter the middle of a mark may stand: a part of the letter's
/// width, or in ems for the narrow ones. Slanted letters have theirs a little aside.
constexpr double markTolerance = 0.4, minMarkTolerance = 0.12;
constexpr double maxMarkHeight =
    1.4; ///< Above the baseline, in ems; two above a capital are lower.

/// Families of many letters, for what neither a font nor its companion can set.
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

/// A font without those that stand in for it.
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

/// Whether the marks of the script's letters are drawn above and below them, and nothing else is
/// changed by them.
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

/// Whether it is a letter with marks, in one character or several.
bool hasMarks(QString const& cluster)
{
    return cluster[0].decompositionTag() == QChar::Canonical ||
           std::any_of(cluster.begin() + 1, cluster.end(),
                       [](QChar c) { return c.category() == QChar::Mark_NonSpacing; });
}

/// Glyphs as one font sets them, and how wide.
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

/// Whether the font has all of a cluster, and puts its marks where the letter is. Some fonts have
/// marks for a few of their letters only, and leave them beside the others, or far above.
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

/// One Greek letter among others is a symbol and may come from anywhere. Words are told by two.
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
    // Fonts have letters with their marks, or letters and marks, or both.
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
    // One range for what stands side by side, so that it is set together.
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

/// The selectors that make them emoji have done their work then; fonts don't have them, and
/// sequences would be torn where one is looked for elsewhere.
void FontChoice::addEmoji(QString const& emoji, Choice& to) const
{
    QString shown = emoji;
    shown.remove(colorSelector);
    QTextCharFormat format;
    format.setFontFamilies(QStringList(emojiFamily()) + m_font.families());
    // Pictures can't be made bolder; the font engine would leave them out.
    format.setFontWeight(QFont::Normal);
    format.setFontItalic(false);
    to.formats.append({int(to.text.size()), int(shown.size()), format});
    to.text += shown;
}

} // namespace framewright
