#include "pipeline/internal/audio_mixer.h"

#include "composition/composition_builder.h"
#include "rendering/project_making.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace framewright {

namespace {

constexpr int rate = AudioMixer::sampleRate;
constexpr int fadeLength = rate * 3 / 1000;

using Sound = float (*)(std::int64_t sample);

float constant(std::int64_t)
{
    return 0.5f;
}

/// Tells the sample of the source it came from.
float counted(std::int64_t sample)
{
    return float(sample % 4096) / 8192;
}

float noise(std::int64_t sample)
{
    return float(std::sin(double(sample) * sample));
}

/// Left as computed, right its negative.
class ComputedSound : public AudioSource {
public:
    Sound sound = constant;
    int reads = 0;

    void read(CompositionTrackID, CompositionSegment const&, std::int64_t first,
              std::span<float> interleaved) override
    {
        ++reads;
        for (std::size_t n = 0; n < interleaved.size(); n += 2) {
            interleaved[n] = sound(first + std::int64_t(n / 2));
            interleaved[n + 1] = -interleaved[n];
        }
    }
};

struct Piece {
    BuiltComposition composition;
    ComputedSound source;

    Piece(Project const& project, Sound sound)
        : composition(CompositionBuilder::build(project, store(), {{1080, 1920}, 30}))
    {
        source.sound = sound;
    }

    std::vector<float> mixed(std::int64_t first, std::int64_t count)
    {
        // A frame's worth at a time, as in an export.
        constexpr std::int64_t step = rate / 30;
        std::vector<float> samples(std::size_t(count) * 2);
        AudioMixer mixer(composition, source);
        for (std::int64_t n = 0; n < count; n += step)
            mixer.mix(first + n,
                      std::span(samples).subspan(std::size_t(n) * 2,
                                                 std::size_t(std::min(step, count - n)) * 2));
        return samples;
    }
};

float edge(int samplesFromEdge)
{
    return (float(samplesFromEdge) + 0.5f) / fadeLength;
}

} // namespace

TEST(Mixer, ClipsBeginAndEndOnTheirSample)
{
    Piece piece(project({audioTrack({clip(music, 1, 2, 0.5)})}), constant);
    auto const samples = piece.mixed(0, 4 * rate);
    struct Case {
        std::int64_t sample;
        float value;
    };
    for (Case const& c : {
             Case{0, 0},
             Case{rate - 1, 0},
             Case{rate, 0.5f * edge(0)},
             Case{rate + 1, 0.5f * edge(1)},
             Case{rate + fadeLength - 1, 0.5f * edge(fadeLength - 1)},
             Case{rate + fadeLength, 0.5f},
             Case{2 * rate, 0.5f},
             Case{3 * rate - 1, 0.5f * edge(0)},
             Case{3 * rate - fadeLength - 1, 0.5f},
             Case{3 * rate, 0},
             Case{4 * rate - 1, 0},
         }) {
        EXPECT_FLOAT_EQ(samples[std::size_t(c.sample) * 2], c.value) << c.sample;
        EXPECT_FLOAT_EQ(samples[std::size_t(c.sample) * 2 + 1], -c.value) << c.sample;
    }
}

TEST(Mixer, PlaysTheSourceFromTheInPoint)
{
    Piece piece(project({audioTrack({clip(music, 0.25, 1, 3.125)})}), counted);
    auto const samples = piece.mixed(0, rate);
    for (int n : {1000, 5000, 20000})
        EXPECT_EQ(samples[std::size_t(rate / 4 + n) * 2], counted(rate * 25 / 8 + n)) << n;
}

TEST(Mixer, OnlyJumpsAreFaded)
{
    struct Case {
        char const* name;
        Clip second;
        bool isFaded;
    };
    for (Case const& c : {
             Case{"goes on", clip(music, 1, 1, 6), false},
             Case{"jumps", clip(music, 1, 1, 6.001), true},
             Case{"jumps back", clip(music, 1, 1, 5), true},
             Case{"other file", clip(camera, 1, 1, 6), true},
             Case{"later", clip(music, 1.005, 1, 6.005), true},
         }) {
        Piece piece(project({audioTrack({clip(music, 0, 1, 5), c.second})}), constant);
        auto const samples = piece.mixed(0, 2 * rate);
        EXPECT_FLOAT_EQ(samples[(rate - 1) * 2], c.isFaded ? 0.5f * edge(0) : 0.5f) << c.name;
        auto const start = std::size_t(std::lround(c.second.timelineStart * rate));
        EXPECT_FLOAT_EQ(samples[start * 2], c.isFaded ? 0.5f * edge(0) : 0.5f) << c.name;
    }
}

TEST(Mixer, LevelsThatJumpWhereAClipGoesOnDontClick)
{
    struct Case {
        float first, second;
    };
    for (Case const& c :
         {Case{1, 0}, Case{0, 1}, Case{1, 0.25f}, Case{0.5f, 1.5f}, Case{0, 0}, Case{1, 1}}) {
        std::vector<Clip> halves = {clip(music, 0, 1), clip(music, 1, 1, 1)};
        halves[0].volume = c.first;
        halves[1].volume = c.second;
        Piece piece(project({audioTrack(halves)}), constant);
        auto const samples = piece.mixed(0, 2 * rate);
        float const loudest = 0.5f * std::max(c.first, c.second);
        for (std::size_t n = rate / 2; n < rate * 3 / 2; ++n) {
            float const level = 0.5f * (n < rate ? c.first : c.second);
            // Only the louder one is faded: what is silenced is so from its first sample on.
            bool const mayFade = n < rate ? n >= rate - fadeLength && c.first > c.second
                                          : n < rate + fadeLength && c.second > c.first;
            ASSERT_TRUE(mayFade || samples[2 * n] == level) << c.first << ", " << c.second << n;
            ASSERT_LE(std::abs(samples[2 * n] - samples[2 * n - 2]), loudest / 100) << n;
        }
    }
}

TEST(Mixer, ClipsOfOneTrackMayOverlap)
{
    // As in documents that other programs wrote: each is heard, at its own level.
    Clip quiet = clip(camera, 1, 1, 3);
    quiet.volume = 0.5f;
    Track bed = audioTrack({clip(music, 0, 8, 20), quiet, clip(music, 8, 1, 28)});
    bed.ducks = true;
    Piece piece(project({bed, audioTrack({clip(unloaded, 5, 2)})}), constant);
    auto const samples = piece.mixed(0, 9 * rate);
    struct Case {
        double time;
        float level;
    };
    for (Case const& c : {Case{0.5, 1}, Case{1.5, 1.5f}, Case{2.5, 1}, Case{4.875, 0.625f},
                          Case{6, 0.25f}, Case{7.5, 1}, Case{8 - 1.0 / rate, 1}, Case{8, 1}})
        EXPECT_FLOAT_EQ(samples[std::size_t(std::lround(c.time * rate)) * 2], 0.5f * c.level)
            << c.time;
}

TEST(Mixer, LevelsFollowTheMix)
{
    Track bed = audioTrack({clip(music, 0, 10)});
    bed.ducks = true;
    bed.volume = 0.8f;
    Piece piece(project({bed, audioTrack({clip(unloaded, 2, 3)})}), constant);
    auto const samples = piece.mixed(0, 10 * rate);
    struct Case {
        double time;
        float level;
    };
    for (Case const& c : {Case{1, 0.8f}, Case{1.875, 0.5f}, Case{2.5, 0.2f}, Case{4.9, 0.2f},
                          Case{5.125, 0.5f}, Case{6, 0.8f}})
        EXPECT_NEAR(samples[std::size_t(c.time * rate) * 2], 0.5 * c.level, 1e-6) << c.time;
}

TEST(Mixer, TracksAddUpAndPeaksAreBent)
{
    auto const levelOf = [](std::vector<float> const& volumes) {
        std::vector<Track> tracks;
        for (float const volume : volumes) {
            tracks.push_back(audioTrack({clip(music, 0, 1)}));
            tracks.back().volume = volume;
        }
        Piece piece(project(tracks), constant);
        return piece.mixed(rate / 2, 1)[0];
    };
    EXPECT_FLOAT_EQ(levelOf({1, 0.5f}), 0.75f);
    EXPECT_FLOAT_EQ(levelOf({1, 0.8f}), 0.9f);
    float last = 0.9f;
    for (float const volume : {0.85f, 0.9f, 1.0f, 1.05f}) {
        float const level = levelOf({1, volume});
        EXPECT_GT(level, last) << volume;
        EXPECT_LT(level, 1) << volume;
        EXPECT_LE(level, 0.5f + 0.5f * volume) << volume;
        last = level;
    }
    EXPECT_LE(levelOf({1.5f, 1.5f, 1.5f, 1.5f, 1.5f}), 1);
}

TEST(Mixer, BlocksDontMatter)
{
    std::mt19937 random(3);
    std::vector<Clip> clips;
    for (int n = 0; n < 12; ++n)
        clips.push_back(
            clip(n % 3 ? music : camera, n * 0.21, 0.1 + (n % 4) * 0.03, n % 2 ? n : n * 0.21));
    Track bed = audioTrack({clip(music, 0, 3)});
    bed.ducks = true;
    Piece piece(project({bed, audioTrack(clips)}), noise);
    auto const whole = piece.mixed(0, 3 * rate);

    AudioMixer mixer(piece.composition, piece.source);
    std::vector<float> blocks;
    while (blocks.size() < whole.size()) {
        std::vector<float> block(
            std::min<std::size_t>(2 + 2 * (random() % 3000), whole.size() - blocks.size()));
        mixer.mix(std::int64_t(blocks.size() / 2), block);
        blocks.insert(blocks.end(), block.begin(), block.end());
    }
    EXPECT_EQ(blocks, whole);
    EXPECT_EQ(piece.mixed(rate, rate),
              std::vector<float>(whole.begin() + 2 * rate, whole.begin() + 4 * rate));
}

TEST(Mixer, SilentTracksAreNotRead)
{
    Track muted = audioTrack({clip(music, 0, 1)});
    muted.isMuted = true;
    Piece piece(project({muted}), constant);
    EXPECT_EQ(piece.mixed(0, rate), std::vector<float>(2 * rate, 0.0f));
    EXPECT_EQ(piece.source.reads, 0);
}

} // namespace framewright
