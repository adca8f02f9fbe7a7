#include "media/audio_reader.h"

#include "media/bytes.h"
#include "media/made_media.h"
#include "media/media_error.h"

#include <gmock/gmock.h>

#include <cmath>
#include <fstream>
#include <numbers>
#include <random>

namespace framewright {

namespace fs = std::filesystem;
using Arguments = std::vector<std::string>;

namespace {

constexpr double length = 5;

/// The decoder substitutes noise, which differs each time.
constexpr double aacTolerance = 1e-3;

/// A rising tone: no two moments are alike, so any shift shows.
double toneAt(double seconds)
{
    if (seconds < 0 || seconds >= length)
        return 0;
    return 0.5 * std::sin(2 * std::numbers::pi * (150 * seconds + 250 * seconds * seconds));
}

/// The tone as ffmpeg input, inverted in the right channel.
Arguments toneInput(int rate, int channels = 2)
{
    fs::path const file =
        testFolder() / ("tone " + std::to_string(rate) + " " + std::to_string(channels));
    if (!fs::exists(file)) {
        std::ofstream out(file, std::ios::binary);
        for (int n = 0; n < int(length * rate); ++n) {
            for (int channel = 0; channel < channels; ++channel) {
                auto const sample = float(toneAt(double(n) / rate) * (channel % 2 == 0 ? 1 : -1));
                out.write(reinterpret_cast<char const*>(&sample), sizeof sample);
            }
        }
    }
    return {"-f", "f32le", "-ar", std::to_string(rate), "-ac", std::to_string(channels),
            "-i", file};
}

std::vector<float> readInOrder(fs::path const& file, int samples)
{
    AudioReader reader(file);
    std::vector<float> all(std::size_t(samples) * 2);
    std::span<float> rest(all);
    std::mt19937 random(1);
    std::int64_t first = 0;
    while (!rest.empty()) {
        std::size_t const count = std::min<std::size_t>(rest.size() / 2, 1 + random() % 5000);
        reader.read(first, rest.first(count * 2));
        rest = rest.subspan(count * 2);
        first += std::int64_t(count);
    }
    return all;
}

/// The RMS error against the tone around `at`. A shift by a single sample gives 0.03 in the first
/// second and more later.
double errorAt(std::vector<float> const& audio, double at, double begin)
{
    constexpr int window = 4000;
    double sum = 0;
    auto const from = int(at * AudioReader::sampleRate);
    for (int n = from; n < from + window; ++n)
        sum += std::pow(
            audio[std::size_t(n) * 2] - toneAt(double(n) / AudioReader::sampleRate - begin), 2);
    return std::sqrt(sum / window);
}

struct EncodedTone {
    char const* name;
    int rate;
    Arguments encoding;
    double tolerance = 1e-6; ///< After a seek, against reading in order.
    int delay = 0;           ///< The encoder's, in samples, if the file doesn't declare it.
};

std::vector<EncodedTone> const& encodedTones()
{
    static std::vector<EncodedTone> const all = {
        {"48.wav", 48000, {"-c:a", "pcm_f32le"}},
        {"44.wav", 44100, {"-c:a", "pcm_s16le"}},
        {"96.wav", 96000, {"-c:a", "pcm_s24le"}},
        {"8.wav", 8000, {"-c:a", "pcm_s16le"}},
        {"11.wav", 11025, {"-c:a", "pcm_s16le"}},
        {"44.flac", 44100, {}},
        {"44 alac.m4a", 44100, {"-c:a", "alac"}},
        {"48 pcm.mov", 48000, {"-c:a", "pcm_s24le"}},
        {"44 pcm.mkv", 44100, {"-c:a", "pcm_s16le"}},
        {"48 aac.mp4", 48000, {"-c:a", "aac"}, aacTolerance},
        {"44 aac.m4a", 44100, {"-c:a", "aac"}, aacTolerance},
        {"22 aac.mp4", 22050, {"-c:a", "aac"}, aacTolerance},
        {"48 aac.mkv", 48000, {"-c:a", "aac"}, aacTolerance, 1024},
        {"44 aac.mkv", 44100, {"-c:a", "aac"}, aacTolerance, 1024},
        // Clocks of phones: timestamps jitter, or all but the first are late.
        {"48 jitter.mp4",
         48000,
         {"-c:a", "aac", "-bsf:a", "setts=ts=TS+mod(N\\,2)*620"},
         aacTolerance},
        {"48 late.mp4",
         48000,
         {"-c:a", "aac", "-bsf:a", "setts=ts=TS+gt(N\\,0)*667"},
         aacTolerance,
         667},
        {"44 mp3.mp3", 44100, {"-c:a", "libmp3lame", "-b:a", "160k"}},
        {"44 mp3.mp4", 44100, {"-c:a", "libmp3lame"}},
        // The decoder's prediction never reaches quite the same state after a seek.
        {"48 opus.ogg", 48000, {"-c:a", "libopus", "-b:a", "128k"}, 2e-3},
        {"48 opus.webm", 48000, {"-c:a", "libopus", "-b:a", "128k"}, 2e-3},
        {"44 vorbis.ogg", 44100, {"-c:a", "libvorbis"}},
        {"48 vorbis.webm", 48000, {"-c:a", "libvorbis"}, 1e-6, 144},
        {"44 vorbis.webm", 44100, {"-c:a", "libvorbis"}, 1e-6, 132},
        {"48 aac.aac", 48000, {"-c:a", "aac"}, aacTolerance, 1024},
        {"48 aac.ts", 48000, {"-c:a", "aac"}, aacTolerance, 1024},
        {"48 ac3.mkv", 48000, {"-c:a", "ac3"}, 1e-3, 256},
    };
    return all;
}

fs::path made(EncodedTone const& audio)
{
    return madeWith(audio.name, toneInput(audio.rate) + audio.encoding);
}

} // namespace

TEST(AudioReader, EverySampleIsAtItsPosition)
{
    for (EncodedTone const& audio : encodedTones()) {
        SCOPED_TRACE(audio.name);
        auto const read = readInOrder(made(audio), 6 * AudioReader::sampleRate);
        for (double const at : {0.1, 1.0, 2.7, 4.6})
            EXPECT_LT(errorAt(read, at, double(audio.delay) / audio.rate), 0.02) << "at " << at;
        auto const at = [&](double seconds) {
            return std::size_t(seconds * AudioReader::sampleRate) * 2;
        };
        EXPECT_NEAR(read[at(2) + 1], -read[at(2)], 0.02) << "channels are not swapped";
        for (std::size_t i = at(length + 0.1); i < read.size(); ++i)
            ASSERT_EQ(read[i], 0.0F) << "after the end";
    }
}

TEST(AudioReader, SeekingGivesTheSameSamplesAsReadingOn)
{
    for (EncodedTone const& audio : encodedTones()) {
        SCOPED_TRACE(audio.name);
        if (std::string(audio.name).ends_with("vorbis.webm"))
            continue; // Blocks of varying length with timestamps in milliseconds.
        auto const inOrder = readInOrder(made(audio), 6 * AudioReader::sampleRate);
        AudioReader reader(made(audio));
        std::mt19937 random(5);
        for (int i = 0; i < 40; ++i) {
            std::vector<float> some(2 * (1 + random() % 3000));
            auto const first = std::int64_t(random() % (inOrder.size() / 2 - some.size() / 2));
            reader.read(first, some);
            for (std::size_t n = 0; n < some.size(); ++n)
                ASSERT_NEAR(some[n], inOrder[std::size_t(first) * 2 + n], audio.tolerance)
                    << "sample " << first << " + " << n / 2;
        }
    }
}

TEST(AudioReader, ChannelsAreMixedToStereo)
{
    Arguments const center = {"-f", "lavfi", "-i",
                              "aevalsrc=0|0|0.5*sin(300*2*PI*t)|0|0|0:c=5.1:d=1,aformat=fltp"};
    auto const levels = [](fs::path const& file) {
        auto const audio = readInOrder(file, AudioReader::sampleRate);
        float left = 0;
        float right = 0;
        for (std::size_t i = 4800 * 2; i < audio.size() - 9600; i += 2) {
            left = std::max(left, audio[i]);
            right = std::max(right, audio[i + 1]);
        }
        return std::pair(left, right);
    };
    auto const mono =
        levels(madeWith("mono.wav", toneInput(44100, 1) + Arguments{"-c:a", "pcm_f32le"}));
    EXPECT_NEAR(mono.first, 0.5, 0.005) << "at full level";
    EXPECT_FLOAT_EQ(mono.first, mono.second);

    auto const surround = levels(madeWith("surround.wav", center + Arguments{"-c:a", "pcm_f32le"}));
    EXPECT_NEAR(surround.first, 0.5 * std::sqrt(0.5), 0.002) << "the centre on both sides";
    EXPECT_FLOAT_EQ(surround.first, surround.second);
}

TEST(AudioReader, HonoursTheStartTimeAndReadsTheDefaultTrack)
{
    // The first track is silent; the default one has the tone and starts late.
    fs::path const file =
        madeWith("late tone.mp4",
                 Arguments{"-f", "lavfi", "-i", "anullsrc=d=6:r=48000", "-itsoffset", "0.75"} +
                     toneInput(48000) +
                     Arguments{"-map", "0", "-map", "1", "-c:a", "aac", "-disposition:a:0", "0",
                               "-disposition:a:1", "default"});
    auto const audio = readInOrder(file, 7 * AudioReader::sampleRate);
    for (std::size_t i = 0; i < 34000 * 2; ++i)
        ASSERT_NEAR(audio[i], 0, 0.001);
    // The edit list is in milliseconds and includes the encoder delay here.
    double const begin = 0.728 + 1024.0 / 48000;
    for (double const at : {0.76, 3.0, 5.5})
        EXPECT_LT(errorAt(audio, at, begin), 0.02) << at;

    std::vector<float> before(4);
    AudioReader(file).read(-2, before);
    EXPECT_EQ(before, std::vector<float>(4)) << "silence before the beginning";
}

TEST(AudioReader, ReportsWhereAudioIsDamaged)
{
    fs::path const movie = madeWith(
        "whole.mp4", toneInput(48000) + Arguments{"-c:a", "aac", "-movflags", "+faststart"});
    std::string const bytes = contentsOf(movie);
    fs::path const cut = fileOf("cut audio.mp4", bytes.substr(0, bytes.size() * 6 / 10));
    AudioReader reader(cut);
    std::vector<float> some(4800);
    EXPECT_NO_THROW(reader.read(96000, some));
    for (int const second : {4, 3, 4}) {
        try {
            reader.read(second * 48000 + 24000, some);
            ADD_FAILURE() << "no error at " << second;
        } catch (MediaError const& error) {
            EXPECT_EQ(error.cause, MediaError::Cause::damaged);
            EXPECT_EQ(error.what(), "cut audio.mp4 is incomplete or damaged: its audio at " +
                                        std::to_string(second) + ".50 s cannot be decoded.");
        }
    }
    EXPECT_NO_THROW(reader.read(48000, some)) << "other times can still be read";
}

} // namespace framewright
