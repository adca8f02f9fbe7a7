// Draws every frame of a project as an export does and encodes none of them:
//   bench_composite PROJECT_JSON HEIGHT

#include "composition/composition_builder.h"
#include "editor/app_state.h"
#include "pipeline/clip_frame_source.h"
#include "platform/user_defaults.h"
#include "raster/frame_compositor.h"

#include <QCoreApplication>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

namespace framewright {

namespace {

/// The number of pictures that were drawn.
int drawAll(Project const& project, AssetStore const& assets, int height)
{
    CompositionBuilder::Output const output{canvasWithHeight(project.aspect, height),
                                            exportFrameRate(project, assets), true,
                                            DynamicRange::ofFootage};
    BuiltComposition const composition = CompositionBuilder::build(project, assets, output);
    OpenReaders readers(4, 2);
    ReadPhotos photos(2);
    ClipFrameSource source(composition, readers, photos, ClipFrameSource::Reading::forward);
    FrameCompositor compositor(composition.video, source);
    int const frames = int(std::lround(project.videoDuration() * output.framesPerSecond));
    for (int frame = 0; frame < frames; ++frame)
        compositor.draw(double(frame) / output.framesPerSecond);
    return frames;
}

} // namespace

} // namespace framewright

int main(int argc, char** argv)
{
    using namespace framewright;
    QCoreApplication app(argc, argv);
    if (argc != 3) {
        std::fprintf(stderr, "bench_composite PROJECT_JSON HEIGHT\n");
        return 2;
    }
    auto const settings =
        std::filesystem::temp_directory_path() / "framewright-bench-composite.ini";
    UserDefaults defaults(settings);
    AppState editor(defaults);
    QCoro::waitFor(editor.files().open(argv[1]));
    QCoro::waitFor(editor.media().loaded());
    std::printf("%d pictures\n", drawAll(editor.project(), editor.media().store(), std::atoi(argv[2])));
}
