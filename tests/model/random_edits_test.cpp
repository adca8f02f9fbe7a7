#include "model/clip_moving.h"
#include "model/random_edits.h"

#include "model/sketch.h"

#include <gtest/gtest.h>

#include <functional>

namespace framewright {

namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr long operationsInAll = 20'000;
#else
constexpr long operationsInAll = 200'000;
#endif

} // namespace

TEST(RandomEdits, KeepTheRules)
{
    std::vector<Project> const projects = variedProjects();
    constexpr std::uint32_t seedsEach = 5;
    long const each = operationsInAll / long(seedsEach * projects.size()) + 1;
    for (std::size_t i = 0; i < projects.size(); ++i) {
        for (std::uint32_t seed = 1; seed <= seedsEach; ++seed) {
            RandomEdits const run = editAtRandom(projects[i], seed + 100 * std::uint32_t(i), each);
            EXPECT_EQ(run.problem, "")
                << "project " << i << ", seed " << run.seed << ", operation " << run.operations;
            EXPECT_LT(run.refusals, run.operations * 3 / 4) << "too few edits to show anything";
        }
    }
}

// The checker is checked: each broken rule is found.
TEST(RandomEdits, BrokenRulesAreFound)
{
    auto const clipsOf = [](Project& project, int track) -> std::vector<Clip>& {
        return project.tracks[std::size_t(track)].clips.edit();
    };
    // clang-format off
    struct Case { char const* rule; std::function<void(Project&)> change; };
    for (Case const& c : {
             Case{"", [](Project&) {}},
             Case{"a magnetic track has a gap", [&](Project& p) { clipsOf(p, 0)[1].timelineStart = 2.1; }},
             Case{"clips overlap or are out of order", [&](Project& p) { clipsOf(p, 1)[1].timelineStart = 1.9; }},
             Case{"an id appears twice", [&](Project& p) { clipsOf(p, 1)[1].id = id("A"); }},
             Case{"a clip has invalid times", [&](Project& p) { clipsOf(p, 1)[1].sourceEnd = 101; }},
             Case{"a clip is on another kind of track", [&](Project& p) { std::swap(p.tracks[0].clips, p.tracks[2].clips); }},
             Case{"no track is left", [](Project& p) { p.tracks.clear(); }},
         }) {
        // clang-format on
        Project project = magnetic(sketch({{"v1", "AABB"}, {"v2", "CC.DD"}, {"t1", "T"}}));
        c.change(project);
        EXPECT_EQ(brokenRule(project), c.rule);
    }
}

} // namespace framewright
