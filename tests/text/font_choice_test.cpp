#include "text/font_registry.h"
#include "text/internal/text_layout.h"

#include <gtest/gtest.h>

#include <set>

namespace framewright {

namespace {

TextLine lineOf(char const* text, char const* font)
{
    static FontRegistry const registry(CARRIED_FONTS);
    CaptionStyle style;
    style.fontName = font;
    style.fontSize = 100;
    TextLayout const layout = layOut(text, style, 1e5, registry);
    return layout.lines.empty() ? TextLine() : layout.lines.front();
}

std::set<QString> familiesOf(TextLine const& line)
{
    std::set<QString> families;
    for (PlacedGlyphs const& glyphs : line.glyphs)
        families.insert(glyphs.run.rawFont().familyName());
    return families;
}

/// The largest distance of a glyph's centre from that of the line, relative to the widest glyph.
double farthest(TextLine const& line)
{
    double most = 0, widest = 0;
    for (PlacedGlyphs const& glyphs : line.glyphs) {
        auto const indexes = glyphs.run.glyphIndexes();
        auto const positions = glyphs.run.positions();
        for (qsizetype n = 0; n < indexes.size(); ++n) {
            QRectF const ink = glyphs.run.rawFont().boundingRect(indexes[n]);
            most = std::max(most, std::abs(positions[n].x() + ink.center().x()));
            widest = std::max(widest, ink.width());
        }
    }
    return widest > 0 ? most / widest : 1;
}

} // namespace

TEST(FontChoice, KeepsMarksOnTheirLetters)
{
    std::vector<CaptionStyle> styles(CaptionStyle::textPresets().begin(),
                                     CaptionStyle::textPresets().end());
    styles.emplace_back().fontName = "mono:regular";
    styles.emplace_back().fontName = "DejaVuSans";
    for (CaptionStyle const& style : styles) {
        for (char const* const letter : {"q̃", "x̄", "m̂", "ạ̈", "Q̃"}) {
            TextLine const line = lineOf(letter, style.fontName.c_str());
            EXPECT_EQ(familiesOf(line).size(), 1U) << letter << " in " << style.fontName;
            // If a mark were beside its letter, one of them would be half a width off.
            EXPECT_LT(farthest(line), 0.45) << letter << " in " << style.fontName;
            EXPECT_GT(line.ink.top(), line.baseline - 140) << letter << " in " << style.fontName;
        }
    }
    // A decomposed letter is drawn like the precomposed one if the font has that.
    EXPECT_EQ(lineOf("e\u0301", "AnticDidone-Regular").ink, lineOf("é", "AnticDidone-Regular").ink);
}

TEST(FontChoice, SetsGreekInOneFont)
{
    struct Case {
        char const* text;
        char const* font;
        std::set<QString> families;
    };
    for (Case const& c : {
             Case{"ΩΡΑ ΔΕΛΤΑ", "BebasNeue-Regular", {"Inter"}},
             Case{"Η ΩΔ", "BebasNeue-Regular", {"Inter"}},
             Case{"ώρα Δέλτα", "CormorantGaramond-SemiBold", {"DejaVu Serif"}},
             Case{"ώρα", "JetBrainsMonoRoman-Medium", {"JetBrains Mono"}},
             // Single letters are symbols.
             Case{"Ω", "BebasNeue-Regular", {"Bebas Neue"}},
             Case{"ΔT", "BebasNeue-Regular", {"Bebas Neue"}},
         })
        EXPECT_EQ(familiesOf(lineOf(c.text, c.font)), c.families) << c.text << " in " << c.font;
}

} // namespace framewright
