#include "cli/tools/font_report.h"

#include "cli/references.h"
#include "model/file_url.h"

#include <algorithm>
#include <map>
#include <string>
#include <vector>

namespace framewright {

using Json = nlohmann::json;

namespace {

/// Where something is the case: clips by reference, captions by their track's.
using Places = std::map<std::string, std::vector<std::string>>;

/// Calls `visit` with each look that texts and captions wear, as it is drawn, and its place.
template <class Visit>
void forEachLook(Project const& project, Visit const& visit)
{
    for (Track const& track : project.tracks) {
        std::string const ref = trackRef(project, track);
        if (track.subtitles)
            visit(normalized((*track.subtitles)->style), ref);
        std::size_t number = 0;
        for (Clip const& clip : *track.clips) {
            ++number;
            if (clip.text)
                visit(normalized((*clip.text)->style), ref + ":" + std::to_string(number));
        }
    }
}

Places usesOfFonts(Project const& project)
{
    Places uses;
    forEachLook(project, [&](NormalizedStyle const& look, std::string const& ref) {
        uses[look.style.fontName].push_back(ref);
    });
    return uses;
}

char const* problem(FontRegistry::Missing::Why why)
{
    using enum FontRegistry::Missing::Why;
    switch (why) {
    case absent:
        return "Framewright's file of it is missing.";
    case damaged:
        return "Framewright's file of it is damaged.";
    case notInstalled:
        return "It is not installed, so emoji have no color.";
    }
    return "";
}

} // namespace

Json fontReportJSON(Project const& project, FontRegistry const& fonts)
{
    Places const uses = usesOfFonts(project);
    Json report = Json::array();
    for (FontRegistry::Missing const& missing : fonts.missingCarried()) {
        Json entry = {{"font", missing.fontName},
                      {"standIn", missing.standIn},
                      {"problem", problem(missing.why)}};
        if (auto const use = uses.find(missing.fontName); use != uses.end())
            entry["where"] = referenceList(use->second);
        report.push_back(std::move(entry));
    }
    for (auto const& [name, places] : uses) {
        auto const isReported = [&](Json const& entry) { return entry["font"] == name; };
        if (std::ranges::any_of(report, isReported))
            continue;
        if (auto const standIn = fonts.find(name).standIn)
            report.push_back({{"font", validUtf8(name)},
                              {"standIn", *standIn},
                              {"where", referenceList(places)}});
    }
    return report;
}

std::vector<std::string> oddLooks(Project const& project)
{
    Places found;
    forEachLook(project, [&](NormalizedStyle const& look, std::string const& ref) {
        for (std::string const& change : look.changes)
            found[change].push_back(ref);
    });
    std::vector<std::string> sentences;
    for (auto const& [change, places] : found)
        sentences.push_back(referenceList(places) + ": " + change);
    return sentences;
}

} // namespace framewright
