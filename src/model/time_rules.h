#pragma once

namespace framewright {

/// Two times nearer to each other than this are the same moment. Seconds.
inline constexpr double timeTolerance = 0.0005;

/// No clip is shorter. Seconds.
inline constexpr double minimumClipLength = 0.1;

/// How long a photo stands when it is first placed, and at the most. Seconds.
inline constexpr double photoLength = 3.0;
inline constexpr double longestPhotoLength = 60.0;

/// How long a text may be asked to stay. Seconds.
inline constexpr double longestTextLength = 3600.0;

/// No edit puts a clip's end later: beyond it a double no longer tells moments well apart, and a
/// mistyped time would make a picture of days. Seconds.
inline constexpr double latestTime = 1'000'000.0;

/// Whether a clip of this length is too short to stand on a track. What is not a number is.
constexpr bool isTooShort(double length)
{
    return !(length >= minimumClipLength - timeTolerance);
}

} // namespace framewright
