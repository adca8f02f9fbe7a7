#include "styles/style_file.h"

#include "model/file_url.h"
#include "model/json_reading.h"
#include "model/json_writing.h"
#include "platform/atomic_file.h"

#include <QString>

#include <algorithm>
#include <set>

namespace framewright {

template <>
struct Stored<StyleFile> {
    static constexpr auto fields = std::tuple{
        required("styles", &StyleFile::styles),
        optional("defaultID", &StyleFile::defaultID),
    };
};

namespace {

CaptionStyle const* find(StyleFile const& file, Id const& id)
{
    auto const found = std::ranges::find(file.styles, id, &CaptionStyle::id);
    return found == file.styles.end() ? nullptr : &*found;
}

/// A look was often made by copying another one's lines; then both have one id.
void giveOwnIDs(DecodedStyles& decoded)
{
    std::set<Id> seen;
    for (CaptionStyle& style : decoded.file.styles) {
        if (seen.insert(style.id).second)
            continue;
        decoded.notes.push_back("The id of " + style.name +
                                " stands twice; the second was given one of its own.");
        style.id = Id::random();
    }
}

std::optional<std::string> contentOf(std::filesystem::path const& file)
{
    try {
        return readFile(file, largestStyleFile);
    } catch (FileError const& error) {
        if (error.cause == FileError::Cause::missing)
            return std::nullopt;
        throw;
    }
}

/// One try; nothing when somebody wrote the file at that very moment.
std::optional<SavedStyles> trySaving(std::filesystem::path const& file, StyleFile const& base,
                                     StyleFile const& ours, std::optional<std::string> const& known)
{
    auto const onDisk = contentOf(file);
    SavedStyles saved{ours, {}};
    if (onDisk && onDisk != known) {
        DecodedStyles theirs = decodeStyles(*onDisk);
        saved = {merged(base, ours, theirs.file), {}, std::move(theirs.notes)};
    }
    saved.bytes = saved.file.data();
    std::string const& bytes = saved.bytes;
    if (onDisk && *onDisk == bytes)
        return saved;
    if (onDisk && !replaceFileAtomically(file, bytes, *onDisk).isDone)
        return std::nullopt;
    if (!onDisk) {
        std::error_code failed;
        std::filesystem::create_directory(file.parent_path(), failed);
        writeFileAtomically(file, bytes);
    }
    return saved;
}

} // namespace

std::string StyleFile::data() const
{
    JsonWriter writer;
    writer.write(*this);
    return writer.take();
}

bool isSameName(std::string const& a, std::string const& b)
{
    return QString::fromStdString(a).compare(QString::fromStdString(b), Qt::CaseInsensitive) == 0;
}

DecodedStyles decodeStyles(std::string_view data)
{
    DecodedStyles decoded;
    JsonReader reader;
    reader.read(parseJson(data), JsonPlace(), decoded.file);
    for (std::string const& key : reader.unknownKeys)
        decoded.notes.push_back(key + " is not known here; the next save drops it.");
    for (CaptionStyle& style : decoded.file.styles) {
        NormalizedStyle fitted = normalized(std::move(style));
        style = std::move(fitted.style);
        std::ranges::move(fitted.changes, std::back_inserter(decoded.notes));
    }
    giveOwnIDs(decoded);
    return decoded;
}

std::string encodeStyleList(std::vector<CaptionStyle> const& styles)
{
    JsonWriter writer;
    writer.write(styles);
    return parseJson(writer.take()).dump();
}

std::vector<CaptionStyle> decodeStyleList(std::string_view data)
{
    DecodedStyles decoded;
    JsonReader().read(parseJson(data), JsonPlace(), decoded.file.styles);
    for (CaptionStyle& style : decoded.file.styles)
        style = normalized(std::move(style)).style;
    giveOwnIDs(decoded);
    return decoded.file.styles;
}

StyleFile merged(StyleFile const& base, StyleFile const& ours, StyleFile const& theirs)
{
    StyleFile result;
    for (CaptionStyle const& their : theirs.styles) {
        CaptionStyle const* const our = find(ours, their.id);
        CaptionStyle const* const before = find(base, their.id);
        bool const weRemovedIt = !our && before;
        bool const weChangedIt = our && !(before && *our == *before);
        if (!weRemovedIt || !(their == *before))
            result.styles.push_back(weChangedIt ? *our : their);
    }
    for (CaptionStyle const& our : ours.styles) {
        CaptionStyle const* const before = find(base, our.id);
        if (!find(theirs, our.id) && !(before && our == *before))
            result.styles.push_back(our);
    }
    result.defaultID = ours.defaultID == base.defaultID ? theirs.defaultID : ours.defaultID;
    return result;
}

SavedStyles saveStyles(std::filesystem::path const& file, StyleFile const& base,
                       StyleFile const& ours, std::optional<std::string> const& known)
{
    std::string const doing = "Could not save " + validUtf8(file.filename().string()) + ": ";
    constexpr int tries = 10;
    try {
        for (int i = 0; i < tries; ++i) {
            if (auto saved = trySaving(file, base, ours, known))
                return *saved;
        }
    } catch (std::exception const& error) {
        throw StyleFileError(doing + error.what());
    }
    throw StyleFileError(doing + "another program keeps writing it.");
}

} // namespace framewright
