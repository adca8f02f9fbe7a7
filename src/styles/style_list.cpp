#include "styles/style_list.h"

#include "model/json_reading.h"
#include "model/json_writing.h"

#include <QString>

#include <algorithm>
#include <set>

namespace framewright {

template <>
struct Stored<StyleList> {
    static constexpr auto fields = std::tuple{
        required("styles", &StyleList::styles),
        optional("defaultID", &StyleList::defaultID),
    };
};

namespace {

CaptionStyle const* find(StyleList const& list, Id const& id)
{
    auto const found = std::ranges::find(list.styles, id, &CaptionStyle::id);
    return found == list.styles.end() ? nullptr : &*found;
}

/// People make a style by copying the lines of another; then both have one id.
void makeIDsUnique(std::vector<CaptionStyle>& styles, std::vector<std::string>& notes)
{
    std::set<Id> seen;
    for (CaptionStyle& style : styles) {
        if (seen.insert(style.id).second)
            continue;
        notes.push_back("The id of " + style.name +
                        " appears twice; the second was given one of its own.");
        style.id = Id::random();
    }
}

} // namespace

std::string StyleList::data() const
{
    JsonWriter writer;
    writer.write(*this);
    return writer.take();
}

bool isSameName(std::string const& a, std::string const& b)
{
    return QString::fromStdString(a).compare(QString::fromStdString(b), Qt::CaseInsensitive) == 0;
}

Decoded<StyleList> decodeStyleList(std::string_view data)
{
    Decoded<StyleList> decoded;
    JsonReader reader;
    reader.read(parseJson(data), JsonPlace(), decoded.value);
    for (std::string const& key : reader.unknownKeys)
        decoded.notes.push_back(key + " is not known here; the next save drops it.");
    for (CaptionStyle& style : decoded.value.styles) {
        NormalizedStyle fitted = normalized(std::move(style));
        style = std::move(fitted.style);
        std::ranges::move(fitted.changes, std::back_inserter(decoded.notes));
    }
    makeIDsUnique(decoded.value.styles, decoded.notes);
    return decoded;
}

std::string encodeStyleArray(std::vector<CaptionStyle> const& styles)
{
    JsonWriter writer;
    writer.write(styles);
    return parseJson(writer.take()).dump();
}

std::vector<CaptionStyle> decodeStyleArray(std::string_view data)
{
    std::vector<CaptionStyle> styles;
    JsonReader().read(parseJson(data), JsonPlace(), styles);
    for (CaptionStyle& style : styles)
        style = normalized(std::move(style)).style;
    std::vector<std::string> ignored;
    makeIDsUnique(styles, ignored);
    return styles;
}

StyleList merged(StyleList const& base, StyleList const& ours, StyleList const& theirs)
{
    StyleList result;
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

} // namespace framewright
