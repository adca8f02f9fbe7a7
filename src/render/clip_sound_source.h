#pragma once

#include "media/audio_reader.h"
#include "render/sound_source.h"

#include <list>

namespace framewright {

/// The sound of a composition's files. Each track has its own decoders; those not used for longest
/// are closed. One thread at a time.
class ClipSoundSource : public SoundSource {
public:
    void read(CompositionTrackID track, CompositionSegment const& segment, std::int64_t first,
              std::span<float> interleaved) override;

private:
    struct Open {
        CompositionTrackID track;
        std::filesystem::path file;
        AudioReader reader;
    };

    AudioReader& reader(CompositionTrackID track, std::filesystem::path const& file);

    std::list<Open> m_open; ///< The one used last in front.
};

} // namespace framewright
