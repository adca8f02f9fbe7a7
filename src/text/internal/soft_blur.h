#pragma once

#include <vector>

namespace framewright {

/// How visible something is, sample by sample, from 0 to 1.
struct Coverage {
    int width = 0;
    int height = 0;
    std::vector<float> samples; ///< In rows without padding.

    float* row(int y) { return samples.data() + std::size_t(y) * std::size_t(width); }
    float const* row(int y) const { return samples.data() + std::size_t(y) * std::size_t(width); }
};

/// Blurs by three running means one after the other, which is a Gauss curve to the eye. `sigma` is
/// its deviation in samples; 0 changes nothing. Outside there is nothing. The cost doesn't depend
/// on `sigma`.
void blur(Coverage& coverage, double sigma);

/// How far outwards a blur is seen, in samples.
int blurReach(double sigma);

} // namespace framewright
