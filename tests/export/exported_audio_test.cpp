#include "composition/composition_builder.h"
#include "export/exporter.h"
#include "media/audio_reader.h"
#include "pipeline/audio_mixer.h"
#include "pipeline/clip_audio_source.h"
#include "rendering/made_media.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>

namespace framewright {

namespace {

constexpr int rate = AudioReader::sampleRate;
constexpr int window = rate / 100; ///< 10 ms: whole periods of both tones.
constexpr double bedTone = 1000, voiceTone = 3000;

class ExportedSound : public MadeMedia {
protected:
    Id tone(double frequency, double amplitude, int seconds)
    {
        return loaded(made("-f lavfi -i \"aevalsrc='" + std::to_string(amplitude) + "*sin(2*PI*t*" +
                               std::to_string(frequency) +
                               ")':s=48000:d=" + std::to_string(seconds) + "\"",
                           std::to_string(int(frequency)) + ".wav"));
    }
};

/// The amplitude of one tone in each window of the left side.
std::vector<double> amplitudes(std::vector<float> const& sound, double frequency)
{
    std::vector<double> found;
    for (std::size_t first = 0; first + window <= sound.size() / 2; first += window) {
        std::complex<double> sum;
        for (std::size_t n = first; n < first + window; ++n)
            sum += double(sound[2 * n]) *
                   std::polar(1.0, -2 * std::numbers::pi * frequency * double(n) / rate);
        found.push_back(2 * std::abs(sum) / window);
    }
    return found;
}

double decibels(double gain)
{
    return 20 * std::log10(std::max(gain, 1e-9));
}

/// A bed that makes room for a voice from 2 to 5 s.
double duckedGain(double time)
{
    double const ramp = time < 3.5 ? (time - 1.75) / 0.25 : (5.25 - time) / 0.25;
    return 1 - 0.75 * std::clamp(ramp, 0.0, 1.0);
}

} // namespace

TEST_F(ExportedSound, MakesRoomForAVoiceAsFastAndAsMuchAsPromised)
{
    Id const picture = loaded(made(
        "-f lavfi -i color=gray:s=32x32:r=24:d=10 -c:v libx264 -pix_fmt yuv420p", "picture.mp4"));
    Track bed = audioTrack({clip(tone(bedTone, 0.5, 10), 0, 10)});
    bed.ducks = true;
    Track const voice = audioTrack({clip(tone(voiceTone, 0.2, 3), 2, 3)});
    Project const piece = project({videoTrack({clip(picture, 0, 10)}), bed, voice});
    ExportResult const result =
        Exporter(piece, assets, burner, {.file = folder / "out.mp4", .height = 64}).run();

    std::vector<float> sound(std::size_t(result.duration * rate) * 2);
    AudioReader(result.file).read(0, sound);
    std::vector<double> const levels = amplitudes(sound, bedTone);
    ASSERT_EQ(levels.size(), 1000u);
    constexpr double within = 0.010, decibel = 0.5;
    // The ends are faded against clicks, and the encoder takes a moment to begin.
    for (std::size_t n = 3; n + 1 < levels.size(); ++n) {
        double const time = (double(n) + 0.5) * window / rate;
        auto const [low, high] =
            std::minmax({duckedGain(time - within), duckedGain(time), duckedGain(time + within)});
        double const level = decibels(levels[n] / 0.5);
        EXPECT_GE(level, decibels(low) - decibel) << "at " << time;
        EXPECT_LE(level, decibels(high) + decibel) << "at " << time;
    }
    std::vector<double> const voiced = amplitudes(sound, voiceTone);
    EXPECT_NEAR(decibels(voiced[350] / 0.2), 0, decibel);
    EXPECT_LT(voiced[198], 0.02) << "not before 2 s";
    EXPECT_LT(voiced[501], 0.02) << "not after 5 s";
}

TEST_F(ExportedSound, IsReadOnceHoweverMuchPlaysAtATime)
{
    Id const source = tone(440, 0.01, 8);
    Clip const whole = clip(source, 0, 3);
    /// How often something is read of a piece that is mixed from beginning to end.
    auto const readings = [&](std::vector<Track> tracks) {
        auto const built =
            CompositionBuilder::build(project(std::move(tracks)), assets, {{1080, 1920}, 30});
        int count = 0;
        ClipAudioSource files([&] { ++count; });
        AudioMixer mixer(built, files);
        std::vector<float> block(2 * rate / 30);
        for (std::int64_t first = 0; first < 3 * rate; first += rate / 30)
            mixer.mix(first, block);
        return count;
    };
    std::vector<Track> many;
    for (int n = 0; n < 40; ++n)
        many.push_back(audioTrack({whole}));
    int const one = readings({audioTrack({whole})});
    struct Case {
        char const* name;
        std::vector<Track> tracks;
        int sounds;
    };
    for (Case const& c : {
             Case{"many tracks", many, 40},
             Case{"overlapping on one track",
                  {audioTrack({whole, clip(source, 0.5, 2, 4), clip(source, 1, 1, 6)})},
                  3},
             Case{"cut", {audioTrack({clip(source, 0, 1), clip(source, 1, 2, 1)})}, 1},
         })
        EXPECT_LE(readings(c.tracks), c.sounds * (one + one / 10)) << c.name;
}

TEST_F(ExportedSound, ClosesFilesThatHavePlayed)
{
    Id const first = tone(440, 0.01, 1);
    std::vector<Clip> clips;
    for (int n = 0; n < 60; ++n) {
        LoadedAsset copy = *assets.find(first);
        copy.file = folder / (std::to_string(n) + ".wav");
        std::filesystem::create_hard_link(folder / "440.wav", copy.file);
        Id const id = Id::random();
        assets.insert(id, copy);
        clips.push_back(clip(id, n, 1));
    }
    auto const built =
        CompositionBuilder::build(project({audioTrack(clips)}), assets, {{1080, 1920}, 30});
    auto const openFiles = [] {
        return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
    };
    auto const before = openFiles();
    ClipAudioSource files;
    AudioMixer mixer(built, files);
    std::vector<float> block(rate);
    for (std::int64_t sample = 0; sample < 60 * rate; sample += rate / 2)
        mixer.mix(sample, block);
    EXPECT_LT(openFiles(), before + 30);
}

} // namespace framewright
