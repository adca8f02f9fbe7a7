#include "cli/tool_args.h"

#include "cli/tool_error.h"

namespace framewright {

using nlohmann::json;

namespace {

json const none;

}

ToolArgs::ToolArgs(json options, json words, std::string cwd, ReferenceContext const& references,
                   Progress progress, std::stop_token stop)
    : m_options(std::move(options)),
      m_words(std::move(words)),
      m_cwd(std::move(cwd)),
      m_references(&references),
      m_progress(std::move(progress)),
      m_stop(std::move(stop))
{
}

std::optional<double> ToolArgs::time(Param<Moment> const& param, double end) const
{
    if (!has(param))
        return std::nullopt;
    Given value = given(param);
    value.end = end;
    return param.read(value);
}

void ToolArgs::check(Parameter const& param) const
{
    if (has(param))
        param.check(given(param));
}

void ToolArgs::throwIfCancelled() const
{
    if (m_stop.stop_requested())
        throw ToolError("Cancelled.");
}

json const* ToolArgs::value(Parameter const& param) const
{
    auto const found = m_options.find(param.name);
    return found == m_options.end() || found->is_null() ? nullptr : &*found;
}

Given ToolArgs::given(Parameter const& param) const
{
    json const* const given = value(param);
    if (!given)
        throw ToolError("Give --" + param.name + ".");
    auto const word = m_words.find(param.name);
    return {.name = param.name,
            .value = *given,
            .word = word == m_words.end() ? none : *word,
            .cwd = m_cwd,
            .references = *m_references,
            .end = std::nullopt};
}

} // namespace framewright
