#include "model/internal/track_rules.h"

#include "model/sketch.h"

#include <gtest/gtest.h>

namespace framewright {

namespace {

Track trackOf(char const* row)
{
    return sketch(row).tracks[0];
}

} // namespace

TEST(FreeStart, TakesTheNearestGapThatFits)
{
    struct Case {
        char const* name;
        char const* row;
        double length, near;
        std::optional<double> limit;
        std::optional<double> start;
    };
    auto const none = std::nullopt;
    for (Case const& c : {
             Case{"never before 0", "", 2, -3, none, 0},
             Case{"a gap of exactly its length", "AAAA..BBBB", 2, 5, none, 4},
             Case{"equally near: the earlier gap", "..AAAA", 2, 3, none, 0},
             Case{"equally near across a clip", "AA..BBBB..CC", 2, 5, none, 2},
             Case{"limit where it just fits", "AAAA", 2, 4, 6, 4},
             Case{"limit within the tolerance", "AAAA", 2, 4, 5.9996, 3.9996},
             Case{"limit a little too short", "AAAA", 2, 4, 5.999, none},
             Case{"a limit inside the clips", "AA..AAAAAA", 2, 12, 8, 2},
             Case{"pushed left by the limit", "AA", 2, 9, 8, 6},
             Case{"no gap at all before the limit", "AAAA", 2, 0, 5, none},
         }) {
        auto const start = freeStart(trackOf(c.row), c.length, c.near, std::nullopt, c.limit);
        ASSERT_EQ(start.has_value(), c.start.has_value()) << c.name;
        EXPECT_NEAR(start.value_or(0), c.start.value_or(0), 1e-9) << c.name;
    }
}

TEST(FreeStart, ToleratesAGapHalfAMillisecondShort)
{
    Track const track = trackOf("AA..BB");
    EXPECT_NEAR(*freeStart(track, 2.0004, 2), 1.9996, 1e-9);
    EXPECT_NEAR(*freeStart(track, 2.0006, 2), 6, 1e-9);
}

TEST(FreeStart, ReadsATrackInTimeOrderHoweverItIsListed)
{
    Track track = trackOf("AAAA..BB");
    std::ranges::reverse(track.clips.edit());
    EXPECT_EQ(freeStart(track, 2, 3), 4);
}

TEST(Normalize, DoesNotCopyATrackThatIsInOrder)
{
    Project const project = magnetic(sketch("AABB"));
    Project copy = project;
    normalize(copy.tracks[0]);
    EXPECT_TRUE(copy.tracks[0].clips.isSameAs(project.tracks[0].clips));
}

} // namespace framewright
