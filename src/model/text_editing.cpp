#include "model/text_editing.h"

#include "model/clip_lookup.h"
#include "model/edit_limits.h"
#include "model/time_rules.h"
#include "model/track_editing.h"
#include "model/track_rules.h"

#include <algorithm>
#include <cassert>
#include <string_view>

namespace framewright {

namespace {

/// Whether the words are nothing but white space: such a text would be lost on the timeline.
bool isBlank(std::string_view words)
{
    constexpr std::string_view spaces[] = {
        " ",      "\t",     "\n",     "\r",     "\v",     "\f",     "\u00A0", "\u2002",
        "\u2003", "\u2009", "\u200B", "\u2028", "\u2029", "\u202F", "\u3000", "\uFEFF"};
    while (!words.empty()) {
        auto const space = std::ranges::find_if(
            spaces, [&](std::string_view each) { return words.starts_with(each); });
        if (space == std::end(spaces))
            return false;
        words.remove_prefix(space->size());
    }
    return true;
}

std::size_t characterCount(std::string_view words)
{
    return std::size_t(std::ranges::count_if(
        words, [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
}

std::optional<Refusal> lengthRefusal(double length)
{
    if (!(length >= minimumClipLength - timeTolerance && length <= longestTextLength))
        return Refusal{"duration must be 0.1 to 3600 seconds."};
    return std::nullopt;
}

/// Where the next clip of the track starts; nothing behind the last one.
std::optional<double> nextStart(ClipSpot const& spot)
{
    auto const& clips = *spot.track->clips;
    return spot.index + 1 < clips.size() ? std::optional(clips[spot.index + 1].timelineStart)
                                         : std::nullopt;
}

std::optional<Refusal> setLength(ClipSpot const& spot, double length)
{
    if (auto refusal = lengthRefusal(length))
        return refusal;
    Clip const& clip = spot.clip();
    auto const next = nextStart(spot);
    double const longest = (next ? *next : latestTime) - clip.timelineStart;
    if (length > longest + timeTolerance)
        return next ? Refusal{"That would run into the next text on " + spot.track->name +
                              "; it can last up to " + secondsText(longest) + "."}
                    : Refusal{"The timeline only goes to " + secondsText(latestTime) + "."};
    Clip& changed = spot.edit();
    changed.sourceEnd = changed.sourceStart + length;
    normalize(*spot.track);
    return std::nullopt;
}

/// Why a text may not become this; nothing when it may.
std::optional<Refusal> textRefusal(TextOverlay const& text, TextOverlay const* before = nullptr)
{
    auto const isChanged = [&](auto TextOverlay::*member) {
        return !before || text.*member != before->*member;
    };
    if (isChanged(&TextOverlay::text)) {
        if (isBlank(text.text))
            return Refusal{"A text needs some words."};
        if (characterCount(text.text) > mostCharacters)
            return Refusal{"A text has at most 10000 characters."};
    }
    float const size = text.style.fontSize;
    if ((!before || size != before->style.fontSize) &&
        !(size >= smallestFont && size <= largestFont))
        return Refusal{"size must be 8 to 240 points."};
    if (isChanged(&TextOverlay::x) && !(text.x >= 0 && text.x <= 1))
        return Refusal{"x must be 0 to 1."};
    if (isChanged(&TextOverlay::y) && !(text.y >= 0 && text.y <= 1))
        return Refusal{"y must be 0 to 1."};
    if (isChanged(&TextOverlay::scale) && !(text.scale > 0 && text.scale <= largestScale))
        return Refusal{"scale must be above 0 and at most 100."};
    return std::nullopt;
}

} // namespace

Outcome<Placed> addText(Project project, NewText const& text)
{
    if (auto refusal = lengthRefusal(text.length))
        return *refusal;
    if (auto refusal = textRefusal(text.text))
        return *refusal;
    if (!(text.time >= 0))
        return Refusal{"at must be 0 or later."};

    auto trackID = text.trackID ? text.trackID : preferredTrack(project, TrackKind::text);
    if (!trackID) {
        auto added = addTrack(std::move(project), {.id = text.newTrackID, .kind = TrackKind::text});
        assert(added);
        project = std::move(*added);
        trackID = text.newTrackID;
    }
    auto const track = editableTrack(project, *trackID);
    if (!track)
        return Refusal{track.refusal()};
    if ((*track)->kind != TrackKind::text)
        return Refusal{(*track)->name + " is not a text track."};

    Clip clip;
    clip.id = text.id;
    clip.assetID = Clip::textAssetID;
    clip.sourceEnd = text.length;
    clip.text = Shared(text.text);
    auto const at = insertGroup(**track, {std::move(clip)}, text.time);
    if (!at)
        return Refusal{"No room on the text track near " + secondsText(text.time) +
                       "; add another text track with track-add."};
    return Placed{std::move(project), text.id, *trackID, *at};
}

Outcome<Project> changeText(Project project, Id const& clipID, TextChanges const& changes)
{
    auto const place = findClip(project, clipID);
    if (place && place->track->isLocked)
        return Refusal{place->track->name + " is locked. Unlock it to edit this text."};
    auto const spot = editableClip(project, clipID);
    if (!spot)
        return Refusal{spot.refusal()};
    if (!spot->clip().isText())
        return Refusal{clipName(project, spot->clip()) + " is not a text clip."};
    if (changes.text) {
        auto const& before = spot->clip().text;
        if (auto refusal = textRefusal(*changes.text, before ? &**before : nullptr))
            return *refusal;
        spot->edit().text = Shared(*changes.text);
    }
    if (changes.length) {
        if (auto refusal = setLength(*spot, *changes.length))
            return *refusal;
    }
    return project;
}

} // namespace framewright
