#include "model/aspect_preset.h"
#include "model/file_url.h"
#include "model/project.h"
#include "model/time_range.h"

#include <gtest/gtest.h>

#include <thread>

namespace framewright {

TEST(AspectPreset, IsNamedInTheWordsOfUsers)
{
    struct Case {
        char const* word;
        std::optional<AspectPreset> preset;
    };
    for (Case const& c : {
             Case{"9:16", AspectPreset::portrait},
             Case{"REEL", AspectPreset::portrait},
             Case{"9x16", AspectPreset::portrait},
             Case{"Wide", AspectPreset::landscape},
             Case{"YouTube", AspectPreset::landscape},
             Case{"1x1", AspectPreset::square},
             Case{"fourFive", AspectPreset::fourFive},
             Case{"4X5", AspectPreset::fourFive},
             Case{"", std::nullopt},
             Case{"9:16 ", std::nullopt},
             Case{"3:2", std::nullopt},
         })
        EXPECT_EQ(aspectPresetNamed(c.word), c.preset) << c.word;
}

TEST(AspectPreset, ClosestIsMeasuredInLogarithms)
{
    struct Case {
        double width, height;
        AspectPreset preset;
    };
    for (Case const& c : {
             Case{1080, 1350, AspectPreset::fourFive}, Case{0, 100, AspectPreset::portrait},
             Case{100, -1, AspectPreset::portrait}, Case{1080, 1920, AspectPreset::portrait},
             Case{3840, 2160, AspectPreset::landscape}, Case{900, 900, AspectPreset::square},
             Case{2, 3,
                  AspectPreset::portrait}, // 0.17 away; 0.18 from 4:5, though in width it is nearer
         })
        EXPECT_EQ(closestAspectPreset(c.width, c.height), c.preset) << c.width << "x" << c.height;
}

TEST(FileURL, CarriesAnyFileName)
{
    for (std::string const path : {"/a/b.mp4", "/with space/100%.mov", "/quote\"'/new\nline.mp4",
                                   "/emoji \xF0\x9F\x8E\xAC.mp4", "/not utf8 \xFF\xC3.mp4"}) {
        auto const read = FileURL::parse(FileURL{path}.text());
        ASSERT_TRUE(read) << path;
        EXPECT_EQ(read->path, path);
    }
    EXPECT_EQ(FileURL{"/a b%.mp4"}.text(), "file:///a%20b%25.mp4");
    for (char const* const bad : {"", "/a", "http://a/b", "file://host/a", "file:///a%2",
                                  "file:///a%zz", "file:///a%00b", "file:a"})
        EXPECT_FALSE(FileURL::parse(bad)) << bad;
}

TEST(Utf8, OnlyWellFormedTextIsValid)
{
    for (char const* const good : {"", "abc", "\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9F\x8E\xAC"})
        EXPECT_TRUE(isValidUtf8(good)) << good;
    for (char const* const bad :
         {"\xC3", "\xFF", "\xC0\xAF", "\xED\xA0\x80", "\xF5\x80\x80\x80", "a\x80"}) {
        EXPECT_FALSE(isValidUtf8(bad));
        EXPECT_TRUE(isValidUtf8(validUtf8(bad)));
    }
}

TEST(Id, ReadsOnlyTheCanonicalForm)
{
    Id const id = Id::random();
    EXPECT_EQ(Id::parse(id.text()), id);
    EXPECT_NE(id, Id::random());
    EXPECT_EQ(Clip::placeholderAssetID.text(), "00000000-0000-0000-0000-000000000001");
    EXPECT_EQ(Id::parse("0a0b0c0d-0000-4000-8000-00000000000f")->text(),
              "0A0B0C0D-0000-4000-8000-00000000000F");
    for (char const* const bad : {"", "0A0B0C0D", "0A0B0C0D-0000-4000-8000-00000000000G",
                                  "0A0B0C0D00000-4000-8000-00000000000F"})
        EXPECT_FALSE(Id::parse(bad)) << bad;
}

TEST(TimeRange, IsHalfOpen)
{
    TimeRange const range{2, 5};
    EXPECT_TRUE(range.contains(2));
    EXPECT_FALSE(range.contains(5));
    struct Case {
        TimeRange other, shared;
    };
    for (Case const& c : {
             Case{{3, 4}, {3, 4}},
             Case{{1, 9}, {2, 5}},
             Case{{0, 3}, {2, 3}},
             Case{{5, 6}, {5, 5}},
             Case{{0, 2}, {2, 2}},
             Case{{7, 8}, {7, 7}},
         }) {
        EXPECT_EQ(range.intersection(c.other), c.shared) << c.other.start;
        EXPECT_EQ(range.overlaps(c.other), c.shared.length() > 0) << c.other.start;
    }
}

TEST(Shared, CopiesAreIndependent)
{
    Shared<std::vector<int>> const first(std::vector{1, 2});
    Shared<std::vector<int>> second = first;
    EXPECT_TRUE(second.isSameAs(first));
    second.edit().push_back(3);
    EXPECT_EQ(first->size(), 2u);
    EXPECT_EQ(second->size(), 3u);

    int const* const before = &second->front();
    EXPECT_TRUE(second.isOnlyCopy());
    second.edit()[0] = 7;
    EXPECT_EQ(&second->front(), before) << "its own value is changed in place";
    Shared<std::vector<int>> const third = std::move(second);
    EXPECT_TRUE(third.isOnlyCopy());
    EXPECT_EQ(third->front(), 7);
}

// A race, if there is one, is for the thread sanitizer to see.
TEST(Shared, CopiesAreUsedOnOtherThreads)
{
    Shared<std::vector<int>> value(std::vector<int>(100, 1));
    for (int round = 0; round < 200; ++round) {
        std::thread reader([copy = value] {
            for (int const number : *copy)
                ASSERT_EQ(number, copy->front());
        });
        for (int& number : value.edit())
            ++number;
        reader.join();
    }
    EXPECT_EQ(value->front(), 201);
}

} // namespace framewright
