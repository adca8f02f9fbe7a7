#include "media/movie_writer.h"

#include "media/audio_reader.h"
#include "media/bytes.h"
#include "media/internal/audio_writer.h"
#include "media/made_media.h"
#include "media/media_error.h"
#include "media/media_info.h"
#include "media/video_reader.h"

#include <gmock/gmock.h>

#include <cmath>
#include <csignal>
#include <fstream>

#include <sys/resource.h>

namespace framewright {

namespace fs = std::filesystem;
using namespace std::string_literals;

namespace {

MovieSettings small()
{
    MovieSettings settings;
    settings.width = countWidth;
    settings.height = countHeight;
    settings.threads = 1;
    return settings;
}

/// Silence with a click at each of the samples `clicks`.
std::vector<float> silenceWithClicks(int samples, std::vector<int> const& clicks)
{
    std::vector<float> audio(std::size_t(samples) * 2);
    for (int const click : clicks)
        audio[std::size_t(click) * 2] = audio[std::size_t(click) * 2 + 1] = 0.9F;
    return audio;
}

/// The loudest sample near `sample`.
int loudestNear(std::vector<float> const& audio, int sample)
{
    int loudest = std::max(0, sample - 1000);
    for (int n = loudest; n < std::min(sample + 1000, int(audio.size() / 2)); ++n) {
        if (std::abs(audio[std::size_t(n) * 2]) > std::abs(audio[std::size_t(loudest) * 2]))
            loudest = n;
    }
    return loudest;
}

Frame tenBit(Frame const& frame)
{
    Frame wide(frame.width(), frame.height(), PixelLayout::yuv420p10(), ColorTags::hlg());
    for (int i = 0; i < 3; ++i) {
        auto const from = frame.plane(i);
        auto const to = wide.writablePlane(i);
        for (int y = 0; y < from.height; ++y) {
            auto* const row = reinterpret_cast<std::uint16_t*>(to.data + y * to.stride);
            for (int x = 0; x < from.width; ++x)
                row[x] = std::uint16_t(from.data[y * from.stride + x] << 2);
        }
    }
    return wide;
}

fs::path writtenMovie(std::string const& name, MovieSettings const& settings, int frames)
{
    fs::path const file = testFolder() / name;
    MovieWriter writer(file, settings);
    for (int i = 0; i < frames; ++i) {
        writer.writeFrame(numberedFrame(i));
        writer.writeAudio(silenceWithClicks(1600, {}));
    }
    writer.finish();
    return file;
}

} // namespace

TEST(MovieWriter, StreamsBeginTogetherAndCarryTheirTags)
{
    fs::path const file = writtenMovie("tags.mp4", small(), 45);
    EXPECT_EQ(probed(file, "v",
                     "stream=codec_name,profile,has_b_frames,pix_fmt,color_range,color_space,"
                     "color_transfer,color_primaries,start_time,duration,nb_frames"),
              "h264|High|2|yuv420p|tv|bt709|bt709|bt709|0.000000|1.500000|45\n");
    EXPECT_EQ(
        probed(file, "a", "stream=codec_name,profile,sample_rate,channels,start_time,duration"),
        "aac|LC|48000|2|0.000000|1.500000\n");
}

TEST(MovieWriter, RoundTrips)
{
    constexpr int frames = 90;
    std::vector<int> const clicks = {1100, 4800, 71999, 100000, 143000};
    auto const audio = silenceWithClicks(frames * 1600, clicks);
    for (auto const codec : {MovieSettings::Codec::h264, MovieSettings::Codec::hevcHLG}) {
        bool const isHLG = codec == MovieSettings::Codec::hevcHLG;
        SCOPED_TRACE(isHLG);
        MovieSettings settings = small();
        settings.codec = codec;
        settings.preset = "ultrafast";
        fs::path const file = testFolder() / (isHLG ? "back hlg.mp4" : "back.mp4");
        MovieWriter writer(file, settings);
        for (int i = 0; i < frames; ++i) {
            writer.writeFrame(isHLG ? tenBit(numberedFrame(i)) : numberedFrame(i));
            writer.writeAudio(std::span(audio).subspan(std::size_t(i) * 3200, 3200));
        }
        EXPECT_FALSE(fs::exists(file)) << "before finish()";
        writer.finish();

        MediaInfo const info = probeMedia(file);
        EXPECT_DOUBLE_EQ(info.duration, 3);
        EXPECT_EQ(info.isHDR, isHLG);
        VideoReader reader(file);
        for (int i = 0; i < frames; ++i)
            ASSERT_EQ(numberIn(reader.frameAt(i / 30.0)), i);
        Frame const last = reader.frameAt(10);
        EXPECT_EQ(last.colors(), isHLG ? ColorTags::hlg() : ColorTags::bt709());
        EXPECT_EQ(last.layout().bitDepth, isHLG ? 10 : 8);

        std::vector<float> heard(audio.size());
        AudioReader(file).read(0, heard);
        for (int const click : clicks)
            EXPECT_EQ(loudestNear(heard, click), click);
    }
}

/// There is no edit list to hide priming samples with, so there are none.
TEST(AudioWriter, AudioThatStartsAtOnceIsHeardAtOnce)
{
    for (int const samples : {48000, 1500}) {
        std::vector<float> audio(std::size_t(samples) * 2);
        for (std::size_t i = 0; i < audio.size(); ++i)
            audio[i] = 0.8F * std::sin(float(i / 2) * 0.13F);
        fs::path const file = testFolder() / ("at once " + std::to_string(samples) + ".m4a");
        AudioWriter writer(file);
        writer.write(audio);
        writer.finish();

        EXPECT_EQ(contentsOf(file).find("edts"), std::string::npos);
        EXPECT_DOUBLE_EQ(probeMedia(file).duration, samples / 48000.0);
        std::vector<float> heard(audio.size());
        AudioReader(file).read(0, heard);
        auto const loud = std::ranges::find_if(heard, [](float v) { return std::abs(v) > 0.2F; });
        EXPECT_LT(loud - heard.begin(), 336 * 2) << "7 ms of the 21 that fade in";
        for (std::size_t i = 2048; i + 2048 < audio.size(); ++i)
            ASSERT_NEAR(heard[i], audio[i], 0.05F) << i;
    }
}

TEST(AudioWriter, RoundTrips)
{
    std::vector<int> const clicks = {1100, 2111, 50000, 99990};
    auto const audio = silenceWithClicks(100000, clicks);
    fs::path const file = testFolder() / "clicks.m4a";
    {
        AudioWriter writer(file, 128'000);
        writer.write(std::span(audio).first(77778));
        writer.write(std::span(audio).subspan(77778));
        writer.finish();
    }
    MediaInfo const info = probeMedia(file);
    EXPECT_EQ(info.kind, MediaKind::audio);
    EXPECT_DOUBLE_EQ(info.duration, 100000 / 48000.0);
    EXPECT_EQ(contentsOf(file).substr(8, 3), "M4A");
    std::vector<float> heard(audio.size());
    AudioReader(file).read(0, heard);
    for (int const click : clicks)
        EXPECT_EQ(loudestNear(heard, click), click);
}

TEST(MovieWriter, SuitsPlayersAndCutting)
{
    fs::path const file = writtenMovie("players.mp4", small(), 60);
    std::string const bytes = contentsOf(file);
    EXPECT_LT(bytes.find("moov"), bytes.find("mdat")) << "the index comes first";
    EXPECT_EQ(bytes.substr(0, bytes.find("mdat")).find("edts"), std::string::npos);
    std::string const flags = probed(file, "v", "packet=flags");
    int sinceKeyframe = 15;
    for (int i = 0; i < 60; ++i) {
        sinceKeyframe = flags[std::size_t(i) * 3] == 'K' ? 0 : sinceKeyframe + 1;
        ASSERT_LT(sinceKeyframe, 15) << "packet " << i;
    }

    MovieSettings hlg = small();
    hlg.codec = MovieSettings::Codec::hevcHLG;
    hlg.preset = "ultrafast";
    hlg.mastering =
        MasteringDisplay{{0.68, 0.32}, {0.265, 0.69}, {0.15, 0.06}, {0.3127, 0.329}, 0.0005, 1000};
    fs::path const hdr = testFolder() / "hdr tags.mp4";
    {
        MovieWriter writer(hdr, hlg);
        for (int i = 0; i < 4; ++i)
            writer.writeFrame(tenBit(numberedFrame(i)));
        writer.finish();
    }
    EXPECT_THAT(probed(hdr, "v",
                       "stream=codec_name,profile,codec_tag_string,pix_fmt,color_range,color_space,"
                       "color_transfer,color_primaries,start_time"),
                testing::StartsWith(
                    "hevc|Main 10|hvc1|yuv420p10le|tv|bt2020nc|arib-std-b67|bt2020|0.000000"));
    EXPECT_EQ(probeMedia(hdr).mastering, hlg.mastering);
    EXPECT_THAT(probed(hdr, "v", "frame_side_data=red_x,green_y,white_point_x,max_luminance"),
                testing::StartsWith("34000/50000|34500/50000|15635/50000|10000000/10000"));
}

TEST(MovieWriter, LeavesNothingBehindUnlessFinished)
{
    fs::path const folder = testFolder() / "exports";
    fs::create_directory(folder);
    fs::path const file = folder / (std::string(250, 'x') + ".mp4"); // The maximal length.
    std::ofstream(file) << "the old file";
    {
        MovieWriter writer(file, small());
        writer.writeFrame(numberedFrame(1));
    }
    EXPECT_EQ(contentsOf(file), "the old file");
    EXPECT_EQ(std::distance(fs::directory_iterator(folder), {}), 1);

    MovieWriter writer(file, small());
    writer.writeFrame(numberedFrame(1));
    writer.finish();
    EXPECT_EQ(numberIn(VideoReader(file).frameAt(0)), 1);
    EXPECT_EQ(std::distance(fs::directory_iterator(folder), {}), 1);
}

TEST(MovieWriter, ReportsWhyItCannotWrite)
{
    auto const failing = [](fs::path const& file, MovieSettings const& settings, int frames) {
        try {
            MovieWriter writer(file, settings);
            for (int i = 0; i < frames; ++i)
                writer.writeFrame(numberedFrame(i));
            writer.finish();
        } catch (MediaError const& error) {
            return std::pair<std::string, MediaError::Cause>(error.what(), error.cause);
        }
        return std::pair<std::string, MediaError::Cause>();
    };
    MovieSettings odd = small();
    odd.width = 127;
    EXPECT_EQ(failing(testFolder() / "odd.mp4", odd, 0),
              std::pair("odd.mp4 couldn't be written: 127 × 64 pixels at 30 frames per second "
                        "cannot be encoded."s,
                        MediaError::Cause::unsupported));
    EXPECT_EQ(failing(testFolder() / "nowhere" / "a.mp4", small(), 0),
              std::pair("a.mp4 couldn't be written: No such file or directory."s,
                        MediaError::Cause::missing));

    // Acts like a full disk.
    rlimit before{};
    ::getrlimit(RLIMIT_FSIZE, &before);
    rlimit const little{5000, before.rlim_max};
    ::signal(SIGXFSZ, SIG_IGN);
    ::setrlimit(RLIMIT_FSIZE, &little);
    auto const full = failing(testFolder() / "full.mp4", small(), 255);
    ::setrlimit(RLIMIT_FSIZE, &before);
    EXPECT_EQ(full, std::pair("full.mp4 couldn't be written: File too large."s,
                              MediaError::Cause::resources));
    EXPECT_FALSE(fs::exists(testFolder() / "full.mp4"));

    MovieWriter writer(testFolder() / "size.mp4", small());
    EXPECT_THROW(writer.writeFrame(Frame(64, 64, PixelLayout::yuv420p8(), {})),
                 std::invalid_argument);
}

} // namespace framewright
