#include "model/text_editing.h"

#include "model/clip_lookup.h"
#include "model/edit_limits.h"
#include "model/internal/track_rules.h"
#include "model/time_rules.h"
#include "model/track_editing.h"

#include <algorithm>
#include <cassert>
#include <string_view>

namespace framewright {

namespace {

/// Whether the words are only white space, which would be invisible on the timeline.
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
        return outOfRange(Setting::textLength);
    return std::nullopt;
}

/// Where the next clip of the track starts; nothing after the last one.
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
        return next ? Refusal{.reason = Reason::runsIntoNextText,
                              .subject = Subject::track(spot.track->id),
                              .value = longest}
                    : pastTimelineEnd();
    Clip& changed = spot.edit();
    changed.sourceEnd = changed.sourceStart + length;
    normalize(*spot.track);
    return std::nullopt;
}

/// Why these values are refused; nothing when they are valid or unchanged.
std::optional<Refusal> textRefusal(TextOverlay const& text, TextOverlay const* before = nullptr)
{
    auto const isChanged = [&](auto TextOverlay::*member) {
        return !before || text.*member != before->*member;
    };
    if (isChanged(&TextOverlay::text)) {
        if (isBlank(text.text))
            return Refusal{Reason::noWords};
        if (characterCount(text.text) > mostCharacters)
            return Refusal{.reason = Reason::tooManyCharacters, .value = mostCharacters};
    }
    float const size = text.style.fontSize;
    if ((!before || size != before->style.fontSize) &&
        !(size >= smallestFont && size <= largestFont))
        return outOfRange(Setting::fontSize);
    if (isChanged(&TextOverlay::x) && !(text.x >= 0 && text.x <= 1))
        return outOfRange(Setting::textX);
    if (isChanged(&TextOverlay::y) && !(text.y >= 0 && text.y <= 1))
        return outOfRange(Setting::textY);
    if (isChanged(&TextOverlay::scale) && !(text.scale > 0 && text.scale <= largestScale))
        return outOfRange(Setting::scale);
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
        return outOfRange(Setting::placeTime);

    auto trackID = text.trackID ? text.trackID : preferredTrack(project, TrackKind::text);
    if (!trackID) {
        auto added = addTrack(std::move(project), {.id = text.newTrackID, .kind = TrackKind::text});
        assert(added);
        project = std::move(*added);
        trackID = text.newTrackID;
    }
    auto const track = editableTrack(project, *trackID);
    if (!track)
        return track.refusal();
    if ((*track)->kind != TrackKind::text)
        return Refusal{Reason::notATextTrack, Subject::track(*trackID)};

    Clip clip;
    clip.id = text.id;
    clip.assetID = Clip::textAssetID;
    clip.sourceEnd = text.length;
    clip.text = Shared(text.text);
    auto const at = insertGroup(**track, {std::move(clip)}, text.time);
    if (!at)
        return Refusal{.reason = Reason::noRoomForText,
                       .subject = Subject::track(*trackID),
                       .value = text.time};
    return Placed{std::move(project), text.id, *trackID, *at};
}

Outcome<Project> changeText(Project project, Id const& clipID, TextChanges const& changes)
{
    auto const spot = editableClip(project, clipID);
    if (!spot)
        return spot.refusal();
    if (!spot->clip().isText())
        return Refusal{Reason::notAText, Subject::clip(clipID)};
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
