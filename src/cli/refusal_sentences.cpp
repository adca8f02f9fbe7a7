#include "cli/refusal_sentences.h"

#include "cli/references.h"
#include "cli/values.h"
#include "model/file_url.h"

#include <charconv>
#include <cmath>
#include <filesystem>

namespace framewright {

namespace {

struct OptionWords {
    char const* name;
    char const* range; ///< What it may be, to follow the name.
};

/// What the command line calls a setting.
OptionWords wordsOf(Setting setting)
{
    static constexpr char notNegative[] = " must be 0 or later.";
    switch (setting) {
    case Setting::volume:
        return {"volume", " is 0 to 1.5."};
    case Setting::opacity:
        return {"opacity", " is 0 to 1."};
    case Setting::scale:
        return {"scale", " must be above 0 and at most 100."};
    case Setting::offsetX:
        return {"offsetX", " is -100 to 100."};
    case Setting::offsetY:
        return {"offsetY", " is -100 to 100."};
    case Setting::cropLeft:
        return {"cropLeft", " is 0 to 0.45."};
    case Setting::cropRight:
        return {"cropRight", " is 0 to 0.45."};
    case Setting::cropTop:
        return {"cropTop", " is 0 to 0.45."};
    case Setting::cropBottom:
        return {"cropBottom", " is 0 to 0.45."};
    case Setting::fontSize:
        return {"size", " must be 8 to 240 points."};
    case Setting::textX:
        return {"x", " must be 0 to 1."};
    case Setting::textY:
        return {"y", " must be 0 to 1."};
    case Setting::textLength:
        return {"duration", " must be 0.1 to 3600 seconds."};
    case Setting::placeTime:
        return {"at", notNegative};
    case Setting::moveTime:
        return {"to", notNegative};
    case Setting::sourceIn:
        return {"in", notNegative};
    case Setting::rangeStart:
        return {"start", notNegative};
    case Setting::sheetTimes:
        return {"times", notNegative};
    case Setting::sheetStep:
        return {"every", " must be positive."};
    case Setting::sheetColumns:
        return {"columns", " must be 1 to 48."};
    case Setting::frameWidth:
        return {"width", " must be 16 to 1080."};
    case Setting::exportHeight:
        return {"height", " must be 480 to 4320."};
    }
    return {};
}

/// The sentence, with names in braces where the refusal's particulars go (see `particular`).
///
/// A reason without a sentence is a warning of the compiler: the switch has no default.
char const* patternOf(Reason reason)
{
    switch (reason) {
    case Reason::noProject:
        return "No project is open. Start one with project_new or open one with project_open.";
    case Reason::trackGone:
        return "That track is no longer on the timeline.";
    case Reason::clipGone:
        return "That clip is no longer on the timeline.";
    case Reason::assetGone:
        return "{file} is not part of the project.";
    case Reason::nothingSelected:
        return "Nothing is selected.";
    case Reason::nothingCopied:
        return "Nothing was copied yet.";
    case Reason::nothingToUndo:
        return "Nothing to undo.";
    case Reason::nothingToRedo:
        return "Nothing to redo.";
    case Reason::noVideoTrack:
        return "Add a video track first.";

    case Reason::trackLocked:
        return "{track} is locked. Unlock it with track_set first.";
    case Reason::lastTrack:
        return "A project needs at least one track.";
    case Reason::topmostTrack:
        return "{trackName} is the topmost track already.";
    case Reason::bottomTrack:
        return "{trackName} is the bottom track already.";
    case Reason::trackNameEmpty:
        return "A track needs a name.";
    case Reason::audioNeverMagnetic:
        return "Audio tracks are always free.";
    case Reason::subtitlesNeverMagnetic:
        return "Subtitles tracks are never magnetic.";
    case Reason::audioNeverHidden:
        return "Audio tracks cannot be hidden; mute them instead.";
    case Reason::onlyVideoHasOpacity:
        return "Only video tracks have an opacity.";
    case Reason::trackHasNoAudio:
        return "Only video and audio tracks have sound.";
    case Reason::onlyAudioDucks:
        return "Only audio tracks duck.";

    case Reason::barsOnly:
        return "{track} holds subtitle bars, not clips.";
    case Reason::notATextTrack:
        return "{track} is not a text track.";
    case Reason::textAndMediaApart:
        return "Text clips live on text tracks and media clips on video or audio tracks.";
    case Reason::photoOnAudioTrack:
        return "A photo cannot go on an audio track.";
    case Reason::audioOnVideoTrack:
        return "{name} is audio; it cannot go on a video track.";
    case Reason::noAudioForAudioTrack:
        return "{name} has no sound; it cannot go on an audio track.";
    case Reason::notForPlaceholders:
        return "Placeholders go on video or audio tracks. {track} is a {trackKind} track; use "
               "text-add or the caption commands there.";
    case Reason::placeholderKeepsKind:
        return "A placeholder stays on its kind of track.";
    case Reason::clipKeepsKind:
        return "A clip can only move onto another track of the same kind.";

    case Reason::noRoom:
        return "No room on {trackName} near {seconds}.";
    case Reason::noRoomForText:
        return "No room on the text track near {seconds}; add another text track with track-add.";
    case Reason::noRoomToPaste:
        return "No room to paste at the playhead.";
    case Reason::noRoomToDuplicate:
        return "No room to duplicate";
    case Reason::noRoomToNudge:
        return "No room to nudge.";
    case Reason::orderedNotPositioned:
        return "Clips on a magnetic track are ordered, not positioned. Reorder them with "
               "clip_move, "
               "or make the track free with track_set.";
    case Reason::overlapsNeighbor:
        return "That would overlap a neighbor; this clip can span {limits}.";
    case Reason::runsIntoNextText:
        return "That would run into the next text on {trackName}; it can last up to {seconds}.";
    case Reason::pastTimelineEnd:
        return "The timeline only goes to {seconds}.";
    case Reason::startsBeforeZero:
        return "The clip cannot start before 0.";

    case Reason::tooShort:
        return "The clip would be shorter than 0.1 s.";
    case Reason::textTooLong:
        return "A text can last {seconds} at most.";
    case Reason::photoTooLong:
        return "A photo can be stretched to {seconds} at most.";
    case Reason::newPhotoTooLong:
        return "Photos become 3-second clips (stretchable to 60 s).";
    case Reason::pastSourceEnd:
        return "The source only runs {limits}.";
    case Reason::inOutsideSource:
        return "in must be within the file ({limits}).";
    case Reason::slipsPastSource:
        return "The source only runs 0–{seconds}; this clip can begin at {limits} of it.";
    case Reason::onlyMediaSlips:
        return "Only clips with a file have a range to slide.";
    case Reason::photoNeedsNoSlip:
        return "A photo shows the same picture throughout; there is nothing to slide.";
    case Reason::noEdgeGiven:
        return "Give start, end, in or out.";
    case Reason::endGivenTwice:
        return "Give end or out, not both.";
    case Reason::nothingToSplit:
        return "Could not split there.";
    case Reason::splitOutsideClip:
        return "{seconds} is not inside the clip ({limits}) with 0.1 s to spare on each side.";

    case Reason::outOfRange:
        return "{setting}{range}";
    case Reason::noWords:
        return "A text needs some words.";
    case Reason::tooManyCharacters:
        return "A text has at most {count} characters.";
    case Reason::notAText:
        return "{clip} is not a text clip.";
    case Reason::textHasOwnSettings:
        return "Use text-set for text clips.";
    case Reason::onlyVideoIsPlaced:
        return "Scale, offset and crop apply to clips on video tracks.";
    case Reason::onlyPlaceholdersAreRenamed:
        return "Only placeholders can be renamed.";
    case Reason::onlyPlaceholdersHaveNotes:
        return "Only placeholders have a note.";
    case Reason::placeholderNameEmpty:
        return "A placeholder needs a name.";

    case Reason::replacesItself:
        return "A clip cannot replace itself.";
    case Reason::textCarriesNoFile:
        return "Text clips carry no file; use text-set.";
    case Reason::noFileToBring:
        return "{clip} carries no file to bring along.";
    case Reason::photoForAudioClip:
        return "A photo cannot replace an audio clip.";
    case Reason::audioForVideoClip:
        return "{name} is audio; it cannot replace a video clip.";
    case Reason::noAudioToDetach:
        return "Only video clips have sound to detach.";
    case Reason::alreadySilent:
        return "The clip is silent already.";
    case Reason::barsNotCopied:
        return "Subtitle bars can't be copied yet.";

    case Reason::noPicture:
        return "Could not make the sheet. The piece has no picture yet.";
    case Reason::tooManyFrames:
        return "{count} frames is too many for one sheet; use a larger every or a narrower "
               "start/end (48 at most).";
    case Reason::sheetTooLarge:
        return "The sheet would be {name} pixels; use a smaller width or fewer frames.";
    case Reason::endNotAfterStart:
        return "end must be after start.";
    case Reason::emptyRange:
        return "The range is empty.";
    case Reason::exportRunning:
        return "An export is already running.";
    case Reason::exportStillRunning:
        return "The export of {name} is still running. Wait until it is done, or pass --force to "
               "cancel it.";
    case Reason::exportOverSource:
        return "That path is one of the project's source files; export somewhere else.";
    case Reason::noExportsFolder:
        return "Give a path (the project is not in a workspace, so there is no exports folder).";
    case Reason::targetIsFolder:
        return "{name} is a folder; give the name of a file in it.";
    case Reason::targetNotReplaceable:
        return "{name} is not a file that could be replaced.";

    case Reason::notInWorkspace:
        return "Only projects of a workspace can be renamed, duplicated or deleted.";
    case Reason::noMediaFolder:
        return "Only projects of a workspace have a folder to gather media in.";
    case Reason::unsavedChanges:
        return "{quoted} has changes that are not saved. Save it with project_save, or pass "
               "--force to go on without them.";
    case Reason::saveFailed:
        return "{name} Pass --force to go on without what is not saved.";
    case Reason::neverSaved:
        return "Give a path: the project was never saved.";
    case Reason::noRecoveryCopy:
        return "There is no recovery copy waiting.";
    case Reason::fileExists:
        return "There is a file at {name} already.";
    case Reason::folderMissing:
        return "There is no folder {name}.";
    case Reason::noWorkspace:
        return "Set up a workspace folder first.";
    case Reason::notAWorkspace:
        return "{folder} isn't a workspace.";
    case Reason::folderGone:
        return "{name} is not there. It may have been moved, renamed or deleted.";
    case Reason::folderNameTaken:
        return "A folder named {quoted} is already there and isn't a workspace. Pick another name "
               "or place.";
    case Reason::projectNameTaken:
        return "A project named {quoted} is already there. Pick another name.";
    case Reason::projectUnknown:
        return "There is no project called {name} in the workspace.";
    case Reason::notAMediaFolder:
        return "{name} is not one of the media folders.";
    case Reason::mediaFolderUsed:
        return "The open project uses {files} of {name}. Pass --force to remove it all the same.";
    case Reason::nameEmpty:
        return "A name can't be empty.";
    case Reason::nameNotText:
        return "{quoted} can't be a name: it is not UTF-8 text.";
    case Reason::nameHasControlCharacter:
        return "{quoted} can't be a name: it holds a control character.";
    case Reason::nameHasSlash:
        return "{quoted} can't be a name: it holds a slash.";
    case Reason::nameBeginsWithDot:
        return "{quoted} can't be a name: it begins with a dot.";
    case Reason::nameTooLong:
        return "{quoted} can't be a name: it is longer than {count} bytes.";
    case Reason::styleNameTaken:
        return "There is a look called {name} already.";
    case Reason::styleNameUnusable:
        return "A look needs a name of one line, {count} bytes at most.";
    }
    return "";
}

std::string kindWord(TrackKind kind)
{
    switch (kind) {
    case TrackKind::video:
        return "video";
    case TrackKind::audio:
        return "audio";
    case TrackKind::text:
        return "text";
    case TrackKind::subtitles:
        return "subtitles";
    }
    return {};
}

/// The particulars of one refusal, by the names that patterns give them.
class Particulars {
public:
    Particulars(Refusal const& refusal, Project const& project)
        : m_refusal(refusal), m_subject(refusal.subject), m_project(project)
    {
    }

    std::string operator[](std::string_view name) const
    {
        if (name.starts_with("track"))
            return ofTrack(name);
        if (name == "clip")
            return clip();
        if (name == "limits")
            return rangeText(m_refusal.limits.value_or(TimeRange()));
        if (name == "seconds")
            return secondsText(value());
        if (name == "count")
            return count();
        if (name == "files")
            return count() + (value() == 1 ? " file" : " files");
        if (name == "setting")
            return isNamed() ? m_subject.text : wordsOf(m_subject.number).name;
        if (name == "range")
            return isNamed() ? " must be " + limits() + "." : wordsOf(m_subject.number).range;
        if (name == "file")
            return m_subject.what == Subject::What::clip ? "The clip's media file" : "That file";
        if (name == "quoted")
            return inQuotes(m_subject.text);
        if (name == "folder")
            return inQuotes(lastName(m_subject.text));
        return validUtf8(m_subject.text);
    }

private:
    double value() const { return m_refusal.value.value_or(0); }
    bool isNamed() const { return m_subject.what == Subject::What::name; }
    std::string limits() const
    {
        TimeRange const limits = m_refusal.limits.value_or(TimeRange());
        return shortest(limits.start) + " to " + shortest(limits.end);
    }
    std::string count() const { return std::to_string(std::llround(value())); }

    std::string ofTrack(std::string_view name) const
    {
        Track const* const track = m_project.track(m_subject.id);
        if (!track) // Added by the edit that was refused.
            return "The track";
        if (name == "trackKind")
            return kindWord(track->kind);
        return name == "trackName" ? track->name : trackTitle(m_project, *track);
    }

    std::string clip() const
    {
        auto const place = findClip(m_project, m_subject.id);
        return place ? clipRef(m_project, *place->track, *place->clip) : "The clip";
    }

    static std::string shortest(double number)
    {
        char digits[32];
        auto const end = std::to_chars(std::begin(digits), std::end(digits), float(number)).ptr;
        return {digits, end};
    }

    static std::string inQuotes(std::string const& name) { return "“" + validUtf8(name) + "”"; }

    /// The name a user knows a folder by, also of a path with a slash at its end.
    static std::string lastName(std::filesystem::path const& folder)
    {
        return (folder.has_filename() ? folder : folder.parent_path()).filename().string();
    }

    Refusal const& m_refusal;
    Subject const& m_subject;
    Project const& m_project;
};

} // namespace

std::string sentenceOf(Refusal const& refusal, Project const& project)
{
    Particulars const particulars(refusal, project);
    std::string sentence;
    std::string_view rest = patternOf(refusal.reason);
    for (auto open = rest.find('{'); open != rest.npos; open = rest.find('{')) {
        auto const close = rest.find('}', open);
        sentence += rest.substr(0, open);
        sentence += particulars[rest.substr(open + 1, close - open - 1)];
        rest.remove_prefix(close + 1);
    }
    return sentence.append(rest);
}

} // namespace framewright
