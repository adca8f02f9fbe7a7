#include "export/exporter.h"
#include "media/audio_reader.h"
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

class ExportedAudio : public MadeMedia {
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

TEST_F(ExportedAudio, MakesRoomForAVoiceAsFastAndAsMuchAsPromised)
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

} // namespace framewright
