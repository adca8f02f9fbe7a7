#include "pipeline/frame_producer.h"

#include "tasks/work_ahead.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <utility>

namespace framewright {

namespace {

struct Stopped {};

} // namespace

class FrameProducer::Impl {
public:
    Impl(std::shared_ptr<BuiltComposition const> composition, Options const& options)
        : m_composition(std::move(composition)),
          m_drawer(drawing(options)),
          m_frames(options.capacity, [this](Start const* start) { return draw(start); })
    {
    }

    ~Impl() { stop(); }
    Impl(Impl const&) = delete;
    Impl& operator=(Impl const&) = delete;

    void seek(double start, std::optional<int> count)
    {
        m_start = start;
        m_taken = 0;
        m_count = count;
        m_frames.restart({m_composition, start, count});
    }

    void replace(std::shared_ptr<BuiltComposition const> composition)
    {
        double const next = m_start + double(m_taken) / m_composition->video.framesPerSecond;
        m_composition = std::move(composition);
        seek(next, m_count ? std::optional(*m_count - m_taken) : std::nullopt);
    }

    std::optional<Produced> next()
    {
        auto produced = m_frames.next();
        m_taken += produced ? 1 : 0;
        return produced;
    }

    void stop()
    {
        m_isStopped = true;
        m_frames.stop();
    }

private:
    struct Start {
        std::shared_ptr<BuiltComposition const> composition;
        double time;
        std::optional<int> count;
    };

    FrameDrawer::Options drawing(Options const& options)
    {
        FrameDrawer::Options drawing;
        drawing.order = FrameDrawer::Order::forward;
        drawing.decoderThreads = options.decoderThreads;
        drawing.openAhead = options.openAhead;
        drawing.opening = options.opening;
        drawing.activity = [this, activity = options.activity] {
            if (m_isStopped)
                throw Stopped();
            if (activity)
                activity();
        };
        return drawing;
    }

    std::optional<Produced> draw(Start const* start)
    {
        if (start) {
            m_sequence = *start;
            m_drawn = 0;
            m_drawer.show(start->composition);
        }
        BuiltComposition const& composition = *m_sequence.composition;
        int const rate = composition.video.framesPerSecond;
        double const left = (composition.duration - m_sequence.time) * rate;
        int const count = m_sequence.count.value_or(int(std::lround(std::max(0.0, left))));
        if (m_isStopped || m_drawn >= count)
            return std::nullopt;
        double const time = m_sequence.time + double(m_drawn++) / rate;
        return Produced{time, m_drawer.draw(time)};
    }

    std::atomic<bool> m_isStopped = false;

    // The consumer's:
    std::shared_ptr<BuiltComposition const> m_composition;
    double m_start = 0;
    int m_taken = 0;
    std::optional<int> m_count;

    // The drawing thread's:
    FrameDrawer m_drawer;
    Start m_sequence = {};
    int m_drawn = 0;

    WorkAhead<Produced, Start> m_frames; ///< Last: its thread uses the others.
};

FrameProducer::FrameProducer(std::shared_ptr<BuiltComposition const> composition, Options options)
    : m_impl(std::make_unique<Impl>(std::move(composition), options))
{
}
FrameProducer::~FrameProducer() = default;

void FrameProducer::seek(double start, std::optional<int> count)
{
    m_impl->seek(start, count);
}

void FrameProducer::replace(std::shared_ptr<BuiltComposition const> composition)
{
    m_impl->replace(std::move(composition));
}

std::optional<FrameProducer::Produced> FrameProducer::next()
{
    return m_impl->next();
}

void FrameProducer::stop()
{
    m_impl->stop();
}

} // namespace framewright
