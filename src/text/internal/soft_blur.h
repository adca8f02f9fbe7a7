#pragma once

#include <vector>

namespace framewright {

/// A mask: how much of each pixel is covered, from 0 to 1.
struct Coverage {
    int width = 0;
    int height = 0;
    std::vector<float> samples; ///< In rows without padding.

    float* row(int y) { return samples.data() + std::size_t(y) * std::size_t(width); }
    float const* row(int y) const { return samples.data() + std::size_t(y) * std::size_t(width); }
};

/// An approximate Gaussian blur with standard deviation `sigma` in samples; 0 changes nothing.
/// Samples outside count as 0.
///
/// Three box blurs in sequence approximate a Gaussian to within what the eye can see (central limit
/// theorem), at a cost independent of `sigma`. Boxes of whole samples allow only certain
/// deviations, so theirs have fractional edges, which allow any (Gwosdek et al., "Theoretical
/// foundations of Gaussian convolution by extended box filtering", 2011).
void blur(Coverage& coverage, double sigma);

/// How far a blur extends, in samples.
int blurReach(double sigma);

} // namespace framewright
