// Draws every frame of a project as an export does and encodes none of them:
//   bench_composite PROJECT_JSON HEIGHT [--frames]
// With --frames also how long each frame took: the median, and those at cuts.

#include "composition/composition_builder.h"
#include "editor/app_state.h"
#include "model/time_rules.h"
#include "pipeline/frame_drawer.h"
#include "platform/user_defaults.h"

#include <QCoreApplication>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string_view>
#include <vector>

namespace framewright {

namespace {

std::vector<double> cutTimes(BuiltComposition const& composition)
{
    std::vector<double> cuts;
    for (CompositionTrack const& track : composition.tracks) {
        for (CompositionSegment const& segment : track.segments) {
            if (segment.source == CompositionSegment::Source::footage &&
                track.kind == CompositionTrack::Kind::video && segment.timeRange.start.value > 0)
                cuts.push_back(segment.timeRange.start.seconds());
        }
    }
    std::ranges::sort(cuts);
    return cuts;
}

void printFrames(std::vector<double> const& milliseconds, BuiltComposition const& composition)
{
    std::vector<double> sorted = milliseconds;
    std::ranges::sort(sorted);
    double const median = sorted[sorted.size() / 2];
    std::printf("median %.1f ms, first %.1f ms\n", median, milliseconds.front());
    double worst = 0;
    for (double const cut : cutTimes(composition)) {
        auto const frame =
            std::size_t(std::ceil(cut * composition.video.framesPerSecond - timeTolerance));
        if (frame >= milliseconds.size())
            continue;
        worst = std::max(worst, milliseconds[frame]);
        std::printf("  cut at %6.2f s: %6.1f ms, %.1f x\n", cut, milliseconds[frame],
                    milliseconds[frame] / median);
    }
    std::printf("worst at cuts %.1f ms, %.1f x the median\n", worst, worst / median);
}

/// How long each frame took to draw, in milliseconds.
std::vector<double> drawAll(std::shared_ptr<BuiltComposition const> const& composition)
{
    FrameDrawer drawer({.order = FrameDrawer::Order::forward, .decoderThreads = 2, .openAhead = 1});
    drawer.show(composition);
    int const rate = composition->video.framesPerSecond;
    int const frames = int(std::lround(composition->duration * rate));
    std::vector<double> milliseconds;
    for (int frame = 0; frame < frames; ++frame) {
        auto const start = std::chrono::steady_clock::now();
        drawer.draw(double(frame) / rate);
        milliseconds.push_back(
            std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
                .count());
    }
    return milliseconds;
}

} // namespace

} // namespace framewright

int main(int argc, char** argv)
{
    using namespace framewright;
    QCoreApplication app(argc, argv);
    bool const printsFrames = argc == 4 && std::string_view(argv[3]) == "--frames";
    if (argc != 3 && !printsFrames) {
        std::fprintf(stderr, "bench_composite PROJECT_JSON HEIGHT [--frames]\n");
        return 2;
    }
    auto const settings =
        std::filesystem::temp_directory_path() / "framewright-bench-composite.ini";
    UserDefaults defaults(settings);
    AppState editor(defaults);
    QCoro::waitFor(editor.files().open(argv[1]));
    QCoro::waitFor(editor.media().loaded());
    Project const& project = editor.project();
    CompositionBuilder::Output const output{canvasWithHeight(project.aspect, std::atoi(argv[2])),
                                            exportFrameRate(project, editor.media().store()), true,
                                            DynamicRange::ofFootage};
    auto const composition = std::make_shared<BuiltComposition const>(
        CompositionBuilder::build(project, editor.media().store(), output));
    auto const milliseconds = drawAll(composition);
    std::printf("%zu frames\n", milliseconds.size());
    if (printsFrames && !milliseconds.empty())
        printFrames(milliseconds, *composition);
}
