#include "render/clip_sound_source.h"

#include "media/media_error.h"

#include <algorithm>

namespace framewright {

namespace {

/// More than any piece has playing at once; what is beyond is opened again when it is needed.
constexpr std::size_t capacity = 24;

} // namespace

void ClipSoundSource::read(CompositionTrackID track, CompositionSegment const& segment,
                           std::int64_t first, std::span<float> interleaved)
{
    try {
        reader(track, segment.file).read(first, interleaved);
    } catch (MediaError const& error) {
        throw MediaError(error.cause, "Can't play " + segment.name + ". " + error.what());
    }
}

AudioReader& ClipSoundSource::reader(CompositionTrackID track, std::filesystem::path const& file)
{
    auto const found = std::ranges::find_if(
        m_open, [&](Open const& open) { return open.track == track && open.file == file; });
    if (found != m_open.end()) {
        m_open.splice(m_open.begin(), m_open, found);
    } else {
        m_open.push_front({track, file, AudioReader(file, m_activity)});
        if (m_open.size() > capacity)
            m_open.pop_back();
    }
    return m_open.front().reader;
}

} // namespace framewright
