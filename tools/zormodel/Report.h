// What zormodel prints about one thing it read (a record, a profile, a mesh):
// named values in order, rendered as indented text or as JSON.
#pragma once

#include <cstdio>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include <nlohmann/json.hpp>

namespace zormodel {

class Report {
public:
    explicit Report(std::string kind = "") : m_kind(std::move(kind)) {}

    Report& text(const std::string& key, const std::string& value);
    Report& integer(const std::string& key, long long value);
    Report& number(const std::string& key, double value);
    Report& numbers(const std::string& key, std::vector<double> values);
    Report& matrix(const std::string& key, const double m[4][4]);
    Report& flag(const std::string& key, bool value);
    // A list of nested reports (segments, pairs, ...).
    Report& list(const std::string& key, std::vector<Report> items);

    const std::string& kind() const { return m_kind; }

    // "kind  key=value ..." with nested lists indented below.
    void printText(std::FILE* out, int indent = 0) const;
    // One JSON object; "kind" comes first when set.
    void printJson(std::FILE* out, int indent = 0) const;
    nlohmann::ordered_json toJson() const;

private:
    struct Matrix {
        std::vector<double> values;
    };
    using Value = std::variant<std::string, long long, double, std::vector<double>, Matrix, bool, std::vector<Report>>;
    std::string m_kind;
    std::vector<std::pair<std::string, Value>> m_fields;
};

// A list of reports as a JSON array.
void print_json_array(std::FILE* out, const std::vector<Report>& items, int indent = 0);

// JSON text of value, indented by two spaces a level, ASCII only.
void print_json(std::FILE* out, const nlohmann::ordered_json& value, int indent = 0);
// bytes as valid UTF-8: UTF-8 sequences kept, every other byte read as Latin-1.
std::string utf8_text(const std::string& bytes);

// Quoted text for the plain listings (bytes above 127 are passed through).
std::string json_quote(const std::string& text);
// Shortest text that reads back as the same double.
std::string format_double(double value);

}  // namespace zormodel
