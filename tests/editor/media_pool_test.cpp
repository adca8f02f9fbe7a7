#include "editor_home.h"

#include "editor/commands/clip_placing_commands.h"
#include "editor/commands/media_commands.h"

#include <QImage>
#include <QThreadPool>

#include <latch>

namespace framewright {

namespace {

/// Writes a photo of one colour.
void putPhoto(std::filesystem::path const& file, int width)
{
    std::filesystem::create_directories(file.parent_path());
    QImage image(width, 16, QImage::Format_RGB888);
    image.fill(Qt::red); // Larger photos are larger files, so a changed one is noticed.
    ASSERT_TRUE(image.save(QString::fromStdString(file.string())));
}

/// Mono, 16 bits, 8 kHz: a tenth of a second for each hundred.
void putWave(std::filesystem::path const& file, std::uint32_t seconds)
{
    std::uint32_t const rate = 8000, bytes = rate * 2 * seconds;
    std::string wave = "RIFF....WAVEfmt ";
    auto const add = [&](std::uint32_t number, int size) {
        for (int n = 0; n < size; ++n)
            wave += char(number >> (8 * n));
    };
    for (auto const& [number, size] :
         {std::pair(16u, 4), {1u, 2}, {1u, 2}, {rate, 4}, {rate * 2, 4}, {2u, 2}, {16u, 2}})
        add(number, size);
    wave += "data";
    add(bytes, 4);
    wave.append(bytes, '\x11');
    put(file, wave);
}

/// Holds back all work on other threads until it is released.
class BusyWorkers {
public:
    BusyWorkers()
    {
        m_workers.setMaxThreadCount(1);
        m_workers.start([&released = m_released] { released.wait(); });
    }
    ~BusyWorkers() { m_workers.setMaxThreadCount(m_before); }

    void release() { m_released.count_down(); }

private:
    QThreadPool& m_workers = *QThreadPool::globalInstance();
    int const m_before = m_workers.maxThreadCount();
    std::latch m_released{1};
};

double widthOf(AppState const& editor, Id const& asset)
{
    LoadedAsset const* const loaded = editor.media().store().find(asset);
    return loaded ? loaded->displaySize().width : 0;
}

} // namespace

TEST(MediaPool, AReplacedFileIsProbedAgain)
{
    EditorHome home;
    home.startProject("Replaced");
    auto const file = home.folder / "photo.png";
    putPhoto(file, 32);
    Id const asset = (*awaited(importMedia(home.editing(), {file})))[0].id;
    EXPECT_EQ(widthOf(home.editor(), asset), 32);

    putPhoto(file, 48);
    awaited(home.editor().media().refresh());
    EXPECT_EQ(widthOf(home.editor(), asset), 48);

    std::filesystem::remove(file);
    awaited(home.editor().media().refresh());
    EXPECT_TRUE(home.editor().media().problem(asset));
    EXPECT_FALSE(home.editor().media().store().find(asset));
}

TEST(MediaPool, AResultForAnAssetsFormerFileIsDropped)
{
    EditorHome home;
    home.startProject("Stale");
    auto const old = home.folder / "old.png", now = home.folder / "now.png";
    putPhoto(old, 32);
    putPhoto(now, 64);
    Id const asset = (*awaited(importMedia(home.editing(), {old})))[0].id;
    putPhoto(old, 40);

    BusyWorkers workers;
    auto refreshing = home.editor().media().refresh(); // Will probe old.png.
    Project project = home.editor().project();
    project.assets.edit()[asset].url.path = now.string();
    home.editor().commit(project, "Replace", Author::commandLine);
    workers.release();
    awaited(std::move(refreshing));
    EXPECT_EQ(widthOf(home.editor(), asset), 32) << "What was found in old.png is of no use.";
    EXPECT_EQ(home.editor().project().asset(asset)->url.path, now.string());

    awaited(home.editor().media().refresh());
    EXPECT_EQ(widthOf(home.editor(), asset), 64);
}

TEST(MediaPool, AResultForAProjectThatWasClosedIsDropped)
{
    EditorHome home;
    home.startProject("Closed");
    auto const file = home.folder / "photo.png";
    putPhoto(file, 32);
    (void)awaited(importMedia(home.editing(), {file}));
    awaited(home.files().save());

    BusyWorkers workers;
    auto loading = home.editor().media().load(); // Will probe the photo.
    ASSERT_TRUE(awaited(home.files().close(ProjectFiles::Unsaved::keep)));
    workers.release();
    awaited(std::move(loading));
    EXPECT_EQ(home.editor().media().store(), AssetStore());
    EXPECT_TRUE(home.editor().media().problems().empty());
}

TEST(AddClip, KnowsTheFileAndTheTrack)
{
    EditorHome home;
    home.startProject("Rules");
    auto const photo = home.folder / "photo.png", sound = home.folder / "sound.wav";
    putPhoto(photo, 32);
    putWave(sound, 4);
    Id const video = home.editor().project().tracks[0].id;
    Id const audio = home.editor().project().tracks[1].id;
    auto const clip = [](std::filesystem::path const& file, Id const& track, double in,
                         std::optional<double> out) {
        return ClipToAdd{file, track, {}, in, out};
    };
    // clang-format off
    struct Case { char const* name; ClipToAdd wanted; std::optional<Reason> reason; double length; };
    for (Case const& c : {
             Case{"the whole audio file", clip(sound, audio, 0, {}), {}, 4},
             Case{"a part", clip(sound, audio, 1, 2.5), {}, 1.5},
             Case{"a photo", clip(photo, video, 0, {}), {}, 3},
             Case{"a long photo", clip(photo, video, 0, 60), {}, 60},
             Case{"too long a photo", clip(photo, video, 0, 61), Reason::newPhotoTooLong, 0},
             Case{"past the end", clip(sound, audio, 0, 5), Reason::pastSourceEnd, 0},
             Case{"in at the end", clip(sound, audio, 4, {}), Reason::inOutsideSource, 0},
             Case{"in before 0", clip(sound, audio, -1, {}), Reason::inOutsideSource, 0},
             Case{"out before in", clip(sound, audio, 2, 1), Reason::tooShort, 0},
             Case{"audio on a video track", clip(sound, video, 0, {}), Reason::audioOnVideoTrack, 0},
             Case{"a photo on an audio track", clip(photo, audio, 0, {}), Reason::photoOnAudioTrack, 0},
             Case{"no track", clip(photo, Id::random(), 0, {}), Reason::trackGone, 0},
         }) {
        // clang-format on
        Project const before = home.editor().project();
        auto const placed = awaited(addClip(home.editing(), c.wanted));
        ASSERT_EQ(bool(placed), !c.reason) << c.name;
        if (!placed) {
            EXPECT_EQ(placed.refusal().reason, *c.reason) << c.name;
            EXPECT_EQ(home.editor().project(), before) << c.name;
            continue;
        }
        EXPECT_NEAR(findClip(home.editor().project(), placed->clipID)->clip->length(), c.length,
                    1e-3)
            << c.name;
    }
}

} // namespace framewright
