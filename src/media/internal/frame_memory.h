#pragma once

#include <cstddef>

struct AVBufferRef;

namespace framewright {

/// Alignment of every plane and of every row, in bytes: enough for the widest SIMD loads.
inline constexpr std::size_t rowAlignment = 64;

/// A buffer for one frame, from the pool for frames of that size. Throws std::bad_alloc. Any
/// thread.
AVBufferRef* frameMemory(std::size_t bytes);

} // namespace framewright
