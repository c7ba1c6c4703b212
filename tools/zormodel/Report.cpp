#include "Report.h"

#include <cmath>
#include <cstring>

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

std::string json_number(double value) {
    // JSON has no NaN or infinity.
    if (!std::isfinite(value)) return "null";
    return format_double(value);
}

std::string join(const std::vector<double>& values, const char* separator, bool json) {
    std::string out;
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (i > 0) out += separator;
        out += json ? json_number(values[i]) : format_double(values[i]);
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

void Report::printJson(std::FILE* out, int indent) const {
    std::fputs("{", out);
    bool first = true;
    auto key = [&](const std::string& name) {
        std::fprintf(out, "%s\n", first ? "" : ",");
        first = false;
        pad(out, indent + 2);
        std::fprintf(out, "%s: ", json_quote(name).c_str());
    };
    if (!m_kind.empty()) {
        key("kind");
        std::fputs(json_quote(m_kind).c_str(), out);
    }
    for (const auto& field : m_fields) {
        key(field.first);
        const Value& v = field.second;
        if (auto s = std::get_if<std::string>(&v)) std::fputs(json_quote(*s).c_str(), out);
        if (auto i = std::get_if<long long>(&v)) std::fprintf(out, "%lld", *i);
        if (auto d = std::get_if<double>(&v)) std::fputs(json_number(*d).c_str(), out);
        if (auto b = std::get_if<bool>(&v)) std::fputs(*b ? "true" : "false", out);
        if (auto n = std::get_if<std::vector<double>>(&v)) std::fprintf(out, "[%s]", join(*n, ", ", true).c_str());
        if (auto m = std::get_if<Matrix>(&v)) {
            std::fputs("[", out);
            for (int r = 0; r < 4; ++r) {
                std::vector<double> row(m->values.begin() + 4 * r, m->values.begin() + 4 * r + 4);
                std::fprintf(out, "%s[%s]", r ? ", " : "", join(row, ", ", true).c_str());
            }
            std::fputs("]", out);
        }
        if (auto items = std::get_if<std::vector<Report>>(&v)) print_json_array(out, *items, indent + 2);
    }
    std::fputs("\n", out);
    pad(out, indent);
    std::fputs("}", out);
}

void print_json_array(std::FILE* out, const std::vector<Report>& items, int indent) {
    std::fputs("[", out);
    for (std::size_t i = 0; i < items.size(); ++i) {
        std::fprintf(out, "%s\n", i ? "," : "");
        pad(out, indent + 2);
        items[i].printJson(out, indent + 2);
    }
    if (!items.empty()) {
        std::fputs("\n", out);
        pad(out, indent);
    }
    std::fputs("]", out);
}

}  // namespace zormodel
