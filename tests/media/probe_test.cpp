#include "media/media_info.h"

#include "media/audio_reader.h"
#include "media/bytes.h"
#include "media/made_media.h"
#include "media/media_error.h"
#include "media/photo.h"
#include "media/video_reader.h"
#include "model/file_url.h"

#include <gmock/gmock.h>

#include <random>

#include <sys/stat.h>

namespace framewright {

namespace fs = std::filesystem;
using namespace std::string_literals;
using Arguments = std::vector<std::string>;
using Cause = MediaError::Cause;

namespace {

Arguments const quickly = {"-c:v", "libx264", "-preset", "ultrafast"};
Arguments const tone = {"-f", "lavfi", "-i", "sine=duration=2"};

/// A second of numbered frames with two seconds of audio.
fs::path smallMovie()
{
    return madeWith("small.mp4", numberedInput(25, "25") + tone + quickly +
                                     Arguments{"-movflags", "+faststart"});
}

/// The message and cause of the MediaError that `action` throws, or "no failure".
template <class Action>
std::pair<std::string, Cause> errorOf(Action action)
{
    try {
        action();
    } catch (MediaError const& error) {
        return {error.what(), error.cause};
    }
    return {"no failure", Cause::resources};
}

/// The small movie with this display matrix: the directions of the x and y axes.
fs::path turned(std::string const& name, int a, int b, int c, int d)
{
    std::string bytes = contentsOf(smallMovie());
    auto const one = [](int value) {
        return bigEndian(std::uint64_t(std::int64_t(value)) << 16, 4);
    };
    auto const matrix = one(a) + one(b) + "\0\0\0\0"s + one(c) + one(d) + "\0\0\0\0"s;
    bytes.replace(bytes.find("tkhd") + 44, matrix.size(), matrix);
    return fileOf(name, bytes);
}

} // namespace

TEST(ProbeMedia, ReportsWhatAFileContains)
{
    MediaInfo const movie = probeMedia(smallMovie());
    EXPECT_EQ(movie.kind, MediaKind::video);
    EXPECT_NEAR(movie.duration, 2, 0.001) << "the audio is longer than the video";
    EXPECT_TRUE(movie.hasVideo && movie.hasAudio && !movie.isHDR);
    EXPECT_EQ(movie.displayWidth(), countWidth);
    EXPECT_EQ(movie.displayHeight(), countHeight);
    EXPECT_DOUBLE_EQ(movie.frameRate, 25);
    EXPECT_EQ(movie.videoCodec + " " + movie.audioCodec, "h264 aac");
    EXPECT_EQ(movie.channels, 1);
    EXPECT_EQ(movie.sampleRate, 44100);

    fs::path const cover =
        madeWith("cover.mp3", tone + numberedInput(1, "1") +
                                  Arguments{"-map", "0", "-map", "1", "-c:v", "mjpeg", "-pix_fmt",
                                            "yuvj420p", "-disposition:v", "attached_pic"});
    MediaInfo const music = probeMedia(cover);
    EXPECT_EQ(music.kind, MediaKind::audio);
    EXPECT_FALSE(music.hasVideo);
    EXPECT_NEAR(music.duration, 2, 0.0001) << "without encoder delay and padding";

    MediaInfo const wide = probeMedia(
        madeWith("wide.mp4", numberedInput(5, "25") + Arguments{"-vf", "setsar=3/2"} + quickly));
    EXPECT_EQ(wide.width, countWidth * 3 / 2);
    EXPECT_EQ(wide.height, countHeight);

    MediaInfo const hdr = probeMedia(madeWith(
        "pq.mkv", numberedInput(5, "25") + Arguments{"-c:v", "libx264", "-color_trc", "smpte2084",
                                                     "-pix_fmt", "yuv420p10le"}));
    EXPECT_TRUE(hdr.isHDR);
    EXPECT_NEAR(hdr.duration, 0.2, 0.001);
}

TEST(ProbeMedia, UnderstandsEveryDisplayMatrix)
{
    struct Case {
        char const* name;
        int a, b, c, d;
        Orientation orientation;
    };
    for (Case const& c : {
             Case{"upright", 1, 0, 0, 1, {0, false}},
             Case{"clockwise", 0, 1, -1, 0, {1, false}},
             Case{"upside down", -1, 0, 0, -1, {2, false}},
             Case{"anticlockwise", 0, -1, 1, 0, {3, false}},
             Case{"mirrored", -1, 0, 0, 1, {0, true}},
             Case{"top to bottom", 1, 0, 0, -1, {2, true}},
             Case{"main diagonal", 0, 1, 1, 0, {3, true}},
             Case{"other diagonal", 0, -1, -1, 0, {1, true}},
         }) {
        MediaInfo const info = probeMedia(turned(c.name + ".mp4"s, c.a, c.b, c.c, c.d));
        EXPECT_EQ(info.orientation, c.orientation) << c.name;
        EXPECT_EQ(info.displayWidth(), c.a != 0 ? countWidth : countHeight) << c.name;
    }
}

TEST(ProbeMedia, ReportsWhatIsWrongWithAFile)
{
    std::string const movie = contentsOf(smallMovie());
    std::string const noMedia = " is not a video, photo or audio file.";
    std::string const endMissing = " is incomplete or damaged: its end is missing.";
    std::string const tooLarge = " pixels; no side may be longer than 16384 pixels.";
    std::string const jpeg = contentsOf(
        madeWith("whole.jpg", numberedInput(1, "1") + Arguments{"-pix_fmt", "yuvj420p"}));
    fs::create_directory(testFolder() / "folder.mp4");
    ASSERT_EQ(::mkfifo((testFolder() / "pipe.mp4").c_str(), 0600), 0);

    struct Case {
        std::string name, content, ending;
        Cause cause;
    };
    for (
        Case const& c : {
            Case{"text.mp4", "Once upon a time there was a text.\n", noMedia, Cause::unsupported},
            Case{"page.mov", "<html><video src=\"small.mp4\"></html>", noMedia, Cause::unsupported},
            Case{"zeros.mp4", std::string(100000, '\0'), noMedia, Cause::unsupported},
            Case{"list.mp4",
                 "#EXTM3U\n#EXT-X-TARGETDURATION:2\n#EXTINF:2,\nsmall.mp4\n#EXT-X-ENDLIST\n",
                 noMedia, Cause::unsupported},
            Case{"concat.mp4", "ffconcat version 1.0\nfile small.mp4\n", noMedia,
                 Cause::unsupported},
            Case{"session.mp4",
                 "v=0\no=- 0 0 IN IP4 127.0.0.1\ns=x\nc=IN IP4 127.0.0.1\nt=0 0\n"
                 "m=video 5004 RTP/AVP 96\n",
                 noMedia, Cause::unsupported},
            Case{"manifest.mp4",
                 "<?xml version=\"1.0\"?><MPD xmlns=\"urn:mpeg:dash:schema:mpd:2011\" "
                 "profiles=\"urn:mpeg:dash:profile:isoff-live:2011\"></MPD>",
                 noMedia, Cause::unsupported},
            Case{"titles.mp4", "1\n00:00:00,000 --> 00:00:01,000\nHello\n", noMedia,
                 Cause::unsupported},
            Case{"empty.mp4", "", " is empty.", Cause::damaged},
            Case{"headless.mp4", movie.substr(movie.find("mdat") - 4),
                 " is incomplete or damaged: its index is missing.", Cause::damaged},
            Case{"cut in index.mp4", movie.substr(0, movie.find("stsz")),
                 " is incomplete or damaged: its index contradicts itself.", Cause::damaged},
            Case{"cut.jpg", jpeg.substr(0, jpeg.size() - 20), endMissing, Cause::damaged},
            Case{"huge.png", pngHeader(100000, 100000),
                 " claims a size of 100000 × 100000" + tooLarge, Cause::unsupported},
            Case{
                "huge.gif",
                "GIF89a\xFF\xFF\xFF\xFF\x80\0\0\0\0\0\xFF\xFF\xFF,\0\0\0\0\xFF\xFF\xFF\xFF\0\x02\x02\x4C\x01\0;"s,
                " claims a size of 65535 × 65535" + tooLarge, Cause::unsupported},
            Case{
                "huge.jpg",
                "\xFF\xD8\xFF\xC0\0\x0B\x08\xFF\xDC\xFF\xDC\x01\x01\x11\0\xFF\xDA\0\x08\x01\x01\0\0\x3F\0\0\xFF\xD9"s,
                " claims a size of 65500 × 65500" + tooLarge, Cause::unsupported},
        }) {
        auto const [sentence, cause] = errorOf([&] { probeMedia(fileOf(c.name, c.content)); });
        EXPECT_THAT(sentence, testing::StartsWith(c.name + " "));
        EXPECT_THAT(sentence, testing::EndsWith(c.ending));
        EXPECT_EQ(cause, c.cause) << sentence;
    }
    for (auto const& [name, ending, cause] :
         {std::tuple{"missing.mp4", " does not exist.", Cause::missing},
          std::tuple{"small.mp4/inside", " does not exist.", Cause::missing},
          std::tuple{"folder.mp4", " is a folder.", Cause::unsupported},
          std::tuple{"pipe.mp4", " is not a regular file.", Cause::unsupported}}) {
        fs::path const file = testFolder() / name;
        std::pair const expected{file.filename().string() + ending, cause};
        EXPECT_EQ(errorOf([&] { probeMedia(file); }), expected);
        EXPECT_EQ(errorOf([&] { VideoReader{file}; }), expected);
        EXPECT_EQ(errorOf([&] { AudioReader{file}; }), expected);
        EXPECT_EQ(errorOf([&] { readPhoto(file, 100); }), expected);
    }
    EXPECT_EQ(
        errorOf([&] { AudioReader{madeWith("mute.mp4", numberedInput(2, "25") + quickly)}; }).first,
        "mute.mp4 has no audio.");
    EXPECT_EQ(errorOf([&] { VideoReader{madeWith("tone.wav", tone)}; }).first,
              "tone.wav has no video.");
    EXPECT_EQ(errorOf([&] { readPhoto(smallMovie(), 100); }).first, "small.mp4 is not a photo.");
}

TEST(ProbeMedia, OpensFilesOfAnyName)
{
    for (std::string const name :
         {"with space.mp4", "quote\"'.mp4", "100%d.mp4", "new\nline.mp4",
          "emoji \xF0\x9F\x8E\xAC.mp4", "not utf8 \xFF\xC3.mp4", "a:b|c.mp4", "http:host.mp4", "-i",
          "concat:x|y", "pipe:0", "no ending", "movie.txt", "list.m3u8"}) {
        fs::path const file = testFolder() / "names" / name;
        fs::create_directories(file.parent_path());
        fs::copy_file(smallMovie(), file);
        EXPECT_EQ(probeMedia(file).kind, MediaKind::video) << name;
        EXPECT_EQ(numberIn(VideoReader(file).frameAt(0.5)), 12) << name;
        std::vector<float> audio(200);
        EXPECT_NO_THROW(AudioReader(file).read(1000, audio)) << name;

        fs::path const broken = fileOf("broken " + name, "text");
        std::string const sentence = errorOf([&] { probeMedia(broken); }).first;
        EXPECT_TRUE(isValidUtf8(sentence)) << sentence;
    }
}

TEST(ProbeMedia, CorruptBytesOnlyCauseErrors)
{
    std::mt19937 random(11);
    std::vector<fs::path> const whole = {
        smallMovie(),
        madeWith("small.mkv", {"-i", smallMovie(), "-c", "copy"}),
        madeWith("small.ts", {"-i", smallMovie(), "-c", "copy"}),
        madeWith("small.png", {"-i", smallMovie(), "-frames:v", "1"}),
        madeWith("small.gif", {"-i", smallMovie(), "-frames:v", "3"}),
        madeWith("small.webp", {"-i", smallMovie(), "-frames:v", "1"}),
    };
    for (int i = 0; i < 120; ++i) {
        std::string bytes = contentsOf(whole[std::size_t(i) % whole.size()]);
        for (int k = 0; k < 1 + i % 20; ++k)
            bytes[random() % bytes.size()] = char(random());
        if (i % 3 == 0)
            bytes.resize(random() % bytes.size());
        fs::path const file = fileOf("broken", bytes);
        std::vector<float> audio(2000);
        errorOf([&] { probeMedia(file); });
        errorOf([&] { readPhoto(file, 100); });
        errorOf([&] { AudioReader(file).read(40000, audio); });
        errorOf([&] {
            VideoReader reader(file, 2);
            for (double const time : {0.0, 0.9, 0.2, 5.0})
                errorOf([&] { reader.frameAt(time); });
        });
    }
}

TEST(ProbeMedia, RecognizesRealFiles)
{
    using enum MediaKind;
    struct Case {
        char const* name;
        MediaKind kind;
        int width, height;
        double duration;
        int channels;
        bool isHDR = false;
    };
    for (Case const& c : {
             Case{"video/alpha_200_vp9_vorbis.webm", video, 200, 200, 5.0, 2},
             Case{"video/car_topdown_768x432_12_5fps.mp4", video, 768, 432, 30.16, 2},
             Case{"video/children_540p30_noaudio.mp4", video, 960, 540, 6.6667, 0},
             Case{"video/drone_gopro_480p_fullrange_datatracks.mp4", video, 854, 480, 12.0787, 2},
             Case{"video/editlist_video_starts_1s.mp4", video, 1920, 1080, 10.005, 2},
             Case{"video/flower_540p_vp8_vorbis.webm", video, 960, 540, 5.059, 2},
             Case{"video/gen_mjpeg_360p30_pcm.avi", video, 640, 360, 3.003, 1},
             Case{"video/gen_odd_427x239_vp9_opus.webm", video, 427, 239, 3.01, 1},
             Case{"video/gen_portrait_1080x1920_rot90_speech.mp4", video, 1080, 1920, 11, 1},
             Case{"video/gen_prores422_720p30_pcm24.mov", video, 1280, 720, 0.8008, 1},
             Case{"video/gen_vfr_count_two_audio.mp4", video, 640, 480, 24.441, 1},
             Case{"video/iphone_hlg_1080p_rot90_dovi84_editlist.mp4", video, 1080, 1920, 2.5483, 2,
                  true},
             Case{"video/man_dog_720p_sound.mp4", video, 1280, 720, 4.9716, 2},
             Case{"video/phone_4k60_rot90_short.mp4", video, 2160, 3840, 0.3127, 2},
             Case{"video/phone_av1_pq10_720x1280.mp4", video, 720, 1280, 4.2376, 2, true},
             Case{"video/vfr_count_480p_noaudio.mp4", video, 640, 480, 24.457, 0},
             Case{"audio/aac_8k_mono.m4a", audio, 0, 0, 3.072, 1},
             Case{"audio/bear_48k_stereo.opus", audio, 0, 0, 2.74, 2},
             Case{"audio/music_guitar_mono.mp3", audio, 0, 0, 22.831, 1},
             Case{"audio/music_vibe_ace_cover.ogg", audio, 0, 0, 61.4589, 2},
             Case{"audio/pcm16_44k_stereo_1s.wav", audio, 0, 0, 1, 2},
             Case{"audio/speech_jfk.flac", audio, 0, 0, 11, 2},
             Case{"broken/mp3_named.png", audio, 0, 0, 22.831, 1},
             Case{"photo/alpha_paper.png", image, 1024, 768, 0, 0},
             Case{"photo/animated.gif", image, 370, 285, 0, 0},
             Case{"photo/exif3_landscape.jpg", image, 1800, 1200, 0, 0},
             Case{"photo/exif6_portrait.jpg", image, 1200, 1800, 0, 0},
             Case{"photo/iphone_rot90.heic", image, 3024, 4032, 0, 0},
             Case{"photo/tree.webp", image, 1024, 772, 0, 0},
         }) {
        fs::path const file = sharedMedia(c.name);
        if (file.empty())
            GTEST_SKIP() << "The shared media are not on this machine.";
        MediaInfo const info = probeMedia(file);
        EXPECT_EQ(info.kind, c.kind) << c.name;
        EXPECT_EQ(info.displayWidth(), c.width) << c.name;
        EXPECT_EQ(info.displayHeight(), c.height) << c.name;
        EXPECT_NEAR(info.duration, c.duration, 0.0006) << c.name;
        EXPECT_EQ(info.channels, c.channels) << c.name;
        EXPECT_EQ(info.isHDR, c.isHDR) << c.name;
    }
    EXPECT_EQ(errorOf([] { probeMedia(sharedMedia("broken/text_renamed.mp4")); }).first,
              "text_renamed.mp4 is not a video, photo or audio file.");
    EXPECT_EQ(errorOf([] { readPhoto(sharedMedia("broken/truncated.jpg"), 500); }).first,
              "truncated.jpg is incomplete or damaged: its end is missing.");
    EXPECT_EQ(readPhoto(sharedMedia("photo/iphone_rot90.heic"), 1000).height(), 1000);
}

} // namespace framewright
