#pragma once

#include <cstddef>

struct AVBufferRef;

namespace framewright {

/// Every plane begins at a multiple of this, and every row of one.
inline constexpr std::size_t rowAlignment = 64;

/// Memory for one picture, from a pool for pictures of that size. Throws std::bad_alloc.
AVBufferRef* frameMemory(std::size_t bytes);

} // namespace framewright
