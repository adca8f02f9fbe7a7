#pragma once

namespace framewright {

/// Two times nearer to each other than this are the same moment. Seconds.
inline constexpr double timeTolerance = 0.0005;

/// No clip is shorter. Seconds.
inline constexpr double minimumClipLength = 0.1;

/// How long a photo stands when it is first placed, and at the most. Seconds.
inline constexpr double photoLength = 3.0;
inline constexpr double longestPhotoLength = 60.0;

} // namespace framewright
