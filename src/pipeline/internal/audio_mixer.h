#pragma once

#include "composition/composition.h"
#include "pipeline/internal/audio_source.h"

#include <cstdint>
#include <span>
#include <vector>

namespace framewright {

/// Mixes the audio of a composition: 48 kHz, stereo. One thread at a time.
class AudioMixer {
public:
    static constexpr int sampleRate = AudioMix::sampleRate;

    /// Both must outlive it.
    AudioMixer(BuiltComposition const& composition, AudioSource& source);

    /// Fills `interleaved` (left, right, …) with the timeline's audio from sample `first` on.
    ///
    /// Each sample depends on its time alone: any order and any length of blocks gives the same.
    /// Clips begin and end on exact samples, with a fade of 3 ms against clicks, but where the next
    /// clip goes on in the same file without a jump; when that is quieter or louder, the louder one
    /// of the two fades from or to its level, so that what is silenced is silent throughout. Peaks
    /// are bent so that they stay below 1; what is below 0.9 is left as it is. Clips of one track
    /// that overlap are heard together. Throws MediaError, which names the clip and the file.
    void mix(std::int64_t first, std::span<float> interleaved);

private:
    /// A segment in samples, with what surrounds it.
    struct Part {
        CompositionTrackID track;
        CompositionSegment const* segment;
        AudioMix::ClipLevels const* levels; ///< Null when it is heard as it is.
        std::int64_t start;
        std::int64_t end;
        std::int64_t reach; ///< The latest end of it and those before it.
        std::int64_t sourceStart;
        float startsAt; ///< The share of its level that it fades in from: 1 where it goes on.
        float endsAt;   ///< The share of its level that it fades out to.
    };

    std::vector<Part> parts(CompositionTrack const& track) const;
    static void joinLevels(Part& part, Part& next);
    static Part* partThatGoesOn(std::vector<Part>& parts, CompositionSegment const& next);
    void mixPart(Part const& part, std::int64_t first, std::span<float> interleaved);

    BuiltComposition const& m_composition;
    AudioSource& m_source;
    std::vector<std::vector<Part>> m_tracks; ///< The parts of each sound track, by their starts.
    std::vector<float> m_sound;
    std::vector<float> m_gains;
};

} // namespace framewright
