// Checks a JSON value against a schema, as far as our schemas go: a keyword that is not known here is a fault.
#pragma once

#include <nlohmann/json.hpp>
#include <set>
#include <string>

namespace orvane::test {

class JsonSchema {
 public:
  explicit JsonSchema(nlohmann::json schema) : root_(std::move(schema)) {}
  /// Empty where the value fits, else what does not, with its place.
  std::string fault(const nlohmann::json& value) const { return check(value, root_, "$"); }

 private:
  using Json = nlohmann::json;

  static bool is_type(const Json& value, const std::string& type) {
    return (type == "object" && value.is_object()) || (type == "array" && value.is_array()) ||
           (type == "string" && value.is_string()) || (type == "boolean" && value.is_boolean()) ||
           (type == "null" && value.is_null()) || (type == "number" && value.is_number()) ||
           (type == "integer" && value.is_number_integer());
  }

  std::string check(const Json& value, const Json& schema, const std::string& at) const {
    for (const auto& [key, rule] : schema.items()) {
      if (const std::string found = keyword(value, schema, key, rule, at); !found.empty()) return found;
    }
    return {};
  }

  std::string keyword(const Json& value, const Json& schema, const std::string& key, const Json& rule,
                      const std::string& at) const {
    static const std::set<std::string> words = {"$schema", "$defs", "title", "description"};
    const auto unless = [&](bool good) { return good ? std::string() : at + ": " + key + " " + rule.dump(); };
    if (words.contains(key)) return {};
    if (key == "$ref")
      return check(value, root_.at(Json::json_pointer(rule.get<std::string>().substr(1))), at);
    if (key == "const") return unless(value == rule);
    if (key == "enum") return unless(std::find(rule.begin(), rule.end(), value) != rule.end());
    if (key == "minimum") return unless(value >= rule);
    if (key == "maximum") return unless(value <= rule);
    if (key == "minItems") return unless(value.size() >= rule);
    if (key == "type") {
      if (rule.is_string()) return unless(is_type(value, rule));
      return unless(
          std::any_of(rule.begin(), rule.end(), [&](const Json& one) { return is_type(value, one); }));
    }
    if (key == "required") {
      for (const auto& name : rule) {
        if (!value.contains(name.get<std::string>()))
          return at + ": " + name.get<std::string>() + " is missing";
      }
      return {};
    }
    if (key == "items") {
      for (std::size_t i = 0; i < value.size(); ++i) {
        const std::string found = check(value[i], rule, at + "[" + std::to_string(i) + "]");
        if (!found.empty()) return found;
      }
      return {};
    }
    if (key == "properties") {
      for (const auto& [name, one] : rule.items()) {
        const std::string found =
            value.contains(name) ? check(value[name], one, at + "." + name) : std::string();
        if (!found.empty()) return found;
      }
      return {};
    }
    if (key == "additionalProperties") {
      for (const auto& [name, one] : value.items()) {
        if (schema.contains("properties") && schema["properties"].contains(name)) continue;
        if (rule == false) return at + ": unknown key " + name;
        if (const std::string found = check(one, rule, at + "." + name); !found.empty()) return found;
      }
      return {};
    }
    return at + ": the schema's keyword " + key + " is not known";
  }

  nlohmann::json root_;
};

}  // namespace orvane::test
