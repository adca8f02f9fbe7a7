#include "styles/style_store.h"

#include "model/file_url.h"
#include "model/project_document.h"
#include "platform/atomic_file.h"
#include "workspace/workspace.h"

#include <algorithm>
#include <cassert>
#include <chrono>

namespace framewright {

namespace {

constexpr auto writeDelay = std::chrono::milliseconds(500);

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

/// Renames the others that are called as a look is.
void leaveNameTo(CaptionStyle const& look, std::vector<CaptionStyle>& styles)
{
    for (CaptionStyle& style : styles) {
        if (style.id != look.id && isSameName(style.name, look.name))
            style.name = unusedName(styles, style.name);
    }
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
    : QObject(parent), m_kind(std::move(kind)), m_defaults(defaults)
{
    m_writer.setMaxThreadCount(1);
    m_pendingWrite.setSingleShot(true);
    m_pendingWrite.setInterval(writeDelay);
    connect(&m_pendingWrite, &QTimer::timeout, this, &StyleStore::write);
    load();
}

StyleStore::~StyleStore()
{
    writeBeforeQuitting();
}

/// The user's looks, and the built-in ones that were never put in.
void StyleStore::load()
{
    auto const list = m_defaults.string(m_kind.listKey);
    auto const seeded = m_defaults.strings(m_kind.seededKey);
    try {
        if (list)
            m_state.styles = decodeStyleList(*list);
    } catch (DocumentError const& error) {
        m_problem = "The looks in the user's settings can't be read: " + std::string(error.what()) +
                    " The built-in ones are used.";
        m_state.styles.assign(m_kind.presets.begin(), m_kind.presets.end());
    }
    if (auto const text = m_defaults.string(m_kind.defaultKey))
        m_state.defaultID = Id::parse(*text);
    m_base = m_state;

    for (CaptionStyle const& preset : m_kind.presets) {
        bool const wasPutIn =
            list && seeded && std::ranges::find(*seeded, preset.id.text()) != seeded->end();
        if (wasPutIn || holds(m_state.styles, preset.id))
            continue;
        m_state.styles.push_back(withUnusedName(preset, m_state.styles));
        // The looks of a workspace get what is new to this user, not what is new to this computer.
        if (list && seeded)
            m_fresh.push_back(preset);
    }
    if (!(m_state == m_base) || !seeded)
        persist();
}

CaptionStyle const& StyleStore::defaultStyle() const
{
    if (m_state.defaultID) {
        if (CaptionStyle const* const found = style(*m_state.defaultID))
            return *found;
    }
    return m_state.styles.empty() ? m_kind.presets.front() : m_state.styles.front();
}

CaptionStyle const* StyleStore::style(Id const& id) const
{
    auto const found = std::ranges::find(m_state.styles, id, &CaptionStyle::id);
    return found == m_state.styles.end() ? nullptr : &*found;
}

CaptionStyle const* StyleStore::style(std::string const& name) const
{
    return named(m_state.styles, name);
}

std::vector<CaptionStyle> StyleStore::missingPresets() const
{
    std::vector<CaptionStyle> missing;
    std::ranges::copy_if(
        m_kind.presets, std::back_inserter(missing),
        [&](CaptionStyle const& preset) { return !holds(m_state.styles, preset.id); });
    return missing;
}

std::string StyleStore::uniqueName(std::string const& name) const
{
    return unusedName(m_state.styles, name);
}

std::vector<std::string> StyleStore::namesHeldTwice() const
{
    std::vector<std::string> twice;
    auto const& all = m_state.styles;
    for (auto each = all.begin(); each != all.end(); ++each) {
        bool const isSecond = std::any_of(all.begin(), each, [&](CaptionStyle const& before) {
            return before.name == each->name;
        });
        if (isSecond && std::ranges::find(twice, each->name) == twice.end())
            twice.push_back(each->name);
    }
    return twice;
}

void StyleStore::setState(StyleFile state)
{
    if (state == m_state)
        return;
    m_state = std::move(state);
    emit changed();
}

void StyleStore::upsert(CaptionStyle style)
{
    style = normalized(std::move(style)).style;
    StyleFile state = m_state;
    auto const found = std::ranges::find(state.styles, style.id, &CaptionStyle::id);
    if (found == state.styles.end())
        state.styles.push_back(std::move(style));
    else
        *found = std::move(style);
    setState(std::move(state));
    persist();
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
    StyleFile state = m_state;
    std::erase_if(state.styles, [&](CaptionStyle const& style) { return style.id == id; });
    if (state.defaultID == id)
        state.defaultID.reset();
    setState(std::move(state));
    persist();
}

void StyleStore::setDefaultID(std::optional<Id> const& id)
{
    StyleFile state = m_state;
    state.defaultID = id;
    setState(std::move(state));
    persist();
}

void StyleStore::addPreset(CaptionStyle const& preset)
{
    StyleFile state = m_state;
    auto const found = std::ranges::find(state.styles, preset.id, &CaptionStyle::id);
    if (found == state.styles.end())
        state.styles.push_back(preset);
    else
        *found = preset;
    leaveNameTo(preset, state.styles);
    setState(std::move(state));
    persist();
}

void StyleStore::resetToPresets()
{
    StyleFile state;
    state.styles.assign(m_kind.presets.begin(), m_kind.presets.end());
    state.defaultID = m_state.defaultID;
    std::ranges::copy_if(
        m_state.styles, std::back_inserter(state.styles),
        [&, made = state.styles](CaptionStyle const& style) { return !holds(made, style.id); });
    for (CaptionStyle const& preset : m_kind.presets)
        leaveNameTo(preset, state.styles);
    setState(std::move(state));
    persist();
}

void StyleStore::attach(std::filesystem::path const& file)
{
    if (m_file == file)
        return;
    writeBeforeQuitting();
    m_file = file;
    m_known.reset();
    m_problem.clear();
    m_notes.clear();
    m_needsWriting = false;
    m_watcher = std::make_unique<FileWatcher>(file);
    connect(m_watcher.get(), &FileWatcher::changed, this, &StyleStore::reloadFromDisk);

    // Nothing of ours is pending: what is read replaces what another place held.
    m_base = m_state;
    if (reloadFromDisk()) {
        addFreshPresets();
    } else if (m_problem.empty()) {
        m_base = {};
        m_needsWriting = true;
        write();
    }
}

void StyleStore::detach()
{
    writeBeforeQuitting();
    m_watcher.reset();
    m_file.reset();
    m_known.reset();
    m_problem.clear();
    m_notes.clear();
    m_base = m_state;
}

void StyleStore::addFreshPresets()
{
    for (CaptionStyle const& preset : m_fresh) {
        if (!style(preset.id))
            upsert(withUnusedName(preset, m_state.styles));
    }
}

bool StyleStore::reloadFromDisk()
{
    if (!m_file)
        return false;
    std::string const name = validUtf8(m_file->filename().string());
    try {
        std::string bytes = readFile(*m_file, largestStyleFile);
        if (bytes != m_known) {
            DecodedStyles theirs = decodeStyles(bytes);
            adopt(std::move(theirs), std::move(bytes));
        }
        m_problem.clear();
    } catch (FileError const& error) {
        if (error.cause != FileError::Cause::missing)
            m_problem = error.what();
        return false;
    } catch (DocumentError const& error) {
        m_problem = name + " is not valid: " + error.what() +
                    " The looks stay as they were, and the file is not written until it is whole.";
        return false;
    }
    if (m_needsWriting)
        persist();
    return true;
}

/// Takes in what another program wrote; what of ours is not written yet stays.
void StyleStore::adopt(DecodedStyles theirs, std::string bytes)
{
    m_notes = std::move(theirs.notes);
    StyleFile state = merged(m_base, m_state, theirs.file);
    m_base = std::move(theirs.file);
    m_known = std::move(bytes);
    m_needsWriting = !(state == m_base);
    setState(std::move(state));
}

void StyleStore::persist()
{
    m_needsWriting = true;
    // Not put off by more changes: what was acknowledged is soon safe.
    if (!m_pendingWrite.isActive())
        m_pendingWrite.start();
}

void StyleStore::writePending()
{
    if (m_needsWriting)
        write();
}

void StyleStore::write()
{
    m_pendingWrite.stop();
    if (m_running) { // One at a time; its end looks whether there is more to write.
        m_needsWriting = true;
        return;
    }
    m_needsWriting = false;
    auto const result = std::make_shared<std::optional<WriteResult>>();
    m_running = result;
    m_writer.start(
        [this, result,
         job = WriteJob{m_kind, m_defaults, m_file, m_base, m_state, m_known}]() mutable {
            *result = std::move(job).run();
            QMetaObject::invokeMethod(
                this,
                [this, result] {
                    if (m_running == result)
                        finishWriting();
                },
                Qt::QueuedConnection);
        });
}

StyleStore::WriteResult StyleStore::WriteJob::run() &&
{
    WriteResult result{ours, std::nullopt, {}};
    SavedStyles saved{ours, {}};
    bool isSafe = true;
    try {
        if (file)
            saved = saveStyles(*file, base, ours, known);
    } catch (StyleFileError const& error) {
        result.problem = error.what();
        isSafe = false;
    }
    try {
        writeDefaults(saved.file);
    } catch (std::exception const& error) {
        if (result.problem.empty())
            result.problem = error.what();
        isSafe = isSafe && file;
    }
    if (isSafe)
        result.saved = std::move(saved);
    return result;
}

void StyleStore::WriteJob::writeDefaults(StyleFile const& styles)
{
    defaults.setString(kind.listKey, encodeStyleList(styles.styles));
    if (styles.defaultID)
        defaults.setString(kind.defaultKey, styles.defaultID->text());
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

/// Waits for the write under way, and takes in what it came to.
void StyleStore::finishWriting()
{
    if (!m_running)
        return;
    m_writer.waitForDone();
    auto const running = std::exchange(m_running, nullptr);
    assert(*running);
    takeResult(**running);
}

void StyleStore::takeResult(WriteResult const& result)
{
    m_problem = result.problem;
    if (!result.saved) {
        m_needsWriting = true; // Tried again with the next change or save, and before quitting.
        emit changed();
        return;
    }
    StyleFile state = merged(result.ours, m_state, result.saved->file);
    m_base = result.saved->file;
    if (m_file)
        m_known = result.saved->bytes;
    m_notes = result.saved->notes; // What was odd in the file is no longer there.
    bool const isMore = m_needsWriting || !(state == m_base);
    setState(std::move(state));
    if (isMore)
        persist();
}

void StyleStore::writeBeforeQuitting()
{
    finishWriting();
    if (!m_needsWriting)
        return;
    write();
    finishWriting();
    m_pendingWrite.stop();
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
    captions.writePending();
    texts.writePending();
}

void StyleStores::writeBeforeQuitting()
{
    captions.writeBeforeQuitting();
    texts.writeBeforeQuitting();
}

} // namespace framewright
