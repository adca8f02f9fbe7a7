// Commands for the saved looks of texts and captions.

#include "cli/references.h"
#include "cli/tools/clip_results.h"
#include "cli/tools/editor_tools.h"
#include "cli/tools/json_views.h"
#include "cli/tools/look_options.h"

#include <algorithm>

namespace framewright {

using Json = nlohmann::json;

namespace {

enum class LookKind { text, caption };

Choice<LookKind> const kinds{{"text", LookKind::text}, {"caption", LookKind::caption}};

Param<Text> const name{"name", "The look's name."};
Param<Choice<LookKind>> const kind{
    "kind", "text (a text favorite, the default) or caption (a caption style).", kinds,
    optionalParam};
Param<Choice<LookKind>> const kindToList{"kind", "Only the text or the caption looks.", kinds,
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
    float CaptionStyle::*member;
};

NumberOption const numberOptions[] = {
    {spacing, &CaptionStyle::letterSpacing},       {maxWidth, &CaptionStyle::maxWidthFraction},
    {radius, &CaptionStyle::cornerRadius},         {padding, &CaptionStyle::padding},
    {shadowOpacity, &CaptionStyle::shadowOpacity}, {shadowRadius, &CaptionStyle::shadowRadius},
    {outlineWidth, &CaptionStyle::strokeWidth},
};

/// What a user sees of a new effect when nothing more is said of it.
constexpr float usualPadding = 20;
constexpr float usualRadius = 16;
constexpr float usualShadowOpacity = 0.6f;
constexpr float usualShadowRadius = 12;
constexpr float usualOutlineWidth = 6;

char const* whatOf(LookKind of)
{
    return of == LookKind::text ? "text favorite" : "caption style";
}

StyleStore& storeOf(LookKind of, EditorTools const& tools)
{
    return of == LookKind::text ? tools.styles.texts : tools.styles.captions;
}

Json lookJSON(StyleStore const& store, CaptionStyle const& style)
{
    Json json = styleJSON(style);
    if (style.id == store.defaultStyle().id)
        json["default"] = true;
    return json;
}

Json looksJSON(StyleStore const& store)
{
    Json looks = Json::array();
    for (CaptionStyle const& style : store.styles())
        looks.push_back(lookJSON(store, style));
    return looks;
}

ToolResult listLooks(ToolArgs const& args, EditorTools const& tools)
{
    auto const only = args.find(kindToList);
    Json json = Json::object();
    for (auto const& [word, each] : kinds.options) {
        if (!only || *only == each)
            json[word] = looksJSON(storeOf(each, tools));
    }
    return ToolResult::json(json);
}

/// Turns an effect on or off as a command says, and on when it says something of it. One that comes
/// on gets the usual values where it has none.
void switchEffect(ToolArgs const& args, Param<Flag> const& flag,
                  std::initializer_list<Parameter const*> parts, bool& isOn)
{
    bool const isSpokenOf =
        std::ranges::any_of(parts, [&](Parameter const* part) { return args.has(*part); });
    isOn = args.get(flag, isOn || isSpokenOf);
}

void setUsual(float& value, float usual)
{
    if (value == 0)
        value = usual;
}

void applyEffects(ToolArgs const& args, CaptionStyle& style)
{
    bool const hadBox = style.backgroundEnabled;
    switchEffect(args, box, {&boxColor, &radius, &padding}, style.backgroundEnabled);
    if (style.backgroundEnabled && !hadBox) {
        setUsual(style.padding, usualPadding);
        setUsual(style.cornerRadius, usualRadius);
    }
    bool const hadShadow = style.shadowEnabled;
    switchEffect(args, shadow, {&shadowOpacity, &shadowRadius}, style.shadowEnabled);
    if (style.shadowEnabled && !hadShadow) {
        setUsual(style.shadowOpacity, usualShadowOpacity);
        setUsual(style.shadowRadius, usualShadowRadius);
    }
    bool const hadOutline = style.outlineEnabled;
    switchEffect(args, outline, {&outlineColor, &outlineWidth}, style.outlineEnabled);
    if (style.outlineEnabled && !hadOutline)
        setUsual(style.strokeWidth, usualOutlineWidth);

    style.backgroundColor = args.get(boxColor, style.backgroundColor);
    style.strokeColor = args.get(outlineColor, style.strokeColor);
    for (NumberOption const& option : numberOptions)
        setLookNumber(args, option.param, style, option.member);
}

/// The look of a text clip, or of the look that a new one starts from.
std::optional<CaptionStyle> givenLook(ToolArgs const& args, LookKind of, EditorTools const& tools)
{
    if (args.has(from) && args.has(like))
        throw ToolError("Give from or like, not both.");
    if (auto const other = args.find(like))
        return favorite(storeOf(of, tools).styles(), *other, whatOf(of));
    auto const id = args.find(from);
    if (!id)
        return std::nullopt;
    auto const place = findClip(tools.editor.project(), *id);
    if (!place->clip->text)
        throw ToolError("from must be a text clip.");
    return (*place->clip->text)->style;
}

void checkName(StyleStore const& store, CaptionStyle const& named)
{
    constexpr std::size_t longestName = 200;
    bool const isBlank = named.name.find_first_not_of(" \t\r\n") == std::string::npos;
    if (isBlank || named.name.size() > longestName ||
        named.name.find_first_of("\r\n") != std::string::npos)
        throw ToolError("A look needs a name of one line, 200 bytes at most.");
    CaptionStyle const* const other = store.style(named.name);
    if (other && other->id != named.id)
        throw ToolError("There is a look called " + other->name + " already.");
}

ToolResult saveLook(ToolArgs const& args, EditorTools const& tools)
{
    LookKind const of = args.get(kind, LookKind::text);
    StyleStore& store = storeOf(of, tools);
    CaptionStyle const* const known = findLook(store.styles(), args[name]);
    auto const given = givenLook(args, of, tools);
    CaptionStyle look = given ? *given : known ? *known : store.defaultStyle();
    look.id = known ? known->id : Id::random();
    look.name = known ? known->name : args[name];
    if (auto const newName = args.find(rename))
        look.name = *newName;
    if (!known || look.name != known->name)
        checkName(store, look);
    applyLookOptions(args, look);
    applyEffects(args, look);

    std::string const did = known ? "Changed" : "Made";
    store.upsert(look);
    CaptionStyle const& saved = *store.style(look.id);
    ToolResult result = ToolResult::json({{"look", lookJSON(store, saved)}},
                                         did + " the " + whatOf(of) + " " + saved.name + ".");
    for (std::string const& change : normalized(look).changes)
        addNote(result, change);
    addNote(result, standInNote(saved, tools.fonts));
    return result;
}

ToolResult deleteLook(ToolArgs const& args, EditorTools const& tools)
{
    LookKind const of = args.get(kind, LookKind::text);
    StyleStore& store = storeOf(of, tools);
    CaptionStyle const look = favorite(store.styles(), args[name], whatOf(of));
    store.remove(look.id);
    // Told whole: this is no step that could be undone.
    return ToolResult::json({{"deleted", styleJSON(look)}, {"default", store.defaultStyle().name}});
}

ToolResult chooseDefault(ToolArgs const& args, EditorTools const& tools)
{
    LookKind const of = args.get(kind, LookKind::text);
    StyleStore& store = storeOf(of, tools);
    CaptionStyle const look = favorite(store.styles(), args[name], whatOf(of));
    store.setDefaultID(look.id);
    return ToolResult::json({{"look", lookJSON(store, look)}});
}

/// A line for each look that gave its name away.
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

ToolResult resetLooks(ToolArgs const& args, EditorTools const& tools)
{
    LookKind const of = args.get(kind, LookKind::text);
    StyleStore& store = storeOf(of, tools);
    std::vector<CaptionStyle> const before = store.styles();
    ToolResult result;
    if (auto const preset = args.find(presetName)) {
        CaptionStyle const look = favorite(store.presets(), *preset, "built-in look");
        store.addPreset(look);
        result = ToolResult::json({{"look", lookJSON(store, look)}});
    } else {
        store.resetToPresets();
        result = ToolResult::json(looksJSON(store));
    }
    noteRenamed(result, before, store);
    return result;
}

} // namespace

std::vector<Tool> lookTools(EditorTools tools)
{
    using namespace LookOption;
    return {
        {
            .name = "favorites",
            .description = "The text favorites and caption styles with font, size and colors. The "
                           "default ones are what new texts and captions get.",
            .params = {kindToList},
            .action = [tools](ToolArgs args) { return listLooks(args, tools); },
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
            .action = [tools](ToolArgs args) { return saveLook(args, tools); },
        },
        {
            .name = "style_delete",
            .description = "Delete a saved look. Texts and captions that wear it stay as they are.",
            .params = {name, kind},
            .action = [tools](ToolArgs args) { return deleteLook(args, tools); },
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
            .action = [tools](ToolArgs args) { return resetLooks(args, tools); },
        },
    };
}

} // namespace framewright
