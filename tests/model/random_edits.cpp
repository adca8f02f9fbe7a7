#include "model/random_edits.h"

#include "model/edit_limits.h"
#include "model/project_document.h"
#include "model/random_operations.h"
#include "model/sketch.h"
#include "model/time_rules.h"

#include <random>
#include <stdexcept>
#include <unordered_set>

namespace framewright {

namespace {

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
        return "a clip is on another kind of track";
    if (rangeRefusal(project, clip))
        return "a clip has invalid times";
    if (!(clip.timelineStart >= 0) || !(clip.end() <= latestTime + timeTolerance))
        return "a clip is outside the timeline";
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
        Operation const& operation = chosenOperation(before.project, dice);
        try {
            auto done = operation.apply(before.project, dice);
            if (before.project != before.copy)
                report.problem = "the project it was given has changed";
            if (!done) {
                ++report.refusals;
            } else {
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
            return "an id appears twice";
        for (Clip const& clip : *track.clips) {
            if (!ids.insert(clip.id).second)
                return "an id appears twice";
            if (auto problem = brokenClipRule(project, track, clip); !problem.empty())
                return problem;
        }
        if (auto problem = brokenTrackRule(track); !problem.empty())
            return problem;
    }
    return {};
}

} // namespace framewright
