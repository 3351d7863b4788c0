// SPDX-License-Identifier: Apache-2.0
#include "core/json_path.h"

#include <gtest/gtest.h>
#include <optional>
#include <string>

#include "core/handles.h"

namespace {

JsonRoot parse(const std::string &text) {
    return JsonRoot(json_tokener_parse(text.c_str()));
}

std::string plain(json_object *document) {
    return json_object_to_json_string_ext(document, JSON_C_TO_STRING_PLAIN);
}

const char DOCUMENT[] =
    R"({"a":{"b":{"c":"text"},"n":"12","x.y":1},"w":"word","f":2.9,"yes":true,"null":null,
        "big":9223372036854775807,"list":[1,2]})";

TEST(JsonPath, Readers) {
    const struct {
        const char *path;
        std::optional<std::string> text;
        int64_t number;
        bool flag;
    } rows[] = {
        {"a.b.c", "text", 0, true},
        {"a.n", "12", 12, true},
        {"w", "word", 0, true},
        {"f", "2.9", 2, true},
        {"yes", "true", 1, true},
        {"big", "9223372036854775807", INT64_MAX, true},
        {"list", "[ 1, 2 ]", 0, false},
        {"a.x.y", std::nullopt, -1, false}, // no escaping
        {"list.0", std::nullopt, -1, false},
        {"null", std::nullopt, -1, false},
        {"a.missing.c", std::nullopt, -1, false},
    };
    JsonRoot document = parse(DOCUMENT);
    for (const auto &row : rows) {
        SCOPED_TRACE(row.path);
        const char *text = JsonGetStr(document.get(), row.path);
        EXPECT_EQ(text != nullptr ? std::optional<std::string>(text) : std::nullopt, row.text);
        EXPECT_EQ(JsonGetInt64(document.get(), row.path), row.number);
        EXPECT_EQ(JsonGetBool(document.get(), row.path), row.flag);
        json_object *member = document.get();
        EXPECT_EQ(JsonGetObj(document.get(), row.path, &member), row.text ? 1 : 0);
        EXPECT_EQ(member != nullptr, row.text.has_value());
    }
    EXPECT_EQ(JsonGetStr(nullptr, "a"), nullptr);
    EXPECT_EQ(JsonGetInt64(nullptr, "a"), -1);
    json_object *itself = nullptr;
    EXPECT_EQ(JsonGetObj(document.get(), nullptr, &itself), 1);
    EXPECT_EQ(itself, document.get());
}

TEST(JsonPath, Writers) {
    const struct {
        const char *before, *path, *key;
        int result;
        const char *after; // of a text "x"
    } rows[] = {
        {"{}", nullptr, "c", 1, R"({"c":"x"})"},
        {"{}", "a.b", "c", 1, R"({"a":{"b":{"c":"x"}}})"},
        {R"({"a":{"k":1}})", "a.b", "c", 1, R"({"a":{"k":1,"b":{"c":"x"}}})"},
        {R"({"a":5})", "a.b", "c", 0, R"({"a":5})"},
        {R"({"a":null})", "a.b", "c", 0, R"({"a":null})"},
        {"[]", nullptr, "c", 0, "[]"},
        {"{}", "a", nullptr, 0, "{}"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(std::string(row.before) + " " + (row.path == nullptr ? "null" : row.path));
        JsonRoot document = parse(row.before);
        EXPECT_EQ(JsonSetStr(document.get(), row.path, row.key, "x"), row.result);
        EXPECT_EQ(plain(document.get()), row.after);
    }
    EXPECT_EQ(JsonSetStr(nullptr, nullptr, "k", "x"), 0);
}

TEST(JsonPath, WritersOfEachType) {
    JsonRoot document = parse("{}");
    json_object *given = json_object_new_array();
    EXPECT_EQ(JsonSetStr(document.get(), nullptr, "s", nullptr), 1);
    EXPECT_EQ(JsonSetInt64(document.get(), nullptr, "i", INT64_MIN), 1);
    EXPECT_EQ(JsonSetBool(document.get(), nullptr, "b", true), 1);
    EXPECT_EQ(JsonSetObj(document.get(), "o", "k", given), 1);
    EXPECT_EQ(plain(document.get()), R"({"s":"","i":-9223372036854775808,"b":true,"o":{"k":[]}})");

    EXPECT_EQ(JsonSetObj(document.get(), nullptr, "n", nullptr), 0);
    JsonRoot refused(json_object_new_object()); // stays ours
    EXPECT_EQ(JsonSetObj(document.get(), "s.deeper", "k", refused.get()), 0);
}

TEST(JsonPath, CreatePathCutsAt239Characters) {
    JsonRoot document = parse("{}");
    EXPECT_EQ(JsonCreatePath(nullptr, "a"), nullptr);
    EXPECT_EQ(JsonCreatePath(document.get(), nullptr), document.get());
    JsonCreatePath(document.get(), std::string(300, 'p').c_str());
    EXPECT_EQ(plain(document.get()), "{\"" + std::string(239, 'p') + "\":{}}");
}

TEST(JsonPath, ReplyReaders) {
    const JsonRoot reply = parse(R"({"huge":5000000000,"o":{"k":"v"}})"), text = parse("\"42\"");
    EXPECT_STREQ(_json_get_str(reply.get(), "huge"), "5000000000");
    EXPECT_STREQ(_json_get_str(reply.get(), "o"), R"({ "k": "v" })");
    EXPECT_STREQ(_json_get_str(nullptr, "key"), "");
    EXPECT_EQ(_json_get_int(nullptr, "key"), 0);
    EXPECT_STREQ(_json_get_str(text.get(), nullptr), "42");
    EXPECT_STREQ(_json_get_str(text.get(), "key"), "");
}

} // namespace
