#include "text/internal/soft_blur.h"

#include <algorithm>
#include <cmath>

namespace framewright {

namespace {

constexpr int passes = 3;

/// A box of 2 * radius + 1 samples, plus a fraction of the two beside it.
struct Mean {
    int radius = 0;
    float edge = 0;  ///< The weight of the two beside it.
    float scale = 1; ///< One over the sum of weights.

    explicit Mean(double sigma)
    {
        double const variance = sigma * sigma / passes;
        radius = int((std::sqrt(12 * variance + 1) - 1) / 2);
        double const count = 2.0 * radius + 1, next = radius + 1.0;
        double const inner = radius * next * count / 3; // The sum of squared distances.
        double const part = (variance * count - inner) / (2 * (next * next - variance));
        edge = float(std::clamp(part, 0.0, 1.0));
        scale = float(1 / (count + 2 * std::clamp(part, 0.0, 1.0)));
    }
};

void blurRow(float const* from, float* to, int width, Mean const& mean)
{
    auto const at = [&](int x) { return x >= 0 && x < width ? from[x] : 0.0F; };
    double sum = 0; // In float it would drift.
    for (int x = -mean.radius; x < mean.radius; ++x)
        sum += at(x);
    for (int x = 0; x < width; ++x) {
        sum += at(x + mean.radius);
        float const beside = at(x - mean.radius - 1) + at(x + mean.radius + 1);
        to[x] = (float(sum) + mean.edge * beside) * mean.scale;
        sum -= at(x - mean.radius);
    }
}

void blurColumns(Coverage const& from, Coverage& to, Mean const& mean)
{
    auto const width = std::size_t(from.width);
    std::vector<double> sums(width);
    std::vector<float> const nothing(width);
    auto const row = [&](int y) {
        return y >= 0 && y < from.height ? from.row(y) : nothing.data();
    };
    auto const add = [&](int y, double sign) {
        if (y < 0 || y >= from.height)
            return;
        float const* const samples = from.row(y);
        for (std::size_t x = 0; x < width; ++x)
            sums[x] += sign * samples[x];
    };
    for (int y = -mean.radius; y < mean.radius; ++y)
        add(y, 1);
    for (int y = 0; y < from.height; ++y) {
        add(y + mean.radius, 1);
        float const* const above = row(y - mean.radius - 1);
        float const* const below = row(y + mean.radius + 1);
        float* const out = to.row(y);
        for (std::size_t x = 0; x < width; ++x)
            out[x] = (float(sums[x]) + mean.edge * (above[x] + below[x])) * mean.scale;
        add(y - mean.radius, -1);
    }
}

} // namespace

int blurReach(double sigma)
{
    return sigma > 0 ? passes * (Mean(sigma).radius + 1) : 0;
}

void blur(Coverage& coverage, double sigma)
{
    if (!(sigma > 0) || coverage.samples.empty())
        return;
    Mean const mean(sigma);
    Coverage other = coverage;
    for (int pass = 0; pass < passes; ++pass) {
        for (int y = 0; y < coverage.height; ++y)
            blurRow(coverage.row(y), other.row(y), coverage.width, mean);
        std::swap(coverage, other);
    }
    for (int pass = 0; pass < passes; ++pass) {
        blurColumns(coverage, other, mean);
        std::swap(coverage, other);
    }
}

} // namespace framewright
