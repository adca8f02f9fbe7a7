#include "raster/caption_burner.h"

#include <QString>
#include <QTextBoundaryFinder>

#include <algorithm>
#include <cmath>
#include <ranges>
#include <utility>

namespace framewright {

namespace {

constexpr double defaultVerticalOffset = 0.2;
constexpr double topDistance = 0.12; ///< Of captions at the top, of the canvas height.
constexpr double freeEdge = 0.03;    ///< Below the name of a placeholder, of the canvas width.
/// The band across the middle of the canvas where the names of placeholders stand.
constexpr double bandTop = 0.4, bandBottom = 0.6;

/// A text that is drawn when it is seen. Of several ways to set it the first is taken that leaves
/// the canvas's lower edge free, or else the last.
class TextPicture : public OverlayImage {
public:
    TextPicture(std::vector<TextBlock> ways, std::shared_ptr<TextImages const> images)
        : m_ways(std::move(ways)), m_images(std::move(images))
    {
    }

    std::shared_ptr<PlacedImage const> draw() const override
    {
        for (std::size_t n = 0; n + 1 < m_ways.size(); ++n) {
            auto image = m_images->image(m_ways[n]);
            PixelSize const canvas = m_ways[n].canvas;
            if (image->y + image->height <= canvas.height - freeEdge * canvas.width)
                return image;
        }
        return m_images->image(m_ways.back());
    }

    bool isLike(OverlayImage const& other) const override
    {
        auto const* const text = dynamic_cast<TextPicture const*>(&other);
        return text && text->m_ways == m_ways && text->m_images == m_images;
    }

private:
    std::vector<TextBlock> m_ways; ///< One at least.
    std::shared_ptr<TextImages const> m_images;
};

bool isBlank(std::string const& text)
{
    return std::ranges::all_of(text, [](char c) { return c == ' ' || (c >= '\t' && c <= '\r'); });
}

/// Whether something may be seen during the span, as the media engine rounds times.
bool isDuring(std::optional<TimeRange> const& span, double start, double end)
{
    constexpr double rounding = 1.0 / MediaTime::timescale;
    return start < end &&
           (!span || (start <= span->end + rounding && span->start < end + rounding));
}

/// Collects overlays in the order in which they are drawn.
class Collection {
public:
    Collection(PixelSize canvas, std::optional<TimeRange> during,
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
        add(start, end, std::vector{std::move(block)});
    }

    /// In the first of these ways that fits.
    void add(double start, double end, std::vector<TextBlock> ways)
    {
        MediaTimeRange const range{MediaTime::fromSeconds(start), MediaTime::fromSeconds(end)};
        if (range.start < range.end)
            m_overlays.push_back(
                {range, std::make_shared<TextPicture const>(std::move(ways), m_images)});
    }

    double height() const { return m_canvas.height; }
    double width() const { return m_canvas.width; }
    std::vector<Overlay> taken() { return std::move(m_overlays); }

private:
    PixelSize m_canvas;
    std::optional<TimeRange> m_during;
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

/// On the flattest canvas there is room for nine lines of the smallest size below the middle, and
/// for so many letters in them however wide they are.
QString shortened(QString const& name)
{
    constexpr qsizetype mostLetters = 140;
    QTextBoundaryFinder clusters(QTextBoundaryFinder::Grapheme, name);
    clusters.setPosition(std::min(name.size(), mostLetters));
    if (clusters.position() == name.size())
        return name;
    if (!clusters.isAtBoundary())
        clusters.toPreviousBoundary();
    return name.left(clusters.position()).trimmed() + u'…';
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
    QString const name = QString::fromStdString(plate.name).simplified();
    std::vector<TextBlock> ways;
    auto const addWay = [&](QString const& words, float size) {
        TextBlock way = to.block(words.toStdString(), plateStyle("system:semibold", size, 0.88));
        way.anchor = TextBlock::Anchor::top;
        way.y = to.height() / 2;
        ways.push_back(std::move(way));
    };
    addWay(name, 54);
    addWay(name, 36);
    addWay(name, 24);
    addWay(shortened(name), 24);
    to.add(plate.start, plate.end, std::move(ways));
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
    block.edges = TextBlock::Edges::inside;
    if (placement.position == CaptionPosition::top) {
        block.anchor = TextBlock::Anchor::top;
        block.y = topDistance * height;
    } else if (placement.position == CaptionPosition::bottom) {
        double const offset = std::isfinite(placement.verticalOffset)
                                  ? std::clamp(placement.verticalOffset, 0.0, 1.0)
                                  : defaultVerticalOffset;
        block.anchor = TextBlock::Anchor::bottom;
        block.y = (1 - offset) * height;
    }
}

/// The bars that can be seen, in time order.
std::vector<CaptionBar const*> visibleBars(SubtitleData const& captions)
{
    std::vector<CaptionBar const*> bars;
    for (CaptionBar const& bar : captions.bars) {
        if (bar.start < bar.end && !isBlank(bar.text))
            bars.push_back(&bar);
    }
    std::ranges::stable_sort(bars, {}, &CaptionBar::start);
    return bars;
}

/// Bars that overlap, or are out of order, were made by hand. Two at one place can't be read, so
/// the next one wins; of two that begin together it is the later one in the list.
void addCaptions(SubtitleData const& captions, Collection& to)
{
    std::vector<CaptionBar const*> const bars = visibleBars(captions);
    for (std::size_t n = 0; n < bars.size(); ++n) {
        CaptionBar const& bar = *bars[n];
        double const end = n + 1 < bars.size() ? std::min(bar.end, bars[n + 1]->start) : bar.end;
        if (!to.isWanted(bar.start, end))
            continue;
        TextBlock block = to.block(bar.text, captions.style);
        place(block, captions.placement, to.height());
        to.add(bar.start, end, std::move(block));
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
void takeOut(TimeRange const& hidden, std::vector<TimeRange>& spans)
{
    for (std::size_t n = spans.size(); n-- > 0;) {
        TimeRange const span = spans[n];
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
                                             std::optional<TimeRange> during) const
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
                                                               std::optional<TimeRange> during)
{
    PixelSize const canvas = canvasWithWidth(project.aspect, 1080);
    std::vector<PlaceholderPlate> plates;
    std::vector<TimeRange> covered; // By the tracks above.
    for (Track const* track : project.videoTracks()) {
        if (track->isHidden)
            continue;
        std::vector<TimeRange> coveredHere;
        for (Clip const& clip : *track->clips) {
            if (!isDuring(during, clip.timelineStart, clip.end()))
                continue;
            if (coversNames(clip, assets, canvas))
                coveredHere.push_back({clip.timelineStart, clip.end()});
            if (!clip.isPlaceholder())
                continue;
            std::vector<TimeRange> seen = {{clip.timelineStart, clip.end()}};
            for (TimeRange const& span : covered)
                takeOut(span, seen);
            for (TimeRange const& span : seen) {
                if (isDuring(during, span.start, span.end))
                    plates.push_back({span.start, span.end, clip.placeholderName.value_or("")});
            }
        }
        covered.insert(covered.end(), coveredHere.begin(), coveredHere.end());
    }
    return plates;
}

} // namespace framewright
