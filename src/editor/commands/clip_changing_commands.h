#pragma once

#include "editor/commands/editing.h"
#include "editor/commands/media_commands.h"
#include "model/clip_audio.h"
#include "model/clip_moving.h"
#include "model/clip_replacing.h"
#include "model/clip_trimming.h"

#include <QCoro/QCoroTask>

#include <optional>
#include <span>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace framewright {

/// Changes to a clip; what is not given stays.
struct ClipChanges {
    std::optional<float> volume = {};
    /// Fields of the placement with their new values.
    std::vector<std::pair<double ClipTransform::*, double>> transform = {};
    std::optional<std::string> placeholderName = {};

    bool isEmpty() const { return !volume && transform.empty() && !placeholderName; }
};

/// "Change Level", "Transform Clip", "Rename Placeholder", or "Adjust Clip" for several at once.
/// Refused for texts.
Outcome<Project> changeClip(Editing editing, Id const& clipID, ClipChanges const& changes);

/// "Trim Clip".
Outcome<Trimmed> trimClip(Editing editing, Id const& clipID, Trim const& trim);

/// "Move Clip": to start at `time`, on its own track or on another of its kind.
Outcome<Placed> moveClip(Editing editing, Id const& clipID, double time,
                         std::optional<Id> const& toTrack = std::nullopt);

/// "Nudge Right 1 Frame": moves clips of free tracks by a frame or a second.
Outcome<Nudged> nudgeClips(Editing editing, std::span<Id const> clipIDs, double seconds);

/// The new start of a slipped clip's source range: a time in the file, or an offset.
struct SlipTo {
    double sourceStart;
};
struct SlipBy {
    double seconds; ///< Negative offsets are earlier.
};

/// "Slip Clip": changes which part of its file a clip plays, not its place or length.
Outcome<Project> slipClip(Editing editing, Id const& clipID, std::variant<SlipTo, SlipBy> slip);

/// "Detach Audio".
Outcome<DetachedAudio> detachAudio(Editing editing, Id const& clipID);

/// Another clip of the timeline, which is moved from its spot.
struct OtherClip {
    Id clipID;
};

/// Whether a placeholder fills what a shorter source leaves of the slot.
enum class Fill { leaveRest, withPlaceholder };

/// "Replace Placeholder", "Replace Clip": puts a file or another clip behind a clip, in its spot.
/// A file becomes part of the project in the same step.
///
/// Refused as the model's `replaceClip`, and for a file without audio on an audio track. Throws
/// MediaError when the file can't be used.
QCoro::Task<Outcome<Replaced>> replaceClip(Editing editing, Id clipID,
                                           std::variant<MediaSource, OtherClip> with, Fill fill);

} // namespace framewright
