#include "model/aspect_preset.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>

namespace framewright {

namespace {

struct Named {
    std::string_view word;
    AspectPreset preset;
};

constexpr std::array words = {
    Named{"9:16", AspectPreset::portrait},        Named{"portrait", AspectPreset::portrait},
    Named{"vertical", AspectPreset::portrait},    Named{"reel", AspectPreset::portrait},
    Named{"story", AspectPreset::portrait},       Named{"9x16", AspectPreset::portrait},
    Named{"16:9", AspectPreset::landscape},       Named{"landscape", AspectPreset::landscape},
    Named{"horizontal", AspectPreset::landscape}, Named{"wide", AspectPreset::landscape},
    Named{"youtube", AspectPreset::landscape},    Named{"16x9", AspectPreset::landscape},
    Named{"1:1", AspectPreset::square},           Named{"square", AspectPreset::square},
    Named{"1x1", AspectPreset::square},           Named{"4:5", AspectPreset::fourFive},
    Named{"fourfive", AspectPreset::fourFive},    Named{"4x5", AspectPreset::fourFive},
};

} // namespace

std::optional<AspectPreset> aspectPresetNamed(std::string_view word)
{
    std::string lower(word);
    std::ranges::transform(lower, lower.begin(),
                           [](char c) { return c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c; });
    auto const found = std::ranges::find(words, lower, &Named::word);
    return found == words.end() ? std::nullopt : std::optional(found->preset);
}

AspectPreset closestAspectPreset(double width, double height)
{
    if (!(width > 0) || !(height > 0))
        return AspectPreset::portrait;

    double const ratio = std::log(width / height);
    double const landscape = std::log(16.0 / 9.0);
    // In this order, and a later one only when it is strictly closer.
    struct Candidate {
        AspectPreset preset;
        double ratio;
    };
    constexpr double square = 0;
    Candidate best{AspectPreset::landscape, landscape};
    for (Candidate const& candidate :
         {Candidate{AspectPreset::portrait, -landscape}, Candidate{AspectPreset::square, square},
          Candidate{AspectPreset::fourFive, std::log(4.0 / 5.0)}}) {
        if (std::abs(ratio - candidate.ratio) < std::abs(ratio - best.ratio))
            best = candidate;
    }
    return best.preset;
}

std::string_view ratioName(AspectPreset preset)
{
    switch (preset) {
    case AspectPreset::portrait:
        return "9:16";
    case AspectPreset::landscape:
        return "16:9";
    case AspectPreset::square:
        return "1:1";
    case AspectPreset::fourFive:
        return "4:5";
    }
    return "9:16";
}

PixelSize baseCanvas(AspectPreset preset)
{
    switch (preset) {
    case AspectPreset::portrait:
        return {1080, 1920};
    case AspectPreset::landscape:
        return {1920, 1080};
    case AspectPreset::square:
        return {1080, 1080};
    case AspectPreset::fourFive:
        return {1080, 1350};
    }
    return {1080, 1920};
}

} // namespace framewright
