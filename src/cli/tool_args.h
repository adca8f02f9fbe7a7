#pragma once

#include "cli/param_kinds.h"
#include "cli/progress.h"

#include <nlohmann/json.hpp>

#include <optional>
#include <stop_token>
#include <string>
#include <type_traits>
#include <utility>

namespace framewright {

/// What a command was given. Reading never fails for a value the toolbox let through, except that
/// references are looked up anew: after an await, the clip may be gone.
class ToolArgs {
public:
    /// `options` by name, positional values already in their places; `words` as in ToolRequest.
    ToolArgs(nlohmann::json options, nlohmann::json words, std::string cwd,
             ReferenceContext const& references, Progress progress, std::stop_token stop);

    bool has(Parameter const& param) const { return value(param) != nullptr; }

    /// The value of an option that is required, or known to be given.
    template <class Kind>
    typename Kind::Value operator[](Param<Kind> const& param) const
    {
        return param.read(given(param));
    }

    /// The value of an option, if it was given.
    template <class Kind>
    std::optional<typename Kind::Value> find(Param<Kind> const& param) const
    {
        return has(param) ? std::optional((*this)[param]) : std::nullopt;
    }

    template <class Kind>
    typename Kind::Value get(Param<Kind> const& param,
                             std::type_identity_t<typename Kind::Value> fallback) const
    {
        return has(param) ? (*this)[param] : std::move(fallback);
    }

    /// A time whose "end" is that of the track or file concerned.
    std::optional<double> time(Param<Moment> const& param, double end) const;

    /// Reads a value and forgets it. Throws ToolError when it can't be read.
    void check(Parameter const& param) const;

    std::string const& cwd() const { return m_cwd; }
    ReferenceContext const& references() const { return *m_references; }
    Progress const& progress() const { return m_progress; }

    /// A stop is requested, on the main thread, when the client cancels the command or disconnects.
    std::stop_token stopToken() const { return m_stop; }
    /// Throws ToolError when the command was cancelled.
    void throwIfCancelled() const;

private:
    nlohmann::json const* value(Parameter const& param) const;
    /// Throws ToolError when the option was not given.
    Given given(Parameter const& param) const;

    nlohmann::json m_options;
    nlohmann::json m_words;
    std::string m_cwd;
    ReferenceContext const* m_references;
    Progress m_progress;
    std::stop_token m_stop;
};

} // namespace framewright
