#pragma once

#include "composition/asset_store.h"
#include "model/project.h"

#include <string>
#include <utility>
#include <vector>

namespace framewright {

inline Id const camera = Id::fixed(101);     ///< 1920 x 1080, 30 a second, with sound.
inline Id const portrait = Id::fixed(102);   ///< 1080 x 1920, 30 a second, with sound.
inline Id const photo = Id::fixed(103);      ///< 3000 x 2000.
inline Id const music = Id::fixed(104);      ///< Sound only.
inline Id const hdrFootage = Id::fixed(105); ///< 3840 x 2160, HLG.
inline Id const unloaded = Id::fixed(199);   ///< Not in the store.

inline LoadedAsset moving(double width, double height, double frameRate = 30)
{
    LoadedAsset asset;
    asset.file = "/footage.mp4";
    asset.duration = 100;
    asset.naturalSize = {width, height};
    asset.hasVideo = asset.hasAudio = true;
    asset.frameRate = frameRate;
    return asset;
}

inline LoadedAsset audioOnly()
{
    LoadedAsset asset;
    asset.file = "/music.wav";
    asset.kind = MediaKind::audio;
    asset.duration = 100;
    asset.hasAudio = true;
    return asset;
}

inline AssetStore store()
{
    AssetStore assets;
    assets.insert(camera, moving(1920, 1080));
    assets.insert(portrait, moving(1080, 1920));
    LoadedAsset still = moving(3000, 2000, 0);
    still.kind = MediaKind::image;
    still.file = "/photo.jpg";
    still.hasAudio = false;
    assets.insert(photo, still);
    assets.insert(music, audioOnly());
    LoadedAsset hdr = moving(3840, 2160);
    hdr.isHDR = true;
    assets.insert(hdrFootage, hdr);
    return assets;
}

inline Clip clip(Id const& asset, double start, double length, double in = 0)
{
    Clip made;
    made.id = Id::random();
    made.assetID = asset;
    made.timelineStart = start;
    made.sourceStart = in;
    made.sourceEnd = in + length;
    return made;
}

inline Track track(TrackKind kind, std::string name, std::vector<Clip> clips)
{
    Track made;
    made.id = Id::random();
    made.kind = kind;
    made.name = std::move(name);
    made.clips = Shared(std::move(clips));
    return made;
}

inline Track videoTrack(std::vector<Clip> clips)
{
    return track(TrackKind::video, "Video", std::move(clips));
}

inline Track audioTrack(std::vector<Clip> clips)
{
    return track(TrackKind::audio, "Audio", std::move(clips));
}

inline Project project(std::vector<Track> tracks)
{
    Project made;
    made.tracks = std::move(tracks);
    return made;
}

} // namespace framewright
