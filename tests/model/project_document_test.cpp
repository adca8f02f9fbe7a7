#include "model/project_document.h"
#include "model/stored_fields.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <random>

namespace framewright {

namespace {

using Json = nlohmann::json;

/// Gives every field that a type stores a value other than its default, so that a field which is
/// not written or not read shows as a difference.
class Filler {
public:
    void fill(bool& value) { value = !value; }
    void fill(int&) {} // The version: only the current one is read back.
    void fill(double& value) { value = std::uniform_real_distribution(0.01, 99.0)(m_random); }
    void fill(float& value) { value = std::uniform_real_distribution(0.01f, 9.0f)(m_random); }
    void fill(std::string& value) { value = "tëxt \"" + std::to_string(m_random()) + "\"\n\t\x01"; }
    void fill(Id& value) { value = Id::random(); }
    void fill(FileURL& value) { value.path = "/média/a b%" + std::to_string(m_random()) + "\xFF"; }

    template <class T>
    requires std::is_enum_v<T>
    void fill(T& value) { value = StoredWords<T>::words.back().value; }

    template <class T>
    void fill(std::optional<T>& value)
    {
        fill(value.emplace());
    }

    template <class T>
    void fill(Shared<T>& value)
    {
        fill(value.edit());
    }

    template <class T>
    void fill(std::vector<T>& values)
    {
        values.resize(2);
        for (T& value : values)
            fill(value);
    }

    template <class T>
    void fill(std::map<Id, T>& values)
    {
        for (int i = 0; i < 2; ++i) {
            T value;
            fill(value);
            values[value.id] = value;
        }
    }

    template <class T>
    requires requires { Stored<T>::fields; }
    void fill(T& value)
    {
        std::apply([&](auto const&... field) { (fill(value.*field.member), ...); },
                   Stored<T>::fields);
        if constexpr (std::is_same_v<T, Clip>)
            value.sourceEnd += value.sourceStart;
    }

private:
    std::mt19937 m_random{7};
};

Json minimalDocument()
{
    return Json::parse(
        R"({"version": 5, "assetRefs": [], "project": {"aspect": "portrait", "assets": [],
        "tracks": [{"id": "11111111-2222-4333-8444-555555555555", "kind": "video", "name": "Video 1",
                    "isMagnetic": true,
                    "clips": [{"id": "11111111-2222-4333-8444-555555555556",
                               "assetID": "00000000-0000-0000-0000-000000000001",
                               "timelineStart": 0, "sourceStart": 0, "sourceEnd": 3}]}]}})");
}

std::string errorOf(std::string const& data)
{
    try {
        decodeProjectDocument(data);
    } catch (DocumentError const& error) {
        return error.what();
    }
    return "";
}

} // namespace

TEST(ProjectDocument, EveryFieldIsStored)
{
    ProjectDocument document;
    Filler().fill(document);

    DecodedDocument const read = decodeProjectDocument(document.data());

    EXPECT_EQ(read.document, document);
    EXPECT_TRUE(read.unknownKeys.empty());
    EXPECT_EQ(read.document.data(), document.data());
}

TEST(ProjectDocument, IsWrittenStablySortedAndShort)
{
    Project project;
    project.tracks.emplace_back().volume = 0.7f;
    project.tracks[0].opacity = 0.1 + 0.2;
    std::string const data = ProjectDocument(project).data();

    EXPECT_NE(data.find("\"volume\": 0.7\n"), std::string::npos) << data;
    EXPECT_NE(data.find("\"opacity\": 0.30000000000000004,"), std::string::npos) << data;
    EXPECT_EQ(data.find("brief"), std::string::npos) << "An absent value is left out.";
    // The reference sorts and indents alike; it only writes numbers differently.
    Json const parsed = Json::parse(data);
    std::string reference = parsed.dump(2) + "\n";
    auto const at = reference.find("\"volume\": ");
    EXPECT_EQ(reference.substr(0, at).size(), data.substr(0, data.find("\"volume\": ")).size());
}

TEST(ProjectDocument, MissingOptionalKeysTakeTheirDefaults)
{
    Json json = minimalDocument();
    Track const track = decodeProjectDocument(json.dump()).document.project.tracks[0];

    EXPECT_EQ(track.volume, 1.0f);
    EXPECT_EQ(track.opacity, 1.0);
    EXPECT_FALSE(track.isSolo || track.isMuted || track.ducks || track.isLocked || track.isHidden);
    EXPECT_FALSE(track.subtitles);
    EXPECT_EQ((*track.clips)[0].transform, ClipTransform{});
    EXPECT_EQ((*track.clips)[0].volume, 1.0f);

    json["project"]["tracks"][0].erase("clips");
    EXPECT_TRUE(decodeProjectDocument(json.dump()).document.project.tracks[0].clips->empty());
}

TEST(ProjectDocument, AnErrorNamesThePlaceAndWhatIsExpected)
{
    struct Case {
        char const* pointer;
        Json value;
        char const* sentence;
    };
    for (Case const& c : {
             Case{"/project/tracks/0/clips/0/sourceEnd", nullptr,
                  "project.tracks[0].clips[0].sourceEnd is missing."},
             Case{"/project/tracks/0/clips/0/sourceEnd", "3",
                  "project.tracks[0].clips[0].sourceEnd must be a number."},
             Case{"/project/tracks/0/clips/0/sourceEnd", -4,
                  "project.tracks[0].clips[0].sourceEnd must be above sourceStart."},
             Case{"/project/tracks/0/clips/0/sourceEnd", 0,
                  "project.tracks[0].clips[0].sourceEnd must be above sourceStart."},
             Case{"/project/tracks/0/clips/0/timelineStart", -1e17,
                  "project.tracks[0].clips[0].timelineStart must be a time of at most 1000000 "
                  "seconds."},
             Case{"/project/tracks/0/clips", Json::object(),
                  "project.tracks[0].clips must be an array."},
             Case{
                 "/project/tracks/0/kind", "film",
                 "project.tracks[0].kind must be \"video\", \"audio\", \"subtitles\" or \"text\"."},
             Case{
                 "/project/aspect", "9:16",
                 "project.aspect must be \"portrait\", \"landscape\", \"square\" or \"fourFive\"."},
             Case{"/project/tracks/0/id", "11111111", "project.tracks[0].id must be a UUID."},
             Case{"/project/tracks/0/volume", 1e300,
                  "project.tracks[0].volume must be a number a 32-bit float can hold."},
             Case{"/project/assets", Json::array({1}),
                  "project.assets must be an array that alternates ids and values."},
             Case{"/project", 1, "project must be an object."},
             Case{"/version", 5.5, "version must be a whole number."},
             Case{"/version", 6,
                  "The project was written by a newer Framewright (format 6, this one reads up to "
                  "5)."},
         }) {
        Json json = minimalDocument();
        Json::json_pointer const pointer(c.pointer);
        if (c.value.is_null())
            json[pointer.parent_pointer()].erase(pointer.back());
        else
            json[pointer] = c.value;
        EXPECT_EQ(errorOf(json.dump()), c.sentence);
    }
    EXPECT_EQ(errorOf("{\n  \"a\": }"), "The document is not valid JSON (line 2, column 8).");
    EXPECT_EQ(errorOf(""), "The document is not valid JSON (line 1, column 1).");
    EXPECT_EQ(errorOf("[]"), "The document must be an object.");
    EXPECT_EQ(errorOf("{\"version\": 1e999}"), "The document holds a number that is out of range.");
}

TEST(ProjectDocument, UnknownKeysAreReported)
{
    Json json = minimalDocument();
    json["project"]["tracks"][0]["colour"] = "red";
    json["zoom"] = 2;

    EXPECT_EQ(decodeProjectDocument(json.dump()).unknownKeys,
              (std::vector<std::string>{"project.tracks[0].colour", "zoom"}));
}

TEST(ProjectDocument, PathsAreRelativeToTheFolder)
{
    Project project;
    for (char const* const path :
         {"/w/projects/A/media/a.mp4", "/footage/b.mp4", "/footage/\xFF.mp4"}) {
        MediaAsset asset;
        asset.id = Id::random();
        asset.url.path = path;
        project.assets.edit()[asset.id] = asset;
    }
    auto const pathOf = [&](std::string const& path, auto const& folder) {
        ProjectDocument const document(project, folder);
        for (AssetRef const& ref : document.assetRefs) {
            if (project.asset(ref.id)->url.path == path)
                return ref.path;
        }
        return std::string();
    };
    std::optional<std::filesystem::path> const folder = "/w/projects/A";

    EXPECT_EQ(pathOf("/w/projects/A/media/a.mp4", folder), "media/a.mp4");
    EXPECT_EQ(pathOf("/footage/b.mp4", folder), "../../../footage/b.mp4");
    EXPECT_EQ(pathOf("/footage/b.mp4", std::optional<std::filesystem::path>()), "/footage/b.mp4");
    EXPECT_EQ(pathOf("/footage/\xFF.mp4", folder), "file:///footage/%FF.mp4");
}

} // namespace framewright
