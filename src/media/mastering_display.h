#pragma once

namespace framewright {

/// The display that HDR footage was graded on, from the file's metadata (SMPTE ST 2086).
struct MasteringDisplay {
    struct Chromaticity { ///< CIE 1931.
        double x = 0;
        double y = 0;

        bool operator==(Chromaticity const&) const = default;
    };
    Chromaticity red, green, blue, white;
    double minLuminance = 0; ///< cd/m².
    double maxLuminance = 0;

    bool operator==(MasteringDisplay const&) const = default;
};

} // namespace framewright
