#pragma once

#include "model/stored_fields.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <map>
#include <string>
#include <type_traits>

namespace framewright {

/// Writes document values as JSON text: two spaces of indent, keys sorted, shortest numbers.
///
/// Writes text directly, without building a tree of JSON values: saving a long project must not be
/// noticeable.
class JsonWriter {
public:
    std::string take()
    {
        m_text += '\n';
        return std::move(m_text);
    }

    void write(bool value) { m_text += value ? "true" : "false"; }
    void write(int value) { writeNumber(value); }
    void write(double value) { writeFinite(value); }
    void write(float value) { writeFinite(value); }
    void write(Id const& id) { writeQuoted(id.text()); }
    void write(FileURL const& url) { writeQuoted(url.text()); }
    void write(std::string const& text) { writeQuoted(text); }

    template <class T>
    requires std::is_enum_v<T>
    void write(T value) { writeQuoted(storedWord(value)); }

    template <class T>
    void write(Shared<T> const& value)
    {
        write(*value);
    }

    template <class T>
    void write(std::vector<T> const& values)
    {
        List list(*this, '[', ']');
        for (T const& value : values) {
            list.next();
            write(value);
        }
    }

    /// A map by id: an array that alternates id and value.
    template <class T>
    void write(std::map<Id, T> const& values)
    {
        List list(*this, '[', ']');
        for (auto const& [id, value] : values) {
            list.next();
            write(id);
            list.next();
            write(value);
        }
    }

    template <class T>
    requires requires { Stored<T>::fields; }
    void write(T const& value)
    {
        List list(*this, '{', '}');
        for (FieldWriter<T> const& field : sortedFields<T>())
            field.write(*this, list, field.key, value);
    }

private:
    /// The brackets, commas and line breaks of one array or object.
    class List {
    public:
        List(JsonWriter& writer, char open, char close) : m_writer(writer), m_close(close)
        {
            m_writer.m_text += open;
            ++m_writer.m_depth;
        }
        ~List()
        {
            --m_writer.m_depth;
            if (!m_isEmpty)
                m_writer.breakLine();
            m_writer.m_text += m_close;
        }
        List(List const&) = delete;
        List& operator=(List const&) = delete;

        void next()
        {
            if (!m_isEmpty)
                m_writer.m_text += ',';
            m_isEmpty = false;
            m_writer.breakLine();
        }

    private:
        JsonWriter& m_writer;
        char m_close;
        bool m_isEmpty = true;
    };

    template <class T>
    struct FieldWriter {
        std::string_view key;
        void (*write)(JsonWriter&, List&, std::string_view key, T const&);
    };

    template <class T, std::size_t index>
    static void writeField(JsonWriter& writer, List& list, std::string_view key, T const& value)
    {
        constexpr auto member = std::get<index>(Stored<T>::fields).member;
        auto const& part = value.*member;
        if constexpr (requires { part.has_value(); }) {
            if (!part)
                return;
            writer.writeKey(list, key);
            writer.write(*part);
        } else {
            writer.writeKey(list, key);
            writer.write(part);
        }
    }

    template <class T>
    static auto const& sortedFields()
    {
        constexpr std::size_t count = std::tuple_size_v<decltype(Stored<T>::fields)>;
        static auto const fields = [&]<std::size_t... i>(std::index_sequence<i...>)
        {
            std::array<FieldWriter<T>, count> all = {
                FieldWriter<T>{std::get<i>(Stored<T>::fields).key, &writeField<T, i>}...};
            std::ranges::sort(all, {}, &FieldWriter<T>::key);
            return all;
        }
        (std::make_index_sequence<count>());
        return fields;
    }

    void writeKey(List& list, std::string_view key)
    {
        list.next();
        m_text += '"';
        m_text += key;
        m_text += "\": ";
    }

    void writeQuoted(std::string_view text);

    template <class T>
    void writeNumber(T value)
    {
        std::array<char, 32> digits;
        auto const end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
        m_text.append(digits.data(), end);
    }

    /// JSON can't represent infinity or NaN, and no edit produces them.
    template <class T>
    void writeFinite(T value)
    {
        if (!std::isfinite(value))
            throw DocumentError("A number of this document is not finite; it cannot be written.");
        writeNumber(value);
    }

    void breakLine()
    {
        m_text += '\n';
        m_text.append(2 * m_depth, ' ');
    }

    std::string m_text;
    std::size_t m_depth = 0;
};

} // namespace framewright
