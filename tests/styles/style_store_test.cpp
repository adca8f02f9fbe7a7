#include "styles/style_store.h"

#include "platform/test_folder.h"

#include <QCoreApplication>
#include <QEventLoop>

#include <gmock/gmock.h>

#include <functional>

namespace framewright {

namespace {

/// A user's home, and workspaces in it.
class StyleStoreTest : public testing::Test {
protected:
    std::unique_ptr<StyleStore> start()
    {
        return std::make_unique<StyleStore>(StyleStore::texts(), defaults);
    }

    std::filesystem::path settingsOf(std::string const& workspace)
    {
        std::filesystem::create_directories(home / workspace);
        return home / workspace / "settings" / "text-styles.json";
    }

    static StyleList onDisk(std::filesystem::path const& file)
    {
        return decodeStyleList(contentsOf(file)).value;
    }

    static CaptionStyle own(std::string const& name)
    {
        CaptionStyle style = CaptionStyle::textPresets().front();
        style.id = Id::random();
        style.name = name;
        return style;
    }

    static void waitUntil(std::function<bool()> const& isSo)
    {
        while (!isSo())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }

    TestFolder home;
    UserDefaults defaults{home / "Framewright.ini"};
    std::size_t const presetCount = CaptionStyle::textPresets().size();
};

} // namespace

TEST_F(StyleStoreTest, AddsPresetsOnce)
{
    Id const removed = CaptionStyle::textPresets()[1].id;
    {
        auto const store = start();
        EXPECT_EQ(store->styles().size(), presetCount);
        EXPECT_EQ(store->defaultStyle().name, "Classic");
        store->remove(removed);
        store->upsert(own("Mine"));
        store->setDefaultID(store->style("mine")->id);
    }
    auto const again = start();
    EXPECT_EQ(again->styles().size(), presetCount);
    EXPECT_EQ(again->style(removed), nullptr) << "deleted, yet back at the next start";
    EXPECT_EQ(again->defaultStyle().name, "Mine");
    ASSERT_EQ(again->missingPresets().size(), 1u);

    again->addPreset(again->missingPresets().front());
    EXPECT_TRUE(again->style(removed));
    again->upsert([&] {
        CaptionStyle changed = *again->style("Classic");
        changed.fontSize = 33;
        return changed;
    }());
    again->resetToPresets();
    EXPECT_EQ(again->style("Classic")->fontSize, CaptionStyle::textPresets()[0].fontSize);
    EXPECT_TRUE(again->style("Mine")) << "the user's own";
    EXPECT_EQ(again->styles().back().name, "Mine");
}

TEST_F(StyleStoreTest, AddsAPresetOfALaterVersionOnce)
{
    start(); // The very first.
    Id const late = CaptionStyle::textPresets()[3].id;
    auto const forget = [&] { // As an earlier version left the user's defaults.
        auto seeded = *defaults.strings(StyleStore::texts().seededKey);
        std::erase(seeded, late.text());
        defaults.setStrings(StyleStore::texts().seededKey, seeded);
        auto list = decodeStyleArray(*defaults.string(StyleStore::texts().listKey));
        std::erase_if(list, [&](CaptionStyle const& style) { return style.id == late; });
        defaults.setString(StyleStore::texts().listKey, encodeStyleArray(list));
    };
    forget();
    auto const workspace = settingsOf("Reels");
    put(workspace, StyleList{{own("Ours")}, std::nullopt}.data());
    {
        auto const store = start();
        EXPECT_TRUE(store->style(late));
        store->attach(workspace);
        EXPECT_TRUE(store->style(late)) << "also in the current workspace";
        EXPECT_EQ(store->styles().size(), 2u) << "but none that was deleted";
        store->remove(late);
    }
    EXPECT_EQ(onDisk(workspace).styles.size(), 1u);
    EXPECT_FALSE(start()->style(late));
}

TEST_F(StyleStoreTest, SavesPendingChangesToTheWorkspaceTheyBelongTo)
{
    auto const first = settingsOf("First");
    auto const second = settingsOf("Second");
    auto const store = start();
    store->upsert(own("Before"));
    store->attach(first);
    store->upsert(own("Of the first"));
    store->attach(second);
    EXPECT_TRUE(onDisk(first).styles.back().name == "Of the first");
    EXPECT_TRUE(store->style("Of the first")) << "a new workspace starts with the user's styles";
    store->writeBeforeQuitting();
    EXPECT_EQ(onDisk(second), onDisk(first));

    store->remove(store->style("Before")->id);
    store->detach();
    EXPECT_EQ(onDisk(second).styles.size(), presetCount + 1);
    EXPECT_EQ(onDisk(first).styles.size(), presetCount + 2);

    store->attach(first);
    EXPECT_TRUE(store->style("Before"));
    EXPECT_EQ(store->problem(), "");
}

TEST_F(StyleStoreTest, MergesOutsideWritesStyleByStyle)
{
    auto const file = settingsOf("Reels");
    auto const store = start();
    store->attach(file);
    store->writeBeforeQuitting();

    StyleList theirs = onDisk(file);
    theirs.styles[0].fontSize = 99;
    theirs.styles.push_back(own("Theirs"));
    store->upsert(own("Ours"));
    put(file, theirs.data()); // Before ours is written.
    waitUntil([&] { return store->style("Theirs") != nullptr; });
    EXPECT_EQ(store->styles()[0].fontSize, 99);
    EXPECT_TRUE(store->style("Ours"));
    waitUntil([&] { return onDisk(file).styles.size() == presetCount + 2; });
}

TEST_F(StyleStoreTest, LeavesABrokenFileAloneAndLosesNothing)
{
    auto const file = settingsOf("Reels");
    put(file, "{ \"styles\": [ half");
    {
        auto const store = start();
        store->attach(file);
        EXPECT_EQ(store->styles().size(), presetCount);
        EXPECT_THAT(store->problem(), testing::StartsWith("text-styles.json is not valid: "));
        store->upsert(own("Meanwhile"));
        store->writeBeforeQuitting();
        EXPECT_EQ(contentsOf(file), "{ \"styles\": [ half");
        EXPECT_NE(store->problem(), "");

        put(file, StyleList{{own("Whole again")}, std::nullopt}.data());
        waitUntil([&] { return store->style("Whole again") != nullptr; });
        EXPECT_EQ(store->problem(), "");
        EXPECT_TRUE(store->style("Meanwhile"));
    }
    EXPECT_EQ(onDisk(file).styles.size(), 2u);
}

TEST_F(StyleStoreTest, RestoredPresetsGetTheirNamesBack)
{
    auto const store = start();
    CaptionStyle const neon = *store->style("Neon");
    for (bool const isOne : {true, false}) {
        store->remove(neon.id);
        CaptionStyle const mine = own("neon");
        store->upsert(mine);
        isOne ? store->addPreset(neon) : store->resetToPresets();
        EXPECT_EQ(store->style("neon")->id, neon.id);
        EXPECT_EQ(store->style(mine.id)->name, isOne ? "neon 2" : "neon 3");
    }
    EXPECT_TRUE(store->duplicateNames().empty());
    store->upsert(own("neon 2"));
    EXPECT_EQ(store->duplicateNames(), std::vector<std::string>{"neon 2"});
}

TEST_F(StyleStoreTest, NamesCopies)
{
    auto const store = start();
    EXPECT_EQ(store->duplicate(*store->style("Neon")).name, "Neon 2");
    EXPECT_EQ(store->duplicate(*store->style("Neon 2")).name, "Neon 3");
    EXPECT_EQ(store->duplicate(*store->style("NEON")).name, "Neon 4");
    EXPECT_EQ(store->uniqueName("meme"), "meme 2");
    EXPECT_EQ(store->uniqueName("Free"), "Free");
}

} // namespace framewright
