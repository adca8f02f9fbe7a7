// The cost of an edit with 10,000 clips on a track, and of storing a long project.
//
//     bench_model                                  the benchmarks
//     bench_model --random-operations=20000000     random edits against the rules, no benchmarks

#include "model/clip_audio.h"
#include "model/clip_moving.h"
#include "model/clip_placing.h"
#include "model/clip_replacing.h"
#include "model/clip_settings.h"
#include "model/clip_trimming.h"
#include "model/project_document.h"
#include "model/random_edits.h"
#include "model/sketch.h"
#include "model/track_editing.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace framewright {

namespace {

constexpr int clipCount = 10'000;
constexpr int barCount = 2'000;

Id numbered(int kind, int number)
{
    char text[37];
    std::snprintf(text, sizeof text, "00000000-0000-4000-8000-%04X%08X", kind, number);
    return *Id::parse(text);
}

/// Clips of two seconds each, a second apart; every tenth is a placeholder.
std::vector<Clip> longRow(int kind)
{
    std::vector<Clip> clips;
    for (int i = 0; i < clipCount; ++i) {
        Clip clip = clipOf(numbered(kind, i), id("talk.mov"), 2, 10.0 / 3);
        if (i % 10 == 0) {
            clip.assetID = Clip::placeholderAssetID;
            clip.placeholderName = "B-roll: coffee pour, " + std::to_string(i);
            clip.placeholderNote = "Slow, from above, no hands";
        }
        clip.timelineStart = 3 * i;
        clips.push_back(clip);
    }
    return clips;
}

SubtitleData longCaptions()
{
    SubtitleData data;
    for (int i = 0; i < barCount; ++i) {
        CaptionBar bar{numbered(9, i), 2.5 * i, 2.5 * i + 2.4, "four words as spoken", {}};
        double const each = 0.6;
        for (char const* const word : {"four", "words", "as", "spoken"}) {
            double const start = bar.start + each * double(bar.words.size());
            bar.words.push_back({word, start, start + 0.55});
            data.words.push_back(bar.words.back());
        }
        data.bars.push_back(bar);
    }
    return data;
}

/// A project of 10,000 clips on one track, magnetic or free.
Project longProject(bool isMagnetic)
{
    Project project = sketch({{"v1", ""}, {"v2", "YY..ZZ"}, {"a1", ""}});
    project.tracks[0].clips = Shared(longRow(1));
    return isMagnetic ? *setMagnetic(project, id("v1"), true) : project;
}

constexpr auto middleNumber = clipCount / 2 + 1;
Id const middle = numbered(1, middleNumber);
double const middleTime = 3.0 * middleNumber;
Id const fresh = numbered(2, 1);
Id const freshTrack = numbered(3, 1);

struct Operation {
    char const* name;
    bool (*apply)(Project);
};

template <class Result>
bool isDone(Result const& outcome)
{
    return bool(outcome);
}

std::vector<Operation> const operations = {
    {"place",
     [](Project p) {
         return isDone(place(std::move(p), clipOf(fresh, id("talk.mov"), 1), id("v1"), middleTime));
     }},
    {"duplicateClips",
     [](Project p) {
         return isDone(duplicateClips(std::move(p), std::vector{middle}, std::vector{fresh}));
     }},
    {"pasteClips",
     [](Project p) {
         std::vector<CopiedClip> const copied = {
             {clipOf(fresh, id("talk.mov"), 1), TrackKind::video}};
         return isDone(pasteClips(std::move(p), copied, {}, middleTime, std::vector{fresh}, {}));
     }},
    {"moveClip", [](Project p) { return isDone(moveClip(std::move(p), middle, middleTime / 2)); }},
    {"moveClip to another track",
     [](Project p) { return isDone(moveClip(std::move(p), middle, 2, id("v2"))); }},
    {"nudgeClips or refuse",
     [](Project p) {
         bool const isMagnetic = p.tracks[0].isMagnetic;
         return isDone(nudgeClips(std::move(p), std::vector{middle}, 1.0 / 30)) != isMagnetic;
     }},
    {"removeClip", [](Project p) { return isDone(removeClip(std::move(p), middle)); }},
    {"split",
     [](Project p) {
         double const at = findClip(p, middle)->clip->timelineStart + 1;
         return isDone(split(std::move(p), middle, {}, at, fresh));
     }},
    {"trimClip", [](Project p) { return isDone(trimClip(std::move(p), middle, {.out = 5})); }},
    {"slipClip", [](Project p) { return isDone(slipClip(std::move(p), middle, 20)); }},
    {"replaceClip by a file",
     [](Project p) {
         return isDone(
             replaceClip(std::move(p), middle, {Replacement::From::file, id("face.jpg")}));
     }},
    {"replaceClip by a clip",
     [](Project p) {
         return isDone(
             replaceClip(std::move(p), middle, {Replacement::From::timeline, numbered(1, 1)}));
     }},
    {"detachAudio",
     [](Project p) { return isDone(detachAudio(std::move(p), middle, fresh, freshTrack)); }},
    {"setClipVolume", [](Project p) { return isDone(setClipVolume(std::move(p), middle, 0.5f)); }},
    {"setMagnetic",
     [](Project p) {
         bool const on = !p.tracks[0].isMagnetic;
         return isDone(setMagnetic(std::move(p), id("v1"), on));
     }},
    {"addTrack", [](Project p) { return isDone(addTrack(std::move(p), {.id = freshTrack})); }},
    {"removeClips, every other one",
     [](Project p) {
         std::vector<Id> ids;
         for (int i = 0; i < clipCount; i += 2)
             ids.push_back(numbered(1, i));
         return isDone(removeClips(std::move(p), ids));
     }},
    {"duplicateClips, all",
     [](Project p) {
         std::vector<Id> ids, copies;
         for (int i = 0; i < clipCount; ++i) {
             ids.push_back(numbered(1, i));
             copies.push_back(numbered(2, i));
         }
         return isDone(duplicateClips(std::move(p), ids, copies));
     }},
};

void edit(benchmark::State& state, Operation const& operation, bool isMagnetic)
{
    Project const project = longProject(isMagnetic);
    for (auto unused : state) {
        if (!operation.apply(project))
            state.SkipWithError("refused");
    }
}

void copyClips(benchmark::State& state)
{
    std::vector<Clip> const clips = longRow(1);
    for (auto unused : state)
        benchmark::DoNotOptimize(std::vector<Clip>(clips));
}

ProjectDocument longDocument()
{
    return ProjectDocument(addSubtitleTrack(longProject(true), freshTrack, longCaptions()));
}

void encode(benchmark::State& state)
{
    ProjectDocument const document = longDocument();
    for (auto unused : state)
        benchmark::DoNotOptimize(document.data());
}

void decode(benchmark::State& state)
{
    std::string const data = longDocument().data();
    for (auto unused : state)
        benchmark::DoNotOptimize(decodeProjectDocument(data));
    state.SetBytesProcessed(std::int64_t(data.size()) * state.iterations());
}

void registerBenchmarks()
{
    for (Operation const& operation : operations) {
        for (bool const isMagnetic : {false, true}) {
            std::string const name =
                std::string(isMagnetic ? "magnetic/" : "free/") + operation.name;
            benchmark::RegisterBenchmark(name.c_str(), edit, operation, isMagnetic)
                ->Unit(benchmark::kMicrosecond);
        }
    }
    benchmark::RegisterBenchmark("copy of 10,000 clips", copyClips)->Unit(benchmark::kMicrosecond);
    benchmark::RegisterBenchmark("encode", encode)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("decode", decode)->Unit(benchmark::kMillisecond);
}

int keepsTheRules(long operationsInAll)
{
    std::vector<Project> const projects = variedProjects();
    constexpr long runLength = 20'000;
    std::size_t runs = 0;
    for (long done = 0; done < operationsInAll; done += runLength, ++runs) {
        auto const seed = std::uint32_t(1000 + runs);
        std::size_t const index = runs % projects.size();
        RandomEdits const run = editAtRandom(projects[index], seed, runLength);
        if (!run.problem.empty()) {
            std::printf("project %zu, seed %u, operation %ld: %s\n", index, seed, run.operations,
                        run.problem.c_str());
            return 1;
        }
    }
    std::printf("every rule held in %zu runs of %ld operations\n", runs, runLength);
    return 0;
}

} // namespace

} // namespace framewright

int main(int argc, char** argv)
{
    constexpr std::string_view option = "--random-operations=";
    for (int i = 1; i < argc; ++i) {
        std::string_view const argument = argv[i];
        if (argument.starts_with(option))
            return framewright::keepsTheRules(std::atol(argv[i] + option.size()));
    }
    framewright::registerBenchmarks();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
