#pragma once

#include "cli/reference_context.h"

#include <nlohmann/json_fwd.hpp>

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace framewright {

/// A value as a request gave it to an option, for a kind to make sense of.
struct Given {
    std::string_view name;       ///< The option, for messages.
    nlohmann::json const& value; ///< Never null.
    nlohmann::json const& word;  ///< How the user spelled it; null when `value` is the spelling.
    std::string_view cwd;
    ReferenceContext const& references;
    std::optional<double> end; ///< What "end" means; by default the end of the timeline.

    /// The text the user gave. A number without a spelling gives its shortest form. Throws
    /// ToolError for what is no text.
    std::string text() const;
};

/// A row of a tool's options, whatever its kind.
struct Parameter {
    enum class Type { string, number, boolean };
    enum class Count { one, list };

    std::string name;
    std::string help;
    Type type = Type::string;
    Count count = Count::one;
    std::vector<std::string> words; ///< The allowed ones, where the set is closed.
    bool isRequired = true;
    std::function<void(Given const&)> check; ///< Throws ToolError for a value of another form.
};

/// Says that an option may be left out.
struct OptionalParam {};
inline constexpr OptionalParam optionalParam{};

/// An option of a tool. Its kind knows the type, the usual help, how it is read and what is wrong
/// with a value that can't be; the kinds are in param_kinds.h.
///
///     Param<Moment> const at{"at", "Where to cut.", optionalParam};
///     Param<TrackRef> const track{"track"};
template <class Kind>
class Param : public Parameter {
public:
    using Value = typename Kind::Value;

    explicit Param(std::string option, Kind kind = {})
        : Param(std::move(option), "", std::move(kind))
    {
    }
    Param(std::string option, OptionalParam) : Param(std::move(option), "", optionalParam) {}
    Param(std::string option, std::string text, Kind kind = {})
        : Parameter{.name = std::move(option),
                    .help = kind.helpFor(std::move(text)),
                    .type = Kind::type,
                    .count = Kind::count,
                    .words = kind.words(),
                    .isRequired = true,
                    .check = [kind](Given const& given) { (void)kind.read(given); }},
          m_kind(std::move(kind))
    {
    }
    Param(std::string option, std::string text, OptionalParam)
        : Param(std::move(option), std::move(text), Kind{}, optionalParam)
    {
    }
    Param(std::string option, std::string text, Kind kind, OptionalParam)
        : Param(std::move(option), std::move(text), std::move(kind))
    {
        isRequired = false;
    }

    Value read(Given const& given) const { return m_kind.read(given); }

private:
    Kind m_kind;
};

} // namespace framewright
