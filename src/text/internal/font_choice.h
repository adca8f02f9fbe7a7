#pragma once

#include <QFont>
#include <QRawFont>
#include <QString>
#include <QTextLayout>

namespace framewright {

/// Keeps characters that belong together in one font.
///
/// The problem: when a font lacks a character, Qt looks for another font for that character alone.
/// A combining mark then comes from a different font than its letter and is drawn beside it, emoji
/// sequences fall apart, and Greek text mixes two fonts, because many Latin ones have a few Greek
/// letters (Ω, Δ, π) as symbols.
///
/// The method: split the text into grapheme clusters and choose a font for each whole cluster, as
/// an explicit format that Qt then follows:
/// - Emoji sequences get the emoji family first.
/// - Greek words get the first family that has all their letters. A single Greek letter between
///   others is a symbol and stays in the style's font.
/// - Letters with marks get the first family that draws them well, trying the precomposed and the
///   decomposed spelling. Having all the glyphs is no proof: some fonts position marks for a few
///   letters only and leave them beside, or far above, the others. So the cluster is shaped and the
///   position of its ink is checked.
/// - Everything else is left to Qt.
class FontChoice {
public:
    /// `font` has its size; `text` is the whole text, parts of which are passed to `choose`.
    FontChoice(QFont font, QString const& text);

    struct Choice {
        QString text; ///< In the spelling that its fonts need.
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
    QRawFont m_letters;     ///< m_font without fallbacks.
    QStringList m_families; ///< Candidates for letters, the font's own family first.
    QString m_greekFamily;  ///< Empty where Greek can stay in m_font.
};

} // namespace framewright
