#include "cli/refusal_sentences.h"
#include "cli/values.h"

#include "sample_project.h"

#include <gtest/gtest.h>

#include <limits>

namespace framewright {

namespace {

constexpr double endless = std::numeric_limits<double>::infinity();

Project const project = sampleProject();

Subject on(std::size_t track)
{
    return Subject::track(project.tracks[track].id);
}

Subject clip(std::size_t track, std::size_t index)
{
    return Subject::clip((*project.tracks[track].clips)[index].id);
}

Subject file(std::string const& name)
{
    MediaAsset asset;
    asset.displayName = name;
    return Subject::asset(asset);
}

Subject called(std::string const& name)
{
    return Subject::named(name);
}

Refusal refusal(Reason reason, Subject const& subject, double value)
{
    return {.reason = reason, .subject = subject, .value = value};
}

} // namespace

// Agents act on these sentences: those with names and numbers in them, word for word.
TEST(RefusalSentences, NameTheirSubjects)
{
    enum { titles, video, secondVideo, audio, subtitles };
    struct Case {
        Refusal refusal;
        char const* sentence;
    };
    // clang-format off
    Case const cases[] = {
        {{Reason::assetGone, clip(video, 0)}, "The clip's media file is not part of the project."},

        {{Reason::trackLocked, on(audio)}, "a1 (Audio 1) is locked. Unlock it with track_set first."},
        {{Reason::topmostTrack, on(titles)}, "Titles is the topmost track already."},
        {{Reason::bottomTrack, on(subtitles)}, "Subtitles is the bottom track already."},

        {{Reason::barsOnly, on(subtitles)}, "s1 (Subtitles) holds subtitle bars, not clips."},
        {{Reason::notATextTrack, on(video)}, "v1 (Video 1) is not a text track."},
        {{Reason::photoOnAudioTrack, file("face.jpg")}, "A photo cannot go on an audio track."},
        {{Reason::audioOnVideoTrack, file("song.wav")}, "song.wav is audio; it cannot go on a video track."},
        {{Reason::noAudioForAudioTrack, file("mute.mp4")}, "mute.mp4 has no sound; it cannot go on an audio track."},
        {{Reason::notForPlaceholders, on(titles)}, "Placeholders go on video or audio tracks. t1 (Titles) is a text track; use text-add or the caption commands there."},
        {{Reason::notForPlaceholders, on(subtitles)}, "Placeholders go on video or audio tracks. s1 (Subtitles) is a subtitles track; use text-add or the caption commands there."},

        {refusal(Reason::noRoom, on(audio), 12), "No room on Audio 1 near 12 s."},
        {refusal(Reason::noRoomForText, on(titles), 4), "No room on the text track near 4 s; add another text track with track-add."},
        {{Reason::overlapsNeighbor, {}, TimeRange{3, 7.5}}, "That would overlap a neighbor; this clip can span 3–7.5 s."},
        {{Reason::overlapsNeighbor, {}, TimeRange{3, endless}}, "That would overlap a neighbor; this clip can span 3 s onwards."},
        {refusal(Reason::runsIntoNextText, on(titles), 2), "That would run into the next text on Titles; it can last up to 2 s."},
        {refusal(Reason::pastTimelineEnd, {}, 1e6), "The timeline only goes to 1000000 s."},

        {refusal(Reason::textTooLong, {}, 3600), "A text can last 3600 s at most."},
        {refusal(Reason::photoTooLong, {}, 60), "A photo can be stretched to 60 s at most."},
        {{Reason::pastSourceEnd, {}, TimeRange{0, 12.4}}, "The source only runs 0–12.4 s."},
        {{Reason::inOutsideSource, {}, TimeRange{0, 12.4}}, "in must be within the file (0–12.4 s)."},
        {{Reason::slipsPastSource, {}, TimeRange{0, 96}, 100}, "The source only runs 0–100 s; this clip can begin at 0–96 s of it."},
        {{Reason::splitOutsideClip, clip(video, 0), TimeRange{3, 7.5}, 12}, "12 s is not inside the clip (3–7.5 s) with 0.1 s to spare on each side."},

        {refusal(Reason::tooManyCharacters, {}, 10'000), "A text has at most 10000 characters."},
        {{Reason::notAText, clip(video, 1)}, "v1:2 is not a text clip."},

        {{Reason::noFileToBring, clip(video, 1)}, "v1:2 carries no file to bring along."},
        {{Reason::audioForVideoClip, file("song.wav")}, "song.wav is audio; it cannot replace a video clip."},

        {refusal(Reason::tooManyFrames, {}, 49), "49 frames is too many for one sheet; use a larger every or a narrower start/end (48 at most)."},
        {{Reason::sheetTooLarge, called("9000 × 9000")}, "The sheet would be 9000 × 9000 pixels; use a smaller width or fewer frames."},
        {{Reason::exportStillRunning, called("a.mp4")}, "The export of a.mp4 is still running. Wait until it is done, or pass --force to cancel it."},
        {{Reason::targetIsFolder, called("/a")}, "/a is a folder; give the name of a file in it."},
        {{Reason::targetNotReplaceable, called("/dev/null")}, "/dev/null is not a file that could be replaced."},

        {{Reason::unsavedChanges, called("Hook")}, "“Hook” has changes that are not saved. Save it with project_save, or pass --force to go on without them."},
        {{Reason::saveFailed, called("The disk is full.")}, "The disk is full. Pass --force to go on without what is not saved."},
        {{Reason::fileExists, called("/a.fwp")}, "There is a file at /a.fwp already."},
        {{Reason::folderMissing, called("/a")}, "There is no folder /a."},
        {{Reason::notAWorkspace, called("/a/plain/")}, "“plain” isn't a workspace."},
        {{Reason::folderGone, called("/a/gone")}, "/a/gone is not there. It may have been moved, renamed or deleted."},
        {{Reason::folderNameTaken, called("Reels")}, "A folder named “Reels” is already there and isn't a workspace. Pick another name or place."},
        {{Reason::projectNameTaken, called("Hook")}, "A project named “Hook” is already there. Pick another name."},
        {{Reason::projectUnknown, called("Hook")}, "There is no project called Hook in the workspace."},
        {{Reason::notAMediaFolder, called("/a")}, "/a is not one of the media folders."},
        {refusal(Reason::mediaFolderUsed, called("/a"), 1), "The open project uses 1 file of /a. Pass --force to remove it all the same."},
        {refusal(Reason::mediaFolderUsed, called("/a"), 2), "The open project uses 2 files of /a. Pass --force to remove it all the same."},
        {{Reason::nameNotText, called("a?")}, "“a?” can't be a name: it is not UTF-8 text."},
        {{Reason::nameHasControlCharacter, called("a?")}, "“a?” can't be a name: it holds a control character."},
        {{Reason::nameHasSlash, called("{a/b}")}, "“{a/b}” can't be a name: it holds a slash."},
        {{Reason::nameBeginsWithDot, called(".a")}, "“.a” can't be a name: it begins with a dot."},
        {refusal(Reason::nameTooLong, called("n…"), 200), "“n…” can't be a name: it is longer than 200 bytes."},
        {{Reason::styleNameTaken, called("Neon")}, "There is a look called Neon already."},
        {refusal(Reason::styleNameUnusable, {}, 200), "A look needs a name of one line, 200 bytes at most."},
    };
    // clang-format on
    for (Case const& c : cases)
        EXPECT_EQ(sentenceOf(c.refusal, project), c.sentence);
}

TEST(RefusalSentences, NoReasonIsWithoutOne)
{
    for (int reason = 0; reason <= int(Reason::styleNameUnusable); ++reason) {
        std::string const sentence = sentenceOf({Reason(reason)}, project);
        EXPECT_NE(sentence, "") << reason;
        EXPECT_EQ(sentence.find('{'), std::string::npos) << sentence;
    }
}

TEST(RefusalSentences, SayWhatASettingMayBe)
{
    EXPECT_EQ(sentenceOf({Reason::outOfRange, Subject::setting(Setting::fontSize)}, project),
              "size must be 8 to 240 points.");
    EXPECT_EQ(sentenceOf({Reason::outOfRange, Subject::setting(Setting::placeTime)}, project),
              "at must be 0 or later.");
    EXPECT_EQ(sentenceOf({Reason::outOfRange, called("padding"), TimeRange{0, 0.5}}, project),
              "padding must be 0 to 0.5.");
}

TEST(SecondsText, IsNoLongerThanNeeded)
{
    struct Case {
        double seconds;
        char const* text;
    };
    for (Case const& c :
         {Case{12.4, "12.4 s"}, Case{3, "3 s"}, Case{0.1 + 0.2, "0.3 s"}, Case{100, "100 s"},
          Case{-0.00001, "0 s"}, Case{-1.5, "-1.5 s"}, Case{1.0 / 30, "0.033 s"}})
        EXPECT_EQ(secondsText(c.seconds), c.text);
}

} // namespace framewright
