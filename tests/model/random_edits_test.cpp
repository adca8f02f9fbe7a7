#include "model/clip_moving.h"
#include "model/random_edits.h"

#include "model/sketch.h"

#include <gtest/gtest.h>

#include <iostream>

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
    std::vector<RandomEdits> runs;
    for (std::size_t i = 0; i < projects.size(); ++i) {
        for (std::uint32_t seed = 1; seed <= seedsEach; ++seed) {
            runs.push_back(editAtRandom(projects[i], seed + 100 * std::uint32_t(i), each));
            RandomEdits const& run = runs.back();
            std::cout << "project " << i << ", seed " << run.seed << ": " << run.operations
                      << " operations, " << run.refusals << " refused\n";
            EXPECT_EQ(run.problem, "")
                << "project " << i << ", seed " << run.seed << ", operation " << run.operations;
        }
    }
    std::cout << summary(runs);
    for (RandomEdits const& run : runs)
        EXPECT_LT(run.refusals, run.operations * 3 / 4)
            << "too few edits were done to show anything";
}

// The judge is judged: it sees what breaks each rule.
TEST(RandomEdits, BrokenRulesAreSeen)
{
    auto const broken = [](auto change) {
        Project project = magnetic(sketch({{"v1", "AABB"}, {"v2", "CC.DD"}, {"t1", "T"}}));
        change(project);
        return brokenRule(project);
    };
    auto const clipsOf = [](Project& project, int track) -> std::vector<Clip>& {
        return project.tracks[std::size_t(track)].clips.edit();
    };
    EXPECT_EQ(broken([](Project&) {}), "");
    EXPECT_EQ(broken([&](Project& p) { clipsOf(p, 0)[1].timelineStart = 2.1; }),
              "a magnetic track has a gap");
    EXPECT_EQ(broken([&](Project& p) { clipsOf(p, 1)[1].timelineStart = 1.9; }),
              "clips overlap or are out of order");
    EXPECT_EQ(broken([&](Project& p) { clipsOf(p, 1)[1].id = id("A"); }), "an id appears twice");
    EXPECT_EQ(broken([&](Project& p) { clipsOf(p, 1)[1].sourceEnd = 101; }),
              "a clip has times it may not have");
    EXPECT_EQ(broken([&](Project& p) { std::swap(p.tracks[0].clips, p.tracks[2].clips); }),
              "a clip stands on another kind of track");
    EXPECT_EQ(broken([&](Project& p) { p.tracks.clear(); }), "no track is left");
}

} // namespace framewright
