// SPDX-License-Identifier: Apache-2.0
// Bad input for every row of the property table: a row is covered by being there. Bad requests are made of
// what the row's own get gives.
#include <cstring>
#include <functional>

#include <gmock/gmock.h>

#include "properties/property_rig.h"

namespace {

using testing::AnyOf;
using testing::IsEmpty;

std::string repeated(const char *text, int times) {
    std::string result;
    for (int i = 0; i < times; ++i)
        result += text;
    return result;
}

std::string text_of(json_object *value) {
    return json_object_to_json_string_ext(value, JSON_C_TO_STRING_PLAIN);
}

// The value with each of its leaves, or only leaf number `only`, exchanged for `other`. Counts the leaves.
std::string exchange(json_object *value, const std::string &other, int only, int *leaf) {
    std::string members;
    switch (json_object_get_type(value)) {
    case json_type_object: {
        json_object_object_foreach(value, key, member) {
            members += std::string(members.empty() ? "" : ",") + '"' + key +
                       "\":" + exchange(member, other, only, leaf);
        }
        return "{" + members + "}";
    }
    case json_type_array:
        for (size_t i = 0; i < json_object_array_length(value); ++i)
            members += (i == 0 ? "" : ",") + exchange(json_object_array_get_idx(value, i), other, only, leaf);
        return "[" + members + "]";
    default:
        return (*leaf)++ == only || only < 0 ? other : text_of(value);
    }
}

// A rig whose schedules have an entry each, so that their documents have leaves.
struct Filled : PropertyRig {
    Filled() {
        router.set_state(
            "/vrop.timer",
            R"([{"action":"ToReboot","taskid":1,"timeoffset":60,"enable":1,"week":3},)"
            R"({"action":"ToLedMode","taskid":2,"timeoffset":60,"timeoffset2":90,"enable":1,"week":3}])");
    }
};

// Values that are no member of any property.
Texts wrong_values(const std::string &name) {
    Texts values = {"null", "1", "true", "1.5", R"({"x":{}})"};
    if (name != "timeReboot" && name != "timeLed") values.push_back("[]"); // an empty schedule is one
    if (name != "ledStatus") values.push_back(R"("text")");
    // these two send what they are given, and an absent member as -1 or an empty text: the daemon decides
    if (name.ends_with("SeniorInfo")) std::erase(values, R"({"x":{}})");
    return values;
}

Texts broken_texts(const std::string &name, const std::string &document) {
    Texts texts = {"",
                   " ",
                   "x",
                   "{",
                   "[]",
                   "1",
                   R"("text")",
                   "null",
                   "{}",
                   R"({"other":{}})",
                   repeated("[", 10000),
                   document.substr(0, document.size() - 1),
                   "[" + document + "]",
                   "{\"junk\":\"\xc3\x28\"," + document.substr(1),
                   R"({")" + name + R"(":)" + repeated(R"({"a":)", 10000) + "1" + repeated("}", 10000) + "}"};
    const std::string start = R"({")" + name + R"(":)";
    for (const std::string &value : wrong_values(name))
        texts.emplace_back(start).append(value).append("}");
    return texts;
}

TEST(BadInput, BrokenRequestsChangeNothing) {
    for (const property_row *row : rows_with_set()) {
        Filled rig;
        const std::string state = rig.router.state();
        for (const std::string &request : broken_texts(row->name, get(row->name))) {
            SCOPED_TRACE(std::string(row->name) + " " + request.substr(0, 80));
            rig.forget();
            EXPECT_EQ(set(row->name, request), -1);
            EXPECT_THAT(rig.writes(), IsEmpty());
        }
        EXPECT_EQ(rig.router.state(), state);
    }
}

TEST(BadInput, ArgumentsThatAreMissingAreRefusedBeforeAnythingElse) {
    for (const property_row *row : rows_with_set()) {
        SCOPED_TRACE(row->name);
        Filled rig;
        const std::string good = get(row->name);
        char reply[64];
        rig.forget();
        clear_main_log();
        EXPECT_EQ(row->set(nullptr, good.c_str(), reply, sizeof reply), -1);
        EXPECT_EQ(row->set("wan0", nullptr, reply, sizeof reply), -1);
        EXPECT_EQ(row->set("wan0", good.c_str(), nullptr, sizeof reply), -1);
        EXPECT_EQ(row->set("wan0", good.c_str(), reply, 0), -1);
        EXPECT_EQ(row->set("wan0", good.c_str(), reply, -1), -1);
        EXPECT_TRUE(has_logged("param is NULL"));
        EXPECT_THAT(rig.calls(), IsEmpty());
        EXPECT_THAT(rig.events(), IsEmpty());
    }
}

// Members of other types, all at once and one by one. One alone may leave a request that can be applied.
TEST(BadInput, MembersOfWrongTypesAreAbsent) {
    const std::string long_text = '"' + repeated("x", 10240) + '"';
    for (const property_row *row : rows_with_set()) {
        for (const std::string &other :
             {std::string("{}"), std::string("[]"), std::string("null"), std::string("[[1]]"), long_text}) {
            SCOPED_TRACE(std::string(row->name) + " " + other.substr(0, 20));
            Filled rig;
            const std::string state = rig.router.state();
            JsonRoot good = parsed(get(row->name));
            int leaves = 0;
            EXPECT_THAT(set(row->name, exchange(good.get(), other, -1, &leaves)), AnyOf(0, -1));
            EXPECT_EQ(rig.router.state(), state) << "with every member of a wrong type";
            for (int only = 0; only < leaves; ++only) {
                int leaf = 0;
                EXPECT_THAT(set(row->name, exchange(good.get(), other, only, &leaf)), AnyOf(0, -1));
                EXPECT_NE(get(row->name), "");
            }
        }
    }
}

TEST(BadInput, GetsCutToTheRoomThereIs) {
    for (const property_row *row : rows_with_get()) {
        SCOPED_TRACE(row->name);
        Filled rig;
        std::string whole(16384, '\0');
        ASSERT_EQ(row->get("wan0", whole.data(), static_cast<int>(whole.size())), 0);
        const int length = static_cast<int>(strlen(whole.c_str()));
        struct Room {
            int length, result;
        };
        for (const Room &room :
             {Room{1, 0}, Room{2, 0}, Room{length, 0}, Room{length + 1, 0}, Room{0, -1}, Room{-1, -1}}) {
            const auto size = static_cast<size_t>(std::max(room.length, 0));
            std::string output(size + 8, '#');
            EXPECT_EQ(row->get("wan0", output.data(), room.length), room.result);
            std::string expected(size + 8, '#');
            if (room.result == 0) expected.replace(0, size, whole, 0, size - 1).insert(size - 1, 1, '\0');
            EXPECT_EQ(output, expected) << "room for " << room.length;
        }
        char output[8] = "";
        EXPECT_EQ(row->get(nullptr, output, sizeof output), -1);
        EXPECT_EQ(row->get("wan0", nullptr, 8), -1);
        EXPECT_TRUE(has_logged("param is error"));
    }
}

} // namespace
