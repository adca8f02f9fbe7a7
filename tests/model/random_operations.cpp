#include "model/random_operations.h"

#include "model/clip_audio.h"
#include "model/clip_moving.h"
#include "model/clip_placing.h"
#include "model/clip_replacing.h"
#include "model/clip_settings.h"
#include "model/clip_trimming.h"
#include "model/text_editing.h"
#include "model/track_editing.h"

#include <stdexcept>

namespace framewright {

namespace {

constexpr std::size_t fewClips = 12;
constexpr std::size_t manyClips = 40;

/// The project an operation made, checked against what it says it did.
template <class Result>
Outcome<Project> projectOf(Outcome<Result> outcome)
{
    if (!outcome)
        return outcome.refusal();
    if constexpr (requires { outcome->at; }) {
        auto const found = findClip(outcome->project, outcome->clipID);
        if (!found || found->track->id != outcome->trackID ||
            found->clip->timelineStart != outcome->at)
            throw std::logic_error("is not where the result says");
    }
    return std::move(outcome->project);
}

using P = Project const&;

constexpr Operation clipOperations[] = {
    {"place",
     [](P p, Dice& d) {
         Clip const clip = d.newClip();
         return projectOf(place(p, clip, d.trackFor(clip), d.time()));
     }},
    {"addPlaceholder",
     [](P p, Dice& d) {
         return projectOf(addPlaceholder(p, {.id = d.newID(),
                                             .name = "slot",
                                             .length = d.length(),
                                             .trackID = d.maybe(d.track()),
                                             .time = d.maybe(d.time())}));
     }},
    {"duplicate",
     [](P p, Dice& d) {
         auto const ids = d.clips();
         return projectOf(duplicateClips(p, ids, d.newIDs(ids.size())));
     }},
    {"paste",
     [](P p, Dice& d) {
         std::vector<CopiedClip> copied;
         for (Id const& id : d.clips()) {
             if (auto const found = findClip(p, id))
                 copied.push_back({*found->clip, found->track->kind});
         }
         return projectOf(pasteClips(p, copied, d.maybe(d.track()), d.time(),
                                     d.newIDs(copied.size()), d.newIDs(4)));
     }},
    {"move",
     [](P p, Dice& d) {
         auto const found = findClip(p, d.clip());
         if (!found || d.oneIn(2))
             return projectOf(moveClip(p, d.clip(), d.time()));
         return projectOf(moveClip(p, found->clip->id, d.time(), d.track(found->track->kind)));
     }},
    {"nudge",
     [](P p, Dice& d) {
         constexpr double steps[] = {-1, -1.0 / 30, 1.0 / 30, 1, 0, 17};
         return projectOf(nudgeClips(p, d.clips(), steps[d.upTo(std::size(steps) - 1)]));
     }},
    {"remove", [](P p, Dice& d) { return projectOf(removeClips(p, d.clips())); }},
    {"split",
     [](P p, Dice& d) {
         Clip const* const clip = d.anyClip();
         if (!clip || d.oneIn(2))
             return projectOf(split(p, d.maybe(d.clip()), d.maybe(d.track()), d.time(), d.newID()));
         return projectOf(split(p, clip->id, std::nullopt, d.timeNear(*clip), d.newID()));
     }},
    {"trim edges",
     [](P p, Dice& d) {
         Clip const* const clip = d.anyClip();
         if (!clip || d.oneIn(4))
             return projectOf(
                 trimClip(p, d.clip(), {.start = d.maybe(d.time()), .end = d.maybe(d.time())}));
         if (d.oneIn(2))
             return projectOf(d.oneIn(2) ? trimClip(p, clip->id, {.start = d.timeNear(*clip)})
                                         : trimClip(p, clip->id, {.end = d.timeNear(*clip)}));
         double const start = d.timeNear(*clip);
         return projectOf(trimClip(p, clip->id, {.start = start, .end = start + d.length()}));
     }},
    {"trim an edge by a little",
     [](P p, Dice& d) {
         Clip const* const clip = d.anyClip();
         double const by = d.oneIn(2) ? d.between(-0.5, 0.5) : d.between(-0.0006, 0.0006);
         if (!clip)
             return projectOf(trimClip(p, d.newID(), {.start = 1}));
         return projectOf(d.oneIn(2) ? trimClip(p, clip->id, {.start = clip->timelineStart + by})
                                     : trimClip(p, clip->id, {.end = clip->end() + by}));
     }},
    {"trim source",
     [](P p, Dice& d) {
         Clip const* const clip = d.anyClip();
         double const in =
             d.oneIn(2) || !clip ? d.between(-1, 99) : clip->sourceStart + d.between(-1, 1);
         Trim trim{.start = d.maybe(d.time(), 8), .end = d.maybe(d.time(), 8), .in = d.maybe(in)};
         if (!trim.end && d.oneIn(2))
             trim.out = d.oneIn(5) ? 100.0004 : in + d.length();
         return projectOf(trimClip(p, clip ? clip->id : d.newID(), trim));
     }},
    {"slip", [](P p, Dice& d) { return slipClip(p, d.clip(), d.between(-5, 105)); }},
    {"replace",
     [](P p, Dice& d) {
         char const* const files[] = {"talk.mov", "song.wav", "face.jpg", "short.mov"};
         auto const with = d.oneIn(2) ? Replacement{Replacement::From::file, id(files[d.upTo(3)])}
                                      : Replacement{Replacement::From::timeline, d.clip()};
         return projectOf(d.oneIn(2) ? replaceClip(p, d.clip(), with)
                                     : replaceClipReturningFiller(p, d.clip(), with, d.newID()));
     }},
    {"detach audio",
     [](P p, Dice& d) { return projectOf(detachAudio(p, d.clip(), d.newID(), d.newID())); }},
    {"clamp audio", [](P p, Dice&) { return Outcome<Project>(clampAudioToTimeline(p)); }},
    {"update",
     [](P p, Dice& d) {
         return updateClip(p, d.clip(), [&](Clip& clip) {
             clip.timelineStart = clip.sourceEnd = d.time();
             clip.volume = 0.5f;
         });
     }},
    {"level", [](P p, Dice& d) { return setClipVolume(p, d.clip(), float(d.between(-0.1, 1.6))); }},
    {"transform",
     [](P p, Dice& d) {
         return setClipTransform(p, d.clip(),
                                 {.scale = d.between(-1, 9), .cropLeft = d.between(0, 0.5)});
     }},
    {"reset transform", [](P p, Dice& d) { return resetClipTransform(p, d.clip()); }},
    {"rename placeholder", [](P p, Dice& d) { return renamePlaceholder(p, d.clip(), "B-roll"); }},
    {"add text",
     [](P p, Dice& d) {
         TextOverlay text;
         text.text = d.oneIn(8) ? " " : "words";
         return projectOf(addText(p, {.id = d.newID(),
                                      .text = text,
                                      .time = d.time(),
                                      .length = d.length(),
                                      .trackID = d.maybe(d.track(TrackKind::text)),
                                      .newTrackID = d.newID()}));
     }},
    {"change text",
     [](P p, Dice& d) {
         TextOverlay text;
         text.text = "others";
         text.x = d.between(-0.2, 1.2);
         return changeText(p, d.clip(TrackKind::text),
                           {.text = d.maybe(text), .length = d.maybe(d.length())});
     }},
};

constexpr Operation trackOperations[] = {
    {"add track",
     [](P p, Dice& d) {
         if (p.tracks.size() > 9)
             return removeTrack(p, d.track());
         return addTrack(p, {.id = d.newID(),
                             .kind = TrackKind(d.upTo(3)),
                             .isMagnetic = d.maybe(d.oneIn(2), 4),
                             .place = d.oneIn(2) ? TrackPlace::top : TrackPlace::usual,
                             .index = d.maybe<std::size_t>(2, 4)});
     }},
    {"add subtitles",
     [](P p, Dice& d) {
         if (p.tracks.size() > 9)
             return removeTrack(p, d.track());
         SubtitleData data;
         data.bars = {{d.newID(), 0, 1, "Hello", {{"Hello", 0, 1}}}};
         return Outcome<Project>(addSubtitleTrack(p, d.newID(), data));
     }},
    {"remove track",
     [](P p, Dice& d) {
         return p.tracks.size() > 4 ? removeTrack(p, d.track()) : renameTrack(p, d.track(), "Kept");
     }},
    {"move track", [](P p, Dice& d) { return moveTrack(p, d.track(), d.upTo(4) - 2); }},
    {"set magnetic", [](P p, Dice& d) { return setMagnetic(p, d.track(), d.oneIn(2)); }},
    {"lock", [](P p, Dice& d) { return changeTrack(p, d.track(), {.isLocked = d.oneIn(4)}); }},
    {"track settings",
     [](P p, Dice& d) {
         return changeTrack(p, d.track(),
                            {.isHidden = d.maybe(d.oneIn(2)),
                             .isMuted = d.maybe(d.oneIn(2)),
                             .volume = d.maybe(float(d.between(-0.1, 1.6))),
                             .ducks = d.maybe(true, 4),
                             .opacity = d.maybe(d.between(0, 1.1), 4)});
     }},
    {"change aspect",
     [](P p, Dice& d) { return Outcome<Project>(changeAspect(p, AspectPreset(d.upTo(3)))); }},
};

std::size_t clipCount(Project const& project)
{
    std::size_t count = 0;
    for (Track const& track : project.tracks)
        count += track.clips->size();
    return count;
}

} // namespace

Operation const& chosenOperation(Project const& project, Dice& dice)
{
    std::size_t const count = clipCount(project);
    if (count > manyClips)
        return *std::ranges::find(clipOperations, std::string_view("remove"), &Operation::name);
    if (count < fewClips && dice.oneIn(2))
        return clipOperations[0];
    if (dice.oneIn(8))
        return trackOperations[dice.upTo(std::size(trackOperations) - 1)];
    return clipOperations[dice.upTo(std::size(clipOperations) - 1)];
}

} // namespace framewright
