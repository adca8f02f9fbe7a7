#include "styles/style_list.h"

#include "model/project_document.h"
#include "platform/test_folder.h"

#include <gtest/gtest.h>

#include <sstream>

namespace framewright {

namespace {

/// Styles from a line of words: "A B2 C*" is style A, style B in another state than "B", and style
/// C, which is the default.
StyleList sketch(std::string const& line)
{
    StyleList list;
    std::istringstream words(line);
    for (std::string word; words >> word;) {
        CaptionStyle style;
        style.id = Id::fixed(static_cast<std::uint8_t>(word[0]));
        style.fontName = "system:bold";
        if (word.back() == '*') {
            list.defaultID = style.id;
            word.pop_back();
        }
        style.name = word;
        list.styles.push_back(style);
    }
    return list;
}

std::string drawing(StyleList const& list)
{
    std::string line;
    for (CaptionStyle const& style : list.styles)
        line += (line.empty() ? "" : " ") + style.name + (style.id == list.defaultID ? "*" : "");
    return line;
}

} // namespace

TEST(MergedStyles, KeepsWhatEitherSideMade)
{
    struct Case {
        char const* name;
        char const* base;
        char const* ours;
        char const* theirs;
        char const* result;
    };
    for (Case const& c : {
             Case{"only theirs changed", "A B", "A B", "A2 B C", "A2 B C"},
             Case{"only ours changed", "A B", "A B2 C", "A B", "A B2 C"},
             Case{"each changed another", "A B", "A2 B", "A B2", "A2 B2"},
             Case{"both changed the same", "A", "A2", "A3", "A2"},
             Case{"each added one", "A", "A B", "A C", "A C B"},
             Case{"we removed one", "A B", "A", "A B C", "A C"},
             Case{"they removed one", "A B", "A B", "B", "B"},
             Case{"we removed what they changed", "A B", "A", "A B2", "A B2"},
             Case{"they removed what we changed", "A B", "A B2", "A", "A B2"},
             Case{"their order", "A B C", "A B2 C", "C B A", "C B2 A"},
             Case{"we chose the default", "A* B", "A B*", "A* B C", "A B* C"},
             Case{"they chose the default", "A* B", "A* B2", "A B*", "A B2*"},
         })
        EXPECT_EQ(drawing(merged(sketch(c.base), sketch(c.ours), sketch(c.theirs))), c.result)
            << c.name;
}

TEST(StyleList, CorrectsInvalidValuesAndNotesThem)
{
    std::string const data = R"({"styles": [
        {"id": "00000000-0000-0000-0000-000000000041", "name": "Big", "fontName": "system:bold",
         "fontSize": 5000, "textColor": {"red": 1, "green": 1, "blue": 1}, "glow": 3},
        {"id": "00000000-0000-0000-0000-000000000041", "name": "Twin", "fontName": "system:bold",
         "fontSize": 50, "textColor": {"red": 1, "green": 1, "blue": 1}}]})";
    auto const [list, notes, unknownKeys] = decodeStyleList(data);
    ASSERT_EQ(list.styles.size(), 2u);
    EXPECT_EQ(list.styles[0].fontSize, 240);
    EXPECT_NE(list.styles[1].id, list.styles[0].id);
    EXPECT_EQ(notes, (std::vector<std::string>{
                         "styles[0].glow is not known here; the next save drops it.",
                         "fontSize of Big is 8 to 240; 5000 was changed to 240.",
                         "The id of Twin appears twice; the second was given one of its own."}));
    EXPECT_EQ(decodeStyleList(list.data()).value, list);
    EXPECT_EQ(failureOf<DocumentError>([] { (void)decodeStyleList(R"({"styles": [{}]})"); }),
              "styles[0].id is missing.");
}

} // namespace framewright
