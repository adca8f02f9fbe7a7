#include "cli/internal/client_arguments.h"

#include <gtest/gtest.h>

namespace framewright {

using nlohmann::json;

namespace {

/// What a command line becomes: a request as JSON, or {"error": …}; with "image" where --out stays
/// with the client.
json parsed(std::vector<std::string> const& words)
{
    auto const result = parseArguments(words, "/here");
    if (auto const* const error = std::get_if<UsageError>(&result))
        return {{"error", error->sentence}};

    auto const& command = std::get<ClientCommand>(result);
    json shown;
    if (auto const* const help = std::get_if<HelpRequest>(&command.request)) {
        shown = {{"help", help->command}};
    } else {
        auto const& tool = std::get<ToolRequest>(command.request);
        shown = {{"tool", tool.tool}, {"args", tool.args}};
        if (!tool.words.empty())
            shown["words"] = tool.words;
    }
    if (command.imagePath)
        shown["image"] = *command.imagePath;
    return shown;
}

} // namespace

TEST(ClientArguments, BecomeARequest)
{
    struct Case {
        std::vector<std::string> words;
        char const* request;
    };
    for (
        Case const& c : {
            Case{{}, R"({"help": ""})"},
            Case{{"help"}, R"({"help": ""})"},
            Case{{"--help"}, R"({"help": ""})"},
            Case{{"help", "clip-add"}, R"({"help": "clip-add"})"},
            Case{{"help", "a", "b"}, R"({"error": "help takes one command."})"},
            Case{{"clip-add", "v1", "--help"}, R"({"help": "clip-add"})"},
            Case{{"clip-add", "--help", "v1"}, R"({"help": "clip-add"})"},
            Case{{"clip-add", "--", "--help"},
                 R"({"tool": "clip-add", "args": {"_": ["--help"]}})"},
            Case{{"status"}, R"({"tool": "status", "args": {}})"},
            Case{
                {"t", "v1", "--by=-0.5", "b"},
                R"({"tool": "t", "args": {"_": ["v1", "b"], "by": -0.5}, "words": {"by": "-0.5"}})"},
            Case{{"t", "--level", "-1"},
                 R"({"tool": "t", "args": {"level": -1}, "words": {"level": "-1"}})"},
            Case{{"t", "--fill", "--mute"},
                 R"({"tool": "t", "args": {"fill": true, "mute": true}})"},
            Case{{"t", "--fill"}, R"({"tool": "t", "args": {"fill": true}})"},
            Case{{"t", "--size", "007"},
                 R"({"tool": "t", "args": {"size": 7}, "words": {"size": "007"}})"},
            Case{{"t", "--name", "true"},
                 R"({"tool": "t", "args": {"name": true}, "words": {"name": "true"}})"},
            Case{{"t", "--name="}, R"({"tool": "t", "args": {"name": ""}})"},
            Case{{"t", "--name", ""}, R"({"tool": "t", "args": {"name": ""}})"},
            Case{{"t", "--text=a=b"}, R"({"tool": "t", "args": {"text": "a=b"}})"},
            Case{
                {"t", "x", "5", "y"},
                R"({"tool": "t", "args": {"_": ["x", 5, "y"]}, "words": {"_": [null, "5", null]}})"},
            Case{{"t", "--at", "1", "--at", "end"},
                 R"({"tool": "t", "args": {"at": [1, "end"]}, "words": {"at": ["1", null]}})"},
            // --out belongs to the client where images come back, and to the tool elsewhere.
            Case{{"clip-trim", "--out", "4.5"},
                 R"({"tool": "clip-trim", "args": {"out": 4.5}, "words": {"out": "4.5"}})"},
            Case{{"frame", "--out", "5", "3"},
                 R"({"tool": "frame", "args": {"_": [3]}, "words": {"_": ["3"]}, "image": "5"})"},
            Case{{"contact-sheet", "--out=a"},
                 R"({"tool": "contact-sheet", "args": {}, "image": "a"})"},
            Case{{"contact_sheet", "--out=a"},
                 R"({"tool": "contact_sheet", "args": {}, "image": "a"})"},
            Case{{"frame", "--out"}, R"({"error": "--out needs a path."})"},
            Case{{"frame", "--out="}, R"({"error": "--out needs a path."})"},
            Case{{"frame", "--out", "--width", "9"}, R"({"error": "--out needs a path."})"},
            Case{{"frame", "--out=a", "--out=b"},
                 R"({"error": "--out was given more than once."})"},
            // Names that are not UTF-8 can only be files.
            Case{
                {"t", "a\xFF.mov", "--path=/b \xC3"},
                R"({"tool": "t", "args": {"_": ["file:///here/a%FF.mov"], "path": "file:///b%20%C3"}})"},
        })
        EXPECT_EQ(parsed(c.words), json::parse(c.request)) << testing::PrintToString(c.words);
}

TEST(ClientArguments, OnlyDecimalNumbersAreNumbers)
{
    for (auto const& [word, number] : {std::pair{"4.5", 4.5},
                                       {"007", 7},
                                       {"-1", -1},
                                       {"+2", 2},
                                       {".5", 0.5},
                                       {"5.", 5},
                                       {"1e3", 1000},
                                       {"-0", 0},
                                       {"9007199254740993", 9007199254740992},
                                       {"1e-3", 0.001}}) {
        json const value = clientValue(word);
        ASSERT_TRUE(value.is_number()) << word;
        EXPECT_EQ(value.get<double>(), number) << word;
    }
    EXPECT_EQ(clientValue("7").dump(), "7");
    for (char const* const word : {"", "-", "+-1", "1:05", "nan", "inf", "-inf", "0x10", "1e999",
                                   "1,5", " 1", "1 ", "1e", "v1", "TRUE", "1.2.3"})
        EXPECT_EQ(clientValue(word), json(word));
}

} // namespace framewright
