#include "model/style.h"

#include <gtest/gtest.h>

#include <limits>
#include <set>

namespace framewright {

TEST(CaptionStyle, SummaryNamesWhatIsOn)
{
    CaptionStyle style;
    EXPECT_EQ(style.featureSummary(), "");
    style.uppercase = style.backgroundEnabled = true;
    EXPECT_EQ(style.featureSummary(), "Box · Caps");
    style.outlineEnabled = style.shadowEnabled = true;
    EXPECT_EQ(style.featureSummary(), "Box · Shadow · Outline · Caps");
}

TEST(CaptionStyle, ValuesOutOfRangeAreClampedAndReported)
{
    CaptionStyle invalid;
    invalid.name = "Odd";
    invalid.fontName = "system:bold";
    EXPECT_EQ(normalized(invalid).changes.size(), 0u);

    invalid.fontSize = 900;
    invalid.padding = -3;
    invalid.strokeWidth = std::numeric_limits<float>::quiet_NaN();
    invalid.textColor.green = 1.5;
    auto const [style, changes] = normalized(invalid);
    EXPECT_EQ(style.fontSize, 240);
    EXPECT_EQ(style.padding, 0);
    EXPECT_EQ(style.strokeWidth, 0);
    EXPECT_EQ(style.textColor.green, 1);
    EXPECT_EQ(changes, (std::vector<std::string>{
                           "fontSize of Odd is 8 to 240; 900 was changed to 240.",
                           "padding of Odd is 0 to 200; -3 was changed to 0.",
                           "strokeWidth of Odd is 0 to 60; nan was changed to 0.",
                           "textColor.green of Odd is 0 to 1; 1.5 was changed to 1."}));
    EXPECT_EQ(normalized(style).changes.size(), 0u);
    EXPECT_EQ(normalized(CaptionStyle()).changes.size(), 2u) << "no name and no font";
}

TEST(CaptionStyle, BuiltInStylesAreDistinctAndDrawable)
{
    std::set<Id> ids;
    for (auto const styles : {CaptionStyle::presets(), CaptionStyle::textPresets()}) {
        std::set<std::string> names;
        for (CaptionStyle const& style : styles) {
            EXPECT_TRUE(ids.insert(style.id).second) << style.name;
            EXPECT_TRUE(names.insert(style.name).second) << style.name;
            EXPECT_EQ(normalized(style).changes.size(), 0u) << style.name;
            EXPECT_TRUE(style.backgroundEnabled || style.shadowEnabled || style.outlineEnabled)
                << style.name << " is lost on footage of its own colour";
        }
    }
}

} // namespace framewright
