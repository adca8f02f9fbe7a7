#pragma once

#include "composition/composition.h"
#include "media/frame.h"
#include "media/reading_activity.h"

#include <cstddef>
#include <filesystem>
#include <functional>
#include <memory>

namespace framewright {

/// Draws frames of a composition from its files, on the caller's thread.
///
/// Stills use it directly: a single frame is wanted at once, so a thread that draws ahead would
/// only add a hop. FrameProducer runs one on a thread of its own. Both draw the same bytes.
///
/// Decoders and photos stay open when another composition is shown, as far as both use them. One
/// thread at a time.
class FrameDrawer {
public:
    enum class Order {
        forward,  ///< Mostly ascending times: each track has its own decoders, which are closed
                  ///< when they are not needed again soon.
        anywhere, ///< Single times: a file's decoder stays open for the next one.
    };

    struct Options {
        Order order = Order::anywhere;
        std::size_t keptReaders = 4; ///< Open decoders, those in use included.
        std::size_t keptPhotos = 2;
        int decoderThreads = 0; ///< Of each decoder; 0 lets it choose.
        /// Seconds before a cut at which the next clip's decoder is opened; 0 for never.
        double openAhead = 0;
        /// Called while files are read; may throw to interrupt. With `openAhead` on other threads
        /// too.
        ReadingActivity activity = {};
        /// Observes that a decoder is opened, or begins to be, while the frame at `time` is drawn.
        std::function<void(std::filesystem::path const& file, double time)> opening = {};
    };

    explicit FrameDrawer(Options options);
    ~FrameDrawer();
    FrameDrawer(FrameDrawer const&) = delete;
    FrameDrawer& operator=(FrameDrawer const&) = delete;

    /// Draws from this composition from now on. Null releases the current one and its drawn frames.
    void show(std::shared_ptr<BuiltComposition const> composition);

    /// The frame of the shown composition at `time` seconds; past its end the last one.
    /// Throws MediaError, which names the clip and the file, and what the activity throws. After
    /// the latter the files must be closed.
    Frame draw(double time);

    /// Closes all files.
    void closeFiles();

private:
    class Impl;
    std::unique_ptr<Impl> m_impl;
};

} // namespace framewright
