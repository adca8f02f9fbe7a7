#include "cli/tools/style_report.h"

#include "cli/references.h"
#include "cli/tools/style_options.h"
#include "model/file_url.h"

#include <algorithm>
#include <map>
#include <string>
#include <vector>

namespace framewright {

using Json = nlohmann::json;

namespace {

constexpr std::size_t mostLetters = 10; ///< Named in a sentence.

/// Places by the sentence that applies to them: clips by reference, captions by their track's.
using Places = std::map<std::string, std::vector<std::string>>;

/// The style of a text or of the captions of a track.
struct UsedStyle {
    NormalizedStyle style; ///< As drawn.
    std::string place;
    std::vector<std::string const*> words;
};

template <class Visit>
void forEachStyle(Project const& project, Visit const& visit)
{
    for (Track const& track : project.tracks) {
        std::string const ref = trackRef(project, track);
        if (track.subtitles) {
            UsedStyle used{normalized((*track.subtitles)->style), ref, {}};
            for (CaptionBar const& bar : (*track.subtitles)->bars)
                used.words.push_back(&bar.text);
            visit(used);
        }
        std::size_t number = 0;
        for (Clip const& clip : *track.clips) {
            ++number;
            if (clip.text)
                visit(UsedStyle{normalized((*clip.text)->style),
                                ref + ":" + std::to_string(number),
                                {&(*clip.text)->text}});
        }
    }
}

Places usesOfFonts(Project const& project)
{
    Places uses;
    forEachStyle(project, [&](UsedStyle const& used) {
        uses[used.style.style.fontName].push_back(used.place);
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
                      {"standIn", missing.substitute},
                      {"problem", problem(missing.why)}};
        if (auto const use = uses.find(missing.fontName); use != uses.end())
            entry["where"] = referenceList(use->second);
        report.push_back(std::move(entry));
    }
    for (auto const& [name, places] : uses) {
        auto const isReported = [&](Json const& entry) { return entry["font"] == name; };
        if (std::ranges::any_of(report, isReported))
            continue;
        if (auto const standIn = fonts.find(name).substitute)
            report.push_back({{"font", validUtf8(name)},
                              {"standIn", *standIn},
                              {"where", referenceList(places)}});
    }
    return report;
}

std::vector<std::string> invalidStyles(Project const& project, FontRegistry const& fonts)
{
    Places changes;
    std::vector<std::string> letters, placesOfLetters;
    forEachStyle(project, [&](UsedStyle const& used) {
        for (std::string const& change : used.style.changes)
            changes[change].push_back(used.place);
        std::size_t const before = placesOfLetters.size();
        for (std::string const* const words : used.words) {
            for (std::string& letter : missingLetters(*words, used.style.style, fonts)) {
                if (placesOfLetters.size() == before)
                    placesOfLetters.push_back(used.place);
                if (letters.size() < mostLetters && std::ranges::count(letters, letter) == 0)
                    letters.push_back(std::move(letter));
            }
        }
    });
    std::vector<std::string> sentences;
    for (auto const& [change, places] : changes)
        sentences.push_back(referenceList(places) + ": " + change);
    if (!letters.empty())
        sentences.push_back(referenceList(placesOfLetters) + ": " + missingLettersNote(letters));
    return sentences;
}

} // namespace framewright
