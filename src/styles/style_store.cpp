#include "styles/style_store.h"

#include "model/file_url.h"
#include "model/project_document.h"
#include "workspace/workspace.h"

#include <algorithm>
#include <chrono>

namespace framewright {

namespace {

using namespace std::chrono_literals;

/// Further changes do not postpone the save.
constexpr SyncTiming timing = {.delay = 500ms, .longestDelay = 500ms};

/// "Neon" of "Neon 2".
std::string stemOf(std::string const& name)
{
    std::size_t const end = name.find_last_not_of("0123456789");
    bool const isNumbered =
        end != std::string::npos && end > 0 && end + 1 < name.size() && name[end] == ' ';
    return isNumbered ? name.substr(0, end) : name;
}

bool holds(std::vector<CaptionStyle> const& styles, Id const& id)
{
    return std::ranges::find(styles, id, &CaptionStyle::id) != styles.end();
}

CaptionStyle const* named(std::vector<CaptionStyle> const& styles, std::string const& name)
{
    auto found = std::ranges::find(styles, name, &CaptionStyle::name);
    if (found == styles.end())
        found = std::ranges::find_if(
            styles, [&](CaptionStyle const& each) { return isSameName(each.name, name); });
    return found == styles.end() ? nullptr : &*found;
}

std::string unusedName(std::vector<CaptionStyle> const& styles, std::string const& name)
{
    std::string candidate = name;
    for (int number = 2; named(styles, candidate); ++number)
        candidate = stemOf(name) + " " + std::to_string(number);
    return candidate;
}

CaptionStyle withUnusedName(CaptionStyle style, std::vector<CaptionStyle> const& beside)
{
    style.name = unusedName(beside, style.name);
    return style;
}

/// Renames the other styles that have the name of `preset`.
void leaveNameTo(CaptionStyle const& preset, std::vector<CaptionStyle>& styles)
{
    for (CaptionStyle& style : styles) {
        if (style.id != preset.id && isSameName(style.name, preset.name))
            style.name = unusedName(styles, style.name);
    }
}

void writeDefaults(StyleStore::Kind const& kind, UserDefaults defaults, StyleList const& list)
{
    defaults.setString(kind.listKey, encodeStyleArray(list.styles));
    if (list.defaultID)
        defaults.setString(kind.defaultKey, list.defaultID->text());
    else if (defaults.string(kind.defaultKey))
        defaults.remove(kind.defaultKey);

    auto const before = defaults.strings(kind.seededKey);
    std::vector<std::string> seeded = before.value_or(std::vector<std::string>());
    for (CaptionStyle const& preset : kind.presets) {
        if (std::ranges::find(seeded, preset.id.text()) == seeded.end())
            seeded.push_back(preset.id.text());
    }
    if (seeded != before)
        defaults.setStrings(kind.seededKey, seeded);
}

std::string sentenceOf(FileTrouble const& trouble)
{
    std::string const name = validUtf8(trouble.file.filename().string());
    if (trouble.during == FileTrouble::During::saving)
        return "Could not save " + name + ": " + trouble.reason;
    if (trouble.cause == FileTrouble::Cause::failed)
        return trouble.reason;
    return name + " is not valid: " + trouble.reason +
           " The looks stay as they were, and the file is not written until it is whole.";
}

} // namespace

StyleStore::Kind StyleStore::captions()
{
    return {"caption-styles.json", "captionStyles.v3", "captionStyles.defaultID",
            "captionStyles.seeded.v4", CaptionStyle::presets()};
}

StyleStore::Kind StyleStore::texts()
{
    return {"text-styles.json", "textStyles.v1", "textStyles.defaultID", "textStyles.seeded.v1",
            CaptionStyle::textPresets()};
}

StyleStore::StyleStore(Kind kind, UserDefaults& defaults, QObject* parent)
    : QObject(parent),
      m_kind(std::move(kind)),
      m_defaults(defaults),
      m_file(form(), owner(), timing)
{
    connect(&m_file, &FileSync::problemChanged, this, &StyleStore::changed);
    load();
}

StyleStore::~StyleStore()
{
    writeBeforeQuitting();
}

std::string const& StyleStore::problem() const
{
    return m_file.problem().empty() ? m_loadingProblem : m_file.problem();
}

/// Reads the user's styles, and adds the built-in ones that were never added before.
void StyleStore::load()
{
    auto const list = m_defaults.string(m_kind.listKey);
    auto const seeded = m_defaults.strings(m_kind.seededKey);
    try {
        if (list)
            m_list.styles = decodeStyleArray(*list);
    } catch (DocumentError const& error) {
        m_loadingProblem =
            "The looks in the user's settings can't be read: " + std::string(error.what()) +
            " The built-in ones are used.";
        m_list.styles.assign(m_kind.presets.begin(), m_kind.presets.end());
    }
    if (auto const text = m_defaults.string(m_kind.defaultKey))
        m_list.defaultID = Id::parse(*text);
    StyleList const before = m_list;

    for (CaptionStyle const& preset : m_kind.presets) {
        bool const wasAdded =
            list && seeded && std::ranges::find(*seeded, preset.id.text()) != seeded->end();
        if (wasAdded || holds(m_list.styles, preset.id))
            continue;
        m_list.styles.push_back(withUnusedName(preset, m_list.styles));
        // Only what is new to this user: what they deleted stays deleted in every workspace.
        if (list && seeded)
            m_newPresets.push_back(preset);
    }
    if (!(m_list == before) || !seeded)
        m_file.valueChanged();
}

CaptionStyle const& StyleStore::defaultStyle() const
{
    if (m_list.defaultID) {
        if (CaptionStyle const* const found = style(*m_list.defaultID))
            return *found;
    }
    return m_list.styles.empty() ? m_kind.presets.front() : m_list.styles.front();
}

CaptionStyle const* StyleStore::style(Id const& id) const
{
    auto const found = std::ranges::find(m_list.styles, id, &CaptionStyle::id);
    return found == m_list.styles.end() ? nullptr : &*found;
}

CaptionStyle const* StyleStore::style(std::string const& name) const
{
    return named(m_list.styles, name);
}

std::vector<CaptionStyle> StyleStore::missingPresets() const
{
    std::vector<CaptionStyle> missing;
    std::ranges::copy_if(
        m_kind.presets, std::back_inserter(missing),
        [&](CaptionStyle const& preset) { return !holds(m_list.styles, preset.id); });
    return missing;
}

std::string StyleStore::uniqueName(std::string const& name) const
{
    return unusedName(m_list.styles, name);
}

std::vector<std::string> StyleStore::duplicateNames() const
{
    std::vector<std::string> twice;
    auto const& all = m_list.styles;
    for (auto each = all.begin(); each != all.end(); ++each) {
        bool const isSecond = std::any_of(all.begin(), each, [&](CaptionStyle const& before) {
            return before.name == each->name;
        });
        if (isSecond && std::ranges::find(twice, each->name) == twice.end())
            twice.push_back(each->name);
    }
    return twice;
}

void StyleStore::setList(StyleList list)
{
    if (list == m_list)
        return;
    m_list = std::move(list);
    emit changed();
}

void StyleStore::change(StyleList list)
{
    setList(std::move(list));
    m_file.valueChanged();
}

void StyleStore::upsert(CaptionStyle style)
{
    style = normalized(std::move(style)).style;
    StyleList list = m_list;
    auto const found = std::ranges::find(list.styles, style.id, &CaptionStyle::id);
    if (found == list.styles.end())
        list.styles.push_back(std::move(style));
    else
        *found = std::move(style);
    change(std::move(list));
}

CaptionStyle StyleStore::duplicate(CaptionStyle const& style)
{
    CaptionStyle copy = style;
    copy.id = Id::random();
    copy.name = uniqueName(style.name);
    upsert(copy);
    return copy;
}

void StyleStore::remove(Id const& id)
{
    StyleList list = m_list;
    std::erase_if(list.styles, [&](CaptionStyle const& style) { return style.id == id; });
    if (list.defaultID == id)
        list.defaultID.reset();
    change(std::move(list));
}

void StyleStore::setDefaultID(std::optional<Id> const& id)
{
    StyleList list = m_list;
    list.defaultID = id;
    change(std::move(list));
}

void StyleStore::addPreset(CaptionStyle const& preset)
{
    StyleList list = m_list;
    auto const found = std::ranges::find(list.styles, preset.id, &CaptionStyle::id);
    if (found == list.styles.end())
        list.styles.push_back(preset);
    else
        *found = preset;
    leaveNameTo(preset, list.styles);
    change(std::move(list));
}

void StyleStore::resetToPresets()
{
    StyleList list;
    list.styles.assign(m_kind.presets.begin(), m_kind.presets.end());
    list.defaultID = m_list.defaultID;
    std::ranges::copy_if(
        m_list.styles, std::back_inserter(list.styles),
        [&, made = list.styles](CaptionStyle const& style) { return !holds(made, style.id); });
    for (CaptionStyle const& preset : m_kind.presets)
        leaveNameTo(preset, list.styles);
    change(std::move(list));
}

void StyleStore::attach(std::filesystem::path const& file)
{
    if (m_file.file() == file)
        return;
    writeBeforeQuitting();
    m_loadingProblem.clear();
    if (m_file.open(file, FileSync::Saving::automatic))
        addNewPresets();
}

void StyleStore::detach()
{
    writeBeforeQuitting();
    m_loadingProblem.clear();
    m_file.detach();
}

void StyleStore::addNewPresets()
{
    for (CaptionStyle const& preset : m_newPresets) {
        if (!style(preset.id))
            upsert(withUnusedName(preset, m_list.styles));
    }
}

FileForm<StyleList> StyleStore::form() const
{
    return {
        .encode = [](StyleList const& list, auto const&) { return list.data(); },
        .decode = decodeStyleList,
        .alsoKeep = [kind = m_kind, defaults = m_defaults](
                        StyleList const& list, InFile) { writeDefaults(kind, defaults, list); },
        .largestFile = largestStyleFile,
        .makesFolder = true,
    };
}

FileOwner<StyleList> StyleStore::owner()
{
    return {
        .value = [this] { return m_list; },
        .take = [this](Decoded<StyleList> const& theirs,
                       StyleList const* base) { return take(theirs.value, base); },
        .describe = sentenceOf,
    };
}

/// Takes in what another program wrote. Our unsaved changes stay.
Taken StyleStore::take(StyleList const& theirs, StyleList const* base)
{
    StyleList list = merged(base ? *base : StyleList(), m_list, theirs);
    bool const isTheirs = list == theirs;
    setList(std::move(list));
    return isTheirs ? Taken::asItIs : Taken::merged;
}

StyleStores::StyleStores(UserDefaults& defaults)
    : captions(StyleStore::captions(), defaults), texts(StyleStore::texts(), defaults)
{
}

void StyleStores::follow(std::optional<std::filesystem::path> const& workspace)
{
    for (StyleStore* const store : {&captions, &texts}) {
        if (workspace && Workspace::isWorkspace(*workspace))
            store->attach(Workspace::settingsFolder(*workspace) / store->fileName());
        else
            store->detach();
    }
}

void StyleStores::syncStyles()
{
    captions.startSaving();
    texts.startSaving();
}

void StyleStores::writeBeforeQuitting()
{
    captions.writeBeforeQuitting();
    texts.writeBeforeQuitting();
}

} // namespace framewright
