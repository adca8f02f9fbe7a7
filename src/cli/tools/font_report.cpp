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

/// Where each font is used: clips by reference, captions by their track's.
using Uses = std::map<std::string, std::vector<std::string>>;

Uses usesOfFonts(Project const& project)
{
    Uses uses;
    for (Track const& track : project.tracks) {
        if (track.subtitles)
            uses[(*track.subtitles)->style.fontName].push_back(trackRef(project, track));
        std::size_t number = 0;
        std::string const ref = trackRef(project, track);
        for (Clip const& clip : *track.clips) {
            ++number;
            if (clip.text)
                uses[(*clip.text)->style.fontName].push_back(ref + ":" + std::to_string(number));
        }
    }
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
    Uses const uses = usesOfFonts(project);
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

} // namespace framewright
