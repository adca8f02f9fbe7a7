#include "stills/contact_sheet.h"

#include "model/time_rules.h"

#include <QFont>
#include <QImage>
#include <QPainter>

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace framewright {

namespace {

constexpr double usualFrames = 12;
constexpr int leastLabelled = 40; ///< The narrowest frame that "0:00.00" goes below.
QColor const paper(20, 20, 22);
QColor const ink(225, 225, 228);

/// All that is measured in a sheet, from the width of its frames.
struct Layout {
    Layout(AspectPreset canvas, int frameWidth, int columnCount, std::size_t frames)
        : width(frameWidth),
          height(stillSize(canvas, frameWidth).height),
          gap(std::max(2, frameWidth / 40)),
          label(frameWidth < leastLabelled ? 0 : std::clamp(frameWidth / 11, 12, 40)),
          columns(std::min(columnCount, int(frames))),
          rows((int(frames) + columnCount - 1) / columnCount)
    {
    }

    PixelSize size() const
    {
        return {gap + columns * (width + gap), gap + rows * (height + label + gap)};
    }

    QPoint corner(std::size_t frame) const
    {
        int const column = int(frame) % columns, row = int(frame) / columns;
        return {gap + column * (width + gap), gap + row * (height + label + gap)};
    }

    int width, height, gap, label, columns, rows;
};

QFont labelFont(int height)
{
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPixelSize(std::max(8, height * 7 / 10));
    return font;
}

} // namespace

Outcome<std::vector<double>> sheetTimes(SheetMoments const& moments, double duration)
{
    std::vector<double> times = moments.times;
    double count = double(times.size());
    if (times.empty()) {
        double const start = moments.start.value_or(0);
        double const end = std::min(moments.end.value_or(duration), duration);
        if (moments.every && !(*moments.every > 0))
            return Refusal{Reason::outOfRange, Subject::setting(Setting::sheetStep)};
        if (duration < timeTolerance)
            return Refusal{Reason::noPicture};
        if (!(end - start > timeTolerance))
            return Refusal{Reason::endNotAfterStart};
        double const step = moments.every.value_or((end - start) / usualFrames);
        count = std::max(1.0, std::ceil((end - start - timeTolerance) / step));
        for (double n = 0; n < count && n < double(mostSheetFrames); ++n)
            times.push_back(start + n * step);
    }
    if (count > double(mostSheetFrames))
        return Refusal{.reason = Reason::tooManyFrames, .value = count};
    return times;
}

std::string timeLabel(double seconds)
{
    auto const hundredths = std::llround(std::max(0.0, seconds) * 100);
    return fmt::format("{}:{:02}.{:02}", hundredths / 6000, hundredths / 100 % 60,
                       hundredths % 100);
}

PixelSize ContactSheet::size(AspectPreset canvas, std::size_t frames) const
{
    return Layout(canvas, frameWidth, columns, frames).size();
}

RGBImage ContactSheet::draw(StillFrames& stills, Project const& project, AssetStore const& assets,
                            std::span<double const> times) const
{
    Layout const layout(project.aspect, frameWidth, columns, times.size());
    PixelSize const size = layout.size();
    RGBImage sheet{size.width, size.height,
                   std::vector<std::uint8_t>(std::size_t(size.width) * size.height * 3)};
    QImage picture(sheet.pixels.data(), size.width, size.height, qsizetype(size.width) * 3,
                   QImage::Format_RGB888);
    picture.fill(paper);
    std::vector<RGBImage> const frames = stills.images(project, assets, times, frameWidth);
    QPainter painter(&picture);
    painter.setFont(labelFont(layout.label));
    painter.setPen(ink);
    for (std::size_t n = 0; n < frames.size(); ++n) {
        RGBImage const& frame = frames[n];
        QPoint const corner = layout.corner(n);
        painter.drawImage(corner, QImage(frame.pixels.data(), frame.width, frame.height,
                                         qsizetype(frame.width) * 3, QImage::Format_RGB888));
        QString const label = QString::fromStdString(timeLabel(times[n]));
        // Cut, it would be another time.
        if (layout.label > 0 && painter.fontMetrics().horizontalAdvance(label) <= layout.width)
            painter.drawText(
                QRect(corner.x(), corner.y() + layout.height, layout.width, layout.label),
                Qt::AlignCenter, label);
    }
    return sheet;
}

} // namespace framewright
