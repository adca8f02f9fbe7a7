#include "text/letter_case.h"

#include <array>

namespace framewright {

namespace {

struct Unaccented {
    char16_t accented;
    char16_t plain;
};

/// Greek vowels with a tonos. Those of the polytonic script lose their accents by decomposition.
constexpr std::array<Unaccented, 15> greek = {{{u'Ά', u'Α'},
                                               {u'Έ', u'Ε'},
                                               {u'Ή', u'Η'},
                                               {u'Ί', u'Ι'},
                                               {u'Ό', u'Ο'},
                                               {u'Ύ', u'Υ'},
                                               {u'Ώ', u'Ω'},
                                               {u'ά', u'Α'},
                                               {u'έ', u'Ε'},
                                               {u'ή', u'Η'},
                                               {u'ί', u'Ι'},
                                               {u'ό', u'Ο'},
                                               {u'ύ', u'Υ'},
                                               {u'ώ', u'Ω'},
                                               {u'ΐ', u'Ϊ'}}};

char16_t plainGreek(char16_t letter)
{
    for (Unaccented const& one : greek) {
        if (one.accented == letter)
            return one.plain;
    }
    return letter == u'ΰ' ? u'Ϋ' : letter;
}

bool isLetterAt(QString const& text, qsizetype at)
{
    return at >= 0 && at < text.size() && (text[at].isLetter() || text[at].isMark());
}

} // namespace

QString capitals(QString const& text)
{
    QString composed = text.normalized(QString::NormalizationForm_C);
    bool wasAccented = false;
    for (qsizetype n = 0; n < composed.size(); ++n) {
        char16_t const letter = composed[n].unicode();
        char16_t const plain = plainGreek(letter);
        // "Or" keeps its accent: without it, it would be the article.
        bool const isAlone =
            plain == u'Η' && !isLetterAt(composed, n - 1) && !isLetterAt(composed, n + 1);
        // An accent on the first of two vowels told that they are spoken apart.
        if (wasAccented && (letter == u'ι' || letter == u'υ'))
            composed[n] = letter == u'ι' ? u'Ϊ' : u'Ϋ';
        else if (plain != letter && !isAlone)
            composed[n] = plain;
        wasAccented = plain != letter && letter != u'ΐ' && letter != u'ΰ';
    }
    return composed.toUpper();
}

} // namespace framewright
