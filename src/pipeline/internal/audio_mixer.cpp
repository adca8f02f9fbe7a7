#include "pipeline/internal/audio_mixer.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace framewright {

namespace {

constexpr std::int64_t fadeLength = AudioMixer::sampleRate * 3 / 1000;
constexpr float untouched = 0.9f;

std::int64_t sampleAt(double seconds)
{
    return std::llround(seconds * AudioMixer::sampleRate);
}

/// Whether `next` goes on where `segment` stops, in time and in its file, to within a sample.
bool continues(CompositionSegment const& segment, CompositionSegment const& next)
{
    double const jump = next.sourceStart - segment.sourceTimeAt(next.timeRange.start.seconds());
    return segment.timeRange.end == next.timeRange.start && segment.file == next.file &&
           std::abs(jump) * AudioMixer::sampleRate <= 1;
}

float gainAt(AudioMix::ClipLevels const* levels, std::int64_t sample)
{
    return levels ? levels->gain(sample) : 1.0f;
}

/// The share of the level so far from an edge where it is `atEdge`.
float fade(float atEdge, std::int64_t samplesFromEdge)
{
    if (samplesFromEdge >= fadeLength)
        return 1;
    return atEdge + (1 - atEdge) * (float(samplesFromEdge) + 0.5f) / fadeLength;
}

/// Rises ever more slowly towards 1, in line with the untouched range where it begins.
float belowOne(float sample)
{
    float const size = std::abs(sample);
    if (size <= untouched)
        return sample;
    constexpr float room = 1 - untouched;
    return std::copysign(untouched + room * std::tanh((size - untouched) / room), sample);
}

} // namespace

AudioMixer::AudioMixer(BuiltComposition const& composition, AudioSource& source)
    : m_composition(composition), m_source(source)
{
    for (CompositionTrack const& track : composition.tracks) {
        if (track.kind == CompositionTrack::Kind::audio)
            m_tracks.push_back(parts(track));
    }
}

std::vector<AudioMixer::Part> AudioMixer::parts(CompositionTrack const& track) const
{
    auto const found = m_composition.audioMix.tracks.find(track.id);
    auto const levels = found == m_composition.audioMix.tracks.end()
                            ? std::span<AudioMix::ClipLevels const>()
                            : std::span(found->second);
    auto nextLevels = levels.begin();
    std::vector<Part> parts;
    std::int64_t reach = 0;
    for (CompositionSegment const& segment : track.segments) {
        auto const level = std::ranges::find(nextLevels, levels.end(), segment.clipID,
                                             &AudioMix::ClipLevels::clipID);
        bool const hasLevels = level != levels.end();
        if (hasLevels)
            nextLevels = level + 1;
        std::int64_t const end = sampleAt(segment.timeRange.end.seconds());
        reach = std::max(reach, end);
        Part part{track.id,
                  &segment,
                  hasLevels ? &*level : nullptr,
                  sampleAt(segment.timeRange.start.seconds()),
                  end,
                  reach,
                  sampleAt(segment.sourceStart),
                  0,
                  0};
        if (Part* const before = partThatGoesOn(parts, segment))
            joinLevels(*before, part);
        parts.push_back(part);
    }
    return parts;
}

/// The part that `next` goes on from; null when there is none.
AudioMixer::Part* AudioMixer::partThatGoesOn(std::vector<Part>& parts,
                                             CompositionSegment const& next)
{
    std::int64_t const start = sampleAt(next.timeRange.start.seconds());
    for (auto part = parts.rbegin(); part != parts.rend() && part->reach >= start; ++part) {
        if (continues(*part->segment, next))
            return &*part;
    }
    return nullptr;
}

/// Lets the louder of two parts that go on into each other come from or to the other's level.
void AudioMixer::joinLevels(Part& part, Part& next)
{
    float const before = gainAt(part.levels, part.end);
    float const after = gainAt(next.levels, next.start);
    part.endsAt = before > after ? after / before : 1;
    next.startsAt = after > before ? before / after : 1;
}

void AudioMixer::mix(std::int64_t first, std::span<float> interleaved)
{
    std::ranges::fill(interleaved, 0.0f);
    std::int64_t const last = first + std::int64_t(interleaved.size() / 2);
    for (std::vector<Part> const& parts : m_tracks) {
        auto part = std::ranges::upper_bound(parts, first, {}, &Part::reach);
        for (; part != parts.end() && part->start < last; ++part) {
            std::int64_t const from = std::max(first, part->start);
            std::int64_t const to = std::min(last, part->end);
            if (from < to)
                mixPart(
                    *part, from,
                    interleaved.subspan(std::size_t(from - first) * 2, std::size_t(to - from) * 2));
        }
    }
    std::ranges::transform(interleaved, interleaved.begin(), belowOne);
}

void AudioMixer::mixPart(Part const& part, std::int64_t first, std::span<float> interleaved)
{
    std::size_t const count = interleaved.size() / 2;
    m_gains.resize(count);
    if (part.levels)
        part.levels->gains(first, m_gains);
    else
        std::ranges::fill(m_gains, 1.0f);
    if (std::ranges::all_of(m_gains, [](float gain) { return gain == 0; }))
        return; // Silent: not worth decoding.

    m_sound.resize(count * 2);
    m_source.read(part.track, *part.segment, part.sourceStart + (first - part.start), m_sound);
    for (std::size_t n = 0; n < count; ++n) {
        std::int64_t const sample = first + std::int64_t(n);
        float const gain = m_gains[n] * fade(part.startsAt, sample - part.start) *
                           fade(part.endsAt, part.end - 1 - sample);
        interleaved[2 * n] += m_sound[2 * n] * gain;
        interleaved[2 * n + 1] += m_sound[2 * n + 1] * gain;
    }
}

} // namespace framewright
