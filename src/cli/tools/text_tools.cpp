// Commands for on-screen texts.

#include "cli/references.h"
#include "cli/tools/clip_results.h"
#include "cli/tools/editor_tools.h"
#include "cli/tools/style_options.h"
#include "editor/commands/text_commands.h"

namespace framewright {

namespace {

Param<Text> const newWords{"text", "The words. A newline starts a new line."};
Param<Moment> const at{"at", "When it appears (default: the playhead).", optionalParam};
Param<Number> const duration{"duration", "How long it stays, seconds (default 3).", optionalParam};
Param<TrackRef> const track{
    "track", "A text track (default: the first unlocked one, or a new one on top).", optionalParam};
Param<Text> const favoriteName{
    "favorite",
    "A text favorite by name (see favorites): Classic, Modern, Strong, Neon, Typewriter, Meme…",
    optionalParam};
Param<Number> const x{"x", "Center, 0-1 across the canvas (0.5 is the middle).", optionalParam};
Param<Number> const y{
    "y", "Center, 0-1 down the canvas (0.5 middle, 0.2 near the top, 0.8 near the bottom).",
    optionalParam};

Param<ClipRef> const clip{"clip", "t1:2 or a text clip id."};
Param<Text> const words{"text", "The words. A newline starts a new line.", optionalParam};
Param<Number> const newDuration{
    "duration", "New length in seconds (use clip-move / clip-trim for timing beyond that).",
    optionalParam};

/// Applies the options for a text's style and place. Returns whether any was given.
bool applyOptions(ToolArgs const& args, StyleStore const& favorites, TextOverlay& text)
{
    auto const wanted = args.find(favoriteName);
    if (wanted)
        text.style = favorite(favorites.styles(), *wanted, "text favorite");
    StyleChanges const changes = styleChanges(args);
    text.style = accepted(changed(std::move(text.style), changes));
    text.x = args.get(x, text.x);
    text.y = args.get(y, text.y);
    return wanted || !changes.isEmpty() || args.has(x) || args.has(y);
}

ToolResult textResult(EditorTools const& tools, Id const& id,
                      std::optional<double> wantedStart = std::nullopt)
{
    ToolResult result = clipResult(tools.editing.state, id, wantedStart);
    auto const place = findClip(tools.editing.state.project(), id);
    if (!place->clip->text) // From a document edited by hand.
        return result;
    TextOverlay const& text = **place->clip->text;
    NormalizedStyle const drawn = normalized(text.style);
    for (std::string const& change : drawn.changes)
        addNote(result, change);
    addNote(result, standInNote(drawn.style, tools.fonts));
    addNote(result, missingLettersNote(missingLetters(text.text, drawn.style, tools.fonts)));
    return result;
}

/// A text without words, in the style of new texts.
TextOverlay newText(EditorTools const& tools)
{
    TextOverlay text;
    text.style = tools.styles.texts.defaultStyle();
    return text;
}

ToolResult addText(ToolArgs const& args, EditorTools const& tools)
{
    AppState const& editor = tools.editing.state;
    requireProject(editor);
    NewText text;
    text.text = newText(tools);
    text.text.text = args[newWords];
    applyOptions(args, tools.styles.texts, text.text);
    text.time = args.get(at, editor.selection().playhead());
    text.length = args.get(duration, textLength);
    text.trackID = args.find(track);
    double const wantedStart = text.time;
    Placed const placed = accepted(addText(tools.editing, std::move(text)));
    return textResult(tools, placed.clipID, wantedStart);
}

ToolResult setText(ToolArgs const& args, EditorTools const& tools)
{
    Id const id = args[clip];
    ClipPlace const place = *findClip(tools.editing.project(), id);
    TextChanges changes;
    TextOverlay text = place.clip->text ? **place.clip->text : newText(tools);
    bool const changesStyle = applyOptions(args, tools.styles.texts, text);
    text.text = args.get(words, text.text);
    if (changesStyle || args.has(words))
        changes.text = std::move(text);
    changes.length = args.find(newDuration);
    if (!changes.text && !changes.length)
        throw ToolError("Give something to change: text, duration, favorite, font, size, color, "
                        "uppercase, x or y.");
    accepted(changeText(tools.editing, id, changes));
    return textResult(tools, id);
}

} // namespace

std::vector<Tool> textTools(EditorTools tools)
{
    using namespace StyleOption;
    return {
        {
            .name = "text_add",
            .description = "Put on-screen text over the picture for a stretch of time, wearing a "
                           "favorite look (or the default) with optional overrides. Returns the "
                           "clip; place it with x/y (normalized center).",
            .params = {newWords, at, duration, track, favoriteName, font, size, color, uppercase, x,
                       y},
            .action = [tools](ToolArgs args) { return addText(args, tools); },
        },
        {
            .name = "text_set",
            .description = "Change a text clip's words, look or position.",
            .params = {clip, words, newDuration, favoriteName, font, size, color, uppercase, x, y},
            .action = [tools](ToolArgs args) { return setText(args, tools); },
        },
    };
}

} // namespace framewright
