#include "render/caption_burner.h"

#include <algorithm>
#include <cmath>
#include <ranges>
#include <utility>

namespace framewright {

namespace {

constexpr double defaultVerticalOffset = 0.2;
/// The band across the middle of the canvas where the names of placeholders stand.
constexpr double bandTop = 0.4, bandBottom = 0.6;

/// A text that is drawn when it is seen.
class TextPicture : public OverlayPicture {
public:
    TextPicture(TextBlock block, std::shared_ptr<TextImages const> images)
        : m_block(std::move(block)), m_images(std::move(images))
    {
    }

    std::shared_ptr<PlacedImage const> draw() const override { return m_images->image(m_block); }

    bool isLike(OverlayPicture const& other) const override
    {
        auto const* const text = dynamic_cast<TextPicture const*>(&other);
        return text && text->m_block == m_block && text->m_images == m_images;
    }

private:
    TextBlock m_block;
    std::shared_ptr<TextImages const> m_images;
};

bool isBlank(std::string const& text)
{
    return std::ranges::all_of(text, [](char c) { return c == ' ' || (c >= '\t' && c <= '\r'); });
}

/// Whether something may be seen during the span, as the media engine rounds times.
bool isDuring(std::optional<TimeSpan> const& span, double start, double end)
{
    constexpr double rounding = 1.0 / MediaTime::timescale;
    return start < end &&
           (!span || (start <= span->end + rounding && span->start < end + rounding));
}

/// Collects overlays in the order in which they are drawn.
class Collection {
public:
    Collection(PixelSize canvas, std::optional<TimeSpan> during,
               std::shared_ptr<TextImages const> images)
        : m_canvas(canvas), m_during(during), m_images(std::move(images))
    {
    }

    bool isWanted(double start, double end) const { return isDuring(m_during, start, end); }

    TextBlock block(std::string text, CaptionStyle style) const
    {
        TextBlock block;
        block.text = std::move(text);
        block.style = std::move(style);
        block.canvas = m_canvas;
        block.x = m_canvas.width / 2.0;
        block.y = m_canvas.height / 2.0;
        return block;
    }

    void add(double start, double end, TextBlock block)
    {
        MediaTimeRange const range{MediaTime::fromSeconds(start), MediaTime::fromSeconds(end)};
        if (range.start < range.end)
            m_overlays.push_back(
                {range, std::make_shared<TextPicture const>(std::move(block), m_images)});
    }

    double height() const { return m_canvas.height; }
    double width() const { return m_canvas.width; }
    std::vector<Overlay> taken() { return std::move(m_overlays); }

private:
    PixelSize m_canvas;
    std::optional<TimeSpan> m_during;
    std::shared_ptr<TextImages const> m_images;
    std::vector<Overlay> m_overlays;
};

CaptionStyle plateStyle(std::string fontName, float size, double opacity)
{
    CaptionStyle style;
    style.fontName = std::move(fontName);
    style.fontSize = size;
    style.textColor = {1, 1, 1, opacity};
    style.maxWidthFraction = 0.8F;
    return style;
}

/// A small heading, and under it the name.
void addPlate(PlaceholderPlate const& plate, Collection& to)
{
    CaptionStyle headingStyle = plateStyle("system:medium", 26, 0.45);
    headingStyle.letterSpacing = 5;
    headingStyle.uppercase = true;
    TextBlock heading = to.block("Placeholder", headingStyle);
    heading.anchor = TextBlock::Anchor::bottom;
    heading.y = to.height() / 2 - to.width() * 0.02;
    to.add(plate.start, plate.end, std::move(heading));
    if (isBlank(plate.name))
        return;
    TextBlock name = to.block(plate.name, plateStyle("system:semibold", 54, 0.88));
    name.anchor = TextBlock::Anchor::top;
    name.y = to.height() / 2;
    to.add(plate.start, plate.end, std::move(name));
}

void addTexts(Track const& track, Collection& to)
{
    for (Clip const& clip : *track.clips) {
        if (!clip.text || !to.isWanted(clip.timelineStart, clip.end()))
            continue;
        TextOverlay const& text = **clip.text;
        if (isBlank(text.text))
            continue;
        TextBlock block = to.block(text.text, text.style);
        block.x = text.x * to.width();
        block.y = text.y * to.height();
        block.scale = text.scale;
        to.add(clip.timelineStart, clip.end(), std::move(block));
    }
}

void place(TextBlock& block, CaptionPlacement const& placement, double height)
{
    double const offset = std::isfinite(placement.verticalOffset)
                              ? std::clamp(placement.verticalOffset, 0.0, 1.0)
                              : defaultVerticalOffset;
    block.edges = TextBlock::Edges::inside;
    if (placement.position == CaptionPosition::top) {
        block.anchor = TextBlock::Anchor::top;
        block.y = offset * height;
    } else if (placement.position == CaptionPosition::bottom) {
        block.anchor = TextBlock::Anchor::bottom;
        block.y = (1 - offset) * height;
    }
}

void addCaptions(SubtitleData const& captions, Collection& to)
{
    std::vector<CaptionBar> const& bars = captions.bars;
    for (std::size_t n = 0; n < bars.size(); ++n) {
        // Bars that overlap were made by hand: two at one place can't be read, so the next one
        // wins.
        double end = bars[n].end;
        if (n + 1 < bars.size() && bars[n + 1].start > bars[n].start)
            end = std::min(end, bars[n + 1].start);
        if (!to.isWanted(bars[n].start, end) || isBlank(bars[n].text))
            continue;
        TextBlock block = to.block(bars[n].text, captions.style);
        place(block, captions.placement, to.height());
        to.add(bars[n].start, end, std::move(block));
    }
}

/// Whether a clip's picture reaches into the band where the name of a placeholder stands.
bool coversNames(Clip const& clip, AssetStore const& assets, PixelSize canvas)
{
    if (clip.isPlaceholder())
        return true;
    LoadedAsset const* const asset = assets.find(clip.assetID);
    if (!asset)
        return false;
    Rect const frame = CompositionBuilder::placement(*asset, clip.transform, canvas).frame;
    return frame.x < canvas.width && frame.x + frame.width > 0 &&
           frame.y < bandBottom * canvas.height && frame.y + frame.height > bandTop * canvas.height;
}

/// What is left of the spans when `hidden` is taken out.
void takeOut(TimeSpan const& hidden, std::vector<TimeSpan>& spans)
{
    for (std::size_t n = spans.size(); n-- > 0;) {
        TimeSpan const span = spans[n];
        if (hidden.end <= span.start || span.end <= hidden.start)
            continue;
        spans.erase(spans.begin() + std::ptrdiff_t(n));
        if (hidden.end < span.end)
            spans.insert(spans.begin() + std::ptrdiff_t(n), {hidden.end, span.end});
        if (span.start < hidden.start)
            spans.insert(spans.begin() + std::ptrdiff_t(n), {span.start, hidden.start});
    }
}

} // namespace

CaptionBurner::CaptionBurner(std::shared_ptr<FontRegistry const> fonts)
    : m_images(std::make_shared<TextImages const>(std::move(fonts)))
{
}

std::vector<Overlay> CaptionBurner::overlays(Project const& project, AssetStore const& assets,
                                             PixelSize renderSize,
                                             std::optional<TimeSpan> during) const
{
    Collection overlays(renderSize, during, m_images);
    for (PlaceholderPlate const& plate : placeholderPlates(project, assets, during))
        addPlate(plate, overlays);
    for (Track const& track : std::views::reverse(project.tracks)) {
        if (track.isHidden)
            continue;
        if (track.kind == TrackKind::text)
            addTexts(track, overlays);
        else if (track.kind == TrackKind::subtitles && track.subtitles)
            addCaptions(**track.subtitles, overlays);
    }
    return overlays.taken();
}

std::vector<PlaceholderPlate> CaptionBurner::placeholderPlates(Project const& project,
                                                               AssetStore const& assets,
                                                               std::optional<TimeSpan> during)
{
    PixelSize const canvas = canvasWithWidth(project.aspect, 1080);
    std::vector<PlaceholderPlate> plates;
    std::vector<TimeSpan> covered; // By the tracks above.
    for (Track const* track : project.videoTracks()) {
        if (track->isHidden)
            continue;
        std::vector<TimeSpan> coveredHere;
        for (Clip const& clip : *track->clips) {
            if (!isDuring(during, clip.timelineStart, clip.end()))
                continue;
            if (coversNames(clip, assets, canvas))
                coveredHere.push_back({clip.timelineStart, clip.end()});
            if (!clip.isPlaceholder())
                continue;
            std::vector<TimeSpan> seen = {{clip.timelineStart, clip.end()}};
            for (TimeSpan const& span : covered)
                takeOut(span, seen);
            for (TimeSpan const& span : seen) {
                if (isDuring(during, span.start, span.end))
                    plates.push_back({span.start, span.end, clip.placeholderName.value_or("")});
            }
        }
        covered.insert(covered.end(), coveredHere.begin(), coveredHere.end());
    }
    return plates;
}

} // namespace framewright
