#include "text/letter_case.h"

#include <gtest/gtest.h>

namespace framewright {

TEST(Capitals, FollowTheirScripts)
{
    struct Case {
        char const* text;
        char const* capitals;
    };
    for (Case const& c : {
             Case{"Straße", "STRASSE"},
             Case{"ıi", "II"},
             Case{"éàñ ﬁn", "ÉÀÑ FIN"},
             Case{"άνθρωπος Σίσυφος", "ΑΝΘΡΩΠΟΣ ΣΙΣΥΦΟΣ"},
             Case{"μάιος ΰαλος", "ΜΑΪΟΣ ΫΑΛΟΣ"},
             Case{"ή, αυτή ή", "Ή, ΑΥΤΗ Ή"},
             Case{"Ἀθῆναι Ὥρα ᾠδή ΐ", "ΑΘΗΝΑΙ ΩΡΑ ΩΙΔΗ Ϊ"},
             Case{"ἢ ἡ ᾱ́", "Ή Η Α"},
             Case{"ΜΆΙΟΣ", "ΜΑΪΟΣ"},
             Case{"საქართველო ok", "საქართველო OK"},
             Case{"각 é", "각 É"},
             Case{"привет שלום 😀", "ПРИВЕТ שלום 😀"},
         })
        EXPECT_EQ(capitals(QString::fromUtf8(c.text)).toStdString(), c.capitals) << c.text;
}

} // namespace framewright
