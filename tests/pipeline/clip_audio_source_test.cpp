#include "pipeline/internal/clip_audio_source.h"

#include "composition/composition_builder.h"
#include "pipeline/internal/audio_mixer.h"
#include "rendering/made_media.h"

#include <gtest/gtest.h>

namespace framewright {

namespace {

constexpr int rate = AudioReader::sampleRate;

class ClipAudio : public MadeMedia {
protected:
    Id tone(double frequency, double amplitude, int seconds)
    {
        return loaded(made("-f lavfi -i \"aevalsrc='" + std::to_string(amplitude) + "*sin(2*PI*t*" +
                               std::to_string(frequency) +
                               ")':s=48000:d=" + std::to_string(seconds) + "\"",
                           std::to_string(int(frequency)) + ".wav"));
    }
};

} // namespace

TEST_F(ClipAudio, IsReadOnceHoweverMuchPlaysAtATime)
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

TEST_F(ClipAudio, ClosesFilesThatHavePlayed)
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
