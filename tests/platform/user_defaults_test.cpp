#include "platform/user_defaults.h"

#include "platform/file_error.h"
#include "platform/test_folder.h"

#include <gmock/gmock.h>

#include <random>

namespace framewright {

namespace {

using Texts = std::vector<std::string>;

/// The same settings as another process finds them: read from the file, not from memory.
UserDefaults rereadFrom(UserDefaults const& defaults)
{
    std::filesystem::path copy = defaults.file();
    copy += "-" + std::to_string(std::random_device()());
    std::filesystem::copy_file(defaults.file(), copy);
    return UserDefaults(copy);
}

} // namespace

TEST(UserDefaults, KeepWhatWasSet)
{
    TestFolder const folder;
    UserDefaults defaults(folder / "config/Framewright.ini");
    EXPECT_EQ(defaults.string("workspace.path"), std::nullopt);
    EXPECT_EQ(defaults.strings("workspace.recent"), std::nullopt);

    Texts const hard = {"/home/é ✂/a, b", "@home", "a=b;c#d",    "\"quoted\"", " spaces ",
                        "\\x\n%41",       "",      "@Invalid()", "1"};
    defaults.setStrings("hard", hard);
    for (std::size_t i = 0; i < hard.size(); ++i)
        defaults.setString("hard." + std::to_string(i), hard[i]);
    defaults.setStrings("none", {});
    defaults.setStrings("one", {"a, b"});
    defaults.setStrings("empty", {""});
    defaults.setNumber("number", 0.1);
    defaults.setFlag("yes", true);
    defaults.setFlag("no", false);

    for (UserDefaults const& read : {defaults, rereadFrom(defaults)}) {
        EXPECT_EQ(read.strings("hard"), hard);
        for (std::size_t i = 0; i < hard.size(); ++i)
            EXPECT_EQ(read.string("hard." + std::to_string(i)), hard[i]);
        EXPECT_EQ(read.strings("none"), Texts{});
        EXPECT_EQ(read.strings("one"), Texts{"a, b"});
        EXPECT_EQ(read.string("one"), "a, b");
        EXPECT_EQ(read.strings("empty"), Texts{""});
        EXPECT_EQ(read.number("number"), 0.1);
        EXPECT_EQ(read.flag("yes"), true);
        EXPECT_EQ(read.flag("no"), false);
        EXPECT_EQ(read.string("hard"), std::nullopt);
        EXPECT_EQ(read.number("yes"), std::nullopt);
        EXPECT_EQ(read.flag("number"), std::nullopt);
    }
}

TEST(UserDefaults, KeysAreStoredAsTheyAreNamed)
{
    TestFolder const folder;
    UserDefaults defaults(folder / "Framewright.ini");
    put(defaults.file(), "[General]\nlibrary.path=/old\nother.key=kept\n");
    EXPECT_EQ(defaults.string("library.path"), "/old");

    defaults.setString("workspace.path", "/new");
    defaults.remove("library.path");
    EXPECT_EQ(contentsOf(defaults.file()), "[General]\nother.key=kept\nworkspace.path=/new\n");
}

TEST(UserDefaults, AnUnusableFileIsLeftAlone)
{
    TestFolder const folder;
    UserDefaults damaged(folder / "damaged.ini");
    put(damaged.file(), "[General\nnothing like settings\n");
    EXPECT_EQ(failureOf<FileError>([&] { damaged.setString("a", "b"); }),
              "“" + damaged.file().string() + "” could not be written: it is not a settings file.");
    EXPECT_EQ(contentsOf(damaged.file()), "[General\nnothing like settings\n");

    put(folder / "file");
    UserDefaults nowhere(folder / "file/Framewright.ini");
    EXPECT_NE(failureOf<FileError>([&] { nowhere.setString("a", "b"); }), "");
    std::filesystem::create_directory(folder / "taken.ini");
    UserDefaults taken(folder / "taken.ini");
    EXPECT_NE(failureOf<FileError>([&] { taken.setString("a", "b"); }), "");
}

} // namespace framewright
