#pragma once

#include <algorithm>
#include <boost/json.hpp>
#include <regex>
#include <set>
#include <string>
#include <string_view>
#include <vector>

/// What the tests use of JSON Schema (2020-12).
namespace ks_test {

namespace json = boost::json;

/// Checks one document. A keyword that it does not know is a fault, too: it would check nothing.
class JsonSchema {
public:
    explicit JsonSchema(std::string_view text) : m_root(json::parse(json::string_view(text.data(), text.size()))) {}

    /// "/json/pointer: what is wrong", one for each fault; empty for a document that is as it should be.
    std::vector<std::string> faultsOf(std::string_view document) const {
        std::vector<std::string> faults;
        check(m_root, json::parse(json::string_view(document.data(), document.size())), "", faults);
        return faults;
    }

private:
    using Faults = std::vector<std::string>;

    void check(const json::value& schema, const json::value& value, const std::string& at, Faults& faults) const {
        if (schema.is_bool()) {
            if (!schema.get_bool()) faults.push_back(at + ": must not be there");
            return;
        }
        for (const auto& [key, rule] : schema.get_object())
            if (!holds(std::string_view(key.data(), key.size()), rule, schema.get_object(), value, at, faults))
                faults.push_back(at + ": " + json::serialize(value).substr(0, 80) + " against \"" + std::string(key) +
                                 "\": " + json::serialize(rule).substr(0, 80));
    }

    bool holds(std::string_view key, const json::value& rule, const json::object& schema, const json::value& value,
               const std::string& at, Faults& faults) const {
        static const std::set<std::string_view> kRemarks{"$schema", "$id", "$defs", "title", "description", "examples"};
        if (kRemarks.contains(key)) return true;
        if (key == "$ref") return check(resolved(rule.get_string()), value, at, faults), true;
        if (key == "type") return isOfType(rule, value);
        if (key == "const") return value == rule;
        if (key == "enum") return isAmong(rule.get_array(), value);
        if (key == "anyOf") return fitting(rule.get_array(), value, at) >= 1;
        if (key == "oneOf") return fitting(rule.get_array(), value, at) == 1;
        if (key == "minimum") return !value.is_number() || value.to_number<double>() >= rule.to_number<double>();
        if (key == "maximum") return !value.is_number() || value.to_number<double>() <= rule.to_number<double>();
        if (key == "minLength") return !value.is_string() || value.get_string().size() >= sizeIn(rule);
        if (key == "minItems") return !value.is_array() || value.get_array().size() >= sizeIn(rule);
        if (key == "pattern") return !value.is_string() || matches(value.get_string(), rule.get_string());
        if (key == "required") return hasAll(rule.get_array(), value);
        if (key == "items") return checkItems(rule, value, at, faults), true;
        if (key == "properties") return checkMembers(rule.get_object(), value, at, faults), true;
        if (key == "additionalProperties") return checkOthers(rule, schema, value, at, faults), true;
        return false;
    }

    const json::value& resolved(json::string_view reference) const {
        constexpr std::string_view kPrefix = "#/$defs/";
        return m_root.at("$defs").at(reference.substr(kPrefix.size()));
    }

    static std::size_t sizeIn(const json::value& rule) { return rule.to_number<std::size_t>(); }

    static bool isOfType(const json::value& rule, const json::value& value) {
        if (rule.is_array())
            return std::any_of(rule.get_array().begin(), rule.get_array().end(),
                               [&](const json::value& one) { return isOfType(one, value); });
        const json::string& type = rule.get_string();
        return (type == "object" && value.is_object()) || (type == "array" && value.is_array()) ||
               (type == "string" && value.is_string()) || (type == "boolean" && value.is_bool()) ||
               (type == "null" && value.is_null()) || (type == "number" && value.is_number()) ||
               (type == "integer" && (value.is_int64() || value.is_uint64()));
    }

    static bool isAmong(const json::array& values, const json::value& value) {
        return std::find(values.begin(), values.end(), value) != values.end();
    }

    std::ptrdiff_t fitting(const json::array& schemas, const json::value& value, const std::string& at) const {
        return std::count_if(schemas.begin(), schemas.end(), [&](const json::value& schema) {
            Faults faults;
            check(schema, value, at, faults);
            return faults.empty();
        });
    }

    static bool matches(const json::string& text, const json::string& pattern) {
        return std::regex_search(std::string(text), std::regex(std::string(pattern)));
    }

    static bool hasAll(const json::array& keys, const json::value& value) {
        return !value.is_object() || std::all_of(keys.begin(), keys.end(), [&](const json::value& key) {
            return value.get_object().contains(key.get_string());
        });
    }

    void checkItems(const json::value& rule, const json::value& value, const std::string& at, Faults& faults) const {
        if (!value.is_array()) return;
        for (std::size_t i = 0; i < value.get_array().size(); ++i)
            check(rule, value.get_array()[i], at + "/" + std::to_string(i), faults);
    }

    void checkMembers(const json::object& rules, const json::value& value, const std::string& at,
                      Faults& faults) const {
        if (!value.is_object()) return;
        for (const auto& [key, rule] : rules)
            if (const json::value* const member = value.get_object().if_contains(key))
                check(rule, *member, at + "/" + std::string(key), faults);
    }

    void checkOthers(const json::value& rule, const json::object& schema, const json::value& value,
                     const std::string& at, Faults& faults) const {
        if (!value.is_object()) return;
        const json::value* const known = schema.if_contains("properties");
        for (const auto& [key, member] : value.get_object())
            if (!known || !known->get_object().contains(key)) check(rule, member, at + "/" + std::string(key), faults);
    }

    json::value m_root;
};

}  // namespace ks_test
