#pragma once

#include "cli/param.h"
#include "model/aspect_preset.h"
#include "model/style.h"

#include <filesystem>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

namespace framewright {

/// The most a number may be, either way. Larger ones are slips, and no count of frames, pixels or
/// seconds here could hold them.
inline constexpr double largestNumber = 1e9;

/// What most kinds share: one string, no help of its own, any words.
struct ParamKind {
    static constexpr Parameter::Type type = Parameter::Type::string;
    static constexpr Parameter::Count count = Parameter::Count::one;
    std::string helpFor(std::string help) const { return help; }
    std::vector<std::string> words() const { return {}; }
};

/// Any text, as the user spelled it: also "007" and "true".
struct Text : ParamKind {
    using Value = std::string;
    Value read(Given const& given) const;
};

struct Number : ParamKind {
    using Value = double;
    static constexpr Parameter::Type type = Parameter::Type::number;
    Value read(Given const& given) const;
};

/// A number of pixels, frames, columns.
struct WholeNumber : ParamKind {
    using Value = int;
    static constexpr Parameter::Type type = Parameter::Type::number;
    Value read(Given const& given) const;
};

struct Flag : ParamKind {
    using Value = bool;
    static constexpr Parameter::Type type = Parameter::Type::boolean;
    Value read(Given const& given) const;
};

/// One of a few words, each standing for a value.
///
///     Param<Choice<TrackKind>> const kind{"kind", "…", {{"video", TrackKind::video}, …}};
template <class T>
struct Choice : ParamKind {
    using Value = T;

    Choice(std::initializer_list<std::pair<std::string, T>> choices) : options(choices) {}

    std::vector<std::string> words() const
    {
        std::vector<std::string> result;
        for (auto const& option : options)
            result.push_back(option.first);
        return result;
    }
    Value read(Given const& given) const;

    std::vector<std::pair<std::string, T>> options;
};

/// A time on the timeline, in seconds: a number, "m:ss.ss", "end" or "playhead".
struct Moment : ParamKind {
    using Value = double;
    std::string helpFor(std::string help) const;
    Value read(Given const& given) const;
};

/// A path, absolute when it is read: relative ones start at the request's folder. A file URL
/// stands for names that are not UTF-8.
struct FilePath : ParamKind {
    using Value = std::filesystem::path;
    Value read(Given const& given) const;
};

struct TrackRef : ParamKind {
    using Value = Id;
    std::string helpFor(std::string help) const;
    Value read(Given const& given) const;
};

struct ClipRef : ParamKind {
    using Value = Id;
    Value read(Given const& given) const;
};

struct BarRef : ParamKind {
    using Value = Id;
    Value read(Given const& given) const;
};

/// A clip or a subtitle bar.
struct ItemRef : ParamKind {
    enum class What { clip, bar };
    struct Value {
        What what;
        Id id;
        bool operator==(Value const&) const = default;
    };
    Value read(Given const& given) const;
};

struct AssetName : ParamKind {
    using Value = Id;
    Value read(Given const& given) const;
};

/// "#RRGGBB" or "#RRGGBBAA".
struct Color : ParamKind {
    using Value = RGBAColor;
    Value read(Given const& given) const;
};

struct Canvas : ParamKind {
    using Value = AspectPreset;
    Value read(Given const& given) const;
};

/// A font, by any of its names; read as the name that a style stores.
struct Font : ParamKind {
    using Value = std::string;
    std::string helpFor(std::string help) const;
    Value read(Given const& given) const;
};

/// Several of a kind: an array, or a single one.
template <class Kind>
struct ListOf : ParamKind {
    using Value = std::vector<typename Kind::Value>;
    static constexpr Parameter::Type type = Kind::type;
    static constexpr Parameter::Count count = Parameter::Count::list;
    std::string helpFor(std::string help) const { return Kind{}.helpFor(std::move(help)); }
    Value read(Given const& given) const;
};

/// Several numbers: an array, or one text of them, separated by commas.
struct Numbers : ParamKind {
    using Value = std::vector<double>;
    static constexpr Parameter::Type type = Parameter::Type::number;
    static constexpr Parameter::Count count = Parameter::Count::list;
    Value read(Given const& given) const;
};

using Texts = ListOf<Text>;
using FilePaths = ListOf<FilePath>;

namespace detail {
/// The place of the given word among `words`. Throws ToolError naming them all.
std::size_t choice(Given const& given, std::vector<std::string> const& words);
std::vector<Given> elements(Given const& given);
} // namespace detail

template <class T>
T Choice<T>::read(Given const& given) const
{
    return options[detail::choice(given, words())].second;
}

template <class Kind>
typename ListOf<Kind>::Value ListOf<Kind>::read(Given const& given) const
{
    Value values;
    for (Given const& element : detail::elements(given))
        values.push_back(Kind{}.read(element));
    return values;
}

} // namespace framewright
