#pragma once

#include "pipeline/frame_drawer.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>

namespace framewright {

/// Draws the frames of a composition ahead, on a thread of its own.
///
/// It serves whatever plays time forward. An export takes every frame as fast as it can encode; a
/// player takes them by the clock, seeks to scrub, loop or catch up, and replaces the composition
/// after an edit or with one of another size. Single times are FrameDrawer's.
///
/// Threads. The consumer is one thread: it seeks, replaces, takes, constructs and destroys. The
/// drawing thread owns the FrameDrawer with its decoders. The next cut's decoder is opened and
/// sought on a third, short-lived thread (OpeningAhead) and handed to the drawing thread at the
/// cut. Frames travel through one bounded queue; Frame shares its pixels and may cross threads.
///
/// Invariants:
/// - A frame is a function of composition and time alone: the same bytes as FrameDrawer draws,
///   whatever was drawn, sought or replaced before.
/// - At most `capacity` frames wait and one more is being drawn, however slow the consumer.
/// - Frames, the end and an error arrive in order; an error after all frames before it.
/// - After `seek` or `replace` returns, `next` gives no frame from before the call. The frame being
///   drawn then is finished and discarded, since interrupting its decoder would make it useless,
///   and opening it again takes longer than the rest of a frame.
/// - `stop`, and destruction, do interrupt reading, also far from a keyframe.
class FrameProducer {
public:
    struct Options {
        std::size_t capacity = 4;
        int decoderThreads = 0; ///< Of each decoder; 0 lets it choose.
        double openAhead = 1;   ///< Seconds before a cut at which its decoder is opened.
        /// Called on the producer's threads for every packet that is read. Must not throw.
        std::function<void()> activity = {};
        /// As in FrameDrawer::Options, on the drawing thread.
        std::function<void(std::filesystem::path const& file, double time)> opening = {};
    };

    struct Produced {
        double time; ///< Seconds on the timeline.
        Frame frame;
    };

    /// Produces nothing until the first `seek`.
    FrameProducer(std::shared_ptr<BuiltComposition const> composition, Options options);
    ~FrameProducer();
    FrameProducer(FrameProducer const&) = delete;
    FrameProducer& operator=(FrameProducer const&) = delete;

    /// From now on frame n is that of start + n / rate. There are `count` of them; by default they
    /// go up to the composition's end.
    void seek(double start, std::optional<int> count = std::nullopt);

    /// Goes on with another composition at the frame that would have been taken next. What waits
    /// in the queue is drawn again. Decoders that both compositions use stay open.
    void replace(std::shared_ptr<BuiltComposition const> composition);

    /// Waits for the next frame. Nothing after the last one, after an error and once stopped.
    /// Throws MediaError, which names the clip and the file; a seek then starts afresh.
    std::optional<Produced> next();

    /// Ends production for good, and a `next` that waits. Any thread may call.
    void stop();

private:
    class Impl;
    std::unique_ptr<Impl> m_impl;
};

} // namespace framewright
