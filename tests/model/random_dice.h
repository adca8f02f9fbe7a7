#pragma once

#include "model/project.h"
#include "model/sketch.h"

#include <cstdint>
#include <cstdio>
#include <iterator>
#include <random>
#include <unordered_set>

namespace framewright {

/// Random choices, and random arguments: mostly sensible, often at an edge.
class Dice {
public:
    Dice(Project const& project, std::mt19937& random, std::uint32_t& lastID)
        : m_project(project), m_random(random), m_lastID(lastID)
    {
        for (Track const& track : project.tracks) {
            for (Clip const& clip : *track.clips)
                m_clips.push_back(&clip);
        }
    }

    int upTo(std::size_t last)
    {
        return std::uniform_int_distribution<int>(0, int(last))(m_random);
    }
    bool oneIn(int count) { return upTo(std::size_t(count - 1)) == 0; }
    double between(double low, double high)
    {
        return std::uniform_real_distribution(low, high)(m_random);
    }

    Id newID()
    {
        char text[37];
        std::snprintf(text, sizeof text, "00000000-0000-4000-8000-0000%08X", ++m_lastID);
        return *Id::parse(text);
    }

    Clip const* anyClip()
    {
        return m_clips.empty() ? nullptr : m_clips[std::size_t(upTo(m_clips.size() - 1))];
    }
    Id clip() { return m_clips.empty() || oneIn(50) ? newID() : anyClip()->id; }
    /// A clip on a track of that kind, most often.
    Id clip(TrackKind kind)
    {
        Track const* const found = m_project.track(track(kind));
        if (!found || found->clips->empty())
            return clip();
        return (*found->clips)[std::size_t(upTo(found->clips->size() - 1))].id;
    }
    std::vector<Id> clips()
    {
        std::unordered_set<Id> ids;
        for (int i = upTo(3); i >= 0; --i)
            ids.insert(clip());
        return {ids.begin(), ids.end()};
    }
    std::vector<Id> newIDs(std::size_t count)
    {
        std::vector<Id> ids(count);
        for (Id& id : ids)
            id = newID();
        return ids;
    }
    Id track()
    {
        if (oneIn(50))
            return newID();
        return m_project.tracks[std::size_t(upTo(m_project.tracks.size() - 1))].id;
    }

    /// A track of that kind, most often.
    Id track(TrackKind kind)
    {
        std::vector<Id> fitting;
        for (Track const& track : m_project.tracks) {
            if (track.kind == kind)
                fitting.push_back(track.id);
        }
        if (fitting.empty() || oneIn(10))
            return track();
        return fitting[std::size_t(upTo(fitting.size() - 1))];
    }
    Id trackFor(Clip const& clip)
    {
        MediaAsset const* const asset = m_project.asset(clip.assetID);
        if (clip.isText())
            return track(TrackKind::text);
        bool const isSound = asset && asset->kind == MediaKind::audio;
        return track(isSound || (clip.isPlaceholder() && oneIn(3)) ? TrackKind::audio
                                                                   : TrackKind::video);
    }

    /// A time inside the clip or just beside it.
    double timeNear(Clip const& clip)
    {
        constexpr double steps[] = {0, 0.05, 0.09, 0.0996, 0.1, 0.11, 0.5, 1, -0.0004, -0.3};
        double const step = steps[upTo(std::size(steps) - 1)];
        if (oneIn(2))
            return between(clip.timelineStart, clip.end());
        return oneIn(2) ? clip.timelineStart + step : clip.end() - step;
    }

    double time()
    {
        if (oneIn(10))
            return between(-2, 90);
        if (oneIn(10))
            return upTo(60);
        if (oneIn(10))
            return oneIn(20) ? std::nan("") : between(0, 2e6);
        Clip const* const clip = anyClip();
        if (!clip)
            return between(0, 5);
        constexpr double steps[] = {0, 0, 0.0004, 0.0006, 0.05, 0.09, 0.1, 0.11, 1.0 / 30, 1, 2.5};
        double const step = steps[upTo(std::size(steps) - 1)];
        double const edge = oneIn(2) ? clip->timelineStart : clip->end();
        return oneIn(2) ? edge + step : edge - step;
    }

    double length()
    {
        constexpr double lengths[] = {0.05, 0.0996, 0.1, 0.3, 1, 2, 3, 7.125, 30, 61};
        return oneIn(3) ? between(0.1, 8) : lengths[upTo(std::size(lengths) - 1)];
    }

    Clip newClip()
    {
        if (oneIn(5)) {
            Clip text = textClip("T", length());
            text.id = newID();
            return text;
        }
        if (oneIn(4))
            return clipOf(newID(), Clip::placeholderAssetID, length(), 0);
        if (oneIn(3))
            return clipOf(newID(), id("face.jpg"), length(), 0);
        Id const asset = id(oneIn(2) ? "song.wav" : "talk.mov");
        return clipOf(newID(), asset, length(), oneIn(3) ? 0 : between(0, 95));
    }

    template <class T>
    std::optional<T> maybe(T value, int oneInHowMany = 2)
    {
        return oneIn(oneInHowMany) ? std::optional<T>(value) : std::nullopt;
    }

private:
    Project const& m_project;
    std::mt19937& m_random;
    std::uint32_t& m_lastID;
    std::vector<Clip const*> m_clips;
};

} // namespace framewright
