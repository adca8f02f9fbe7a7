#pragma once

#include "composition/composition_track.h"
#include "pipeline/internal/open_files.h"

#include <future>
#include <list>
#include <map>
#include <memory>
#include <optional>

namespace framewright {

/// Opens the decoder of a track's next clip while the current one still plays.
///
/// Opening a file, seeking in it and decoding from its keyframe to the first visible frame takes as
/// long as drawing five to ten frames. Done inside the first draw after a cut, that is a stall in
/// playback and an idle encoder in an export. So the next clip's decoder is opened and sought on a
/// thread of its own, and at the cut drawing only takes it.
///
/// Every open decoder holds reference frames, about 40 MB for 4K footage. So there is one per track
/// at most, and the caller asks for it shortly before the cut. If the cut is reached sooner, `take`
/// waits: a second decoder of the same file would not be faster. A failure here is not reported:
/// drawing opens the file again when it needs it, and then reports the error in its place.
///
/// A preparation that is no longer wanted (after a seek or an edit) can't be interrupted; it is
/// finished and dropped. Until then nothing else is prepared, so fast seeking does not pile up
/// decoders. Apart from the opening itself all happens on the caller's thread.
class OpeningAhead {
public:
    /// `activity` is called on the opening threads.
    OpeningAhead(int threads, ReadingActivity activity);

    /// Whether the segment's decoder is being prepared, or is ready.
    bool has(CompositionTrackID track, CompositionSegment const& segment) const;

    /// Starts preparing a segment, instead of any other of this track. `idle` is a decoder of its
    /// file that nothing uses and that can be sought instead of opening another. Does nothing
    /// while an unwanted preparation is unfinished.
    void prepare(CompositionTrackID track, CompositionSegment const& segment,
                 std::optional<OpenReader> idle);

    /// Drops what the track has prepared.
    void drop(CompositionTrackID track);
    void dropAll();

    /// The prepared decoder; nothing when none was prepared, opening failed or the file was
    /// replaced since. Waits for one that is being prepared.
    std::optional<OpenReader> take(CompositionTrackID track, CompositionSegment const& segment);

    /// Whether `prepare` would do nothing.
    bool isBusy();

private:
    struct Preparation {
        std::filesystem::path file;
        double sourceStart;
        std::future<std::optional<OpenReader>> opened;

        bool isFor(CompositionSegment const& segment) const
        {
            return file == segment.file && sourceStart == segment.sourceStart;
        }
    };

    int m_threads;
    ReadingActivity m_activity;
    std::map<CompositionTrackID, Preparation> m_preparations;
    std::list<Preparation> m_dropped; ///< Unfinished and unwanted.
};

} // namespace framewright
