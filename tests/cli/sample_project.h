#pragma once

#include "cli/reference_context.h"

#include <string>

namespace framewright {

/// An id that begins with the given eight digits.
Id idStarting(std::string const& digits);

/// A project for references to point into:
///
///     t1 "Titles"    t1:1
///     v1 "Video 1"   v1:1 (11111111…)  v1:2 (22222222…)
///     v2 "video 1"
///     a1 "Audio 1"   a1:1 (22222222…, another one)
///     s1 "Subtitles" s1:1 (AAAAAAAA…)  s1:2 (BBBBBBBB…)
///
/// and two assets, "talk.mov" (CCCCCCCC…) and "music.wav" (DDDDDDDD…).
Project sampleProject();

/// The sample project at 4 of 12 seconds.
struct SampleContext : ReferenceContext {
    Project const& project() const override { return sample; }
    double playhead() const override { return 4; }
    double timelineEnd() const override { return 12; }
    std::vector<std::string> const& installedFonts() const override { return fonts; }

    Project sample = sampleProject();
    std::vector<std::string> fonts{"DejaVuSans", "DejaVuSans-Bold", "JetBrainsMono-Bold"};
};

} // namespace framewright
