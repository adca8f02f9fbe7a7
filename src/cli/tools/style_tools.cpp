// Commands for the saved styles of texts and captions.

#include "cli/references.h"
#include "cli/tools/clip_results.h"
#include "cli/tools/editor_tools.h"
#include "cli/tools/json_views.h"
#include "cli/tools/style_options.h"

#include <algorithm>

namespace framewright {

using Json = nlohmann::json;

namespace {

enum class StyleKind { text, caption };

Choice<StyleKind> const kinds{{"text", StyleKind::text}, {"caption", StyleKind::caption}};

Param<Text> const name{"name", "The look's name."};
Param<Choice<StyleKind>> const kind{
    "kind", "text (a text favorite, the default) or caption (a caption style).", kinds,
    optionalParam};
Param<Choice<StyleKind>> const kindToList{"kind", "Only the text or the caption looks.", kinds,
                                          optionalParam};
Param<Text> const presetName{"name", "Only this built-in look.", optionalParam};
Param<Text> const rename{"rename", "A new name.", optionalParam};
Param<ClipRef> const from{"from", "A text clip (t1:2 or an id) whose look to save.", optionalParam};
Param<Text> const like{"like", "A look of the same kind to start from (default: the default one).",
                       optionalParam};
Param<Number> const spacing{"spacing", "Extra space between letters, points (-20-100).",
                            optionalParam};
Param<Number> const maxWidth{
    "maxWidth", "Widest a line may be, as a fraction of the canvas width (0.1-1).", optionalParam};
Param<Flag> const box{"box", "Draw a box behind the text.", optionalParam};
Param<Color> const boxColor{"boxColor", "Color of the box, #RRGGBB or #RRGGBBAA.", optionalParam};
Param<Number> const radius{"radius", "Corner radius of the box, points (0-400).", optionalParam};
Param<Number> const padding{"padding", "Space between text and box edge, points (0-200).",
                            optionalParam};
Param<Flag> const shadow{"shadow", "Draw a drop shadow.", optionalParam};
Param<Number> const shadowOpacity{"shadowOpacity", "How dark the shadow is (0-1).", optionalParam};
Param<Number> const shadowRadius{"shadowRadius", "How soft the shadow is, points (0-100).",
                                 optionalParam};
Param<Flag> const outline{"outline", "Draw an outline around the letters.", optionalParam};
Param<Color> const outlineColor{"outlineColor", "Color of the outline, #RRGGBB or #RRGGBBAA.",
                                optionalParam};
Param<Number> const outlineWidth{"outlineWidth", "Width of the outline, points (0-60).",
                                 optionalParam};

struct NumberOption {
    Param<Number> const& param;
    float CaptionStyle::*field;
};

NumberOption const numberOptions[] = {
    {spacing, &CaptionStyle::letterSpacing},       {maxWidth, &CaptionStyle::maxWidthFraction},
    {radius, &CaptionStyle::cornerRadius},         {padding, &CaptionStyle::padding},
    {shadowOpacity, &CaptionStyle::shadowOpacity}, {shadowRadius, &CaptionStyle::shadowRadius},
    {outlineWidth, &CaptionStyle::strokeWidth},
};

char const* whatOf(StyleKind of)
{
    return of == StyleKind::text ? "text favorite" : "caption style";
}

StyleStore& storeOf(StyleKind of, EditorTools const& tools)
{
    return of == StyleKind::text ? tools.styles.texts : tools.styles.captions;
}

Json styleJSON(StyleStore const& store, CaptionStyle const& style)
{
    Json json = styleJSON(style);
    if (style.id == store.defaultStyle().id)
        json["default"] = true;
    return json;
}

Json stylesJSON(StyleStore const& store)
{
    Json styles = Json::array();
    for (CaptionStyle const& style : store.styles())
        styles.push_back(styleJSON(store, style));
    return styles;
}

ToolResult listStyles(ToolArgs const& args, EditorTools const& tools)
{
    auto const only = args.find(kindToList);
    Json json = Json::object();
    for (auto const& [word, each] : kinds.options) {
        if (!only || *only == each)
            json[word] = stylesJSON(storeOf(each, tools));
    }
    return ToolResult::json(json);
}

StyleChanges allChanges(ToolArgs const& args)
{
    StyleChanges changes = styleChanges(args);
    changes.box = args.find(box);
    changes.boxColor = args.find(boxColor);
    changes.shadow = args.find(shadow);
    changes.outline = args.find(outline);
    changes.outlineColor = args.find(outlineColor);
    for (NumberOption const& option : numberOptions)
        addStyleNumber(changes, args, option.param, option.field);
    return changes;
}

/// The style to start from, when a text clip or another style was named.
std::optional<CaptionStyle> startingStyle(ToolArgs const& args, StyleKind of,
                                          EditorTools const& tools)
{
    if (args.has(from) && args.has(like))
        throw ToolError("Give from or like, not both.");
    if (auto const other = args.find(like))
        return favorite(storeOf(of, tools).styles(), *other, whatOf(of));
    auto const id = args.find(from);
    if (!id)
        return std::nullopt;
    auto const place = findClip(tools.editing.project(), *id);
    if (!place->clip->text)
        throw ToolError("from must be a text clip.");
    return (*place->clip->text)->style;
}

ToolResult saveStyle(ToolArgs const& args, EditorTools const& tools)
{
    StyleKind const of = args.get(kind, StyleKind::text);
    StyleStore& store = storeOf(of, tools);
    CaptionStyle const* const known = findLook(store.styles(), args[name]);
    StyleToSave wanted;
    wanted.name = args[name];
    wanted.newName = args.find(rename);
    wanted.startFrom = startingStyle(args, of, tools);
    if (known)
        wanted.known = known->id;
    wanted.changes = allChanges(args);

    SavedStyle const saved = accepted(saveStyle(store, wanted));
    ToolResult result = ToolResult::json({{"look", styleJSON(store, saved.style)}},
                                         std::string(saved.isNew ? "Made" : "Changed") + " the " +
                                             whatOf(of) + " " + saved.style.name + ".");
    for (std::string const& note : saved.notes)
        addNote(result, note);
    addNote(result, standInNote(saved.style, tools.fonts));
    return result;
}

ToolResult deleteStyle(ToolArgs const& args, EditorTools const& tools)
{
    StyleKind const of = args.get(kind, StyleKind::text);
    StyleStore& store = storeOf(of, tools);
    CaptionStyle const style = favorite(store.styles(), args[name], whatOf(of));
    store.remove(style.id);
    // With all its values, since this can't be undone.
    return ToolResult::json(
        {{"deleted", styleJSON(style)}, {"default", store.defaultStyle().name}});
}

ToolResult chooseDefault(ToolArgs const& args, EditorTools const& tools)
{
    StyleKind const of = args.get(kind, StyleKind::text);
    StyleStore& store = storeOf(of, tools);
    CaptionStyle const style = favorite(store.styles(), args[name], whatOf(of));
    store.setDefaultID(style.id);
    return ToolResult::json({{"look", styleJSON(store, style)}});
}

/// A line for each style that had to be renamed.
void noteRenamed(ToolResult& result, std::vector<CaptionStyle> const& before,
                 StyleStore const& store)
{
    for (CaptionStyle const& was : before) {
        CaptionStyle const* const is = store.style(was.id);
        bool const isPreset =
            std::ranges::find(store.presets(), was.id, &CaptionStyle::id) != store.presets().end();
        if (is && !isPreset && is->name != was.name)
            addNote(result, "Your " + was.name + " is called " + is->name + " now.");
    }
}

ToolResult resetStyles(ToolArgs const& args, EditorTools const& tools)
{
    StyleKind const of = args.get(kind, StyleKind::text);
    StyleStore& store = storeOf(of, tools);
    std::vector<CaptionStyle> const before = store.styles();
    ToolResult result;
    if (auto const preset = args.find(presetName)) {
        CaptionStyle const style = favorite(store.presets(), *preset, "built-in look");
        store.addPreset(style);
        result = ToolResult::json({{"look", styleJSON(store, style)}});
    } else {
        store.resetToPresets();
        result = ToolResult::json(stylesJSON(store));
    }
    noteRenamed(result, before, store);
    return result;
}

} // namespace

std::vector<Tool> styleTools(EditorTools tools)
{
    using namespace StyleOption;
    return {
        {
            .name = "favorites",
            .description = "The text favorites and caption styles with font, size and colors. The "
                           "default ones are what new texts and captions get.",
            .params = {kindToList},
            .action = [tools](ToolArgs args) { return listStyles(args, tools); },
        },
        {
            .name = "style_save",
            .description =
                "Make a look, or change the one of that name. What is not given stays; a "
                "new look starts as the default one. Texts and captions that wear it "
                "already stay as they are.",
            .params = {name,     kind,         rename,      from,    like,          font,
                       size,     color,        uppercase,   spacing, maxWidth,      box,
                       boxColor, radius,       padding,     shadow,  shadowOpacity, shadowRadius,
                       outline,  outlineColor, outlineWidth},
            .action = [tools](ToolArgs args) { return saveStyle(args, tools); },
        },
        {
            .name = "style_delete",
            .description = "Delete a saved look. Texts and captions that wear it stay as they are.",
            .params = {name, kind},
            .action = [tools](ToolArgs args) { return deleteStyle(args, tools); },
        },
        {
            .name = "style_default",
            .description = "Choose the look that new texts or captions get.",
            .params = {name, kind},
            .action = [tools](ToolArgs args) { return chooseDefault(args, tools); },
        },
        {
            .name = "style_reset",
            .description = "Put the built-in looks in again as they were made. Looks of your own "
                           "stay.",
            .params = {presetName, kind},
            .action = [tools](ToolArgs args) { return resetStyles(args, tools); },
        },
    };
}

} // namespace framewright
