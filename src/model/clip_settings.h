#pragma once

#include "model/outcome.h"
#include "model/project.h"

#include <functional>
#include <optional>
#include <string>

namespace framewright {

// Settings of a clip: none moves anything. All are refused when the clip is gone or its track
// locked.

/// Applies a change to one clip.
///
/// Its id, asset and times are restored afterwards: other operations change those, and keep the
/// rules of the track.
Outcome<Project> updateClip(Project project, Id const& clipID,
                            std::function<void(Clip&)> const& change);

/// Sets the level, linear gain. Refused outside 0 to 1.5 and for texts.
Outcome<Project> setClipVolume(Project project, Id const& clipID, float volume);

/// Sets how the clip is placed in the canvas.
///
/// Refused on tracks other than video, for a crop outside 0 to 0.45 and a scale of 0 or less.
Outcome<Project> setClipTransform(Project project, Id const& clipID,
                                  ClipTransform const& transform);

/// Shows the whole frame again, fitted and centred.
Outcome<Project> resetClipTransform(Project project, Id const& clipID);

/// Refused for other clips, and for an empty name.
Outcome<Project> renamePlaceholder(Project project, Id const& clipID, std::string const& name);

/// Sets or removes the note on what should fill the slot.
Outcome<Project> setPlaceholderNote(Project project, Id const& clipID,
                                    std::optional<std::string> const& note);

} // namespace framewright
