#include "text/letter_case.h"

#include <algorithm>

namespace framewright {

namespace {

/// Combining marks of Greek letters.
enum Mark : char16_t {
    grave = 0x300,
    acute = 0x301,
    lengthened = 0x304,
    shortened = 0x306,
    smoothBreathing = 0x313,
    roughBreathing = 0x314,
    circumflex = 0x342,
};

bool isAccent(QChar c)
{
    return c.unicode() == grave || c.unicode() == acute || c.unicode() == circumflex;
}

/// Whether capitals drop it. They keep the diaeresis and the iota subscript.
bool isLost(QChar c)
{
    return isAccent(c) || c.unicode() == lengthened || c.unicode() == shortened ||
           c.unicode() == smoothBreathing || c.unicode() == roughBreathing;
}

bool isLetterAt(QString const& text, qsizetype at)
{
    return at >= 0 && at < text.size() && (text[at].isLetter() || text[at].isMark());
}

/// A letter and its marks in decomposed text.
struct Letter {
    Letter(QString const& text, qsizetype at) : start(at), end(at + 1)
    {
        for (; end < text.size() && text[end].isMark(); ++end)
            marks.append(text[end]);
    }

    bool has(char16_t mark) const { return marks.contains(QChar(mark)); }

    qsizetype start;
    qsizetype end;
    QString marks;
};

/// Whether it is the word ή, "or". It keeps its accent; without, it would read as the article η.
bool isOr(QString const& text, Letter const& letter)
{
    return (text[letter.start] == u'η' || text[letter.start] == u'Η') &&
           (letter.has(acute) || letter.has(grave)) && !letter.has(roughBreathing) &&
           !isLetterAt(text, letter.start - 1) && !isLetterAt(text, letter.end);
}

/// Removes the marks that Greek capitals don't have.
QString plainGreek(QString const& decomposed)
{
    QString plain;
    bool wasAccented = false;
    for (qsizetype at = 0; at < decomposed.size();) {
        QChar const c = decomposed[at];
        if (c.script() != QChar::Script_Greek || !c.isLetter()) {
            plain += c;
            wasAccented = false;
            ++at;
            continue;
        }
        Letter const letter(decomposed, at);
        QString marks = letter.marks;
        marks.removeIf(isLost);
        if (isOr(decomposed, letter))
            marks = QChar(acute);
        // An accent on the first of two vowels marked them as separate; now a diaeresis must.
        else if (wasAccented && letter.marks.isEmpty() && QStringLiteral("ιυΙΥ").contains(c))
            marks = QChar(0x308);
        wasAccented = std::ranges::any_of(letter.marks, isAccent) && !letter.has(0x308);
        plain += c + marks;
        at = letter.end;
    }
    return plain;
}

/// Georgian capitals (Mtavruli) are for whole words only, and few fonts have them.
bool isGeorgian(QChar c)
{
    return c.unicode() >= 0x10D0 && c.unicode() <= 0x10FF;
}

} // namespace

QString capitals(QString const& text)
{
    QString const plain = plainGreek(text.normalized(QString::NormalizationForm_D))
                              .normalized(QString::NormalizationForm_C);
    QString made;
    for (qsizetype from = 0; from < plain.size();) {
        qsizetype to = from;
        while (to < plain.size() && isGeorgian(plain[to]) == isGeorgian(plain[from]))
            ++to;
        QString const stretch = plain.mid(from, to - from);
        made += isGeorgian(plain[from]) ? stretch : stretch.toUpper();
        from = to;
    }
    return made;
}

} // namespace framewright
