#include "sync/synced_file.h"

#include "platform/test_folder.h"
#include "sync/events.h"
#include "sync/internal/sync_cycle.h"

#include <QThreadPool>

#include <gmock/gmock.h>

#include <atomic>
#include <semaphore>
#include <set>
#include <sstream>

namespace framewright {

namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

using Words = std::set<std::string>;

constexpr SyncTiming atOnce = {.delay = 0ms, .longestDelay = 0ms};
constexpr SyncTiming onlyWhenAsked = {.delay = 1h, .longestDelay = 1h};

Words wordsIn(std::string const& line)
{
    std::istringstream stream(line);
    return {std::istream_iterator<std::string>(stream), {}};
}

std::string line(Words const& words)
{
    std::string all;
    for (std::string const& word : words)
        all += word + " ";
    return all + ".\n";
}

Words merged(Words const& base, Words const& ours, Words result)
{
    for (std::string const& word : ours) {
        if (!base.contains(word))
            result.insert(word);
    }
    std::erase_if(result, [&](auto& word) { return base.contains(word) && !ours.contains(word); });
    return result;
}

/// Stops a worker in the middle of a save: after reading the file, before writing it.
struct Gate {
    std::atomic<bool> isClosed = false;
    std::binary_semaphore reached{0};
    std::binary_semaphore opened{0};

    void pass()
    {
        if (!isClosed)
            return;
        reached.release();
        opened.acquire();
    }
    /// Stops the next save here, does `something`, and lets the save continue.
    void meanwhile(std::function<void()> const& startSaving, std::function<void()> const& something)
    {
        isClosed = true;
        startSaving();
        reached.acquire();
        isClosed = false;
        something();
        opened.release();
    }
};

/// A set of words and their file: "a b .\n". A file without the full stop does not decode.
struct Owner {
    enum class Policy { merges, takesTheirs, signsTheirs };

    explicit Owner(SyncTiming const& timing = onlyWhenAsked, Policy itsPolicy = Policy::merges)
        : policy(itsPolicy), synced(form(), owner(), timing)
    {
    }

    FileForm<Words> form() const
    {
        return {
            .encode =
                [gate = gate](Words const& value, fs::path const&) {
                    gate->pass();
                    return line(value);
                },
            .decode =
                [](std::string_view bytes) {
                    if (!bytes.ends_with(".\n"))
                        throw std::runtime_error("There is no full stop.");
                    return Decoded<Words>{wordsIn(std::string(bytes.substr(0, bytes.size() - 2)))};
                },
            .alsoKeep =
                [kept = kept](Words const& value, InFile in) {
                    *kept = {value, in == InFile::yes};
                },
        };
    }

    FileOwner<Words> owner()
    {
        return {
            .value = [this] { return words; },
            .take =
                [this](Decoded<Words> const& theirs, Words const* base) {
                    bool const isMerge = policy == Policy::merges;
                    before = words;
                    words = isMerge ? merged(base ? *base : Words(), words, theirs.value)
                                    : theirs.value;
                    if (policy == Policy::signsTheirs)
                        words.insert("signed");
                    return words == theirs.value ? Taken::asItIs : Taken::merged;
                },
            .describe =
                [](FileTrouble const& trouble) {
                    using enum FileTrouble::Cause;
                    return trouble.cause == invalid ? "invalid: " + trouble.reason : "failed";
                },
        };
    }

    void add(std::string const& word)
    {
        words.insert(word);
        synced.valueChanged();
    }

    struct Kept {
        Words words;
        bool isInFile;
    };

    Policy policy;
    Words words;
    Words before; ///< The words when another program's version was last taken in.
    std::shared_ptr<Gate> gate = std::make_shared<Gate>();
    std::shared_ptr<std::optional<Kept>> kept = std::make_shared<std::optional<Kept>>();
    SyncedFile<Words> synced;
};

class SyncedFileTest : public testing::Test {
protected:
    /// An owner whose file holds "a".
    std::unique_ptr<Owner> started(SyncTiming const& timing = onlyWhenAsked,
                                   Owner::Policy policy = Owner::Policy::merges)
    {
        put(file, "a .\n");
        auto owner = std::make_unique<Owner>(timing, policy);
        owner->words = {"replaced"};
        EXPECT_TRUE(owner->synced.open(file, FileSync::Saving::automatic));
        EXPECT_EQ(line(owner->words), "a .\n");
        return owner;
    }

    bool becomes(std::string const& content)
    {
        return processEventsUntil([&] { return contentsOf(file) == content; });
    }

    TestFolder const folder;
    fs::path const file = folder / "place/words";
};

} // namespace

TEST(SyncStep, NeverOverwritesUnknownContent)
{
    struct Case {
        char const* known;
        char const* onDisk;
        char const* ours;
        SyncStep step;
    };
    using enum SyncStep;
    // clang-format off
    for (Case const& c : {
             Case{nullptr, nullptr, nullptr, rest},
             Case{nullptr, nullptr, "o",     create},
             Case{"k",     nullptr, "o",     create},
             Case{"k",     "k",     nullptr, rest},
             Case{"k",     "k",     "o",     exchange},
             Case{"k",     "o",     "o",     settle},
             Case{nullptr, "o",     "o",     settle},
             Case{"k",     "x",     nullptr, handOver},
             Case{"k",     "x",     "o",     handOver},
             Case{nullptr, "x",     "o",     handOver},
         }) {
        // clang-format on
        auto const mark = [](char const* text) {
            return text ? std::optional<ContentMark>(text) : std::nullopt;
        };
        EXPECT_EQ(syncStep(mark(c.known), mark(c.onDisk), mark(c.ours)), c.step)
            << (c.known ? c.known : "-") << (c.onDisk ? c.onDisk : "-") << (c.ours ? c.ours : "-");
    }
}

TEST(SaveDelay, IsPostponedByChangesButNotForLong)
{
    constexpr SyncTiming timing = {.delay = 1000ms, .longestDelay = 1250ms};
    EXPECT_EQ(saveDelay(timing, 0ms), 1000ms);
    EXPECT_EQ(saveDelay(timing, 250ms), 1000ms);
    EXPECT_EQ(saveDelay(timing, 900ms), 350ms);
    EXPECT_EQ(saveDelay(timing, 9999ms), 0ms);
}

TEST_F(SyncedFileTest, HandsOverVersionsFoundByAnExchange)
{
    put(file, "a .\n");
    auto const form = std::make_shared<FileForm<std::any> const>(untyped(Owner().form()));
    SyncResult const result = run({
        .form = form,
        .value = SyncCycle::Value::save,
        .ours = Words{"ours"},
        .file = file,
        .known = contentMark("a .\n"),
        .replace =
            [](auto&&...) {
                return FileReplacement{false, {"first .\n", "sec", "second .\n"}};
            },
    });
    EXPECT_FALSE(result.isSaved);
    ASSERT_EQ(result.theirs.size(), 2u);
    EXPECT_EQ(std::any_cast<Words>(result.theirs[0].read.value), Words{"first"});
    EXPECT_EQ(std::any_cast<Words>(result.theirs[1].read.value), Words{"second"});
    EXPECT_FALSE(result.theirs[1].isOnDisk) << "read again before it counts as saved";
}

TEST_F(SyncedFileTest, SavesAfterAChange)
{
    auto const owner = started(atOnce);
    std::string reports;
    QObject::connect(&owner->synced, &FileSync::dirtyChanged,
                     [&](bool isDirty) { reports += isDirty ? "dirty " : "clean "; });
    QObject::connect(&owner->synced, &FileSync::saved, [&] { reports += "saved "; });
    owner->add("b");
    EXPECT_TRUE(processEventsUntil([&] { return !owner->synced.isDirty(); }));
    EXPECT_EQ(contentsOf(file), "a b .\n");
    EXPECT_EQ(reports, "dirty clean saved ");
    EXPECT_TRUE(owner->kept->value().isInFile);
}

TEST_F(SyncedFileTest, AnEditDuringASaveReachesTheDisk)
{
    for (bool const isBlocking : {false, true}) {
        auto const owner = started(isBlocking ? onlyWhenAsked : atOnce);
        owner->words.insert("b");
        owner->gate->meanwhile(
            [&] {
                owner->synced.valueChanged();
                owner->synced.startSaving();
            },
            [&] { owner->add("c"); });
        if (isBlocking)
            EXPECT_TRUE(owner->synced.flush());
        else
            EXPECT_TRUE(processEventsUntil([&] { return !owner->synced.isDirty(); }));
        EXPECT_EQ(contentsOf(file), "a b c .\n");
    }
}

TEST_F(SyncedFileTest, AnOutsideEditIsTakenWheneverItComes)
{
    using enum Owner::Policy;
    enum class When { before, during, after };
    struct Case {
        When when;
        Owner::Policy policy;
        char const* inTheEnd;
        char const* before;
    };
    // clang-format off
    for (Case const& c : {
             Case{When::before, merges,      "a ours theirs .\n", "a ours .\n"},
             Case{When::during, merges,      "a ours theirs .\n", "a ours .\n"},
             Case{When::after,  merges,      "a theirs .\n",      "a ours .\n"},
             Case{When::before, takesTheirs, "a theirs .\n",      "a ours .\n"},
             Case{When::during, takesTheirs, "a theirs .\n",      "a ours .\n"},
             Case{When::after,  takesTheirs, "a theirs .\n",      "a ours .\n"},
             Case{When::after,  signsTheirs, "a signed theirs .\n", "a ours .\n"},
         }) {
        // clang-format on
        SCOPED_TRACE(int(c.when) * 10 + int(c.policy));
        auto const owner = started(onlyWhenAsked, Owner::Policy::takesTheirs);
        owner->policy = c.policy;
        auto const writeTheirs = [&] { put(file, "a theirs .\n"); };
        auto const save = [&] { owner->synced.startSaving(); };
        owner->add("ours");
        if (c.when == When::before)
            writeTheirs(), save();
        if (c.when == When::during)
            owner->gate->meanwhile(save, writeTheirs);
        if (c.when == When::after) {
            EXPECT_TRUE(owner->synced.flush());
            writeTheirs(); // The watcher reports it.
        }
        auto const isTaken = [&] {
            if (c.when == When::after && owner->words.contains("theirs"))
                owner->synced.startSaving(); // Otherwise a merge is saved only after the delay.
            return owner->words.contains("theirs") && !owner->synced.isDirty();
        };
        EXPECT_TRUE(processEventsUntil(isTaken));
        EXPECT_EQ(contentsOf(file), c.inTheEnd);
        EXPECT_EQ(line(owner->words), c.inTheEnd);
        EXPECT_EQ(line(owner->before), c.before);
    }
}

TEST_F(SyncedFileTest, AFileThatDoesNotDecodeIsLeftAloneUntilItDoes)
{
    auto const owner = started(atOnce);
    put(file, "a th");
    owner->add("ours");
    EXPECT_TRUE(processEventsUntil([&] { return !owner->synced.problem().empty(); }));
    EXPECT_EQ(owner->synced.problem(), "invalid: There is no full stop.");
    EXPECT_FALSE(owner->synced.flush());
    EXPECT_EQ(contentsOf(file), "a th");
    EXPECT_EQ(line(owner->kept->value().words), "a ours .\n");
    EXPECT_FALSE(owner->kept->value().isInFile);

    put(file, "a theirs .\n");
    EXPECT_TRUE(becomes("a ours theirs .\n"));
    EXPECT_EQ(owner->synced.problem(), "");

    put(file, "half");
    EXPECT_TRUE(processEventsUntil([&] { return !owner->synced.problem().empty(); }));
    put(file, "a ours theirs .\n");
    EXPECT_TRUE(processEventsUntil([&] { return owner->synced.problem().empty(); }))
        << "the known content is back";
}

TEST_F(SyncedFileTest, AMissingFileIsWritten)
{
    auto const owner = started();
    bool hasVanished = false;
    QObject::connect(&owner->synced, &FileSync::vanished, [&] { hasVanished = true; });
    fs::remove(file);
    EXPECT_TRUE(processEventsUntil([&] { return hasVanished; }));
    owner->add("b");
    EXPECT_TRUE(owner->synced.flush());
    EXPECT_EQ(contentsOf(file), "a b .\n");

    fs::remove(file);
    Owner another;
    another.words = {"new"};
    EXPECT_FALSE(another.synced.open(file, FileSync::Saving::automatic));
    EXPECT_TRUE(becomes("new .\n")) << "a file that never existed gets the value";
}

TEST_F(SyncedFileTest, AFailedSaveIsRetried)
{
    auto const owner = started({.delay = 0ms, .longestDelay = 0ms, .retryDelay = 1ms});
    fs::remove_all(file.parent_path());
    owner->add("b");
    EXPECT_TRUE(processEventsUntil([&] { return !owner->synced.problem().empty(); }));
    EXPECT_FALSE(owner->kept->value().isInFile);
    fs::create_directory(file.parent_path());
    EXPECT_TRUE(becomes("a b .\n"));
    EXPECT_TRUE(processEventsUntil([&] { return owner->synced.problem().empty(); }));
}

TEST_F(SyncedFileTest, SavingOnRequestKeepsTheValueElsewhereUntilThen)
{
    put(file, "a .\n");
    Owner owner(atOnce);
    owner.synced.bind(file, {Words{"a"}}, contentMark("a .\n"), FileSync::Saving::onRequest);
    owner.words = {"a"};
    owner.add("b");
    EXPECT_TRUE(processEventsUntil([&] { return owner.kept->has_value(); }));
    EXPECT_FALSE(owner.synced.flush());
    EXPECT_EQ(contentsOf(file), "a .\n");
    EXPECT_EQ(line((*owner.kept)->words), "a b .\n");
    owner.synced.startSaving();
    EXPECT_TRUE(becomes("a b .\n"));
}

TEST_F(SyncedFileTest, FollowsAFileThatMovedDuringASave)
{
    auto const owner = started(onlyWhenAsked, Owner::Policy::takesTheirs);
    owner->add("b");
    EXPECT_TRUE(owner->synced.flush());
    owner->add("c");
    owner->synced.startSaving();
    QThreadPool::globalInstance()->waitForDone(); // Written, but its result is not taken yet.
    fs::rename(folder / "place", folder / "elsewhere");
    owner->synced.followTo(folder / "elsewhere/words");
    owner->add("d");
    EXPECT_TRUE(owner->synced.flush());
    EXPECT_EQ(contentsOf(folder / "elsewhere/words"), "a b c d .\n");
    EXPECT_EQ(owner->synced.problem(), "");
    EXPECT_FALSE(fs::exists(file));
}

TEST_F(SyncedFileTest, AWriteOutlivesItsOwner)
{
    auto owner = started();
    owner->add("b");
    auto const gate = owner->gate;
    gate->meanwhile([&] { owner->synced.startSaving(); }, [&] { owner.reset(); });
    EXPECT_TRUE(becomes("a b .\n"));
    QThreadPool::globalInstance()->waitForDone();
    QCoreApplication::processEvents(); // Its result is dropped.
}

TEST_F(SyncedFileTest, BlockingWorkDoesNotWaitForAWorker)
{
    auto const pool = QThreadPool::globalInstance();
    int const usual = pool->maxThreadCount();
    std::binary_semaphore exportEnds{0};
    pool->setMaxThreadCount(1);
    pool->start([&] { exportEnds.acquire(); });

    auto const owner = started();
    owner->add("b");
    owner->synced.startSaving();
    EXPECT_TRUE(owner->synced.flush());
    EXPECT_EQ(contentsOf(file), "a b .\n");

    exportEnds.release();
    pool->waitForDone();
    pool->setMaxThreadCount(usual);
}

TEST_F(SyncedFileTest, TwoWritersLoseNothing)
{
    auto const first = started(atOnce);
    Owner second(atOnce);
    ASSERT_TRUE(second.synced.open(file, FileSync::Saving::automatic));
    Words all{"a"};
    for (int n = 100; n < 140; ++n) {
        Owner& owner = n % 2 ? *first : second;
        owner.add(std::to_string(n));
        owner.synced.startSaving();
        all.insert(std::to_string(n));
        QCoreApplication::processEvents();
    }
    EXPECT_TRUE(processEventsUntil([&] {
        return first->words == all && second.words == all && contentsOf(file) == line(all);
    })) << line(first->words)
        << line(second.words) << contentsOf(file);
}

} // namespace framewright
