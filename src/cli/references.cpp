#include "cli/references.h"

#include "cli/internal/near_words.h"
#include "cli/tool_error.h"
#include "cli/values.h"
#include "styles/style_list.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <utility>

namespace framewright {

namespace {

constexpr std::size_t shortestIdPrefix = 8;

/// As many assets as an error names. The `media` tool lists them all.
constexpr std::size_t mostListed = 20;

char letter(TrackKind kind)
{
    switch (kind) {
    case TrackKind::video:
        return 'v';
    case TrackKind::audio:
        return 'a';
    case TrackKind::text:
        return 't';
    case TrackKind::subtitles:
        return 's';
    }
    return 'v';
}

std::optional<TrackKind> kindOfLetter(char c)
{
    for (TrackKind const kind :
         {TrackKind::video, TrackKind::audio, TrackKind::text, TrackKind::subtitles}) {
        if (letter(kind) == c || letter(kind) == c - 'A' + 'a')
            return kind;
    }
    return std::nullopt;
}

/// A count in decimal digits and nothing else; one that is too large to be held is the largest.
std::optional<std::size_t> parseCount(std::string_view text)
{
    bool const isCount =
        !text.empty() && std::ranges::all_of(text, [](char c) { return c >= '0' && c <= '9'; });
    if (!isCount)
        return std::nullopt;
    std::size_t count = 0;
    if (std::from_chars(text.data(), text.data() + text.size(), count).ec != std::errc())
        return std::numeric_limits<std::size_t>::max();
    return count;
}

bool beginsWith(Id const& id, std::string_view prefix)
{
    return !prefix.empty() && equalIgnoringCase(id.text().substr(0, prefix.size()), prefix);
}

/// Whether a text can be the beginning of an id, long enough to identify it.
bool looksLikeId(std::string_view text)
{
    constexpr std::string_view hexDigits = "0123456789abcdefABCDEF";
    if (text.size() < shortestIdPrefix || text.size() > Id().text().size())
        return false;
    std::string const form = Id().text();
    for (std::size_t i = 0; i < text.size(); ++i) {
        bool const isRight =
            form[i] == '-' ? text[i] == '-' : hexDigits.find(text[i]) != std::string_view::npos;
        if (!isRight)
            return false;
    }
    return true;
}

/// The only one that a test accepts; null when none is, throws the sentence when several are.
template <class Range, class Test>
auto onlyOne(Range const& range, Test const& test, std::string_view reference,
             std::string const& what) -> decltype(&*range.begin())
{
    decltype(&*range.begin()) found = nullptr;
    for (auto const& candidate : range) {
        if (!test(candidate))
            continue;
        if (found)
            throw ToolError(std::string(reference) + " matches several " + what +
                            "; use a longer id.");
        found = &candidate;
    }
    return found;
}

/// The n-th track of a kind, from 1; null beyond the last.
Track const* numbered(Project const& project, TrackKind kind, std::size_t number)
{
    for (Track const& track : project.tracks) {
        if (track.kind == kind && --number == 0)
            return &track;
    }
    return nullptr;
}

/// A reference such as "v1:2", taken apart; nothing when it is of another form.
struct Numbered {
    std::string_view track;
    std::size_t number = 0;
};
std::optional<Numbered> parseNumbered(std::string_view reference)
{
    std::size_t const colon = reference.rfind(':');
    if (colon == std::string_view::npos || colon == 0)
        return std::nullopt;
    auto const number = parseCount(reference.substr(colon + 1));
    if (!number)
        return std::nullopt;
    return Numbered{reference.substr(0, colon), *number};
}

std::vector<ClipPlace> allClips(Project const& project)
{
    std::vector<ClipPlace> places;
    for (Track const& track : project.tracks) {
        for (Clip const& clip : *track.clips)
            places.push_back({&track, &clip});
    }
    return places;
}

std::vector<BarPlace> allBars(Project const& project)
{
    std::vector<BarPlace> places;
    for (Track const& track : project.tracks) {
        if (!track.subtitles)
            continue;
        for (CaptionBar const& bar : (*track.subtitles)->bars)
            places.push_back({&track, &bar});
    }
    return places;
}

std::optional<ClipPlace> clipByID(Project const& project, std::string_view prefix)
{
    auto const clips = allClips(project);
    auto const* const found = onlyOne(
        clips, [&](ClipPlace const& place) { return beginsWith(place.clip->id, prefix); }, prefix,
        "clips");
    return found ? std::optional(*found) : std::nullopt;
}

std::optional<BarPlace> barByID(Project const& project, std::string_view prefix)
{
    auto const bars = allBars(project);
    auto const* const found = onlyOne(
        bars, [&](BarPlace const& place) { return beginsWith(place.bar->id, prefix); }, prefix,
        "bars");
    return found ? std::optional(*found) : std::nullopt;
}

std::string assetList(Project const& project)
{
    if (project.assets->empty())
        return "none; import one with media_import or give clip_add a path";
    std::string list;
    std::size_t listed = 0;
    for (auto const& [id, asset] : *project.assets) {
        if (listed++ == mostListed)
            return list + " and " + std::to_string(project.assets->size() - mostListed) + " more";
        list += (list.empty() ? "" : ", ") + asset.displayName;
    }
    return list;
}

/// A clip or bar's number on its track, from 1.
template <class Values>
std::size_t numberOf(Values const& values, Id const& id)
{
    auto const found = std::ranges::find(values, id, [](auto const& value) { return value.id; });
    return static_cast<std::size_t>(found - values.begin()) + 1;
}

} // namespace

Track const& resolveTrack(Project const& project, std::string_view reference)
{
    std::string const text(reference);
    auto const kind = reference.empty() ? std::nullopt : kindOfLetter(reference[0]);
    auto const number = kind ? parseCount(reference.substr(1)) : std::nullopt;
    if (number) {
        if (Track const* const track = *number ? numbered(project, *kind, *number) : nullptr)
            return *track;
        // "a1234567" may also be the beginning of an id.
        if (!looksLikeId(reference))
            throw ToolError(text + " is out of range. Tracks: " + trackList(project) + ".");
    }

    auto const isNamed = [&](Track const& track) { return track.name == reference; };
    auto const isNearlyNamed = [&](Track const& track) {
        return equalIgnoringCase(track.name, reference);
    };
    auto const hasID = [&](Track const& track) { return beginsWith(track.id, reference); };
    if (Track const* const track = onlyOne(project.tracks, isNamed, reference, "tracks"))
        return *track;
    if (Track const* const track = onlyOne(project.tracks, isNearlyNamed, reference, "tracks"))
        return *track;
    if (Track const* const track = onlyOne(project.tracks, hasID, reference, "tracks"))
        return *track;
    throw ToolError("No track " + text + ". Tracks: " + trackList(project) + ".");
}

ClipPlace resolveClip(Project const& project, std::string_view reference)
{
    std::string const text(reference);
    if (auto const place = parseNumbered(reference)) {
        Track const& track = resolveTrack(project, place->track);
        if (track.kind == TrackKind::subtitles)
            throw ToolError(trackTitle(project, track) +
                            " holds subtitle bars, not clips; use s-refs with the caption tools.");
        auto const& clips = *track.clips;
        if (place->number >= 1 && place->number <= clips.size())
            return {&track, &clips[place->number - 1]};
        throw ToolError("No clip " + text + ": " + trackTitle(project, track) + " has " +
                        std::to_string(clips.size()) + (clips.size() == 1 ? " clip." : " clips."));
    }
    if (!looksLikeId(reference))
        throw ToolError("Clip refs look like v1:2 or an 8-character id, not " + text +
                        ". Read `timeline` for the current refs.");
    if (auto const place = clipByID(project, reference))
        return *place;
    throw ToolError("No clip " + text + ". Read `timeline` for the current refs.");
}

BarPlace resolveBar(Project const& project, std::string_view reference)
{
    std::string const text(reference);
    ToolError const malformed("Bar refs look like s1:3 or an 8-character id, not " + text + ".");
    ToolError const missing("No subtitle bar " + text + ".");
    if (auto const place = parseNumbered(reference)) {
        Track const& track = resolveTrack(project, place->track);
        if (track.kind != TrackKind::subtitles)
            throw malformed;
        if (!track.subtitles || place->number < 1 ||
            place->number > (*track.subtitles)->bars.size())
            throw missing;
        return {&track, &(*track.subtitles)->bars[place->number - 1]};
    }
    if (!looksLikeId(reference))
        throw malformed;
    if (auto const place = barByID(project, reference))
        return *place;
    throw missing;
}

std::variant<ClipPlace, BarPlace> resolveItem(Project const& project, std::string_view reference)
{
    if (auto const place = parseNumbered(reference)) {
        if (resolveTrack(project, place->track).kind == TrackKind::subtitles)
            return resolveBar(project, reference);
    } else if (looksLikeId(reference)) {
        if (auto const bar = barByID(project, reference); bar && !clipByID(project, reference))
            return *bar;
    }
    return resolveClip(project, reference);
}

MediaAsset const& resolveAsset(Project const& project, std::string_view nameOrID)
{
    auto const find = [&](auto const& test) -> MediaAsset const* {
        auto const* const found = onlyOne(
            *project.assets, [&](auto const& entry) { return test(entry.second); }, nameOrID,
            "assets");
        return found ? &found->second : nullptr;
    };
    if (auto const* const asset =
            find([&](MediaAsset const& each) { return each.displayName == nameOrID; }))
        return *asset;
    if (auto const* const asset = find(
            [&](MediaAsset const& each) { return equalIgnoringCase(each.displayName, nameOrID); }))
        return *asset;
    if (looksLikeId(nameOrID)) {
        if (auto const* const asset =
                find([&](MediaAsset const& each) { return beginsWith(each.id, nameOrID); }))
            return *asset;
    }
    throw ToolError("No asset " + std::string(nameOrID) + ". Assets: " + assetList(project) + ".");
}

CaptionStyle const* findLook(std::span<CaptionStyle const> looks, std::string const& nameOrID)
{
    auto const isNamedSo = [&](CaptionStyle const& each) { return each.name == nameOrID; };
    auto const named = std::ranges::find_if(looks, isNamedSo);
    if (named != looks.end()) {
        if (std::any_of(named + 1, looks.end(), isNamedSo))
            throw ToolError("More than one look is called " + nameOrID +
                            "; give the id of the one you mean (see favorites).");
        return &*named;
    }
    auto const alike = std::ranges::find_if(
        looks, [&](CaptionStyle const& each) { return isSameName(each.name, nameOrID); });
    if (alike != looks.end())
        return &*alike;
    if (!looksLikeId(nameOrID))
        return nullptr;
    auto const hasID = [&](CaptionStyle const& each) { return beginsWith(each.id, nameOrID); };
    return onlyOne(looks, hasID, nameOrID, "looks");
}

CaptionStyle const& favorite(std::span<CaptionStyle const> looks, std::string const& nameOrID,
                             std::string const& what)
{
    if (CaptionStyle const* const look = findLook(looks, nameOrID))
        return *look;
    std::vector<std::string> words;
    std::string names;
    for (CaptionStyle const& look : looks) {
        words.push_back(look.name);
        names += (names.empty() ? "" : ", ") + look.name;
    }
    std::string sentence = "No " + what + " called " + nameOrID + ". ";
    if (auto const meant = nearestWord(nameOrID, words))
        sentence += "Did you mean " + *meant + "? ";
    sentence += looks.empty() ? "There are none." : "There are: " + names + ".";
    throw ToolError(sentence);
}

std::string trackRef(Project const& project, Track const& track)
{
    std::size_t number = 1;
    for (Track const& each : project.tracks) {
        if (each.id == track.id)
            break;
        if (each.kind == track.kind)
            ++number;
    }
    return letter(track.kind) + std::to_string(number);
}

std::string trackTitle(Project const& project, Track const& track)
{
    return trackRef(project, track) + " (" + track.name + ")";
}

std::string clipRef(Project const& project, Track const& track, Clip const& clip)
{
    return trackRef(project, track) + ":" + std::to_string(numberOf(*track.clips, clip.id));
}

std::string barRef(Project const& project, Track const& track, CaptionBar const& bar)
{
    return trackRef(project, track) + ":" +
           std::to_string(numberOf((*track.subtitles)->bars, bar.id));
}

std::string referenceList(std::vector<std::string> const& references)
{
    constexpr std::size_t most = 10;
    std::string list;
    for (std::size_t i = 0; i < references.size() && i < most; ++i)
        list += (i == 0 ? "" : ", ") + references[i];
    if (references.size() > most)
        list += " and " + std::to_string(references.size() - most) + " more";
    return list;
}

std::string trackList(Project const& project)
{
    std::string list;
    for (Track const& track : project.tracks)
        list += (list.empty() ? "" : ", ") + trackRef(project, track) + " \"" + track.name + "\"";
    return list.empty() ? "none" : list;
}

void requireUnlocked(Track const& track)
{
    if (track.isLocked)
        throw RefusedEdit({Reason::trackLocked, Subject::track(track.id)});
}

} // namespace framewright
