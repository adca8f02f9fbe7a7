#include "model/json_reading.h"
#include "model/json_writing.h"

namespace framewright {

nlohmann::json parseJson(std::string_view data)
{
    try {
        return nlohmann::json::parse(data);
    } catch (nlohmann::json::parse_error const& error) {
        std::string_view const before = data.substr(0, error.byte > 0 ? error.byte - 1 : 0);
        auto const line = 1 + std::ranges::count(before, '\n');
        std::size_t const lastBreak = before.rfind('\n');
        std::size_t const column =
            lastBreak == std::string_view::npos ? before.size() + 1 : before.size() - lastBreak;
        throw DocumentError("The document is not valid JSON (line " + std::to_string(line) +
                            ", column " + std::to_string(column) + ").");
    } catch (nlohmann::json::exception const&) {
        throw DocumentError("The document holds a number that is out of range.");
    }
}

void JsonWriter::writeQuoted(std::string_view text)
{
    constexpr char digits[] = "0123456789abcdef";
    m_text += '"';
    for (char const c : text) {
        switch (c) {
        case '"':
            m_text += "\\\"";
            break;
        case '\\':
            m_text += "\\\\";
            break;
        case '\n':
            m_text += "\\n";
            break;
        case '\r':
            m_text += "\\r";
            break;
        case '\t':
            m_text += "\\t";
            break;
        default:
            if (static_cast<unsigned char>(c) < 0x20) {
                m_text += "\\u00";
                m_text += digits[c >> 4];
                m_text += digits[c & 0x0F];
            } else {
                m_text += c;
            }
        }
    }
    m_text += '"';
}

} // namespace framewright
