#pragma once

#include "model/clip_placing.h"
#include "model/outcome.h"
#include "model/project.h"

#include <cstddef>
#include <optional>

namespace framewright {

/// The length of a new text. Seconds.
inline constexpr double textLength = 3.0;

/// The longest text in characters: more can't be read, and slows every frame down.
inline constexpr std::size_t mostCharacters = 10'000;

/// A text to add.
struct NewText {
    Id id;
    TextOverlay text;
    double time = 0;
    double length = textLength;
    std::optional<Id> trackID =
        {};             ///< Else the topmost unlocked text track, else a new one on top.
    Id newTrackID = {}; ///< Of the track that may have to be added.
};

/// Puts a text on a text track, as near to its time as there is room, by the rules of `place`.
///
/// Refused when the track is gone, locked or no text track, for blank words, for values
/// out of range, and where there is no room.
Outcome<Placed> addText(Project project, NewText const& text);

/// Changes to a text; what is not given stays.
struct TextChanges {
    std::optional<TextOverlay> text = {};
    std::optional<double> length = {}; ///< Its start stays.
};

/// Changes the words, style, place and length of a text.
///
/// A longer text moves no other: also on a magnetic track it may not run into the next. Made
/// shorter there, those after it close up. Refused when the clip is gone, no text or locked, and as
/// `addText`; invalid values that are already there, in a file made by hand, may stay.
Outcome<Project> changeText(Project project, Id const& clipID, TextChanges const& changes);

} // namespace framewright
