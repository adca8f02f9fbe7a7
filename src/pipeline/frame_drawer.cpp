#include "pipeline/frame_drawer.h"

#include "pipeline/internal/clip_frame_source.h"
#include "raster/frame_compositor.h"

#include <optional>
#include <utility>

namespace framewright {

class FrameDrawer::Impl {
public:
    explicit Impl(Options given)
        : m_options(std::move(given)),
          m_readers(m_options.keptReaders, m_options.decoderThreads, m_options.activity),
          m_photos(m_options.keptPhotos),
          m_ahead(m_options.decoderThreads, m_options.activity)
    {
    }

    void show(std::shared_ptr<BuiltComposition const> composition)
    {
        if (m_shown && composition == m_shown->composition)
            return;
        m_shown.reset();
        if (composition)
            m_shown.emplace(std::move(composition), Files{m_readers, m_photos, m_ahead}, m_options);
    }

    Frame draw(double time)
    {
        Frame frame = m_shown->compositor.draw(time);
        // Afterwards: a decoder prepared for a cut at this very frame has been taken by now.
        if (m_options.openAhead > 0)
            m_shown->source.openAhead(time);
        return frame;
    }

    void closeFiles()
    {
        m_ahead.dropAll();
        m_readers.closeAll();
        m_photos.forgetAll();
    }

private:
    using Files = ClipFrameSource::Files;

    struct Shown {
        Shown(std::shared_ptr<BuiltComposition const> shown, Files files, Options const& options)
            : composition(std::move(shown)),
              source(*composition, files, options),
              compositor(composition->video, source)
        {
        }

        std::shared_ptr<BuiltComposition const> composition;
        ClipFrameSource source;
        FrameCompositor compositor;
    };

    Options const m_options;
    OpenReaders m_readers;
    OpenPhotos m_photos;
    OpeningAhead m_ahead;
    std::optional<Shown> m_shown;
};

FrameDrawer::FrameDrawer(Options options) : m_impl(std::make_unique<Impl>(std::move(options))) {}
FrameDrawer::~FrameDrawer() = default;

void FrameDrawer::show(std::shared_ptr<BuiltComposition const> composition)
{
    m_impl->show(std::move(composition));
}

Frame FrameDrawer::draw(double time)
{
    return m_impl->draw(time);
}

void FrameDrawer::closeFiles()
{
    m_impl->closeFiles();
}

} // namespace framewright
