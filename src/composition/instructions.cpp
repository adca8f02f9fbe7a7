// How a project is drawn: its instructions, and where each picture goes.

#include "composition/composition_builder.h"

#include "model/time_rules.h"

#include <algorithm>

namespace framewright {

namespace {

std::vector<Track const*> shownTracks(Project const& project)
{
    std::vector<Track const*> tracks = project.videoTracks();
    std::erase_if(tracks, [](Track const* track) { return track->isHidden; });
    return tracks;
}

/// Where the picture changes, in order, none nearer to the one before than the tolerance.
std::vector<double> cutPoints(std::vector<Track const*> const& tracks, double duration)
{
    std::vector<double> times = {0, duration};
    for (Track const* track : tracks) {
        for (Clip const& clip : *track->clips) {
            times.push_back(std::clamp(clip.timelineStart, 0.0, duration));
            times.push_back(std::clamp(clip.end(), 0.0, duration));
        }
    }
    std::ranges::sort(times);
    std::vector<double> kept;
    for (double const time : times) {
        if (kept.empty() || time - kept.back() >= timeTolerance)
            kept.push_back(time);
    }
    return kept;
}

/// Finds the clips of a track that cover times asked for in rising order.
class ClipCursor {
public:
    explicit ClipCursor(std::vector<Clip> const& clips)
        : m_clips(clips), m_isSorted(std::ranges::is_sorted(clips, {}, &Clip::timelineStart))
    {
    }

    /// The first clip, in the track's order, that covers the time.
    Clip const* at(double time)
    {
        while (m_first < m_clips.size() && m_clips[m_first].end() <= time)
            ++m_first;
        for (std::size_t n = m_first; n < m_clips.size(); ++n) {
            if (m_clips[n].covers(time))
                return &m_clips[n];
            if (m_isSorted && m_clips[n].timelineStart > time)
                break;
        }
        return nullptr;
    }

private:
    std::vector<Clip> const& m_clips;
    bool m_isSorted;
    std::size_t m_first = 0;
};

/// The scale at which a picture that is fitted at 1 covers the whole render.
double fillScale(Size size, PixelSize render)
{
    if (size.isEmpty())
        return 1;
    double const x = render.width / size.width;
    double const y = render.height / size.height;
    return std::max(x, y) / std::min(x, y);
}

Layer blackLayer(CompositionTrackID trackID, std::optional<LoadedAsset> const& filler,
                 PixelSize render, float opacity)
{
    Layer layer;
    layer.trackID = trackID;
    layer.isBlackPlate = true;
    layer.opacity = opacity;
    LoadedAsset plate = filler.value_or(LoadedAsset());
    if (plate.naturalSize.isEmpty())
        plate.naturalSize = {double(render.width), double(render.height)};
    layer.naturalSize = plate.naturalSize;
    ClipTransform const filled{.scale = fillScale(plate.displaySize(), render)};
    layer.placement = CompositionBuilder::placement(plate, filled, render);
    return layer;
}

float drawnOpacity(Track const& track)
{
    return track.opacity >= 0.999 ? 1.0f : float(std::clamp(track.opacity, 0.0, 1.0));
}

/// A video track that is drawn, with its place in the composition.
struct DrawnTrack {
    Track const& track;
    CompositionTrackID id;
    ClipCursor clips;
};

std::vector<Layer> layersAt(double time, std::vector<DrawnTrack>& tracks, AssetStore const& assets,
                            std::optional<CompositionTrackID> fillerTrack, PixelSize render)
{
    std::vector<Layer> layers;
    for (DrawnTrack& drawn : tracks) {
        Clip const* const clip = drawn.clips.at(time);
        if (!clip)
            continue;
        float const opacity = drawnOpacity(drawn.track);
        if (clip->isPlaceholder()) {
            layers.push_back(
                blackLayer(fillerTrack.value_or(drawn.id), assets.filler, render, opacity));
        } else if (LoadedAsset const* const asset = assets.find(clip->assetID)) {
            Layer layer;
            layer.trackID = drawn.id;
            layer.clipID = clip->id;
            layer.placement = CompositionBuilder::placement(*asset, clip->transform, render);
            layer.naturalSize = asset->naturalSize;
            layer.opacity = opacity;
            layers.push_back(layer);
        }
    }
    if (fillerTrack)
        layers.push_back(blackLayer(*fillerTrack, assets.filler, render, 1));
    return layers;
}

/// Finds the overlays that are seen during ranges asked for in rising order.
class OverlayCursor {
public:
    explicit OverlayCursor(std::span<Overlay const> overlays) : m_overlays(overlays)
    {
        for (std::size_t n = 0; n < overlays.size(); ++n)
            m_waiting.push_back(n);
        std::ranges::stable_sort(m_waiting, {}, [&](std::size_t n) { return start(n); });
    }

    /// In their own order.
    std::vector<Overlay> during(MediaTimeRange const& range)
    {
        for (; m_next < m_waiting.size() && start(m_waiting[m_next]) < range.end; ++m_next)
            m_begun.push_back(m_waiting[m_next]);
        std::erase_if(m_begun,
                      [&](std::size_t n) { return m_overlays[n].timeRange.end <= range.start; });
        std::ranges::sort(m_begun);
        std::vector<Overlay> seen;
        for (std::size_t const n : m_begun)
            seen.push_back(m_overlays[n]);
        return seen;
    }

private:
    MediaTime start(std::size_t n) const { return m_overlays[n].timeRange.start; }

    std::span<Overlay const> m_overlays;
    std::vector<std::size_t> m_waiting; ///< By their starts.
    std::vector<std::size_t> m_begun;
    std::size_t m_next = 0;
};

} // namespace

VideoComposition CompositionBuilder::video(Project const& project, AssetStore const& assets,
                                           TrackIDs const& trackIDs,
                                           std::optional<CompositionTrackID> fillerTrack,
                                           double duration, Output const& output,
                                           std::span<Overlay const> overlays,
                                           std::optional<double> end)
{
    VideoComposition video;
    video.renderSize = output.renderSize;
    video.framesPerSecond = std::max(1, output.framesPerSecond);
    bool const makesHDR = output.dynamicRange == DynamicRange::ofFootage && isHDR(project, assets);
    video.colors = makesHDR ? ColorTags::hlg() : ColorTags::bt709();

    std::vector<Track const*> const shown = shownTracks(project);
    std::vector<DrawnTrack> tracks;
    for (Track const* track : shown) {
        if (auto const found = trackIDs.find(track->id); found != trackIDs.end())
            tracks.push_back({*track, found->second, ClipCursor(*track->clips)});
    }

    std::vector<double> cuts = cutPoints(shown, duration);
    if (cuts.size() == 1)
        cuts.push_back(cuts.front()); // An empty piece has one instruction all the same.
    double const lastEnd = end.value_or(duration);
    OverlayCursor burned(output.burnsInText ? overlays : std::span<Overlay const>());
    MediaTime start;
    for (std::size_t n = 0; n + 1 < cuts.size(); ++n) {
        bool const isLast = n + 2 == cuts.size() || (end && cuts[n + 1] >= *end);
        CompositorInstruction instruction;
        instruction.timeRange = {start, MediaTime::fromSeconds(isLast ? lastEnd : cuts[n + 1])};
        bool const isEmpty = instruction.timeRange.end <= start;
        if (isEmpty && !(isLast && video.instructions.empty()))
            continue; // Shorter than the media engine can count.
        start = instruction.timeRange.end;
        instruction.layers =
            layersAt((cuts[n] + cuts[n + 1]) / 2, tracks, assets, fillerTrack, output.renderSize);
        instruction.overlays = burned.during(instruction.timeRange);
        video.instructions.push_back(std::move(instruction));
        if (isLast)
            break;
    }
    return video;
}

Placement CompositionBuilder::placement(LoadedAsset const& asset, ClipTransform const& transform,
                                        PixelSize renderSize)
{
    Rect const natural{0, 0, asset.naturalSize.width, asset.naturalSize.height};
    Rect const shown = asset.preferredTransform.apply(natural);
    if (shown.isEmpty())
        return {};

    auto const upright =
        asset.preferredTransform.then(AffineTransform::translation(-shown.x, -shown.y));
    double const fit = std::min(renderSize.width / shown.width, renderSize.height / shown.height);
    double const scale = fit * transform.scale;
    double const width = shown.width * scale;
    double const height = shown.height * scale;
    double const x = transform.offsetX * renderSize.width + renderSize.width / 2.0 - width / 2;
    double const y = transform.offsetY * renderSize.height + renderSize.height / 2.0 - height / 2;

    Placement placement;
    placement.transform = upright.then(AffineTransform::scaling(scale, scale))
                              .then(AffineTransform::translation(x, y));
    placement.frame = {x, y, width, height};
    placement.uncropped = !(transform.cropLeft > 0 || transform.cropRight > 0 ||
                            transform.cropTop > 0 || transform.cropBottom > 0);
    if (!placement.uncropped) {
        double const across = 1 - transform.cropLeft - transform.cropRight;
        double const down = 1 - transform.cropTop - transform.cropBottom;
        placement.crop = upright.inverse().apply(Rect{transform.cropLeft * shown.width,
                                                      transform.cropTop * shown.height,
                                                      across * shown.width, down * shown.height});
        placement.frame = {x + transform.cropLeft * width, y + transform.cropTop * height,
                           across * width, down * height};
    }
    return placement;
}

} // namespace framewright
