#pragma once

#include "model/id.h"
#include "model/shared.h"
#include "model/style.h"
#include "model/time_range.h"

#include <optional>
#include <string>

namespace framewright {

/// How a frame or image is placed in the canvas. The defaults fit all of it, centred.
struct ClipTransform {
    double scale = 1;    ///< 1 fits the canvas.
    double offsetX = 0;  ///< From the centre, as a fraction of the canvas width.
    double offsetY = 0;  ///< From the centre, as a fraction of the canvas height; positive is down.
    double cropLeft = 0; ///< Crops are fractions of the upright frame cut from each edge.
    double cropRight = 0;
    double cropTop = 0;
    double cropBottom = 0;

    bool operator==(ClipTransform const&) const = default;
};

/// The words of a text clip and their style.
struct TextOverlay {
    std::string text;
    CaptionStyle style;
    double x = 0.5; ///< Centre, as a fraction of the canvas width.
    double y = 0.5; ///< Centre, as a fraction of the canvas height.
    double scale = 1;

    bool operator==(TextOverlay const&) const = default;
};

/// A range of one asset, placed on a track.
///
/// All times are seconds. On the timeline it covers [timelineStart, end()), in the asset
/// [sourceStart, sourceEnd): half-open, and equally long.
struct Clip {
    /// Marks a slot without footage yet.
    static constexpr Id placeholderAssetID = Id::fixed(1);
    /// Marks a text clip: it plays no file, its content is `text`.
    static constexpr Id textAssetID = Id::fixed(2);

    Id id;
    Id assetID;
    double timelineStart = 0;
    double sourceStart = 0;
    double sourceEnd = 0;
    float volume = 1; ///< Linear gain.
    ClipTransform transform;
    std::optional<std::string> placeholderName;
    std::optional<std::string> placeholderNote; ///< What should fill the slot.
    std::optional<Shared<TextOverlay>> text;

    double length() const { return sourceEnd - sourceStart; }
    double end() const { return timelineStart + length(); }
    double middle() const { return timelineStart + length() / 2; }
    TimeRange range() const { return {timelineStart, end()}; }
    bool covers(double time) const { return range().contains(time); }

    bool isPlaceholder() const { return assetID == placeholderAssetID; }
    bool isText() const { return assetID == textAssetID; }
    /// Whether it plays a media file.
    bool hasMedia() const { return !isPlaceholder() && !isText(); }

    bool operator==(Clip const&) const = default;
};

} // namespace framewright
