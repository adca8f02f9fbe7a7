#pragma once

#include <memory>
#include <new>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libswresample/swresample.h>
#include <libswscale/swscale.h>
}

namespace framewright {

/// For objects whose release function takes a pointer to the pointer.
template <auto release>
struct AVRelease {
    template <class T>
    void operator()(T* object) const
    {
        release(&object);
    }
};

struct SwsRelease {
    void operator()(SwsContext* context) const { sws_freeContext(context); }
};

using CodecHandle = std::unique_ptr<AVCodecContext, AVRelease<avcodec_free_context>>;
using FrameHandle = std::unique_ptr<AVFrame, AVRelease<av_frame_free>>;
using PacketHandle = std::unique_ptr<AVPacket, AVRelease<av_packet_free>>;
using ResamplerHandle = std::unique_ptr<SwrContext, AVRelease<swr_free>>;
using ScalerHandle = std::unique_ptr<SwsContext, SwsRelease>;

/// Takes ownership of a new object. Throws std::bad_alloc for null.
template <class Handle>
Handle made(typename Handle::pointer object)
{
    if (!object)
        throw std::bad_alloc();
    return Handle(object);
}

inline FrameHandle newFrame()
{
    return made<FrameHandle>(av_frame_alloc());
}

inline PacketHandle newPacket()
{
    return made<PacketHandle>(av_packet_alloc());
}

} // namespace framewright
