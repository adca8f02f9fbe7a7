#include "text/internal/line_breaking.h"

#include <gtest/gtest.h>

#include <string>

namespace framewright {

namespace {

/// Breaks a text whose letters and spaces are 1 wide; "/" marks the breaks.
std::string broken(std::string const& text, double maxWidth)
{
    std::vector<std::string> words;
    std::vector<WordPiece> pieces;
    for (std::size_t start = 0; start < text.size();) {
        std::size_t const end = std::min(text.find(' ', start), text.size());
        words.push_back(text.substr(start, end - start));
        pieces.push_back({double(end - start), 1});
        start = end + 1;
    }
    std::string drawn;
    std::size_t next = 0;
    for (std::size_t const count : balancedLines(pieces, maxWidth)) {
        for (std::size_t n = 0; n < count; ++n)
            drawn += (n > 0 ? " " : next > 0 ? "/" : "") + words[next + n];
        next += count;
    }
    return drawn;
}

} // namespace

TEST(BalancedLines, AreFewAndOfEqualLength)
{
    struct Case {
        char const* text;
        double maxWidth;
        char const* lines;
    };
    for (Case const& c : {
             Case{"", 10, ""},
             Case{"one two", 10, "one two"},
             Case{"one two", 7, "one two"}, // It just fits.
             Case{"one two", 6.9, "one/two"},
             // Filled greedily, one word would be left over.
             Case{"aaa bbb ccc ddd", 12, "aaa bbb/ccc ddd"},
             Case{"here are three small things", 22, "here are three/small things"},
             // The last word is not alone, even if that were as balanced.
             Case{"aaaaaa bb ccccc", 9, "aaaaaa/bb ccccc"},
             Case{"aaaaaaaaa b", 10, "aaaaaaaaa/b"}, // There is no other way.
             Case{"a b c d e f g h i", 5, "a b c/d e f/g h i"},
             Case{"aa incomprehensible bb", 6, "aa/incomprehensible/bb"},
         })
        EXPECT_EQ(broken(c.text, c.maxWidth), c.lines) << c.text << " in " << c.maxWidth;
}

} // namespace framewright
