#pragma once

#include "composition/asset_store.h"
#include "composition/composition.h"
#include "model/project.h"
#include "model/time_range.h"

#include <map>
#include <optional>
#include <span>
#include <vector>

namespace framewright {

/// The colour space of the output.
enum class DynamicRange {
    ofFootage, ///< BT.2020 HLG when any clip is HDR, else BT.709.
    standard,  ///< BT.709 always; HDR footage is mapped into it.
};

/// A level at a time on the timeline. Seconds; linear gain.
struct VolumePoint {
    double time = 0;
    float volume = 1;

    bool operator==(VolumePoint const&) const = default;
};

/// Turns a project into a composition. Pure: it opens no file and keeps no state.
class CompositionBuilder {
public:
    /// What a composition is built for.
    struct Output {
        PixelSize renderSize; ///< Even.
        int framesPerSecond = 30;
        /// Whether text and captions are burned in: for export and stills, not for the preview,
        /// which draws them live.
        bool burnsInText = true;
        DynamicRange dynamicRange = DynamicRange::ofFootage;

        bool operator==(Output const&) const = default;
    };

    using TrackIDs = std::map<Id, CompositionTrackID>;

    /// The composition of `project`, drawn at the size and rate of `output`.
    ///
    /// Its instructions cover [0, end of the last clip of a video track) in order, without gap or
    /// overlap; each one's layers run front to back. Places are render pixels, origin top left, y
    /// down. A clip whose asset is not in the store plays nothing; tracks below it show through.
    /// `overlays` are drawn in front of the picture when the output burns text in. Equal arguments
    /// give equal compositions, so callers may cache them.
    static BuiltComposition build(Project const& project, AssetStore const& assets,
                                  Output const& output, std::span<Overlay const> overlays = {});

    /// How to draw a project whose tracks have these composition tracks. Tracks that are not in
    /// `trackIDs` are skipped. `end` is where the last instruction ends, if not at `duration`; no
    /// instruction begins after it.
    static VideoComposition video(Project const& project, AssetStore const& assets,
                                  TrackIDs const& trackIDs,
                                  std::optional<CompositionTrackID> fillerTrack, double duration,
                                  Output const& output, std::span<Overlay const> overlays = {},
                                  std::optional<double> end = std::nullopt);

    /// The levels of the tracks that have these composition tracks: clip and track volumes, mute,
    /// solo and ducking.
    static AudioMix audioMix(Project const& project, TrackIDs const& trackIDs);

    /// When something plays that ducking tracks make room for. In time order; stretches less than
    /// half a second apart are one.
    static std::vector<TimeRange> duckTriggerRanges(Project const& project);

    /// The level of a clip over its time: `base`, and a quarter of it while a duck range lasts,
    /// with a quarter of a second of straight ramp on either side. Points in time order.
    static std::vector<VolumePoint> envelope(Clip const& clip, float base,
                                             std::span<TimeRange const> duckRanges);

    /// Where an asset is drawn: upright, fitted into the canvas, then scaled and moved by
    /// `transform`. An asset that can't be seen gets an empty rectangle.
    static Placement placement(LoadedAsset const& asset, ClipTransform const& transform,
                               PixelSize renderSize);

    /// The canvas's own size, or larger when the footage is, but no side above 3840.
    static PixelSize exportRenderSize(Project const& project, AssetStore const& assets);

    /// Whether any clip of a video track is HDR.
    static bool isHDR(Project const& project, AssetStore const& assets);
};

/// The preset's shape with this long side or this height, every side even.
PixelSize canvasWithLongSide(AspectPreset preset, double longSide);
PixelSize canvasWithHeight(AspectPreset preset, int height);
PixelSize canvasWithWidth(AspectPreset preset, int width);

/// The mastering display of the project's HDR footage; nothing when clips differ in it or one of
/// them doesn't name it.
std::optional<MasteringDisplay> exportMastering(Project const& project, AssetStore const& assets);

/// The rate of most of the footage that is seen, by duration: 24, 25, 30, 50 or 60, whichever is
/// nearest; 30 where nothing moves.
int exportFrameRate(Project const& project, AssetStore const& assets);

} // namespace framewright
