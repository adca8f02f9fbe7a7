#include "export/exporter.h"

#include "media/audio_reader.h"
#include "media/media_error.h"
#include "media/video_reader.h"
#include "rendering/made_media.h"
#include "rendering/synthetic_frames.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <latch>
#include <memory>

namespace framewright {

namespace {

using testing::HasSubstr;

class ExportedMovie : public MadeMedia {
protected:
    /// Black, with a white frame and a beep at the beginning of each second but the first.
    std::filesystem::path flashes(std::string const& rate = "30")
    {
        return made(
            "-f lavfi -i \"color=black:s=320x240:r=" + rate +
                ":d=6,drawbox=c=white:t=fill:enable='gte(t,0.9)*lt(mod(t+0.001,1),0.03)'\""
                " -f lavfi -i "
                "\"aevalsrc='if(gte(t,0.9)*lt(mod(t,1),0.05),0.8*sin(2*PI*1000*t),0)':s=44100:d=6\""
                " -c:v libx264 -preset ultrafast -pix_fmt yuv420p -c:a aac",
            "flashes.mp4");
    }

    ExportResult exported(Project const& piece, ExportSettings settings = {})
    {
        settings.file = folder / "out.mp4";
        if (!settings.height)
            settings.height = 480;
        return Exporter(piece, assets, burner, settings).run();
    }

    /// When the middle of the picture turns white, and when the sound sets in. Seconds.
    struct Found {
        std::vector<double> flashes;
        std::vector<double> beeps;
    };

    static Found found(ExportResult const& result)
    {
        Found found;
        VideoReader video(result.file);
        for (int n = 0; n < result.frames; ++n) {
            double const time = double(n) / result.framesPerSecond;
            Frame const frame = video.frameAt(time);
            if (sample(frame, 0, frame.width() / 2, frame.height() / 2) > 120)
                found.flashes.push_back(time);
        }
        AudioReader audio(result.file);
        std::vector<float> sound(std::size_t(result.duration * 48000) * 2);
        audio.read(0, sound);
        double quietSince = 0;
        for (std::size_t n = 0; n < sound.size(); n += 2) {
            double const time = double(n / 2) / 48000;
            if (std::abs(sound[n]) < 0.2)
                continue;
            if (time - quietSince > 0.2)
                found.beeps.push_back(time);
            quietSince = time;
        }
        return found;
    }
};

std::string sentenceOf(std::function<void()> const& action, ExportError::Cause cause)
{
    try {
        action();
    } catch (ExportError const& error) {
        EXPECT_EQ(error.cause, cause) << error.what();
        return error.what();
    }
    return "";
}

} // namespace

TEST_F(ExportedMovie, KeepsPictureAndSoundTogether)
{
    struct Case {
        char const* name;
        char const* rate;
        std::optional<double> start, end;
        int frames;
        std::vector<double> times;
    };
    for (Case const& c : {
             Case{"whole", "30", {}, {}, 105, {0.5, 1.5, 2.75}},
             Case{"a part", "30", 0.7, 2.9, 66, {0.8, 2.05}},
             Case{"film", "24", {}, {}, 84, {0.5, 1.5, 2.75}},
             Case{"NTSC", "30000/1001", {}, {}, 105, {0.5, 1.5, 2.75}},
             Case{"beyond both ends", "30", -3, 99, 105, {0.5, 1.5, 2.75}},
         }) {
        Id const id = loaded(flashes(c.rate));
        Project const piece = project({videoTrack({clip(id, 0, 2, 0.5), clip(id, 2, 1.5, 3.25)})});
        ExportResult const result = exported(piece, {.start = c.start, .end = c.end});
        double const frame = 1.0 / result.framesPerSecond;
        EXPECT_EQ(result.frames, c.frames) << c.name;
        EXPECT_NEAR(result.duration, c.frames * frame, 1e-9) << c.name;
        EXPECT_EQ(result.size, (PixelSize{270, 480})) << c.name;

        Found const seen = found(result);
        ASSERT_EQ(seen.flashes.size(), c.times.size()) << c.name;
        ASSERT_EQ(seen.beeps.size(), c.times.size()) << c.name;
        for (std::size_t n = 0; n < c.times.size(); ++n) {
            EXPECT_NEAR(seen.flashes[n], c.times[n], frame + 0.001) << c.name;
            EXPECT_NEAR(seen.beeps[n], c.times[n], 0.005) << c.name;
        }
    }
}

TEST_F(ExportedMovie, IsTaggedAndAsLongAsItSays)
{
    Id const id = loaded(flashes());
    ExportResult const result =
        exported(project({videoTrack({clip(id, 0, 1.21)}), audioTrack({clip(id, 0, 5)})}));
    EXPECT_EQ(result.frames, 36);
    std::string const facts =
        probed(result.file,
               "stream=codec_name,width,height,pix_fmt,color_range,color_space,color_transfer,"
               "color_primaries,nb_frames,r_frame_rate,sample_rate,channels,duration");
    for (char const* const fact :
         {"codec_name=h264", "width=270", "height=480", "pix_fmt=yuv420p\n", "color_range=tv",
          "color_space=bt709", "color_transfer=bt709", "color_primaries=bt709", "nb_frames=36",
          "r_frame_rate=30/1", "codec_name=aac", "sample_rate=48000", "channels=2",
          "duration=1.200000\n"})
        EXPECT_THAT(facts, HasSubstr(fact));
    EXPECT_NEAR(probeMedia(result.file).duration, 1.2,
                0.002); // The sound doesn't outlast the picture.
}

TEST_F(ExportedMovie, OfAPictureMuchShorterThanAFrameHasOne)
{
    Id const id = loaded(flashes());
    ExportResult const result =
        exported(project({videoTrack({clip(id, 0, 2)})}), {.start = 1, .end = 1.01});
    EXPECT_EQ(result.frames, 1);
    EXPECT_EQ(found(result).flashes.size(), 1u);
}

TEST_F(ExportedMovie, IsLeftOnlyWhenItIsComplete)
{
    Id const id = loaded(flashes());
    Project const piece = project({videoTrack({clip(id, 0, 5)})});
    auto const target = folder / "out.mp4";
    std::ofstream(target) << "what stood there before";
    auto const isUntouched = [&](std::size_t files) {
        std::string text;
        std::getline(std::ifstream(target), text);
        return text == "what stood there before" && filesInFolder() == files;
    };

    std::stop_source stop;
    std::vector<double> progress;
    auto const cancelledAt = [&](double fraction) {
        return sentenceOf(
            [&] {
                Exporter(piece, assets, burner, {.file = target, .height = 480})
                    .run(
                        [&](double done, std::string_view) {
                            progress.push_back(done);
                            if (done >= fraction)
                                stop.request_stop();
                        },
                        stop.get_token());
            },
            ExportError::Cause::cancelled);
    };
    EXPECT_EQ(cancelledAt(0.3), "The export was cancelled.");
    EXPECT_LT(progress.back(), 0.4);
    EXPECT_TRUE(std::ranges::is_sorted(progress));
    EXPECT_TRUE(isUntouched(2));

    std::filesystem::remove(folder / "flashes.mp4");
    std::string const sentence =
        sentenceOf([&] { Exporter(piece, assets, burner, {.file = target, .height = 480}).run(); },
                   ExportError::Cause::media);
    EXPECT_THAT(sentence, HasSubstr("clip 1 on Video"));
    EXPECT_THAT(sentence, HasSubstr("flashes.mp4"));
    EXPECT_TRUE(isUntouched(1));
}

TEST_F(ExportedMovie, IsCancelledOnTheWayToAFarPicture)
{
    auto const file =
        made("-f lavfi -i testsrc=s=320x240:r=30:d=10 -c:v libx264 -preset ultrafast -g 1000"
             " -pix_fmt yuv420p -movflags +faststart",
             "one keyframe.mp4");
    Id const id = loaded(file);
    // Whoever reads as far as the wanted picture finds that it is missing.
    std::filesystem::resize_file(file, std::filesystem::file_size(file) * 9 / 10);
    Project const piece = project({videoTrack({clip(id, 0, 0.5, 9.5)})});
    auto const ending = [&](std::stop_source stop, ExportError::Cause cause) {
        ExportSettings const settings{.file = folder / "out.mp4", .height = 480};
        return sentenceOf(
            [&] {
                Exporter(piece, assets, burner, settings)
                    .run([&](double, std::string_view) { stop.request_stop(); }, stop.get_token());
            },
            cause);
    };
    EXPECT_EQ(ending(std::stop_source(), ExportError::Cause::cancelled),
              "The export was cancelled.");
    EXPECT_THAT(ending(std::stop_source(std::nostopstate), ExportError::Cause::media),
                HasSubstr("cannot be decoded"));
}

TEST_F(ExportedMovie, NeedsARangeAndAPlace)
{
    Id const id = loaded(flashes());
    Project const piece = project({videoTrack({clip(id, 0, 2)})});
    auto const sentence = [&](Project const& which, ExportSettings settings,
                              ExportError::Cause cause) {
        settings.file = settings.file.empty() ? folder / "out.mp4" : settings.file;
        return sentenceOf([&] { Exporter(which, assets, burner, settings).run(); }, cause);
    };
    constexpr auto empty = ExportError::Cause::emptyRange;
    EXPECT_EQ(sentence(newProject(), {}, empty), "The range is empty.");
    EXPECT_EQ(sentence(piece, {.start = 2}, empty), "The range is empty.");
    EXPECT_EQ(sentence(piece, {.start = 1.5, .end = 1}, empty), "The range is empty.");
    EXPECT_EQ(sentence(project({audioTrack({clip(id, 0, 2)})}), {}, empty), "The range is empty.");
    EXPECT_NE(sentence(piece, {.file = folder / "nowhere" / "out.mp4"}, ExportError::Cause::media),
              "");
    EXPECT_EQ(filesInFolder(), 1u);
}

TEST_F(ExportedMovie, KeepsHDRAndPutsTheRestAtReferenceWhite)
{
    auto const wide = [&](std::string const& transfer, int luma) {
        return loaded(made("-f lavfi -i color=black:s=270x480:r=30:d=1 -vf "
                           "\"format=yuv420p10le,geq=lum=" +
                               std::to_string(luma) +
                               ":cb=512:cr=512\" -c:v libx265 -preset ultrafast -x265-params "
                               "log-level=none:colorprim=bt2020:colormatrix=bt2020nc:transfer=" +
                               transfer,
                           transfer + ".mp4"));
    };
    auto const standard = [&](std::string const& name, int luma) {
        return loaded(made("-f lavfi -i color=black:s=270x480:r=30:d=1 -vf "
                           "\"format=yuv420p,geq=lum=" +
                               std::to_string(luma) +
                               ":cb=128:cr=128\" -c:v libx264 -preset ultrafast "
                               "-colorspace bt709 -color_primaries bt709 -color_trc bt709",
                           name));
    };
    Project const piece = project({videoTrack(
        {clip(wide("arib-std-b67", 500), 0, 0.5), clip(standard("white.mp4", 235), 0.5, 0.5),
         clip(standard("grey.mp4", 106), 1, 0.5), clip(wide("smpte2084", 573), 1.5, 0.5)})});
    auto const lumaAt = [](ExportResult const& result, double time) {
        VideoReader reader(result.file);
        Frame const frame = reader.frameAt(time);
        return sample(frame, 0, frame.width() / 2, frame.height() / 2);
    };
    std::string const entries = "stream=codec_name,codec_tag_string,pix_fmt,color_space,"
                                "color_transfer,color_primaries";

    ExportResult const full = exported(piece);
    std::string const facts = probed(full.file, entries);
    for (char const* const fact :
         {"codec_name=hevc", "codec_tag_string=hvc1", "pix_fmt=yuv420p10le", "color_space=bt2020nc",
          "color_transfer=arib-std-b67", "color_primaries=bt2020"})
        EXPECT_THAT(facts, HasSubstr(fact));
    constexpr int white = 64 + 876 * 3 / 4;
    // Through light: BT.1886, 203 of 1000 cd/m², the inverse of HLG's gamma, its square root.
    double const light = std::pow((106 - 16) / 219.0, 2.4) * 0.203;
    int const grey = 64 + int(876 * std::sqrt(3 * std::pow(light, 1 / 1.2)));
    EXPECT_NEAR(lumaAt(full, 0.25), 500, 6);
    EXPECT_NEAR(lumaAt(full, 0.75), white, 6);
    EXPECT_NEAR(lumaAt(full, 1.25), grey, 6);
    EXPECT_NEAR(lumaAt(full, 1.75), white, 6);

    ExportResult const preview = exported(piece, {.quality = ExportSettings::Quality::preview});
    std::string const quick = probed(preview.file, entries);
    for (char const* const fact : {"codec_name=h264", "pix_fmt=yuv420p\n", "color_transfer=bt709"})
        EXPECT_THAT(quick, HasSubstr(fact));
    EXPECT_NEAR(lumaAt(preview, 0.75), 235, 2);
    EXPECT_NEAR(lumaAt(preview, 1.25), 106, 2);
    EXPECT_NEAR(lumaAt(preview, 1.75), 16 + 219 * 0.75, 4);
}

TEST_F(ExportedMovie, IsCheckedBeforeAndAfter)
{
    Id const id = loaded(flashes());
    Project const piece = project({videoTrack({clip(id, 0, 1)})});
    auto const target = folder / "out.mp4";
    std::ofstream(target) << "what stood there before";
    auto const sentence = [&](ExportSurroundings const& surroundings, ExportError::Cause cause) {
        return sentenceOf(
            [&] {
                Exporter(piece, assets, burner, {.file = target, .height = 480}, surroundings)
                    .run();
            },
            cause);
    };

    ExportSurroundings full;
    full.freeSpace = [&](std::filesystem::path const& where) {
        EXPECT_EQ(where, folder);
        return std::uintmax_t(100'000);
    };
    EXPECT_THAT(sentence(full, ExportError::Cause::noSpace), HasSubstr("only 1 MB are free"));

    ExportSurroundings wrong;
    wrong.probe = [](std::filesystem::path const& file) {
        MediaInfo info = probeMedia(file);
        info.duration /= 2;
        return info;
    };
    EXPECT_THAT(sentence(wrong, ExportError::Cause::wrongFile), HasSubstr("it lasts 0.500 s"));

    ExportSurroundings lost;
    lost.probe = [](std::filesystem::path const&) -> MediaInfo {
        throw MediaError(MediaError::Cause::damaged, "It can't be read back.");
    };
    EXPECT_EQ(sentence(lost, ExportError::Cause::media), "It can't be read back.");

    std::string text;
    std::getline(std::ifstream(target), text);
    EXPECT_EQ(text, "what stood there before");
    EXPECT_EQ(filesInFolder(), 2u);
}

TEST_F(ExportedMovie, IsGivenUpWhenItHangs)
{
    Id const id = loaded(flashes());
    Project const piece = project({videoTrack({clip(id, 0, 1)})});
    struct Shared { // With what hangs, which outlives the export.
        std::latch isChecked{1}, mayGoOn{1}, hasGoneOn{1};
        std::chrono::steady_clock::time_point time;
    };
    auto const shared = std::make_shared<Shared>();
    ExportSurroundings hanging;
    hanging.probe = [shared](std::filesystem::path const& file) {
        shared->isChecked.count_down();
        shared->mayGoOn.wait();
        MediaInfo const info = probeMedia(file);
        shared->hasGoneOn.count_down();
        return info;
    };
    hanging.stall.lookEvery = std::chrono::milliseconds(1);
    hanging.stall.now = [shared] { // Time passes only while the file is being checked.
        if (shared->isChecked.try_wait())
            shared->time += std::chrono::seconds(1);
        return shared->time;
    };
    std::string const sentence = sentenceOf(
        [&] {
            Exporter(piece, assets, burner, {.file = folder / "out.mp4", .height = 480}, hanging)
                .run();
        },
        ExportError::Cause::stalled);
    EXPECT_THAT(sentence, HasSubstr("checking the file made no progress for 30 seconds"));
    shared->mayGoOn.count_down();
    shared->hasGoneOn.wait();
    EXPECT_FALSE(std::filesystem::exists(folder / "out.mp4"));
}

TEST_F(ExportedMovie, HasTheSizeThatWasAskedFor)
{
    struct Case {
        AspectPreset aspect;
        ExportSettings settings;
        PixelSize size;
    };
    using enum ExportSettings::Quality;
    for (Case const& c : {
             Case{AspectPreset::portrait, {}, {1080, 1920}},
             Case{AspectPreset::portrait, {.quality = preview}, {540, 960}},
             Case{AspectPreset::landscape, {.quality = preview}, {960, 540}},
             Case{AspectPreset::square, {.quality = preview}, {960, 960}},
             Case{AspectPreset::fourFive, {.quality = preview}, {768, 960}},
             Case{AspectPreset::portrait, {.height = 1440}, {810, 1440}},
             Case{AspectPreset::portrait, {.height = 1080}, {608, 1080}},
             Case{AspectPreset::landscape, {.height = 720}, {1280, 720}},
             Case{AspectPreset::portrait, {.height = 481, .quality = preview}, {270, 482}},
         }) {
        Project piece;
        piece.aspect = c.aspect;
        EXPECT_EQ(Exporter(piece, {}, testBurner(), c.settings).size(), c.size)
            << ratioName(c.aspect);
    }
}

} // namespace framewright
