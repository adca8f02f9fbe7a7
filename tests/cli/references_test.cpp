#include "cli/references.h"

#include "cli/tool_error.h"
#include "cli/values.h"
#include "sample_project.h"

#include <gtest/gtest.h>

#include <functional>

namespace framewright {

namespace {

std::string const tracks = "Tracks: t1 \"Titles\", v1 \"Video 1\", v2 \"video 1\", "
                           "a1 \"Audio 1\", s1 \"Subtitles\".";

/// What `function` says, or the sentence it throws.
std::string answer(std::function<std::string()> const& function)
{
    try {
        return function();
    } catch (ToolError const& error) {
        return error.what();
    }
}

struct Case {
    std::string reference;
    std::string answer;
};

} // namespace

TEST(References, Tracks)
{
    Project const project = sampleProject();
    for (Case const& c : {
             Case{"v1", "v1"},
             Case{"V2", "v2"},
             Case{"t1", "t1"},
             Case{"a1", "a1"},
             Case{"s1", "s1"},
             Case{"Video 1", "v1"},
             Case{"video 1", "v2"},
             Case{"SUBTITLES", "s1"},
             Case{"VIDEO 1", "VIDEO 1 matches several tracks; use a longer id."},
             Case{"f0000004", "a1"},
             Case{"F0", "F0 matches several tracks; use a longer id."},
             Case{"a1234567", "v2"}, // looks like a number, but is an id
             Case{"v3", "v3 is out of range. " + tracks},
             Case{"v0", "v0 is out of range. " + tracks},
             Case{"s99999999999999999999999",
                  "s99999999999999999999999 is out of range. " + tracks},
             Case{"music", "No track music. " + tracks},
             Case{"v1 ", "No track v1 . " + tracks},
             Case{"", "No track . " + tracks},
         })
        EXPECT_EQ(answer([&] { return trackRef(project, resolveTrack(project, c.reference)); }),
                  c.answer);
    EXPECT_EQ(answer([] { return resolveTrack(Project(), "v1").name; }),
              "v1 is out of range. Tracks: none.");
}

TEST(References, Clips)
{
    Project const project = sampleProject();
    auto const malformed = [](std::string const& text) {
        return "Clip refs look like v1:2 or an 8-character id, not " + text +
               ". Read `timeline` for the current refs.";
    };
    for (Case const& c : {
             Case{"v1:2", "v1:2"},
             Case{"Audio 1:1", "a1:1"},
             Case{"t1:1", "t1:1"},
             Case{"11111111", "v1:1"},
             Case{"11111111-0000-4000", "v1:1"},
             Case{"22222222", "22222222 matches several clips; use a longer id."},
             Case{"v1:3", "No clip v1:3: v1 (Video 1) has 2 clips."},
             Case{"v1:0", "No clip v1:0: v1 (Video 1) has 2 clips."},
             Case{"t1:9", "No clip t1:9: t1 (Titles) has 1 clip."},
             Case{"v9:1", "v9 is out of range. " + tracks},
             Case{"x:1", "No track x. " + tracks},
             Case{"s1:1", "s1 (Subtitles) holds subtitle bars, not clips; "
                          "use s-refs with the caption tools."},
             Case{"99999999", "No clip 99999999. Read `timeline` for the current refs."},
             Case{"1111111", malformed("1111111")},
             Case{"11111111x", malformed("11111111x")},
             Case{"111111110", malformed("111111110")},
             Case{"v1", malformed("v1")},
             Case{"v1:", malformed("v1:")},
             Case{":1", malformed(":1")},
             Case{"v1:-1", malformed("v1:-1")},
             Case{"", malformed("")},
         })
        EXPECT_EQ(answer([&] {
                      auto const place = resolveClip(project, c.reference);
                      return clipRef(project, *place.track, *place.clip);
                  }),
                  c.answer);
}

TEST(References, Bars)
{
    Project const project = sampleProject();
    auto const malformed = [](std::string const& text) {
        return "Bar refs look like s1:3 or an 8-character id, not " + text + ".";
    };
    for (Case const& c : {
             Case{"s1:2", "s1:2"},
             Case{"Subtitles:1", "s1:1"},
             Case{"bbbbbbbb", "s1:2"},
             Case{"s1:3", "No subtitle bar s1:3."},
             Case{"s1:0", "No subtitle bar s1:0."},
             Case{"99999999", "No subtitle bar 99999999."},
             Case{"v1:1", malformed("v1:1")},
             Case{"s1", malformed("s1")},
         })
        EXPECT_EQ(answer([&] {
                      auto const place = resolveBar(project, c.reference);
                      return barRef(project, *place.track, *place.bar);
                  }),
                  c.answer);

    for (Case const& c : {Case{"s1:1", "bar"}, Case{"v1:1", "clip"}, Case{"aaaaaaaa", "bar"},
                          Case{"11111111", "clip"}}) {
        bool const isBar = std::holds_alternative<BarPlace>(resolveItem(project, c.reference));
        EXPECT_EQ(isBar ? "bar" : "clip", c.answer) << c.reference;
    }
}

TEST(References, Assets)
{
    Project const project = sampleProject();
    std::string const list = "Assets: talk.mov, music.wav.";
    for (Case const& c : {
             Case{"talk.mov", "talk.mov"},
             Case{"Talk.MOV", "talk.mov"},
             Case{"dddddddd", "music.wav"},
             Case{"ddd", "No asset ddd. " + list},
             Case{"x", "No asset x. " + list},
         })
        EXPECT_EQ(answer([&] { return resolveAsset(project, c.reference).displayName; }), c.answer);
    EXPECT_EQ(answer([] { return resolveAsset(Project(), "x").displayName; }),
              "No asset x. Assets: none; import one with media_import or give clip_add a path.");
}

TEST(Values, Colors)
{
    for (Case const& c : {
             Case{"#FF000080", "#FF000080"},
             Case{"#ff0000", "#FF0000FF"},
             Case{"#01fEa9", "#01FEA9FF"},
             Case{"red", "Colors are #RRGGBB or #RRGGBBAA, not red."},
             Case{"ff0000", "Colors are #RRGGBB or #RRGGBBAA, not ff0000."},
             Case{"#ff00", "Colors are #RRGGBB or #RRGGBBAA, not #ff00."},
             Case{"#ff00zz", "Colors are #RRGGBB or #RRGGBBAA, not #ff00zz."},
             Case{"#+f00-0", "Colors are #RRGGBB or #RRGGBBAA, not #+f00-0."},
         })
        EXPECT_EQ(answer([&] { return formatColor(parseColor(c.reference)); }), c.answer);
    EXPECT_EQ(formatColor({2, -1, 0.5, 0.998}), "#FF0080FE");
}

TEST(Values, Canvases)
{
    for (char const* const name : {"9:16", "16:9", "1:1", "4:5"})
        EXPECT_EQ(ratioName(parseCanvas(name)), name);
    EXPECT_EQ(answer([] { return std::string(ratioName(parseCanvas("3:2"))); }),
              "No canvas called 3:2. Use 9:16, 16:9, 1:1 or 4:5.");
}

TEST(Favorites, AreFoundByNameAndID)
{
    std::vector<CaptionStyle> styles(2);
    styles[0].name = "Strong";
    styles[1].name = "strong";
    EXPECT_EQ(&favorite(styles, "strong", "text favorite"), &styles[1]);
    EXPECT_EQ(&favorite(styles, "STRONG", "text favorite"), &styles[0]);
    EXPECT_EQ(answer([&] { return favorite(styles, "x", "text favorite").name; }),
              "No text favorite called x. There are: Strong, strong.");
    EXPECT_EQ(answer([&] { return favorite(styles, "stong", "text favorite").name; }),
              "No text favorite called stong. Did you mean Strong? There are: Strong, strong.");

    styles.resize(5);
    styles[0].id = *Id::parse("12345678-0000-4000-8000-000000000001");
    styles[1].id = *Id::parse("12345678-0000-4000-8000-000000000002");
    styles[2].name = "Über";
    styles[2].id = *Id::parse("ABCDEF01-0000-4000-8000-000000000003");
    styles[3].name = styles[4].name = "Same";
    styles[4].id = *Id::parse("ABCDEF02-0000-4000-8000-000000000004");
    struct Case {
        char const* word;
        int look;
        char const* sentence;
    };
    for (Case const& c : {
             Case{"ÜBER", 2, ""},
             Case{"abcdef01", 2, ""},
             Case{"ABCDEF02-0000-4000-8000-000000000004", 4, ""},
             Case{"12345678-0000-4000-8000-000000000002", 1, ""},
             Case{"12345678", 0, "12345678 matches several looks; use a longer id."},
             Case{"abcdef0", 0, "No look called abcdef0. "},
             Case{"Same", 0, "More than one look is called Same; give the id"},
         }) {
        try {
            EXPECT_EQ(&favorite(styles, c.word, "look"), &styles[std::size_t(c.look)]) << c.word;
            EXPECT_STREQ(c.sentence, "") << c.word;
        } catch (ToolError const& error) {
            EXPECT_TRUE(*c.sentence && std::string_view(error.what()).starts_with(c.sentence))
                << error.what();
        }
    }
    EXPECT_EQ(answer([] { return favorite({}, "x", "caption style").name; }),
              "No caption style called x. There are none.");
}

} // namespace framewright
