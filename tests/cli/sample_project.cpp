#include "sample_project.h"

namespace framewright {

namespace {

Clip clip(std::string const& digits)
{
    Clip clip;
    clip.id = idStarting(digits);
    clip.sourceEnd = 1;
    return clip;
}

Track track(TrackKind kind, std::string const& name, std::string const& digits,
            std::vector<Clip> clips = {})
{
    Track track;
    track.id = idStarting(digits);
    track.kind = kind;
    track.name = name;
    track.clips = std::move(clips);
    return track;
}

CaptionBar bar(std::string const& digits)
{
    CaptionBar bar;
    bar.id = idStarting(digits);
    return bar;
}

MediaAsset asset(std::string const& digits, std::string const& name)
{
    MediaAsset asset;
    asset.id = idStarting(digits);
    asset.displayName = name;
    return asset;
}

} // namespace

Id idStarting(std::string const& digits)
{
    // The rest tells apart those that begin alike.
    static int counter = 0;
    std::string const rest = std::to_string(1000 + ++counter);
    return Id::parse(digits + "-0000-4000-8000-00000000" + rest).value();
}

Project sampleProject()
{
    Project project;
    Track subtitles = track(TrackKind::subtitles, "Subtitles", "F0000005");
    SubtitleData data;
    data.bars = {bar("AAAAAAAA"), bar("BBBBBBBB")};
    subtitles.subtitles = data;
    project.tracks = {
        track(TrackKind::text, "Titles", "F0000001", {clip("33333333")}),
        track(TrackKind::video, "Video 1", "F0000002", {clip("11111111"), clip("22222222")}),
        track(TrackKind::video, "video 1", "A1234567"),
        track(TrackKind::audio, "Audio 1", "F0000004", {clip("22222222")}),
        subtitles,
    };
    std::map<Id, MediaAsset> assets;
    for (MediaAsset const& each : {asset("CCCCCCCC", "talk.mov"), asset("DDDDDDDD", "music.wav")})
        assets[each.id] = each;
    project.assets = std::move(assets);
    return project;
}

} // namespace framewright
