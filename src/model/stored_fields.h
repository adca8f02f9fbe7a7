#pragma once

// The stored form of every document value
//
// The problem: a reader, a writer and a test that each name the fields by themselves drift apart. A
// field that the writer forgets is silently lost with the next save.
//
// The method: each type lists its fields once, as a tuple of key, pointer to member and whether the
// key is required. Reader, writer and round-trip test walk this tuple at compile time, so adding a
// field here adds it to all three; no code is generated, and no field is looked up by name at run
// time. Enumerations list their words the same way. Ranges are part of the list where a value
// out of them would break an editing rule (`fault`).
//
// A missing optional field keeps its member's default. An empty std::optional is not written. Keys
// that no list names are reported by the reader, never dropped silently.

#include "model/project.h"
#include "model/project_document.h"
#include "model/time_rules.h"

#include <array>
#include <cmath>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>

namespace framewright {

template <class Owner, class Member>
struct StoredField {
    char const* key;
    Member Owner::*member;
    bool isRequired;
};

template <class Owner, class Member>
constexpr StoredField<Owner, Member> required(char const* key, Member Owner::*member)
{
    return {key, member, true};
}

template <class Owner, class Member>
constexpr StoredField<Owner, Member> optional(char const* key, Member Owner::*member)
{
    return {key, member, false};
}

/// Lists a type's fields. A type with invalid values also has a `fault`, which finds them.
template <class T>
struct Stored;

/// An invalid field of a value, and what it must be.
struct StoredFault {
    char const* key;
    std::string sentence;
};

template <class E>
struct StoredWords;

template <class E>
struct StoredWord {
    E value;
    std::string_view word;
};

template <>
struct StoredWords<TrackKind> {
    static constexpr std::array words = {
        StoredWord<TrackKind>{TrackKind::video, "video"},
        StoredWord<TrackKind>{TrackKind::audio, "audio"},
        StoredWord<TrackKind>{TrackKind::subtitles, "subtitles"},
        StoredWord<TrackKind>{TrackKind::text, "text"},
    };
};

template <>
struct StoredWords<MediaKind> {
    static constexpr std::array words = {
        StoredWord<MediaKind>{MediaKind::video, "video"},
        StoredWord<MediaKind>{MediaKind::image, "image"},
        StoredWord<MediaKind>{MediaKind::audio, "audio"},
    };
};

template <>
struct StoredWords<AspectPreset> {
    static constexpr std::array words = {
        StoredWord<AspectPreset>{AspectPreset::portrait, "portrait"},
        StoredWord<AspectPreset>{AspectPreset::landscape, "landscape"},
        StoredWord<AspectPreset>{AspectPreset::square, "square"},
        StoredWord<AspectPreset>{AspectPreset::fourFive, "fourFive"},
    };
};

template <>
struct StoredWords<CaptionPosition> {
    static constexpr std::array words = {
        StoredWord<CaptionPosition>{CaptionPosition::top, "top"},
        StoredWord<CaptionPosition>{CaptionPosition::center, "center"},
        StoredWord<CaptionPosition>{CaptionPosition::bottom, "bottom"},
    };
};

template <class E>
constexpr std::string_view storedWord(E value)
{
    for (auto const& entry : StoredWords<E>::words) {
        if (entry.value == value)
            return entry.word;
    }
    return {};
}

template <>
struct Stored<RGBAColor> {
    static constexpr auto fields = std::tuple{
        required("red", &RGBAColor::red),
        required("green", &RGBAColor::green),
        required("blue", &RGBAColor::blue),
        optional("alpha", &RGBAColor::alpha),
    };
};

template <>
struct Stored<CaptionStyle> {
    static constexpr auto fields = std::tuple{
        required("id", &CaptionStyle::id),
        required("name", &CaptionStyle::name),
        required("fontName", &CaptionStyle::fontName),
        required("fontSize", &CaptionStyle::fontSize),
        required("textColor", &CaptionStyle::textColor),
        optional("uppercase", &CaptionStyle::uppercase),
        optional("letterSpacing", &CaptionStyle::letterSpacing),
        optional("maxWidthFraction", &CaptionStyle::maxWidthFraction),
        optional("backgroundEnabled", &CaptionStyle::backgroundEnabled),
        optional("backgroundColor", &CaptionStyle::backgroundColor),
        optional("cornerRadius", &CaptionStyle::cornerRadius),
        optional("padding", &CaptionStyle::padding),
        optional("shadowEnabled", &CaptionStyle::shadowEnabled),
        optional("shadowOpacity", &CaptionStyle::shadowOpacity),
        optional("shadowRadius", &CaptionStyle::shadowRadius),
        optional("outlineEnabled", &CaptionStyle::outlineEnabled),
        optional("strokeColor", &CaptionStyle::strokeColor),
        optional("strokeWidth", &CaptionStyle::strokeWidth),
    };
};

template <>
struct Stored<CaptionWord> {
    static constexpr auto fields = std::tuple{
        required("text", &CaptionWord::text),
        required("start", &CaptionWord::start),
        required("end", &CaptionWord::end),
    };
};

template <>
struct Stored<CaptionBar> {
    static constexpr auto fields = std::tuple{
        required("id", &CaptionBar::id),       required("start", &CaptionBar::start),
        required("end", &CaptionBar::end),     required("text", &CaptionBar::text),
        required("words", &CaptionBar::words),
    };
};

template <>
struct Stored<CaptionPlacement> {
    static constexpr auto fields = std::tuple{
        required("position", &CaptionPlacement::position),
        required("verticalOffset", &CaptionPlacement::verticalOffset),
    };
};

template <>
struct Stored<SubtitleData> {
    static constexpr auto fields = std::tuple{
        optional("styleID", &SubtitleData::styleID),     optional("style", &SubtitleData::style),
        optional("placement", &SubtitleData::placement), optional("words", &SubtitleData::words),
        optional("bars", &SubtitleData::bars),
    };
};

template <>
struct Stored<ClipTransform> {
    static constexpr auto fields = std::tuple{
        required("scale", &ClipTransform::scale),
        required("offsetX", &ClipTransform::offsetX),
        required("offsetY", &ClipTransform::offsetY),
        required("cropLeft", &ClipTransform::cropLeft),
        required("cropRight", &ClipTransform::cropRight),
        required("cropTop", &ClipTransform::cropTop),
        required("cropBottom", &ClipTransform::cropBottom),
    };
};

template <>
struct Stored<TextOverlay> {
    static constexpr auto fields = std::tuple{
        required("text", &TextOverlay::text),   required("style", &TextOverlay::style),
        optional("x", &TextOverlay::x),         optional("y", &TextOverlay::y),
        optional("scale", &TextOverlay::scale),
    };
};

template <>
struct Stored<Clip> {
    static constexpr auto fields = std::tuple{
        required("id", &Clip::id),
        required("assetID", &Clip::assetID),
        required("timelineStart", &Clip::timelineStart),
        required("sourceStart", &Clip::sourceStart),
        required("sourceEnd", &Clip::sourceEnd),
        optional("volume", &Clip::volume),
        optional("transform", &Clip::transform),
        optional("placeholderName", &Clip::placeholderName),
        optional("placeholderNote", &Clip::placeholderNote),
        optional("text", &Clip::text),
    };

    static std::optional<StoredFault> fault(Clip const& clip)
    {
        auto const isTime = [](double time) { return std::abs(time) <= latestTime; };
        std::string const outOfRange = "must be a time of at most 1000000 seconds.";
        if (!isTime(clip.timelineStart))
            return StoredFault{"timelineStart", outOfRange};
        if (!isTime(clip.sourceStart))
            return StoredFault{"sourceStart", outOfRange};
        if (!isTime(clip.sourceEnd))
            return StoredFault{"sourceEnd", outOfRange};
        if (clip.sourceEnd <= clip.sourceStart)
            return StoredFault{"sourceEnd", "must be above sourceStart."};
        return std::nullopt;
    }
};

template <>
struct Stored<Track> {
    static constexpr auto fields = std::tuple{
        required("id", &Track::id),
        required("kind", &Track::kind),
        required("name", &Track::name),
        required("isMagnetic", &Track::isMagnetic),
        optional("isMuted", &Track::isMuted),
        optional("isSolo", &Track::isSolo),
        optional("volume", &Track::volume),
        optional("ducks", &Track::ducks),
        optional("clips", &Track::clips),
        optional("isLocked", &Track::isLocked),
        optional("isHidden", &Track::isHidden),
        optional("subtitles", &Track::subtitles),
        optional("opacity", &Track::opacity),
    };
};

template <>
struct Stored<MediaAsset> {
    static constexpr auto fields = std::tuple{
        required("id", &MediaAsset::id),
        required("url", &MediaAsset::url),
        required("playbackURL", &MediaAsset::playbackURL),
        required("kind", &MediaAsset::kind),
        required("duration", &MediaAsset::duration),
        required("displayName", &MediaAsset::displayName),
    };
};

template <>
struct Stored<Project> {
    static constexpr auto fields = std::tuple{
        required("assets", &Project::assets),
        required("tracks", &Project::tracks),
        required("aspect", &Project::aspect),
        optional("brief", &Project::brief),
    };
};

template <>
struct Stored<AssetRef> {
    static constexpr auto fields = std::tuple{
        required("id", &AssetRef::id),
        required("path", &AssetRef::path),
        optional("bookmark", &AssetRef::bookmark),
    };
};

template <>
struct Stored<ProjectDocument> {
    static constexpr auto fields = std::tuple{
        required("version", &ProjectDocument::version),
        required("project", &ProjectDocument::project),
        required("assetRefs", &ProjectDocument::assetRefs),
    };
};

} // namespace framewright
