#include "Report.h"

#include <cmath>
#include <cstring>

#include <nlohmann/json.hpp>

#include "Commands.h"

namespace zormodel {

std::string format_double(double value) {
    if (std::isnan(value)) return "nan";
    if (std::isinf(value)) return value > 0 ? "inf" : "-inf";
    char text[40];
    for (int precision = 6; precision <= 17; ++precision) {
        std::snprintf(text, sizeof text, "%.*g", precision, value);
        if (std::strtod(text, nullptr) == value) break;
    }
    return text;
}

std::string json_quote(const std::string& text) {
    std::string out = "\"";
    for (unsigned char c : text) {
        switch (c) {
            case '"': out += "\\\""; break;
            case '\\': out += "\\\\"; break;
            case '\n': out += "\\n"; break;
            case '\r': out += "\\r"; break;
            case '\t': out += "\\t"; break;
            default:
                if (c < 0x20) {
                    char esc[8];
                    std::snprintf(esc, sizeof esc, "\\u%04x", c);
                    out += esc;
                } else {
                    out += static_cast<char>(c);
                }
        }
    }
    return out + "\"";
}

namespace {

std::string join(const std::vector<double>& values, const char* separator, bool) {
    std::string out;
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (i > 0) out += separator;
        out += format_double(values[i]);
    }
    return out;
}

void pad(std::FILE* out, int indent) { std::fprintf(out, "%*s", indent, ""); }

}  // namespace

Report& Report::text(const std::string& key, const std::string& value) {
    m_fields.emplace_back(key, value);
    return *this;
}
Report& Report::integer(const std::string& key, long long value) {
    m_fields.emplace_back(key, value);
    return *this;
}
Report& Report::number(const std::string& key, double value) {
    m_fields.emplace_back(key, value);
    return *this;
}
Report& Report::numbers(const std::string& key, std::vector<double> values) {
    m_fields.emplace_back(key, std::move(values));
    return *this;
}
Report& Report::matrix(const std::string& key, const double m[4][4]) {
    Matrix matrix;
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c) matrix.values.push_back(m[r][c]);
    m_fields.emplace_back(key, std::move(matrix));
    return *this;
}
Report& Report::flag(const std::string& key, bool value) {
    m_fields.emplace_back(key, value);
    return *this;
}
Report& Report::list(const std::string& key, std::vector<Report> items) {
    m_fields.emplace_back(key, std::move(items));
    return *this;
}

void Report::printText(std::FILE* out, int indent) const {
    finish_progress();
    pad(out, indent);
    std::fputs(m_kind.c_str(), out);
    std::vector<const std::pair<std::string, Value>*> blocks;
    for (const auto& field : m_fields) {
        const Value& v = field.second;
        if (std::holds_alternative<Matrix>(v) || std::holds_alternative<std::vector<Report>>(v)) {
            blocks.push_back(&field);
            continue;
        }
        std::fprintf(out, "  %s=", field.first.c_str());
        if (auto s = std::get_if<std::string>(&v)) std::fputs(json_quote(*s).c_str(), out);
        if (auto i = std::get_if<long long>(&v)) std::fprintf(out, "%lld", *i);
        if (auto d = std::get_if<double>(&v)) std::fputs(format_double(*d).c_str(), out);
        if (auto b = std::get_if<bool>(&v)) std::fputs(*b ? "yes" : "no", out);
        if (auto n = std::get_if<std::vector<double>>(&v)) std::fprintf(out, "(%s)", join(*n, ", ", false).c_str());
    }
    std::fputc('\n', out);
    for (const auto* field : blocks) {
        if (auto m = std::get_if<Matrix>(&field->second)) {
            for (int r = 0; r < 4; ++r) {
                pad(out, indent + 2);
                std::vector<double> row(m->values.begin() + 4 * r, m->values.begin() + 4 * r + 4);
                std::fprintf(out, "%s[%d] = (%s)\n", field->first.c_str(), r, join(row, ", ", false).c_str());
            }
        } else if (auto items = std::get_if<std::vector<Report>>(&field->second)) {
            pad(out, indent + 2);
            std::fprintf(out, "%s: %zu\n", field->first.c_str(), items->size());
            for (const Report& item : *items) item.printText(out, indent + 4);
        }
    }
}

nlohmann::ordered_json Report::toJson() const {
    nlohmann::ordered_json object = nlohmann::ordered_json::object();
    if (!m_kind.empty()) object["kind"] = utf8_text(m_kind);
    for (const auto& field : m_fields) {
        nlohmann::ordered_json& value = object[utf8_text(field.first)];
        const Value& v = field.second;
        if (auto s = std::get_if<std::string>(&v)) value = utf8_text(*s);
        if (auto i = std::get_if<long long>(&v)) value = *i;
        if (auto d = std::get_if<double>(&v)) value = *d;  // NaN and infinities become null
        if (auto b = std::get_if<bool>(&v)) value = *b;
        if (auto n = std::get_if<std::vector<double>>(&v)) value = *n;
        if (auto m = std::get_if<Matrix>(&v)) {
            value = nlohmann::ordered_json::array();
            for (int r = 0; r < 4; ++r)
                value.push_back(std::vector<double>(m->values.begin() + 4 * r, m->values.begin() + 4 * r + 4));
        }
        if (auto items = std::get_if<std::vector<Report>>(&v)) {
            value = nlohmann::ordered_json::array();
            for (const Report& item : *items) value.push_back(item.toJson());
        }
    }
    return object;
}

void Report::printJson(std::FILE* out, int indent) const {
    finish_progress();
    print_json(out, toJson(), indent);
}

void print_json_array(std::FILE* out, const std::vector<Report>& items, int indent) {
    nlohmann::ordered_json array = nlohmann::ordered_json::array();
    for (const Report& item : items) array.push_back(item.toJson());
    print_json(out, array, indent);
}

void print_json(std::FILE* out, const nlohmann::ordered_json& value, int indent) {
    finish_progress();
    // ensure_ascii: the output is plain ASCII, every other character a \u escape.
    std::string text = value.dump(2, ' ', true);
    if (indent > 0) {
        const std::string pad = "\n" + std::string(static_cast<std::size_t>(indent), ' ');
        for (std::size_t at = text.find('\n'); at != std::string::npos; at = text.find('\n', at + pad.size()))
            text.replace(at, 1, pad);
    }
    std::fputs(text.c_str(), out);
}

std::string utf8_text(const std::string& bytes) {
    // Valid UTF-8 sequences are kept; any other byte is read as Latin-1.
    std::string out;
    out.reserve(bytes.size());
    const auto* p = reinterpret_cast<const unsigned char*>(bytes.data());
    const std::size_t n = bytes.size();
    for (std::size_t i = 0; i < n;) {
        const unsigned char c = p[i];
        std::size_t len = c < 0x80 ? 1 : (c >> 5) == 6 ? 2 : (c >> 4) == 14 ? 3 : (c >> 3) == 30 ? 4 : 0;
        bool valid = len > 0 && i + len <= n;
        for (std::size_t k = 1; valid && k < len; ++k) valid = (p[i + k] & 0xC0) == 0x80;
        if (valid && len > 1) {
            // Overlong forms, surrogates and values past U+10FFFF are not UTF-8.
            unsigned int cp = c & (0x7F >> len);
            for (std::size_t k = 1; k < len; ++k) cp = (cp << 6) | (p[i + k] & 0x3F);
            static const unsigned int least[] = {0, 0, 0x80, 0x800, 0x10000};
            valid = cp >= least[len] && cp <= 0x10FFFF && (cp < 0xD800 || cp > 0xDFFF);
        }
        if (valid) {
            out.append(bytes, i, len);
            i += len;
        } else {
            out += static_cast<char>(0xC0 | (c >> 6));
            out += static_cast<char>(0x80 | (c & 0x3F));
            ++i;
        }
    }
    return out;
}

}  // namespace zormodel
