#pragma once

#include "composition/audio_mix.h"
#include "composition/composition_track.h"
#include "composition/geometry.h"
#include "composition/media_time.h"
#include "composition/overlay.h"
#include "media/frame.h"
#include "model/aspect_preset.h"
#include "model/id.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace framewright {

/// Where a clip's frame is drawn.
struct Placement {
    /// From the picture as stored, in pixels of its natural size, to the render.
    AffineTransform transform;
    /// The visible part of the picture as stored, in pixels of its natural size; empty, meaning
    /// all of it, when it is uncropped.
    Rect crop;
    bool uncropped = true;
    Rect frame; ///< The visible picture in render pixels.

    bool operator==(Placement const&) const = default;
};

/// One clip in the stack of an instruction.
struct Layer {
    CompositionTrackID trackID = 0; ///< The track that plays it.
    Id clipID;                      ///< Which clip of the track; nil for a black plate.
    Placement placement;
    Size naturalSize;          ///< The frame size the placement was made for.
    bool isBlackPlate = false; ///< A placeholder or the filler: black, nothing is read.
    float opacity = 1;         ///< 0 to 1.

    bool operator==(Layer const&) const = default;
};

/// What is drawn over a stretch of time; it stays the same throughout.
struct CompositorInstruction {
    MediaTimeRange timeRange;
    std::vector<Layer> layers;     ///< Front to back: the first one covers the others.
    std::vector<Overlay> overlays; ///< In front of all layers, the last one foremost.

    /// The tracks of all layers, in their order.
    std::vector<CompositionTrackID> requiredSourceTrackIDs() const;

    bool operator==(CompositorInstruction const&) const = default;
};

/// How the frames of a composition are drawn.
struct VideoComposition {
    PixelSize renderSize; ///< Even.
    int framesPerSecond = 30;
    ColorTags colors = ColorTags::bt709();
    std::vector<CompositorInstruction> instructions; ///< In time order, without gap or overlap.

    /// The index of the instruction in force at `time`: the first one before the beginning, the
    /// last one past the end. There is always one.
    std::size_t instructionIndexAt(MediaTime time) const;

    bool operator==(VideoComposition const&) const = default;
};

/// A project as it is played: tracks with what they play, how to draw them, how loud they are.
struct BuiltComposition {
    std::vector<CompositionTrack> tracks; ///< By their ids, which count from 1.
    VideoComposition video;
    AudioMix audioMix;

    std::map<Id, CompositionTrackID> videoTrackIDs; ///< By the id of the project's track.
    std::map<Id, CompositionTrackID> audioTrackIDs; ///< By the id of the project's track.
    std::optional<CompositionTrackID> fillerTrack;

    double duration = 0;      ///< Seconds, to the end of the last clip of a video track.
    double audioDuration = 0; ///< Seconds, to the end of the last clip of an audio track.

    /// Null when there is no such track.
    CompositionTrack const* track(CompositionTrackID id) const;

    bool operator==(BuiltComposition const&) const = default;
};

} // namespace framewright
