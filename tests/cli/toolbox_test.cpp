#include "cli/toolbox.h"

#include "cli/progress.h"
#include "cli/references.h"
#include "cli/values.h"
#include "sample_project.h"

#include <gtest/gtest.h>

namespace framewright {

using nlohmann::json;

namespace {

enum class Mood { good, bad };

Param<Text> const text{"text", "A text.", optionalParam};
Param<Number> const number{"number", "A number.", optionalParam};
Param<WholeNumber> const whole{"whole", "", optionalParam};
Param<Flag> const flag{"flag", "", optionalParam};
Param<Moment> const moment{"moment", "A time.", optionalParam};
Param<FilePath> const path{"path", "", optionalParam};
Param<Choice<Mood>> const mood{
    "mood", "How it is.", {{"good", Mood::good}, {"bad", Mood::bad}}, optionalParam};
Param<Texts> const texts{"texts", "", optionalParam};
Param<Numbers> const numbers{"numbers", "", optionalParam};
Param<Color> const color{"color", "", optionalParam};
Param<ItemRef> const item{"item", "", optionalParam};
Param<Font> const font{"font", "A font.", optionalParam};
Param<TrackRef> const track{"track"};
Param<Text> const name{"name", "Its name."};
Param<FilePaths> const files{"files", "Some files."};

/// Prints every option it was given, as it was read.
ToolResult show(ToolArgs const& args)
{
    json shown = json::object();
    auto const add = [&](auto const& param) {
        if (args.has(param))
            shown[param.name] = args[param];
    };
    add(text), add(number), add(whole), add(flag), add(moment), add(texts), add(numbers), add(font);
    if (args.has(path))
        shown["path"] = args[path].native();
    if (args.has(mood))
        shown["mood"] = args[mood] == Mood::good ? "is good" : "is bad";
    if (args.has(color))
        shown["color"] = formatColor(args[color]);
    if (args.has(item))
        shown["item"] = args[item].what == ItemRef::What::bar ? "a bar" : "a clip";
    return {.text = shown.dump()};
}

/// Prints the options that are required, in one line.
ToolResult place(ToolArgs const& args)
{
    Project const& project = args.references().project();
    std::string line = trackRef(project, *project.track(args[track])) + " " + args[name];
    for (auto const& file : args[files])
        line += " " + file.native();
    return {.text = line};
}

Tool failing(std::string const& toolName, std::function<void()> fail)
{
    return {.name = toolName, .description = "Fails.", .params = {}, .action = [fail](ToolArgs) {
                fail();
                return ToolResult{};
            }};
}

struct ToolboxTest : testing::Test {
    std::string call(ToolCall toCall)
    {
        return QCoro::waitFor(toolbox.call(std::move(toCall))).text;
    }
    /// What `show` makes of options as JSON.
    std::string shown(std::string const& args, std::string const& words = "{}")
    {
        return call({.tool = "show",
                     .args = json::parse(args),
                     .words = json::parse(words),
                     .cwd = "/here"});
    }

    SampleContext context;
    Toolbox const toolbox{
        {
            {.name = "show",
             .description = "Shows 0.5 of an .mp4 file. Then more.",
             .params = {text, number, whole, flag, moment, path, mood, texts, numbers, color, item,
                        font},
             .action = show},
            {.name = "place_it",
             .description = "Places it",
             .params = {track, text, name, files},
             .action = place},
            failing("refused",
                    [] { accepted(Outcome<int>(Refusal{Reason::nothingToUndo}), "Not undone."); }),
            failing("broken", [] { throw std::runtime_error("The disk is full."); }),
            failing("wrong", [] { throw std::out_of_range("at"); }),
            failing("empty", [] { throw std::bad_alloc(); }),
            failing("a_command_with_a_long_name", [] { throw 1; }),
        },
        context};
};

} // namespace

TEST_F(ToolboxTest, OptionsAreReadAsTheirKinds)
{
    std::string const time = " must be seconds (4.5), m:ss.ss, \"end\" or \"playhead\", not ";
    struct Case {
        char const* args;
        std::string answer;
    };
    for (Case const& c : {
             Case{R"({"text": "a"})", R"({"text":"a"})"},
             Case{R"({"text": 5})", R"({"text":"5"})"},
             Case{R"({"text": 5.0, "texts": [0.5, 1e20]})",
                  R"({"text":"5","texts":["0.5","1e+20"]})"},
             Case{R"({"text": null})", "{}"},
             Case{R"({"text": true})", "text needs a value."},
             Case{R"({"text": ["a", "b"]})", "text takes one value."},
             Case{R"({"text": {}})", "text must be text."},
             Case{R"({"number": 2.5})", R"({"number":2.5})"},
             Case{R"({"number": "-1e3"})", R"({"number":-1000.0})"},
             Case{R"({"number": "x"})", "number must be a number."},
             Case{R"({"number": ""})", "number must be a number."},
             Case{R"({"number": "nan"})", "number must be a number."},
             Case{R"({"number": 1e300})", "number must be a number."},
             Case{R"({"number": true})", "number must be a number."},
             Case{R"({"number": [1]})", "number must be a number."},
             Case{R"({"whole": 360})", R"({"whole":360})"},
             Case{R"({"whole": 0.5})", "whole must be a whole number."},
             Case{R"({"whole": "x"})", "whole must be a number."},
             Case{R"({"flag": true})", R"({"flag":true})"},
             Case{R"({"flag": "false"})", R"({"flag":false})"},
             Case{R"({"flag": 1})", "flag must be true or false."},
             Case{R"({"moment": 4})", R"({"moment":4.0})"},
             Case{R"({"moment": "4.5"})", R"({"moment":4.5})"},
             Case{R"({"moment": "1:05.5"})", R"({"moment":65.5})"},
             Case{R"({"moment": "0:5"})", R"({"moment":5.0})"},
             Case{R"({"moment": "end"})", R"({"moment":12.0})"},
             Case{R"({"moment": "playhead"})", R"({"moment":4.0})"},
             Case{R"({"moment": "1:60"})", "moment" + time + "\"1:60\"."},
             Case{R"({"moment": "-1:05"})", "moment" + time + "\"-1:05\"."},
             Case{R"({"moment": "1:2:3"})", "moment" + time + "\"1:2:3\"."},
             Case{R"({"moment": "1:"})", "moment" + time + "\"1:\"."},
             Case{R"({"moment": "now"})", "moment" + time + "\"now\"."},
             Case{R"({"moment": "1e300"})", "moment" + time + "\"1e300\"."},
             Case{R"({"moment": true})", "moment must be a time."},
             Case{R"({"moment": [1]})", "moment must be a time."},
             Case{R"({"moment": 1e300})", "moment must be a time."},
             Case{R"({"path": "a/./b.mov"})", R"({"path":"/here/a/b.mov"})"},
             Case{R"({"path": "a/../b.mov"})", R"({"path":"/here/a/../b.mov"})"},
             Case{R"({"path": "/a.mov"})", R"({"path":"/a.mov"})"},
             Case{R"({"path": "file:///a%20b.mov"})", R"({"path":"/a b.mov"})"},
             Case{R"({"path": 7})", R"({"path":"/here/7"})"},
             Case{R"({"path": ""})", "Use an absolute path (or ~/…), not ."},
             Case{R"({"path": "file://host/a"})",
                  "Use an absolute path (or ~/…), not file://host/a."},
             Case{R"({"mood": "bad"})", R"({"mood":"is bad"})"},
             Case{R"({"mood": "fair"})", "mood must be good or bad."},
             Case{R"({"mood": true})", "mood must be good or bad."},
             Case{R"({"texts": "a,b"})", R"({"texts":["a,b"]})"},
             Case{R"({"texts": ["a", 7]})", R"({"texts":["a","7"]})"},
             Case{R"({"texts": ["a", ["b"]]})", "texts takes one value."},
             Case{R"({"numbers": [1, "2.5"]})", R"({"numbers":[1.0,2.5]})"},
             Case{R"({"numbers": 1})", R"({"numbers":[1.0]})"},
             Case{R"({"numbers": "1,2,3.5"})", R"({"numbers":[1.0,2.0,3.5]})"},
             Case{R"({"numbers": "1,,2"})", "numbers must be numbers."},
             Case{R"({"numbers": ["x"]})", "numbers must be numbers."},
             Case{R"({"numbers": true})", "numbers must be numbers."},
             Case{R"({"color": "#ff0000"})", R"({"color":"#FF0000FF"})"},
             Case{R"({"item": "s1:1"})", R"({"item":"a bar"})"},
             Case{R"({"item": "v1:1"})", R"({"item":"a clip"})"},
             Case{R"({"font": ""})", "font needs a font's name."},
         })
        EXPECT_EQ(shown(c.args), c.answer) << c.args;
    EXPECT_EQ(call({.tool = "show", .args = {{"path", "a"}}}),
              "Use an absolute path (or ~/…), not a.");
}

TEST_F(ToolboxTest, TextIsWhatTheUserSpelled)
{
    EXPECT_EQ(shown(R"({"text": 7})", R"({"text": "007"})"), R"({"text":"007"})");
    EXPECT_EQ(shown(R"({"text": true})", R"({"text": "true"})"), R"({"text":"true"})");
    EXPECT_EQ(shown(R"({"texts": [7, "b"]})", R"({"texts": ["007", null]})"),
              R"({"texts":["007","b"]})");
    // Numbers are what they are.
    EXPECT_EQ(shown(R"({"number": 7})", R"({"number": "007"})"), R"({"number":7.0})");
}

TEST_F(ToolboxTest, ValuesWithoutANameFillTheRequiredOptions)
{
    struct Case {
        char const* args;
        char const* words;
        std::string answer;
    };
    for (Case const& c : {
             Case{R"({"_": ["v1", "n", "/a", "/b"]})", "{}", "v1 n /a /b"},
             Case{R"({"_": ["n", "/a"], "track": "v2"})", "{}", "v2 n /a"},
             Case{R"({"_": ["v1", "/a"], "name": "n"})", "{}", "v1 n /a"},
             Case{R"({"_": ["v1", 7, 8]})", R"({"_": [null, "007", "8.0"]})", "v1 007 /here/8.0"},
             Case{R"({"_": ["v1", "n"], "files": ["/a"], "text": "x"})", "{}", "v1 n /a"},
             Case{R"({"_": "v1", "name": "n", "files": "/a"})", "{}", "v1 n /a"},
             Case{R"({"_": ["v1", "n", "x"], "files": ["/a"]})", "{}",
                  "Too many values for place-it. Run `cli help place-it`."},
             Case{R"({"_": ["v1"], "files": []})", "{}",
                  "place-it needs --name and --files. Run `cli help place-it`."},
             Case{R"({"track": null, "_": ["v1", "n", "/a"]})", "{}", "v1 n /a"},
             Case{R"({"_": ["v1", "n", "/a"], "txet": 1})", "{}",
                  "place-it has no option --txet. Did you mean --text? Run `cli help place-it`."},
             Case{R"({"_": ["v1", "n", "/a"], "NAME": 1})", "{}",
                  "place-it has no option --NAME. Did you mean --name? Run `cli help place-it`."},
             Case{R"({"_": ["v1", "n", "/a"], "zoom": 1})", "{}",
                  "place-it has no option --zoom. Run `cli help place-it`."},
             Case{R"({"_": ["v9", "n", "/a"]})", "{}",
                  "v9 is out of range. Tracks: t1 \"Titles\", v1 \"Video 1\", v2 \"video 1\", "
                  "a1 \"Audio 1\", s1 \"Subtitles\"."},
             Case{"[]", "{}", "The arguments of place-it must be an object."},
         })
        EXPECT_EQ(call({.tool = "place-it",
                        .args = json::parse(c.args),
                        .words = json::parse(c.words),
                        .cwd = "/here"}),
                  c.answer)
            << c.args;
    EXPECT_EQ(shown(R"({"_": ["x"]})"), "Too many values for show. Run `cli help show`.");
}

TEST_F(ToolboxTest, EveryFailureIsASentence)
{
    struct Case {
        char const* tool;
        char const* sentence;
    };
    for (Case const& c : {
             Case{"refused", "Not undone. Nothing to undo."},
             Case{"broken", "The disk is full."},
             Case{"wrong", "wrong failed unexpectedly: at."},
             Case{"empty", "There was not enough memory for empty."},
             Case{"a-command_with-a-long-name", "a-command-with-a-long-name failed unexpectedly."},
             Case{"clip-fly", "Unknown command clip-fly. Run `cli help` for the list."},
             Case{"", "Unknown command . Run `cli help` for the list."},
         }) {
        ToolResult const result = QCoro::waitFor(toolbox.call({.tool = c.tool}));
        EXPECT_FALSE(result.ok);
        EXPECT_EQ(result.text, c.sentence);
    }
}

TEST_F(ToolboxTest, HelpIsMadeOfTheRows)
{
    EXPECT_EQ(toolbox.helpIndex(), "Commands (run `cli help <command>` for options):\n"
                                   "  show               Shows 0.5 of an .mp4 file.\n"
                                   "  place-it           Places it\n"
                                   "  refused            Fails.\n"
                                   "  broken             Fails.\n"
                                   "  wrong              Fails.\n"
                                   "  empty              Fails.\n"
                                   "  a-command-with-a-long-name Fails.");
    EXPECT_EQ(toolbox.help(*toolbox.find("place-it")),
              "place-it: Places it\n"
              "  --track <string> (required)  v1, a1, t1, s1, a name or an id.\n"
              "  --text <string>  A text.\n"
              "  --name <string> (required)  Its name.\n"
              "  --files <string> (required)  Some files.");
    std::string const help = toolbox.help(*toolbox.find("show"));
    for (char const* const line :
         {"\n  --moment <string>  A time. Seconds (4.5), m:ss.ss, \"end\" or \"playhead\".\n",
          "\n  --mood <good|bad>  How it is.\n", "\n  --flag <boolean>  ", "\n  --whole <number>  ",
          "\n  --font <string>  A font. Also system:bold, mono:medium, or any installed "
          "PostScript name."})
        EXPECT_NE(help.find(line), std::string::npos) << line;

    EXPECT_EQ(toolbox.find("place-it"), toolbox.find("place_it"));
    json const descriptor = toolbox.descriptors()[1];
    EXPECT_EQ(descriptor["name"], "place_it");
    EXPECT_EQ(descriptor["required"], json({"track", "name", "files"}));
    EXPECT_EQ(descriptor["params"]["files"],
              json::parse(R"({"type": "array", "items": {"type": "string"},
                              "description": "Some files."})"));
    EXPECT_EQ(toolbox.descriptors()[0]["params"]["mood"],
              json::parse(R"({"type": "string", "enum": ["good", "bad"],
                              "description": "How it is."})"));
}

TEST_F(ToolboxTest, EndMayBeThatOfATrack)
{
    ToolArgs const args({{"moment", "end"}}, json::object(), "", context, {}, {});
    EXPECT_EQ(args[moment], 12);
    EXPECT_EQ(args.time(moment, 7), 7);
    EXPECT_EQ(ToolArgs(json::object(), json::object(), "", context, {}, {}).time(moment, 7),
              std::nullopt);
}

TEST(Results, DataIsPrettyAndMayHaveANote)
{
    EXPECT_EQ(ToolResult::json({{"b", 1}, {"a", "\xFF"}}, "A note.").text,
              "{\n  \"a\": \"\xEF\xBF\xBD\",\n  \"b\": 1\n}\nA note.");
}

TEST(Progress, PassesOnAboutTenReportsASecond)
{
    std::chrono::steady_clock::time_point now;
    std::vector<std::pair<double, std::string>> received;
    Progress const progress(
        [&](double fraction, std::string const& stage) { received.emplace_back(fraction, stage); },
        [&] { return now; });
    for (int i = 0; i <= 1000; ++i) {
        progress.report(i / 1000.0, i < 500 ? "Reading" : "Writing");
        now += std::chrono::milliseconds(1);
    }
    ASSERT_EQ(received.size(), 11u);
    EXPECT_EQ(received[0], std::pair(0.0, std::string("Reading")));
    EXPECT_EQ(received[5], std::pair(0.5, std::string("Writing")));
    EXPECT_EQ(received[10], std::pair(1.0, std::string("Writing")));
    progress.report(7, "Late");
    EXPECT_EQ(received.back().first, 1);
    Progress().report(0.5, "to nobody");
}

} // namespace framewright
