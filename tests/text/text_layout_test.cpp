#include "text/internal/text_layout.h"

#include <gtest/gtest.h>

namespace framewright {

namespace {

FontRegistry const& fonts()
{
    static FontRegistry const registry(CARRIED_FONTS);
    return registry;
}

CaptionStyle style(char const* font, float size, float spacing = 0)
{
    CaptionStyle made;
    made.fontName = font;
    made.fontSize = size;
    made.letterSpacing = spacing;
    return made;
}

} // namespace

TEST(TextLayout, KeepsInkOfLinesApart)
{
    // At the font's line height alone the marks would reach 11 points into the descenders.
    TextLayout const layout = layOut("gjpy\nẪ", style("DejaVuSans", 100), 900, fonts());
    ASSERT_EQ(layout.lines.size(), 2U);
    EXPECT_NEAR(layout.lines[1].ink.top() - layout.lines[0].ink.bottom(), 4, 0.1);
}

TEST(TextLayout, BreaksLongWordsIntoEvenParts)
{
    char const* const word = "Superlangesdonaudampfschifffahrtsgesellschaftskapitänswort";
    for (char const* const font :
         {"BebasNeue-Regular", "AnticDidone-Regular", "system:semibold", "mono:regular"}) {
        for (double const maxWidth : {150, 300, 500, 700, 900}) {
            TextLayout const layout = layOut(word, style(font, 100), maxWidth, fonts());
            double least = maxWidth, most = 0, all = 0;
            for (TextLine const& line : layout.lines) {
                least = std::min(least, line.width);
                most = std::max(most, line.width);
                all += line.width;
            }
            EXPECT_LE(most, maxWidth + 2) << font << " in " << maxWidth;
            EXPECT_GE(least, most / 2) << font << " in " << maxWidth;
            // No more parts than needed; each may lack the width of one letter.
            EXPECT_LE(double(layout.lines.size()), all / (maxWidth - 80) + 1) << font;
        }
    }
}

TEST(TextLayout, CentersLettersThatRunBackwards)
{
    for (float const spacing : {-1.F, -4.F, -6.F, -20.F}) {
        for (char const* const text : {"Wordword", "שלוםשלום"}) {
            TextLayout const layout = layOut(text, style("DejaVuSans", 8, spacing), 900, fonts());
            ASSERT_EQ(layout.lines.size(), 1U);
            EXPECT_NEAR(layout.lines[0].ink.center().x(), 0, 2) << text << " " << spacing;
            EXPECT_GE(layout.lines[0].width, layout.lines[0].ink.width() - 1) << text << spacing;
        }
    }
}

} // namespace framewright
