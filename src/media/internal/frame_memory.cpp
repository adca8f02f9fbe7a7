#include "media/internal/frame_memory.h"

#include "media/frame.h"

#include <list>
#include <memory>
#include <mutex>
#include <new>

extern "C" {
#include <libavutil/buffer.h>
}

namespace framewright {

namespace {

// A frame takes several megabytes, and rendering makes a few for each one it outputs. The allocator
// tends to return blocks of that size to the system, and the kernel clears every page of a new one
// at first touch. So buffers are pooled by size. Few sizes are in use at any time: the canvas, each
// source and the scaler's intermediate frames; pools beyond that are dropped, least recently used
// first. The pools are the library's: their buffers are reference-counted and may be returned on
// any thread.

/// The library frees a pool when the last of its buffers has been returned.
struct Uninit {
    void operator()(AVBufferPool* pool) const { av_buffer_pool_uninit(&pool); }
};

struct Pool {
    std::size_t bytes;
    std::unique_ptr<AVBufferPool, Uninit> buffers;
};

constexpr std::size_t maxPools = 8;

std::mutex poolsMutex;
std::list<Pool> pools; ///< Most recently used first.

void freeAligned(void*, std::uint8_t* data)
{
    ::operator delete (data, std::align_val_t{rowAlignment});
}

AVBufferRef* allocateAligned(void*, std::size_t bytes)
{
    void* const data = ::operator new (bytes, std::align_val_t{rowAlignment}, std::nothrow);
    if (!data)
        return nullptr;
    AVBufferRef* const buffer =
        av_buffer_create(static_cast<std::uint8_t*>(data), bytes, freeAligned, nullptr, 0);
    if (!buffer)
        freeAligned(nullptr, static_cast<std::uint8_t*>(data));
    return buffer;
}

} // namespace

AVBufferRef* frameMemory(std::size_t bytes)
{
    std::lock_guard const lock(poolsMutex);
    auto found = pools.begin();
    while (found != pools.end() && found->bytes != bytes)
        ++found;
    if (found != pools.end()) {
        pools.splice(pools.begin(), pools, found);
    } else {
        AVBufferPool* const made = av_buffer_pool_init2(bytes, nullptr, allocateAligned, nullptr);
        if (!made)
            throw std::bad_alloc();
        pools.push_front({bytes, std::unique_ptr<AVBufferPool, Uninit>(made)});
        if (pools.size() > maxPools)
            pools.pop_back();
    }
    AVBufferRef* const buffer = av_buffer_pool_get(pools.front().buffers.get());
    if (!buffer)
        throw std::bad_alloc();
    return buffer;
}

void releaseSpareFrames()
{
    std::lock_guard const lock(poolsMutex);
    pools.clear();
}

} // namespace framewright
