/* json_schema.h - as much of JSON Schema as the schemas in docs use: const, enum, type, required, properties, items,
 * additionalProperties with a schema. No field beside those named. */
#pragma once

#include <algorithm>
#include <fstream>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <string>

inline nlohmann::json committed_schema(const std::string &name)
{
    std::ifstream in(std::string(ZELOR_SOURCE_DIR "/docs/") + name);
    return nlohmann::json::parse(in);
}

inline void expect_schema_type(const nlohmann::json &types, const nlohmann::json &value, const std::string &where)
{
    const nlohmann::json list = types.is_array() ? types : nlohmann::json::array({types});
    const std::string type = value.is_number_integer() ? "integer" : value.type_name();
    bool fits = std::find(list.begin(), list.end(), type) != list.end();
    fits = fits || (value.is_number() && std::find(list.begin(), list.end(), "number") != list.end());
    EXPECT_TRUE(fits) << where << ": " << value << " is no " << types;
}

inline void expect_schema(const nlohmann::json &schema, const nlohmann::json &value, const std::string &where);

inline void expect_schema_object(const nlohmann::json &schema, const nlohmann::json &value, const std::string &where)
{
    const nlohmann::json named = schema.value("properties", nlohmann::json::object());
    const nlohmann::json others = schema.value("additionalProperties", nlohmann::json(false));
    for (const auto &key : schema.value("required", nlohmann::json::array()))
        EXPECT_TRUE(value.contains(key.get<std::string>())) << where << " lacks " << key;
    for (const auto &[key, item] : value.items()) {
        EXPECT_TRUE(named.contains(key) || others.is_object()) << where << "." << key << " is not in the schema";
        if (named.contains(key)) expect_schema(named[key], item, where + "." + key);
        if (!named.contains(key) && others.is_object()) expect_schema(others, item, where + "." + key);
    }
}

inline void expect_schema(const nlohmann::json &schema, const nlohmann::json &value, const std::string &where)
{
    if (schema.contains("const")) {
        EXPECT_EQ(value, schema["const"]) << where;
    }
    if (schema.contains("enum")) {
        const nlohmann::json &words = schema["enum"];
        EXPECT_NE(std::find(words.begin(), words.end(), value), words.end()) << where << ": " << value;
    }
    if (schema.contains("type")) expect_schema_type(schema["type"], value, where);
    if (value.is_object()) expect_schema_object(schema, value, where);
    if (value.is_array() && schema.contains("items"))
        for (const nlohmann::json &item : value) expect_schema(schema["items"], item, where + "[]");
}
