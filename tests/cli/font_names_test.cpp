#include "cli/internal/font_names.h"

#include "cli/tool_error.h"

#include <gtest/gtest.h>

#include <vector>

namespace framewright {

namespace {

std::vector<std::string> const installed{"DejaVuSans", "DejaVuSans-Bold", "DejaVuSerif",
                                         "JetBrainsMono-Bold"};

/// The font's name, or the sentence that refuses it.
std::string read(char const* text)
{
    try {
        return fontNamed(text, installed);
    } catch (ToolError const& error) {
        return error.what();
    }
}

} // namespace

TEST(FontNames, AnyNameOfAFontWillDo)
{
    struct Case {
        char const* text;
        char const* name;
    };
    for (Case const& c : {
             Case{"Classic", "InstrumentSans-Regular_SemiBold"},
             Case{"instrument sans", "InstrumentSans-Regular_SemiBold"},
             Case{"STRONG (Bebas Neue)", "BebasNeue-Regular"},
             Case{"bebasneue-regular", "BebasNeue-Regular"},
             Case{"Courier Prime", "CourierPrime-Regular"},
             Case{"Typewriter Bold", "CourierPrime-Bold"},
             Case{"avenir next bold", "AvenirNext-Bold"},
             Case{"system:heavy", "system:heavy"},
             Case{"Mono:SemiBold", "mono:semibold"},
             Case{"DejaVuSans-Bold", "DejaVuSans-Bold"},
             Case{"dejavusans-bold", "DejaVuSans-Bold"},
         })
        EXPECT_EQ(read(c.text), c.name) << c.text;
}

TEST(FontNames, OthersAreRefusedWithWhatIsNear)
{
    struct Case {
        char const* text;
        char const* sentence;
    };
    for (Case const& c : {
             Case{"Bebass Neue", "No font called Bebass Neue. Did you mean Bebas Neue?"},
             Case{"Bebass", "No font called Bebass. Did you mean Bebas Neue?"},
             Case{"Helvetica Neue", "No font called Helvetica Neue. Did you mean Helvetica Neue "
                                    "Light, Helvetica Neue Medium or Helvetica Neue Bold?"},
             Case{"DejaVu Sans", "No font called DejaVu Sans. Did you mean DejaVuSans?"},
             Case{"Qwertz", "No font called Qwertz. Use a name of the list, such as Classic or "
                            "Bebas Neue, system:bold, mono:medium, or an installed PostScript "
                            "name."},
             Case{"system:fat", "A weight follows system: light, regular, medium, semibold, bold "
                                "or heavy, not \"fat\"."},
             Case{"mono:", "A weight follows mono: light, regular, medium, semibold, bold or "
                           "heavy, not \"\"."},
         })
        EXPECT_EQ(read(c.text), c.sentence) << c.text;
}

} // namespace framewright
