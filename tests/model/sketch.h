#pragma once

// Timelines as drawings: a letter is a second of the clip with that id, a dot a second of nothing.
//
//     sketch({{"v1", "AAAA.BB"}, {"a1", "..CC"}})
//
// Track ids begin with their kind: v video, a audio, t text, s subtitles. Clips on video and audio
// tracks play the file "talk.mov" from second 10 of its 100; those drawn in small letters are
// placeholders. Clips on text tracks are texts.

#include "model/outcome.h"
#include "model/project.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace framewright {

/// The id of a short name; a letter's id draws as that letter.
inline Id id(std::string_view name)
{
    if (name.size() == 1)
        return Id::fixed(static_cast<std::uint8_t>(name[0]));
    std::string hex;
    for (char const c : name.substr(0, 16)) {
        char digits[3];
        std::snprintf(digits, sizeof digits, "%02X", static_cast<unsigned char>(c));
        hex += digits;
    }
    hex.resize(32, 'F');
    for (std::size_t const dash : {8, 13, 18, 23})
        hex.insert(dash, 1, '-');
    return *Id::parse(hex);
}

inline char letter(Id const& clipID)
{
    return static_cast<char>(std::stoi(clipID.text().substr(34), nullptr, 16));
}

inline MediaAsset file(std::string const& name, MediaKind kind, double duration)
{
    MediaAsset asset;
    asset.id = id(name);
    asset.kind = kind;
    asset.duration = duration;
    asset.displayName = name;
    asset.url.path = asset.playbackURL.path = "/footage/" + name;
    return asset;
}

/// A clip `length` seconds long that plays `asset` from `in` on.
inline Clip clipOf(Id const& clipID, Id const& asset, double length, double in = 10)
{
    Clip clip;
    clip.id = clipID;
    clip.assetID = asset;
    clip.sourceStart = in;
    clip.sourceEnd = in + length;
    return clip;
}

inline Clip placeholder(std::string_view name, double length)
{
    Clip clip = clipOf(id(name), Clip::placeholderAssetID, length, 0);
    clip.placeholderName = std::string(name);
    return clip;
}

inline Clip textClip(std::string_view name, double length)
{
    Clip clip = clipOf(id(name), Clip::textAssetID, length, 0);
    TextOverlay overlay;
    overlay.text = std::string(name);
    clip.text = Shared(overlay);
    return clip;
}

/// The clip that a run of letters draws.
inline Clip clip(std::string_view letters)
{
    auto const length = static_cast<double>(letters.size());
    if (letters[0] >= 'a')
        return placeholder(letters.substr(0, 1), length);
    return clipOf(id(letters.substr(0, 1)), id("talk.mov"), length);
}

inline TrackKind kindOf(std::string_view trackName)
{
    char const c = trackName[0];
    return c == 'a'   ? TrackKind::audio
           : c == 't' ? TrackKind::text
           : c == 's' ? TrackKind::subtitles
                      : TrackKind::video;
}

inline std::vector<Clip> clipsDrawn(std::string_view drawing, TrackKind kind)
{
    std::vector<Clip> clips;
    for (std::size_t from = 0; from < drawing.size();) {
        std::size_t to = std::min(drawing.find_first_not_of(drawing[from], from), drawing.size());
        auto const letters = drawing.substr(from, to - from);
        if (drawing[from] != '.') {
            clips.push_back(kind == TrackKind::text
                                ? textClip(letters.substr(0, 1), double(letters.size()))
                                : clip(letters));
            clips.back().timelineStart = double(from);
        }
        from = to;
    }
    return clips;
}

struct Row {
    char const* track;
    char const* drawing;
};

/// A project of free tracks named after their ids ("V1"), with three files: "talk.mov" and
/// "song.wav" of 100 s, "face.jpg".
inline Project sketch(std::vector<Row> const& rows)
{
    Project project;
    for (auto const& asset :
         {file("talk.mov", MediaKind::video, 100), file("song.wav", MediaKind::audio, 100),
          file("face.jpg", MediaKind::image, 0)})
        project.assets.edit()[asset.id] = asset;
    for (Row const& row : rows) {
        Track track;
        track.id = id(row.track);
        track.kind = kindOf(row.track);
        track.name = row.track;
        track.name[0] = static_cast<char>(std::toupper(track.name[0]));
        track.clips = Shared(clipsDrawn(row.drawing, track.kind));
        project.tracks.push_back(track);
    }
    return project;
}

inline Project sketch(char const* drawing)
{
    return sketch({{"v1", drawing}});
}

inline Project magnetic(Project project, char const* track = "v1")
{
    project.track(id(track))->isMagnetic = true;
    return project;
}

inline Project locked(Project project, char const* track = "v1")
{
    project.track(id(track))->isLocked = true;
    return project;
}

/// A track as a drawing again; "!" where clips overlap, "?" where one is not on whole
/// seconds.
inline std::string drawing(Project const& project, char const* trackName = "v1")
{
    std::string row;
    for (Clip const& clip : *project.track(id(trackName))->clips) {
        double const start = std::round(clip.timelineStart);
        double const end = std::round(clip.end());
        if (std::abs(start - clip.timelineStart) > 1e-6 || std::abs(end - clip.end()) > 1e-6)
            return row + "?";
        if (row.size() > std::size_t(start))
            return row + "!";
        row.resize(std::size_t(start), '.');
        row.resize(std::size_t(end), letter(clip.id));
    }
    return row;
}

inline Clip const& find(Project const& project, std::string_view name)
{
    return *findClip(project, id(name))->clip;
}

/// What a test expects of an edit: that it is made, or refused for a reason, or as a refusal says.
struct Expected {
    Expected() = default;
    Expected(Reason why) noexcept : reason(why) {}
    Expected(Refusal refusal) noexcept : reason(refusal.reason), whole(std::move(refusal)) {}

    std::optional<Reason> reason;
    std::optional<Refusal> whole;
};

template <class T>
bool operator==(Outcome<T> const& outcome, Expected const& expected)
{
    if (outcome || !expected.reason)
        return bool(outcome) == !expected.reason;
    return outcome.refusal().reason == *expected.reason &&
           (!expected.whole || outcome.refusal() == *expected.whole);
}

inline void PrintTo(Expected const& expected, std::ostream* to)
{
    if (expected.reason)
        *to << "refused for reason " << int(*expected.reason);
    else
        *to << "made";
}

template <class T>
void PrintTo(Outcome<T> const& outcome, std::ostream* to)
{
    PrintTo(outcome ? Expected() : Expected(outcome.refusal()), to);
}

inline Refusal lockedTrack(std::string_view name)
{
    return {Reason::trackLocked, Subject::track(id(name))};
}

inline Refusal beyond(Setting setting) noexcept
{
    return {Reason::outOfRange, Subject::setting(setting)};
}

} // namespace framewright
