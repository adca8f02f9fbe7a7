#pragma once

#include "model/stored_fields.h"

#include <nlohmann/json.hpp>

#include <cmath>
#include <limits>
#include <map>
#include <type_traits>

namespace framewright {

/// A place in a document, as a chain of keys and indexes up to the root. Lives on the stack while
/// its value is read; its text is only built for an error.
class JsonPlace {
public:
    JsonPlace() = default;
    JsonPlace(JsonPlace const& parent, std::string_view key) : m_parent(&parent), m_key(key) {}
    JsonPlace(JsonPlace const& parent, std::size_t index)
        : m_parent(&parent), m_index(index), m_isIndex(true)
    {
    }

    /// "project.tracks[1].clips[3].sourceEnd"; "The document" at the root.
    std::string text() const
    {
        std::string const path = joined();
        return path.empty() ? "The document" : path;
    }

    [[noreturn]] void fail(std::string const& what) const
    {
        throw DocumentError(text() + " " + what);
    }

private:
    std::string joined() const
    {
        if (!m_parent)
            return {};
        std::string path = m_parent->joined();
        if (m_isIndex)
            return path + "[" + std::to_string(m_index) + "]";
        return path.empty() ? std::string(m_key) : path + "." + std::string(m_key);
    }

    JsonPlace const* m_parent = nullptr;
    std::string_view m_key;
    std::size_t m_index = 0;
    bool m_isIndex = false;
};

/// Reads document values out of parsed JSON by their stored fields. Collects unknown
/// keys. Throws DocumentError.
class JsonReader {
public:
    using Json = nlohmann::json;

    std::vector<std::string> unknownKeys;

    void read(Json const& json, JsonPlace const& place, bool& value)
    {
        if (!json.is_boolean())
            place.fail("must be true or false.");
        value = json.get<bool>();
    }

    void read(Json const& json, JsonPlace const& place, int& value)
    {
        if (!json.is_number_integer() || json.get<double>() > std::numeric_limits<int>::max() ||
            json.get<double>() < std::numeric_limits<int>::min())
            place.fail("must be a whole number.");
        value = json.get<int>();
    }

    void read(Json const& json, JsonPlace const& place, double& value)
    {
        if (!json.is_number())
            place.fail("must be a number.");
        value = json.get<double>();
    }

    void read(Json const& json, JsonPlace const& place, float& value)
    {
        double wide = 0;
        read(json, place, wide);
        if (std::abs(wide) > double(std::numeric_limits<float>::max()))
            place.fail("must be a number a 32-bit float can hold.");
        value = static_cast<float>(wide);
    }

    void read(Json const& json, JsonPlace const& place, std::string& value)
    {
        if (!json.is_string())
            place.fail("must be a string.");
        value = json.get_ref<std::string const&>();
    }

    void read(Json const& json, JsonPlace const& place, Id& value)
    {
        auto const id =
            json.is_string() ? Id::parse(json.get_ref<std::string const&>()) : std::nullopt;
        if (!id)
            place.fail("must be a UUID.");
        value = *id;
    }

    void read(Json const& json, JsonPlace const& place, FileURL& value)
    {
        auto url =
            json.is_string() ? FileURL::parse(json.get_ref<std::string const&>()) : std::nullopt;
        if (!url)
            place.fail("must be a file URL (file:///…).");
        value = std::move(*url);
    }

    template <class T>
    requires std::is_enum_v<T>
    void read(Json const& json, JsonPlace const& place, T& value)
    {
        if (json.is_string()) {
            for (auto const& entry : StoredWords<T>::words) {
                if (entry.word == json.get_ref<std::string const&>()) {
                    value = entry.value;
                    return;
                }
            }
        }
        std::string words;
        auto const& all = StoredWords<T>::words;
        for (std::size_t i = 0; i < all.size(); ++i) {
            words += i == 0 ? "" : i + 1 == all.size() ? " or " : ", ";
            words += '"' + std::string(all[i].word) + '"';
        }
        place.fail("must be " + words + ".");
    }

    template <class T>
    void read(Json const& json, JsonPlace const& place, std::optional<T>& value)
    {
        if (json.is_null())
            value.reset();
        else
            read(json, place, value.emplace());
    }

    template <class T>
    void read(Json const& json, JsonPlace const& place, Shared<T>& value)
    {
        read(json, place, value.edit());
    }

    template <class T>
    void read(Json const& json, JsonPlace const& place, std::vector<T>& values)
    {
        if (!json.is_array())
            place.fail("must be an array.");
        values.clear();
        values.reserve(json.size());
        for (std::size_t i = 0; i < json.size(); ++i)
            read(json[i], JsonPlace(place, i), values.emplace_back());
    }

    /// A map by id: an array that alternates id and value.
    template <class T>
    void read(Json const& json, JsonPlace const& place, std::map<Id, T>& values)
    {
        if (!json.is_array() || json.size() % 2 != 0)
            place.fail("must be an array that alternates ids and values.");
        values.clear();
        for (std::size_t i = 0; i < json.size(); i += 2) {
            Id key;
            read(json[i], JsonPlace(place, i), key);
            JsonPlace const valuePlace(place, i + 1);
            auto const [entry, isNew] = values.try_emplace(key);
            if (!isNew)
                JsonPlace(place, i).fail("appears twice.");
            read(json[i + 1], valuePlace, entry->second);
            if (entry->second.id != key)
                JsonPlace(valuePlace, "id").fail("must be the id before it, " + key.text() + ".");
        }
    }

    template <class T>
    requires requires { Stored<T>::fields; }
    void read(Json const& json, JsonPlace const& place, T& value)
    {
        if (!json.is_object())
            place.fail("must be an object.");
        std::size_t known = 0;
        std::apply(
            [&](auto const&... field) { (readField(json, place, value, field, known), ...); },
            Stored<T>::fields);
        if (known < json.size())
            noteUnknown<T>(json, place);
        if constexpr (requires { Stored<T>::fault(value); }) {
            if (auto const fault = Stored<T>::fault(value))
                JsonPlace(place, fault->key).fail(fault->sentence);
        }
    }

private:
    template <class T, class Field>
    void readField(Json const& json, JsonPlace const& place, T& value, Field const& field,
                   std::size_t& known)
    {
        JsonPlace const fieldPlace(place, field.key);
        auto const found = json.find(field.key);
        if (found == json.end()) {
            if (field.isRequired)
                fieldPlace.fail("is missing.");
            return;
        }
        ++known;
        read(*found, fieldPlace, value.*field.member);
    }

    template <class T>
    void noteUnknown(Json const& json, JsonPlace const& place)
    {
        for (auto const& [key, unused] : json.items()) {
            bool const isKnown =
                std::apply([&](auto const&... field) { return ((key == field.key) || ...); },
                           Stored<T>::fields);
            if (!isKnown)
                unknownKeys.push_back(JsonPlace(place, key).text());
        }
    }
};

/// Parses `data`. Throws DocumentError with the line and column of the error.
nlohmann::json parseJson(std::string_view data);

} // namespace framewright
