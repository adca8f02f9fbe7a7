#include "model/random_edits.h"

#include "model/clip_moving.h"
#include "model/clip_placing.h"
#include "model/clip_replacing.h"
#include "model/clip_settings.h"
#include "model/clip_sound.h"
#include "model/clip_trimming.h"
#include "model/edit_limits.h"
#include "model/project_document.h"
#include "model/sketch.h"
#include "model/time_rules.h"
#include "model/track_editing.h"

#include <iterator>
#include <random>
#include <unordered_set>

namespace framewright {

namespace {

constexpr std::size_t fewClips = 12;
constexpr std::size_t manyClips = 40;

/// Chances, and the arguments that users would give: mostly sensible, often at an edge.
class Dice {
public:
    Dice(Project const& project, std::mt19937& random, std::uint32_t& lastID)
        : m_project(project), m_random(random), m_lastID(lastID)
    {
        for (Track const& track : project.tracks) {
            for (Clip const& clip : *track.clips)
                m_clips.push_back(&clip);
        }
    }

    int upTo(std::size_t last)
    {
        return std::uniform_int_distribution<int>(0, int(last))(m_random);
    }
    bool oneIn(int count) { return upTo(std::size_t(count - 1)) == 0; }
    double between(double low, double high)
    {
        return std::uniform_real_distribution(low, high)(m_random);
    }

    Id newID()
    {
        char text[37];
        std::snprintf(text, sizeof text, "00000000-0000-4000-8000-0000%08X", ++m_lastID);
        return *Id::parse(text);
    }

    Clip const* anyClip()
    {
        return m_clips.empty() ? nullptr : m_clips[std::size_t(upTo(m_clips.size() - 1))];
    }
    Id clip() { return m_clips.empty() || oneIn(50) ? newID() : anyClip()->id; }
    std::vector<Id> clips()
    {
        std::unordered_set<Id> ids;
        for (int i = upTo(3); i >= 0; --i)
            ids.insert(clip());
        return {ids.begin(), ids.end()};
    }
    std::vector<Id> newIDs(std::size_t count)
    {
        std::vector<Id> ids(count);
        for (Id& id : ids)
            id = newID();
        return ids;
    }
    Id track()
    {
        if (oneIn(50))
            return newID();
        return m_project.tracks[std::size_t(upTo(m_project.tracks.size() - 1))].id;
    }

    /// A track of that kind, most often.
    Id track(TrackKind kind)
    {
        std::vector<Id> fitting;
        for (Track const& track : m_project.tracks) {
            if (track.kind == kind)
                fitting.push_back(track.id);
        }
        if (fitting.empty() || oneIn(10))
            return track();
        return fitting[std::size_t(upTo(fitting.size() - 1))];
    }
    Id trackFor(Clip const& clip)
    {
        MediaAsset const* const asset = m_project.asset(clip.assetID);
        if (clip.isText())
            return track(TrackKind::text);
        bool const isSound = asset && asset->kind == MediaKind::audio;
        return track(isSound || (clip.isPlaceholder() && oneIn(3)) ? TrackKind::audio
                                                                   : TrackKind::video);
    }

    /// A time inside the clip or just beside it.
    double timeNear(Clip const& clip)
    {
        constexpr double steps[] = {0, 0.05, 0.09, 0.0996, 0.1, 0.11, 0.5, 1, -0.0004, -0.3};
        double const step = steps[upTo(std::size(steps) - 1)];
        switch (upTo(3)) {
        case 0:
            return clip.timelineStart + step;
        case 1:
            return clip.end() - step;
        default:
            return between(clip.timelineStart, clip.end());
        }
    }

    double time()
    {
        switch (upTo(9)) {
        case 0:
            return between(-2, 90);
        case 1:
            return upTo(60);
        case 2:
            return oneIn(20) ? std::nan("") : between(0, 2e6);
        default:
            break;
        }
        Clip const* const clip = anyClip();
        if (!clip)
            return between(0, 5);
        constexpr double steps[] = {0, 0, 0.0004, 0.0006, 0.05, 0.09, 0.1, 0.11, 1.0 / 30, 1, 2.5};
        double const step = steps[upTo(std::size(steps) - 1)];
        double const edge = oneIn(2) ? clip->timelineStart : clip->end();
        return oneIn(2) ? edge + step : edge - step;
    }

    double length()
    {
        constexpr double lengths[] = {0.05, 0.0996, 0.1, 0.3, 1, 2, 3, 7.125, 30, 61};
        return oneIn(3) ? between(0.1, 8) : lengths[upTo(std::size(lengths) - 1)];
    }

    Clip newClip()
    {
        int const what = upTo(4);
        double const in = oneIn(3) ? 0 : between(0, 95);
        switch (what) {
        case 0:
            return clipOf(newID(), Clip::placeholderAssetID, length(), 0);
        case 1: {
            Clip text = textClip("T", length());
            text.id = newID();
            return text;
        }
        case 2:
            return clipOf(newID(), id("face.jpg"), length(), 0);
        case 3:
            return clipOf(newID(), id("song.wav"), length(), in);
        default:
            return clipOf(newID(), id("talk.mov"), length(), in);
        }
    }

    template <class T>
    std::optional<T> maybe(T value, int oneInHowMany = 2)
    {
        return oneIn(oneInHowMany) ? std::optional<T>(value) : std::nullopt;
    }

private:
    Project const& m_project;
    std::mt19937& m_random;
    std::uint32_t& m_lastID;
    std::vector<Clip const*> m_clips;
};

/// The project an operation made, checked against what it says it did.
template <class Result>
Outcome<Project> projectOf(Outcome<Result> outcome)
{
    if (!outcome)
        return Refusal{outcome.refusal()};
    if constexpr (requires { outcome->at; }) {
        auto const found = findClip(outcome->project, outcome->clipID);
        if (!found || found->track->id != outcome->trackID ||
            found->clip->timelineStart != outcome->at)
            throw std::logic_error("does not stand where the result says");
    }
    return std::move(outcome->project);
}

struct Operation {
    char const* name;
    Outcome<Project> (*apply)(Project const&, Dice&);
};

using P = Project const&;

constexpr Operation clipOperations[] = {
    {"place",
     [](P p, Dice& d) {
         Clip const clip = d.newClip();
         return projectOf(place(p, clip, d.trackFor(clip), d.time()));
     }},
    {"addPlaceholder",
     [](P p, Dice& d) {
         return projectOf(addPlaceholder(p, {.id = d.newID(),
                                             .name = "slot",
                                             .length = d.length(),
                                             .trackID = d.maybe(d.track()),
                                             .time = d.maybe(d.time())}));
     }},
    {"duplicate",
     [](P p, Dice& d) {
         auto const ids = d.clips();
         return projectOf(duplicateClips(p, ids, d.newIDs(ids.size())));
     }},
    {"paste",
     [](P p, Dice& d) {
         std::vector<CopiedClip> copied;
         for (Id const& id : d.clips()) {
             if (auto const found = findClip(p, id))
                 copied.push_back({*found->clip, found->track->kind});
         }
         return projectOf(pasteClips(p, copied, d.maybe(d.track()), d.time(),
                                     d.newIDs(copied.size()), d.newIDs(4)));
     }},
    {"move", [](P p, Dice& d) { return projectOf(moveClip(p, d.clip(), d.time())); }},
    {"move across",
     [](P p, Dice& d) {
         auto const found = findClip(p, d.clip());
         if (!found)
             return projectOf(moveClip(p, d.newID(), d.time(), d.track()));
         return projectOf(moveClip(p, found->clip->id, d.time(), d.track(found->track->kind)));
     }},
    {"nudge",
     [](P p, Dice& d) {
         constexpr double steps[] = {-1, -1.0 / 30, 1.0 / 30, 1, 0, 17};
         return projectOf(nudgeClips(p, d.clips(), steps[d.upTo(std::size(steps) - 1)]));
     }},
    {"remove", [](P p, Dice& d) { return projectOf(removeClips(p, d.clips())); }},
    {"split",
     [](P p, Dice& d) {
         return projectOf(split(p, d.maybe(d.clip()), d.maybe(d.track()), d.time(), d.newID()));
     }},
    {"split a clip",
     [](P p, Dice& d) {
         Clip const* const clip = d.anyClip();
         if (!clip)
             return projectOf(split(p, d.newID(), std::nullopt, 1, d.newID()));
         return projectOf(split(p, clip->id, std::nullopt, d.timeNear(*clip), d.newID()));
     }},
    {"trim edges",
     [](P p, Dice& d) {
         Clip const* const clip = d.anyClip();
         if (!clip || d.oneIn(4))
             return projectOf(
                 trimClip(p, d.clip(), {.start = d.maybe(d.time()), .end = d.maybe(d.time())}));
         switch (d.upTo(2)) {
         case 0:
             return projectOf(trimClip(p, clip->id, {.start = d.timeNear(*clip)}));
         case 1:
             return projectOf(trimClip(p, clip->id, {.end = d.timeNear(*clip)}));
         default:
             break;
         }
         double const start = d.timeNear(*clip);
         return projectOf(trimClip(p, clip->id, {.start = start, .end = start + d.length()}));
     }},
    {"trim an edge by a little",
     [](P p, Dice& d) {
         Clip const* const clip = d.anyClip();
         double const by = d.oneIn(2) ? d.between(-0.5, 0.5) : d.between(-0.0006, 0.0006);
         if (!clip)
             return projectOf(trimClip(p, d.newID(), {.start = 1}));
         return projectOf(d.oneIn(2) ? trimClip(p, clip->id, {.start = clip->timelineStart + by})
                                     : trimClip(p, clip->id, {.end = clip->end() + by}));
     }},
    {"trim source",
     [](P p, Dice& d) {
         Clip const* const clip = d.anyClip();
         double const in =
             d.oneIn(2) || !clip ? d.between(-1, 99) : clip->sourceStart + d.between(-1, 1);
         Trim trim{.start = d.maybe(d.time(), 8), .end = d.maybe(d.time(), 8), .in = d.maybe(in)};
         if (!trim.end && d.oneIn(2))
             trim.out = d.oneIn(5) ? 100.0004 : in + d.length();
         return projectOf(trimClip(p, clip ? clip->id : d.newID(), trim));
     }},
    {"slip", [](P p, Dice& d) { return slipClip(p, d.clip(), d.between(-5, 105)); }},
    {"replace by a file",
     [](P p, Dice& d) {
         char const* const files[] = {"talk.mov", "song.wav", "face.jpg", "short.mov"};
         Replacement const with{Replacement::From::file, id(files[d.upTo(3)])};
         return projectOf(d.oneIn(2) ? replaceClip(p, d.clip(), with)
                                     : replaceClipReturningFiller(p, d.clip(), with, d.newID()));
     }},
    {"replace by a clip",
     [](P p, Dice& d) {
         Replacement const with{Replacement::From::timeline, d.clip()};
         return projectOf(d.oneIn(2) ? replaceClip(p, d.clip(), with)
                                     : replaceClipReturningFiller(p, d.clip(), with, d.newID()));
     }},
    {"detach audio",
     [](P p, Dice& d) { return projectOf(detachAudio(p, d.clip(), d.newID(), d.newID())); }},
    {"clamp audio", [](P p, Dice&) { return Outcome<Project>(clampAudioToTimeline(p)); }},
    {"update",
     [](P p, Dice& d) {
         return updateClip(p, d.clip(), [&](Clip& clip) {
             clip.timelineStart = clip.sourceEnd = d.time();
             clip.volume = 0.5f;
         });
     }},
    {"level", [](P p, Dice& d) { return setClipVolume(p, d.clip(), float(d.between(-0.1, 1.6))); }},
    {"transform",
     [](P p, Dice& d) {
         return setClipTransform(p, d.clip(),
                                 {.scale = d.between(-1, 9), .cropLeft = d.between(0, 0.5)});
     }},
    {"reset transform", [](P p, Dice& d) { return resetClipTransform(p, d.clip()); }},
    {"rename placeholder", [](P p, Dice& d) { return renamePlaceholder(p, d.clip(), "B-roll"); }},
    {"set text", [](P p, Dice& d) { return setClipText(p, d.clip(), TextOverlay()); }},
};

constexpr Operation trackOperations[] = {
    {"add track",
     [](P p, Dice& d) {
         if (p.tracks.size() > 9)
             return removeTrack(p, d.track());
         return addTrack(p, {.id = d.newID(),
                             .kind = TrackKind(d.upTo(3)),
                             .isMagnetic = d.maybe(d.oneIn(2), 4),
                             .place = d.oneIn(2) ? TrackPlace::top : TrackPlace::usual,
                             .index = d.maybe<std::size_t>(2, 4)});
     }},
    {"add subtitles",
     [](P p, Dice& d) {
         if (p.tracks.size() > 9)
             return removeTrack(p, d.track());
         SubtitleData data;
         data.bars = {{d.newID(), 0, 1, "Hello", {{"Hello", 0, 1}}}};
         return Outcome<Project>(addSubtitleTrack(p, d.newID(), data));
     }},
    {"remove track",
     [](P p, Dice& d) {
         return p.tracks.size() > 4 ? removeTrack(p, d.track()) : renameTrack(p, d.track(), "Kept");
     }},
    {"move track", [](P p, Dice& d) { return moveTrack(p, d.track(), d.upTo(4) - 2); }},
    {"set magnetic", [](P p, Dice& d) { return setMagnetic(p, d.track(), d.oneIn(2)); }},
    {"lock", [](P p, Dice& d) { return changeTrack(p, d.track(), {.isLocked = d.oneIn(4)}); }},
    {"track settings",
     [](P p, Dice& d) {
         return changeTrack(p, d.track(),
                            {.isHidden = d.maybe(d.oneIn(2)),
                             .isMuted = d.maybe(d.oneIn(2)),
                             .volume = d.maybe(float(d.between(-0.1, 1.6))),
                             .ducks = d.maybe(true, 4),
                             .opacity = d.maybe(d.between(0, 1.1), 4)});
     }},
    {"change aspect",
     [](P p, Dice& d) { return Outcome<Project>(changeAspect(p, AspectPreset(d.upTo(3)))); }},
};

std::size_t clipCount(Project const& project)
{
    std::size_t count = 0;
    for (Track const& track : project.tracks)
        count += track.clips->size();
    return count;
}

Operation const& chosen(Project const& project, Dice& dice)
{
    std::size_t const count = clipCount(project);
    if (count > manyClips)
        return *std::ranges::find(clipOperations, std::string_view("remove"), &Operation::name);
    if (count < fewClips && dice.oneIn(2))
        return clipOperations[0];
    if (dice.oneIn(8))
        return trackOperations[dice.upTo(std::size(trackOperations) - 1)];
    return clipOperations[dice.upTo(std::size(clipOperations) - 1)];
}

/// An equal project that shares nothing with its original, so that it shows whether that changes.
Project unshared(Project project)
{
    for (Track& track : project.tracks) {
        track.clips = Shared(std::vector<Clip>(*track.clips));
        for (Clip& clip : track.clips.edit()) {
            if (clip.text)
                clip.text = Shared(TextOverlay(**clip.text));
        }
    }
    return project;
}

struct Remembered {
    Project project;
    Project copy;
    explicit Remembered(Project kept) : project(kept), copy(unshared(std::move(kept))) {}
};

std::string brokenClipRule(Project const& project, Track const& track, Clip const& clip)
{
    if (kindRefusal(project, clip, track))
        return "a clip stands on another kind of track";
    if (auto const refusal = rangeRefusal(project, clip))
        return refusal->sentence;
    if (!(clip.timelineStart >= 0) || !(clip.end() <= latestTime + timeTolerance))
        return "a clip stands outside the timeline";
    return {};
}

std::string brokenTrackRule(Track const& track)
{
    double end = 0;
    for (Clip const& clip : *track.clips) {
        if (track.isMagnetic && std::abs(clip.timelineStart - end) > 1e-6)
            return "a magnetic track has a gap";
        if (clip.timelineStart < end - timeTolerance - 1e-9)
            return "clips overlap or are out of order";
        end = clip.end();
    }
    return {};
}

std::string changedWhileLocked(Project const& before, Project const& after)
{
    for (Track const& track : before.tracks) {
        Track const* const now = after.track(track.id);
        if (track.isLocked && (!now || (now->isLocked && *now != track)))
            return "a locked track was changed";
    }
    return {};
}

std::string codingProblem(Project const& project)
{
    try {
        auto const decoded = decodeProjectDocument(ProjectDocument(project).data());
        if (decoded.document.project != project)
            return "it reads back from its stored form as another project";
    } catch (DocumentError const& error) {
        return error.what();
    }
    return {};
}

/// One run: the project, its past and its undone future.
class Run {
public:
    Run(Project project, std::uint32_t seed) : m_random(seed)
    {
        m_past.emplace_back(std::move(project));
    }

    void step(RandomEdits& report)
    {
        Dice dice(m_past.back().project, m_random, m_lastID);
        if (dice.oneIn(20))
            travel(report, dice);
        else
            edit(report, dice);
        if (report.problem.empty() && report.operations % 500 == 0)
            report.problem = codingProblem(m_past.back().project);
    }

private:
    void edit(RandomEdits& report, Dice& dice)
    {
        Remembered const& before = m_past.back();
        Operation const& operation = chosen(before.project, dice);
        RandomEdits::Count& count = report.byOperation[operation.name];
        try {
            auto done = operation.apply(before.project, dice);
            if (before.project != before.copy)
                report.problem = "the project it was given has changed";
            if (!done) {
                ++count.refused;
                ++report.refusals;
            } else {
                ++count.done;
                check(report, before.project, *done);
                m_past.emplace_back(std::move(*done));
                m_future.clear();
            }
        } catch (std::logic_error const& error) {
            report.problem = error.what();
        }
        if (!report.problem.empty())
            report.problem = std::string(operation.name) + ": " + report.problem;
        if (m_past.size() > 60)
            m_past.erase(m_past.begin(), m_past.begin() + 30);
    }

    void travel(RandomEdits& report, Dice& dice)
    {
        bool const isUndo = dice.oneIn(2);
        auto& from = isUndo ? m_past : m_future;
        auto& to = isUndo ? m_future : m_past;
        std::size_t const kept = isUndo ? 1 : 0;
        for (int i = dice.upTo(5); i >= 0 && from.size() > kept; --i) {
            to.push_back(std::move(from.back()));
            from.pop_back();
        }
        Remembered const& now = m_past.back();
        if (now.project != now.copy)
            report.problem = isUndo ? "undo gives another project" : "redo gives another project";
    }

    static void check(RandomEdits& report, Project const& before, Project const& after)
    {
        for (auto const& problem : {brokenRule(after), changedWhileLocked(before, after)}) {
            if (report.problem.empty())
                report.problem = problem;
        }
    }

    std::mt19937 m_random;
    std::uint32_t m_lastID = 0;
    std::vector<Remembered> m_past; ///< The last one is the present.
    std::vector<Remembered> m_future;
};

} // namespace

std::vector<Project> variedProjects()
{
    std::vector<Project> projects = {
        magnetic(sketch({{"v1", "AABBBBc"}, {"a1", "..DDDD..EE"}})),
        sketch({{"v1", "A..BB.ccc"}, {"v2", ".DD.EE"}, {"a1", "FFFF"}, {"a2", ""}}),
        magnetic(sketch({{"s1", ""}, {"t1", "AA.BB"}, {"t2", ""}, {"v1", "CCCCdd"}, {"a1", "E"}})),
        magnetic(magnetic(sketch({{"t1", "ABC"}, {"v1", "DDEE"}, {"v2", "FF.GG"}})), "t1"),
        locked(magnetic(sketch({{"v1", "AAA"}, {"v2", "BB"}, {"a1", "CC"}, {"a2", "..DD"}})), "a2"),
        sketch({{"v1", ""}}),
    };
    for (Project& project : projects) {
        MediaAsset const shortFile = file("short.mov", MediaKind::video, 1.5);
        project.assets.edit()[shortFile.id] = shortFile;
    }
    return projects;
}

RandomEdits editAtRandom(Project project, std::uint32_t seed, long operations)
{
    RandomEdits report;
    report.seed = seed;
    Run run(std::move(project), seed);
    while (report.operations < operations && report.problem.empty()) {
        ++report.operations;
        run.step(report);
    }
    return report;
}

std::string brokenRule(Project const& project)
{
    if (project.tracks.empty())
        return "no track is left";
    std::unordered_set<Id> ids;
    for (Track const& track : project.tracks) {
        if (!ids.insert(track.id).second)
            return "an id stands twice";
        for (Clip const& clip : *track.clips) {
            if (!ids.insert(clip.id).second)
                return "an id stands twice";
            if (auto problem = brokenClipRule(project, track, clip); !problem.empty())
                return problem;
        }
        if (auto problem = brokenTrackRule(track); !problem.empty())
            return problem;
    }
    return {};
}

std::string summary(std::vector<RandomEdits> const& runs)
{
    std::map<std::string, RandomEdits::Count> all;
    for (RandomEdits const& run : runs) {
        for (auto const& [name, count] : run.byOperation) {
            all[name].done += count.done;
            all[name].refused += count.refused;
        }
    }
    std::string text;
    for (auto const& [name, count] : all)
        text += name + ": " + std::to_string(count.done) + " done, " +
                std::to_string(count.refused) + " refused\n";
    return text;
}

} // namespace framewright
