#include "composition/audio_mix.h"

#include <algorithm>

namespace framewright {

namespace {

constexpr std::int64_t samplesPerTick = AudioMix::sampleRate / MediaTime::timescale;
static_assert(samplesPerTick * MediaTime::timescale == AudioMix::sampleRate);

std::int64_t sampleAt(MediaTime time)
{
    return time.value * samplesPerTick;
}

float gainAt(AudioMix::Step const& step, std::int64_t sample)
{
    std::int64_t const start = sampleAt(step.timeRange.start);
    std::int64_t const end = sampleAt(step.timeRange.end);
    if (sample <= start)
        return step.startVolume;
    if (sample >= end)
        return step.endVolume;
    double const part = double(sample - start) / double(end - start);
    return float(step.startVolume + (double(step.endVolume) - step.startVolume) * part);
}

} // namespace

void AudioMix::ClipLevels::gains(std::int64_t first, std::span<float> gains) const
{
    if (steps.empty())
        return void(std::ranges::fill(gains, 1.0f));
    auto const startSample = [](Step const& step) { return sampleAt(step.timeRange.start); };

    std::int64_t sample = first;
    std::int64_t const last = first + std::int64_t(gains.size());
    auto next = std::ranges::upper_bound(steps, sample, {}, startSample);
    for (std::size_t n = 0; sample < last;) {
        std::int64_t const until = next == steps.end() ? last : std::min(last, startSample(*next));
        Step const& step = next == steps.begin() ? *next : *std::prev(next);
        for (; sample < until; ++sample, ++n)
            gains[n] = gainAt(step, sample);
        while (next != steps.end() && startSample(*next) <= sample)
            ++next;
    }
}

float AudioMix::ClipLevels::gain(std::int64_t sample) const
{
    float gain = 1;
    gains(sample, {&gain, 1});
    return gain;
}

} // namespace framewright
