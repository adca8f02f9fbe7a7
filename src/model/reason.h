#pragma once

namespace framewright {

/// Why an edit was refused: one enumerator for each cause, for code to test.
///
/// The comments name the refusal's subject, then its limits and its value, where it has them. The
/// sentences are made where the refusal is shown
/// (cli/refusal_sentences.h).
enum class Reason {
    // Something the edit needs is missing.
    noProject,
    trackGone,
    clipGone,
    assetGone, ///< A file that is not part of the project. The asset, or the clip that plays it.
    nothingSelected,
    nothingCopied,
    nothingToUndo,
    nothingToRedo,
    noVideoTrack,

    // Tracks
    trackLocked, ///< Track.
    lastTrack,
    topmostTrack, ///< Track.
    bottomTrack,  ///< Track.
    trackNameEmpty,
    audioNeverMagnetic,
    subtitlesNeverMagnetic,
    audioNeverHidden,
    onlyVideoHasOpacity,
    trackHasNoAudio,
    onlyAudioDucks,

    // What may be on which track
    barsOnly,             ///< A subtitles track holds no clips. Track.
    notATextTrack,        ///< Track.
    textAndMediaApart,    ///< Texts go on text tracks, media on the others.
    photoOnAudioTrack,    ///< Asset.
    audioOnVideoTrack,    ///< Asset.
    noAudioForAudioTrack, ///< Asset.
    notForPlaceholders,   ///< Neither a video nor an audio track. Track.
    placeholderKeepsKind, ///< It stays on its kind of track. Clip.
    clipKeepsKind,        ///< The same for other clips. Clip.

    // Room
    noRoom,        ///< Track; value: the time asked for.
    noRoomForText, ///< No room for a new text. Track; value: the time asked for.
    noRoomToPaste,
    noRoomToDuplicate,
    noRoomToNudge,
    orderedNotPositioned, ///< Clips of a magnetic track have no times of their own. Track.
    overlapsNeighbor,     ///< Clip; limits: what it may span.
    runsIntoNextText,     ///< Track; value: how long the text may last.
    pastTimelineEnd,      ///< Value: where the timeline ends.
    startsBeforeZero,     ///< A clip's start on the timeline.

    // Length and source range
    tooShort,
    textTooLong,      ///< Value: the longest.
    photoTooLong,     ///< Value: the longest.
    newPhotoTooLong,  ///< A photo that is being added.
    pastSourceEnd,    ///< Limits: what the source has.
    inOutsideSource,  ///< Limits: what the source has.
    slipsPastSource,  ///< Limits: where the clip may begin; value: how long the source is.
    onlyMediaSlips,   ///< Placeholders and texts have no source range.
    photoNeedsNoSlip, ///< A photo looks the same throughout.
    noEdgeGiven,      ///< Nothing to trim.
    endGivenTwice,    ///< As a time of the timeline and of the source.
    nothingToSplit,   ///< No clip at that time, or no room for both parts.
    splitOutsideClip, ///< Clip; limits: its range; value: the time asked for.

    // Settings
    outOfRange, ///< Setting.
    noWords,
    tooManyCharacters, ///< Value: the most.
    notAText,          ///< Clip.
    textHasOwnSettings,
    onlyVideoIsPlaced, ///< Scale, offset and crop are for video tracks.
    onlyPlaceholdersAreRenamed,
    onlyPlaceholdersHaveNotes,
    placeholderNameEmpty,

    // Replacing, duplicating, detaching
    replacesItself,
    textCarriesNoFile,
    noFileToBring,     ///< Clip: the one that is to replace another.
    photoForAudioClip, ///< Asset.
    audioForVideoClip, ///< Asset.
    noAudioToDetach,
    alreadySilent,
    barsNotCopied, ///< Bars can't be duplicated.

    // Frames and exports
    noPicture,
    tooManyFrames, ///< Value: how many.
    sheetTooLarge, ///< Name: its size in pixels.
    endNotAfterStart,
    emptyRange,
    exportRunning,
    exportStillRunning, ///< Name: its file.
    exportOverSource,
    noExportsFolder,
    targetIsFolder,       ///< Name.
    targetNotReplaceable, ///< Neither a file nor a folder. Name.

    // Projects, files and workspaces. Their names are the subject.
    notInWorkspace, ///< Only projects of a workspace are renamed, duplicated, deleted.
    noMediaFolder,  ///< Only projects of a workspace gather media.
    unsavedChanges,
    saveFailed, ///< Name: the sentence of what failed.
    neverSaved,
    noRecoveryCopy,
    fileExists,
    folderMissing,
    noWorkspace,
    notAWorkspace,
    folderGone,
    folderNameTaken,
    projectNameTaken,
    projectUnknown,
    notAMediaFolder,
    mediaFolderUsed, ///< Value: how many of its files.
    nameEmpty,
    nameNotText,
    nameHasControlCharacter,
    nameHasSlash,
    nameBeginsWithDot,
    nameTooLong, ///< Value: the most bytes.
    styleNameTaken,
    styleNameUnusable, ///< Value: the most bytes.
};

/// A number that an edit sets, where it is out of its range.
enum class Setting {
    volume,
    opacity,
    scale,
    offsetX,
    offsetY,
    cropLeft,
    cropRight,
    cropTop,
    cropBottom,
    fontSize,
    textX,
    textY,
    textLength,
    placeTime, ///< Where something goes on the timeline, or which frame is shown.
    moveTime,  ///< Where a clip moves.
    sourceIn,
    rangeStart, ///< Of an export or a sheet.
    sheetTimes,
    sheetStep,
    sheetColumns,
    frameWidth,
    exportHeight,
};

} // namespace framewright
