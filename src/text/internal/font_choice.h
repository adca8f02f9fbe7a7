#pragma once

#include <QFont>
#include <QRawFont>
#include <QString>
#include <QTextLayout>

namespace framewright {

/// Sees to it that what belongs together is set in one font.
///
/// The text engine looks for a font for each character alone. So a mark would come from another
/// font than its letter and stand beside it, an emoji made of several would fall to pieces, and the
/// few Greek letters that many fonts have as symbols would stand among those of another font.
class FontChoice {
public:
    /// For `text`, which may be set in pieces, in a font that has its size.
    FontChoice(QFont font, QString const& text);

    struct Choice {
        QString text; ///< The piece, spelled as its fonts need it.
        QList<QTextLayout::FormatRange> formats;
    };
    Choice choose(QString const& piece) const;

private:
    void addWords(QString const& words, Choice& to) const;
    void addCluster(QString const& cluster, Choice& to) const;
    void addIn(QString const& family, QString const& text, Choice& to) const;
    void addEmoji(QString const& emoji, Choice& to) const;
    QString greekFamilyFor(QString const& text) const;

    QFont m_font;
    QRawFont m_letters;     ///< What it has itself.
    QStringList m_families; ///< In which letters are looked for, the font's own first.
    QString m_greekFamily;  ///< Empty where Greek needs none of its own.
};

} // namespace framewright
