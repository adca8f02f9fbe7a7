// Footage of every size and sound, and footage that fails while it is exported.

#include "export/exporter.h"
#include "media/audio_reader.h"
#include "media/video_reader.h"
#include "rendering/made_media.h"
#include "rendering/synthetic_frames.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <csignal>
#include <fstream>

#include <sys/resource.h>
#include <unistd.h>

namespace framewright {

namespace fs = std::filesystem;

namespace {

using testing::AllOf;
using testing::HasSubstr;

class OddSources : public MadeMedia {
protected:
    OddSources() { fs::create_directory(folder / "out"); }

    fs::path target() const { return folder / "out" / "out.mp4"; }

    bool leftNothing() const { return fs::is_empty(folder / "out"); }

    ExportResult exported(Project const& piece, ExportProgress const& progress = {},
                          ExportSettings settings = {})
    {
        settings.file = target();
        settings.height = settings.height.value_or(160);
        return Exporter(piece, assets, burner, settings).run(progress);
    }

    /// What an export says that fails; empty when it doesn't.
    std::string failure(Project const& piece, ExportProgress const& progress = {})
    {
        try {
            exported(piece, progress);
        } catch (ExportError const& error) {
            return error.what();
        }
        return "";
    }

    /// Noise of which nothing can be left out: about 2 MB a second.
    fs::path noise(std::string const& name, std::string const& encoding) const
    {
        return made(
            "-f lavfi -i \"color=gray:s=320x240:r=25:d=4,noise=alls=60:allf=t\" " + encoding, name);
    }
};

int centerLuma(ExportResult const& result)
{
    VideoReader reader(result.file);
    Frame const frame = reader.frameAt(result.duration / 2);
    return sample(frame, 0, frame.width() / 2, frame.height() / 2);
}

double loudness(ExportResult const& result)
{
    std::vector<float> sound(std::size_t(result.duration * AudioReader::sampleRate) * 2);
    AudioReader(result.file).read(0, sound);
    double sum = 0;
    for (float const value : sound)
        sum += double(value) * value;
    return std::sqrt(sum / double(sound.size()));
}

/// Does something once an export has got so far.
ExportProgress when(double fraction, std::function<void()> action)
{
    return [=, isDone = false](double done, std::string_view) mutable {
        if (!isDone && done >= fraction)
            action();
        isDone = isDone || done >= fraction;
    };
}

} // namespace

TEST_F(OddSources, AreExported)
{
    struct Case {
        char const* name;
        char const* picture; ///< Of ffmpeg's source "color=white".
        char const* sound;
        double loudness;
    };
    double const sine = 0.25 / std::sqrt(2.0);
    for (Case const& c : {
             Case{"a single pixel.mkv", "s=1x1:r=25:d=1,format=yuv444p", "s=8000", sine},
             Case{"odd.mkv", "s=427x239:r=25:d=1,format=yuv420p", "s=44100", sine},
             Case{"odd, 4:1:1.mkv", "s=37x23:r=10:d=1,format=yuv411p", "s=96000", sine},
             Case{"8K.mkv", "s=7680x4320:r=4:d=0.25,format=yuv420p", "s=48000:c=stereo", sine},
             Case{"surround.mkv", "s=64x64:r=50:d=1,format=yuv422p10le", "s=48000:c=5.1", sine},
             Case{"silent.mkv", "s=64x64:r=3:d=1,format=gray", "", 0},
         }) {
        SCOPED_TRACE(c.name);
        std::string const tone = "0.25*sin(2*PI*440*t)";
        std::string const all = std::string(c.sound).ends_with("5.1")
                                    ? tone + "|" + tone + "|0|0|0|0"
                                : std::string(c.sound).ends_with("stereo") ? tone + "|" + tone
                                                                           : tone;
        std::string const input =
            *c.sound ? " -f lavfi -i \"aevalsrc='" + all + "':d=1:" + c.sound + "\"" : "";
        Id const id = loaded(made("-f lavfi -i color=white:" + std::string(c.picture) + input +
                                      " -shortest -c:v ffv1 -c:a pcm_s16le",
                                  c.name));
        double const length = assets.find(id)->duration;
        ExportResult const result = exported(project({videoTrack({clip(id, 0, length)})}));
        EXPECT_NEAR(centerLuma(result), 235, 2);
        EXPECT_NEAR(loudness(result), c.loudness, 0.02);
    }
}

TEST_F(OddSources, TurnedAndCroppedToATenthShowTheirMiddle)
{
    fs::path const lying =
        made("-f lavfi -i \"color=black:s=640x320:r=25:d=0.2,drawbox=288:144:64:32:white:fill\""
             " -c:v libx264 -qp 0 -pix_fmt yuv420p",
             "lying.mp4");
    Id const id =
        loaded(made("-i '" + lying.string() + "' -c copy -metadata:s:v rotate=270", "turned.mp4"));
    ASSERT_EQ(assets.find(id)->displaySize(), (Size{320, 640}));
    Clip shown = clip(id, 0, 0.2);
    shown.transform.scale = 5;
    shown.transform.cropLeft = shown.transform.cropRight = 0.45;
    shown.transform.cropTop = shown.transform.cropBottom = 0.45;
    Project piece = project({videoTrack({shown})});
    piece.aspect = AspectPreset::square;
    VideoReader reader(exported(piece, {}, {.height = 320}).file);
    Frame const frame = reader.frameAt(0.1);
    // A tenth of 160 x 320, five times enlarged, in the middle of 320 x 320.
    for (auto const& [x, y, white] : {std::tuple{160, 160, true},
                                      {123, 83, true},
                                      {196, 236, true},
                                      {117, 160, false},
                                      {202, 160, false},
                                      {160, 77, false},
                                      {160, 242, false}})
        EXPECT_NEAR(sample(frame, 0, x, y), white ? 235 : 16, 8) << x << ", " << y;
}

TEST_F(OddSources, ThatFailOnTheWayStopTheExport)
{
    struct Case {
        char const* name;
        char const* encoding;
    };
    for (Case const& c : {
             Case{"h264.mp4", "-c:v libx264 -preset ultrafast -qp 10 -pix_fmt yuv420p"},
             Case{"mjpeg.mov", "-c:v mjpeg -q:v 2 -pix_fmt yuvj420p"},
             Case{"prores.mov", "-c:v prores"},
         }) {
        SCOPED_TRACE(c.name);
        fs::path const file = noise(c.name, c.encoding);
        Id const id = loaded(file);
        Project const piece = project({videoTrack({clip(id, 0, 3, 0.5)})});
        auto const size = fs::file_size(file);
        ASSERT_GT(size, 1'000'000u);

        std::string const cut =
            failure(piece, when(0.2, [&] { fs::resize_file(file, size * 6 / 10); }));
        EXPECT_EQ(cut, std::string(c.name) + " was changed while it was exported. Nothing was "
                                             "kept; please export again.");
        EXPECT_TRUE(leftNothing());

        // Damaged in the middle from the beginning.
        noise(c.name, c.encoding);
        std::fstream(file, std::ios::in | std::ios::out | std::ios::binary)
            .seekp(std::streamoff(size / 2))
            .write(std::string(size / 10, '\0').data(), std::streamsize(size / 10));
        std::string const damaged = failure(piece);
        EXPECT_THAT(damaged,
                    AllOf(HasSubstr("clip 1 on Video"), HasSubstr(c.name),
                          testing::MatchesRegex(".* at [12]\\.[0-9]+ s cannot be decoded\\.")))
            << damaged;
        EXPECT_TRUE(leftNothing());
    }
}

TEST_F(OddSources, ThatChangeOnTheWayStopTheExport)
{
    fs::path const file = noise("noise.mp4", "-c:v libx264 -preset ultrafast -pix_fmt yuv420p");
    fs::path const other = noise("other.mp4", "-c:v libx264 -preset veryfast -pix_fmt yuv420p");
    fs::path const kept = folder / "kept.mp4";
    fs::copy(file, kept);
    Id const id = loaded(file), otherID = loaded(other);
    Project const piece =
        project({videoTrack({clip(id, 0, 2, 0.5), clip(otherID, 2, 1), clip(id, 3, 1, 1)})});

    std::string const replaced = failure(piece, when(0.2, [&] { fs::rename(kept, other); }));
    EXPECT_EQ(replaced, "other.mp4 was changed while it was exported. Nothing was kept; please "
                        "export again.");
    EXPECT_TRUE(leftNothing());

    std::string const removed = failure(piece, when(0.2, [&] { fs::remove(other); }));
    EXPECT_THAT(removed, AllOf(HasSubstr("clip 2 on Video"), HasSubstr("other.mp4")));
    EXPECT_TRUE(leftNothing());
}

TEST_F(OddSources, AndPlacesThatCannotBeWrittenToAreSaid)
{
    Id const id = loaded(noise("noise.mp4", "-c:v libx264 -preset ultrafast -pix_fmt yuv420p"));
    Project const piece = project({videoTrack({clip(id, 0, 4)})});

    // A limit on files stands in for a disk that fills up: writing fails on the way.
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    auto* const handler = std::signal(SIGXFSZ, SIG_IGN);
    rlimit const small{30'000, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    std::string const full = failure(piece);
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
    EXPECT_EQ(full, "out.mp4 couldn't be written: File too large.");
    EXPECT_TRUE(leftNothing());

    fs::permissions(folder, fs::perms(0755));
    fs::permissions(folder / "out", fs::perms(0555));
    uid_t const user = geteuid();
    constexpr uid_t nobody = 65534;
    ASSERT_TRUE(user != 0 || seteuid(nobody) == 0); // To root nothing is closed.
    std::string const closed = failure(piece);
    ASSERT_EQ(seteuid(user), 0);
    fs::permissions(folder / "out", fs::perms(0755));
    EXPECT_EQ(closed, "out.mp4 couldn't be written: Permission denied.");
    EXPECT_TRUE(leftNothing());
}

} // namespace framewright
