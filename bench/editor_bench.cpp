// The main thread's part of editing, opening and saving.

#include "editor/commands/clip_changing_commands.h"
#include "editor/commands/selection_commands.h"
#include "model/track_editing.h"
#include "platform/user_defaults.h"

#include <QCoreApplication>

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace framewright {

namespace {

/// 10,000 clips on a magnetic track and 2,000 caption bars.
Project longProject(std::size_t clips = 10'000, std::size_t bars = 2'000)
{
    Project project = newProject();
    auto& list = project.tracks[0].clips.edit();
    for (std::size_t i = 0; i < clips; ++i) {
        Clip clip;
        clip.id = Id::random();
        clip.assetID = Clip::placeholderAssetID;
        clip.timelineStart = double(i);
        clip.sourceEnd = 1;
        clip.placeholderName = "Shot " + std::to_string(i);
        list.push_back(clip);
    }
    SubtitleData subtitles;
    for (std::size_t i = 0; i < bars; ++i)
        subtitles.bars.push_back({Id::random(), double(i), double(i) + 0.9, "words of a bar", {}});
    project = addSubtitleTrack(std::move(project), Id::random(), std::move(subtitles));
    return project;
}

std::filesystem::path folder()
{
    return std::filesystem::temp_directory_path() /
           ("framewright-bench-" + std::to_string(getpid()));
}

/// An editor with an open project outside any workspace, so that nothing is saved meanwhile.
class OpenEditor {
public:
    explicit OpenEditor(Project const& project)
        : defaults(folder() / "settings.ini"), editor(defaults)
    {
        std::filesystem::create_directories(folder());
        std::ofstream(file) << ProjectDocument(project).data();
        open();
    }
    ~OpenEditor() { std::filesystem::remove_all(folder()); }

    Editing editing() { return {editor, Author::commandLine}; }
    void open() { QCoro::waitFor(editor.files().open(file)); }

    std::filesystem::path const file = folder() / "project.fwp";
    UserDefaults defaults;
    AppState editor;
};

void openLongProject(benchmark::State& state)
{
    OpenEditor open(longProject());
    for (auto _ : state)
        open.open();
}

void commitInLongProject(benchmark::State& state)
{
    OpenEditor open(longProject());
    Id const id = (*open.editor.project().tracks[1].clips)[5000].id;
    float level = 0;
    for (auto _ : state) {
        ClipChanges changes;
        changes.volume = level = level > 1 ? 0 : level + 0.001f;
        if (!changeClip(open.editing(), id, changes))
            state.SkipWithError("refused");
    }
}

void splitInLongProject(benchmark::State& state)
{
    OpenEditor open(longProject());
    open.editor.selection().selectClip((*open.editor.project().tracks[1].clips)[0].id);
    double time = 100.5;
    for (auto _ : state) {
        open.editor.selection().seek(time);
        if (!splitAtPlayhead(open.editing()))
            state.SkipWithError("refused");
        time += 1;
    }
}

void undoMemory(benchmark::State& state)
{
    for (auto _ : state) {
        OpenEditor open(longProject(200, 0));
        Id const id = (*open.editor.project().tracks[1].clips)[100].id;
        for (int i = 0; i < 1000; ++i) {
            ClipChanges changes;
            changes.volume = float(i % 1400) / 1000;
            (void)changeClip(open.editing(), id, changes);
        }
        state.counters["steps"] = double(open.editor.document().history().undoCount());
        state.counters["MB"] = double(open.editor.document().history().memory()) / 1e6;
    }
}

BENCHMARK(openLongProject)->Unit(benchmark::kMillisecond);
BENCHMARK(commitInLongProject)->Unit(benchmark::kMillisecond);
BENCHMARK(splitInLongProject)->Unit(benchmark::kMillisecond);
BENCHMARK(undoMemory)->Unit(benchmark::kMillisecond)->Iterations(1);

} // namespace

} // namespace framewright

int main(int argc, char** argv)
{
    // Settings and recovery copies go beside the benchmark's project.
    setenv("HOME", (std::filesystem::temp_directory_path()).c_str(), 1);
    setenv("XDG_DATA_HOME", (framewright::folder() / "data").c_str(), 1);
    QCoreApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
