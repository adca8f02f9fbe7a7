#pragma once

namespace framewright {

/// Times closer than this count as equal. Seconds.
inline constexpr double timeTolerance = 0.0005;

/// The shortest clip. Seconds.
inline constexpr double minimumClipLength = 0.1;

/// How long a photo is when first placed, and at most. Seconds.
inline constexpr double photoLength = 3.0;
inline constexpr double longestPhotoLength = 60.0;

/// The longest text. Seconds.
inline constexpr double longestTextLength = 3600.0;

/// No edit moves a clip's end past this: a double loses precision beyond it, and a mistyped time
/// would make a movie that lasts days. Seconds.
inline constexpr double latestTime = 1'000'000.0;

/// Whether a clip of this length is too short. NaN is.
constexpr bool isTooShort(double length)
{
    return !(length >= minimumClipLength - timeTolerance);
}

} // namespace framewright
