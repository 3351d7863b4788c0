// SPDX-License-Identifier: Apache-2.0
// What the access functions make of every shape of reply, and what they put on the wire.
#include "core/bus.h"

#include <gmock/gmock.h>
#include <string>

#include "support/router_rig.h"

namespace {

using router::Fault;
using testing::ElementsAre;
using testing::MatchesRegex;

const char OBJECT[] = "vrop.ledswitch";

// Which function is called, and what came of it: the found value as JSON, "null", or the number.
std::string call(const std::string &function, JsonRoot *root) {
    BusMessage message;
    message.integer("index", 1);
    if (function == "set") return std::to_string(set_dev_info(OBJECT, "set", message));
    json_object *found = nullptr;
    if (function == "info")
        found = get_dev_info(OBJECT, "get", root);
    else if (function == "param")
        found = get_param_dev_info(OBJECT, "get", message, root);
    else if (function == "spec")
        found = get_dev_specInfo(OBJECT, "get", "other", root);
    else
        found = get_one_array_info(OBJECT, "get", std::stoi(function), root);
    return json_object_to_json_string_ext(found, JSON_C_TO_STRING_PLAIN);
}

TEST(BusAccess, TakesFromEachShapeOfReplyWhatIsAskedFor) {
    const struct {
        const char *function, *reply, *found;
    } rows[] = {
        {"info", R"({"vrop.ledswitch":{"a":1}})", R"({"a":1})"},
        {"info", R"({"vrop.ledswitch":"text"})", "\"text\""},
        {"info", R"({"vrop.ledswitch":null})", "null"},
        {"info", R"({"other":{"a":1}})", "null"},
        {"info", R"({"vrop.ledswitch":{"a":1},"result":"1"})", R"({"a":1})"},
        {"param", R"({"result":"0","vrop.ledswitch":{"a":1}})", R"({"a":1})"},
        {"param", R"({"vrop.ledswitch":{"a":1}})", R"({"a":1})"},
        {"param", R"({"result":1,"vrop.ledswitch":{"a":1}})", "null"},
        {"param", R"({"result":"-4","vrop.ledswitch":{"a":1}})", "null"},
        {"spec", R"({"other":{"b":2},"vrop.ledswitch":{}})", R"({"b":2})"},
        {"spec", R"({"vrop.ledswitch":{"other":1}})", "null"},
        {"1", R"({"vrop.ledswitch":[{"n":0},{"n":1}]})", R"({"n":1})"},
        {"2", R"({"vrop.ledswitch":[{"n":0},{"n":1}]})", "null"},
        {"-1", R"({"vrop.ledswitch":[{"n":0}]})", "null"},
        {"0", R"({"vrop.ledswitch":{"0":1}})", "null"},
        {"set", R"({"result":"0"})", "0"},
        {"set", "{}", "0"},
        {"set", R"({"result":"word"})", "0"},
        {"set", R"({"result":null})", "0"},
        {"set", R"({"result":"2"})", "-1"},
        {"set", R"({"result":-1})", "-1"},
        {"set", R"({"result":"99999999999999999999"})", "-1"},
    };
    RouterRig rig;
    for (const auto &row : rows) {
        SCOPED_TRACE(std::string(row.function) + " " + row.reply);
        rig.router.clear_faults();
        rig.router.add_fault({.kind = Fault::Kind::Reply, .object = OBJECT, .reply = row.reply});
        JsonRoot root;
        EXPECT_EQ(call(row.function, &root), row.found);
        EXPECT_EQ(root != nullptr, std::string(row.function) != "set" && std::string(row.found) != "null");
    }
}

// The daemon's own "not found" is an answer like others, not a reason to ask again.
TEST(BusAccess, SaysWhatItMisses) {
    RouterRig rig;
    rig.router.add_fault({.kind = Fault::Kind::Status, .object = OBJECT, .value = 4});
    rig.router.add_fault({.kind = Fault::Kind::Absent, .object = "vrop.gone"});
    JsonRoot root;
    const std::string console = console_of([&] {
        for (const char *function : {"info", "param", "spec", "0"})
            EXPECT_EQ(call(function, &root), "null") << function;
        EXPECT_EQ(get_dev_info("vrop.gone", "get", &root), nullptr);
    });
    EXPECT_THAT(console, MatchesRegex("(ubus_invoke failed 'vrop.ledswitch' 'get' Not found\n)+"
                                      "get_one_array_info [0-9]+ devinfo is NULL\n"
                                      "ubus_lookup_id failed 'vrop.gone' 'get' Not found\n"));
    EXPECT_EQ(log_messages(), std::vector<std::string>(4, "devinfo is NULL"));
    EXPECT_EQ(rig.router.calls().size(), 4u);
}

TEST(BusAccess, RefusesNullArguments) {
    RouterRig rig;
    JsonRoot root;
    BusMessage message;
    EXPECT_THAT(console_of([&] {
                    EXPECT_EQ(get_dev_info(nullptr, "get", &root), nullptr);
                    EXPECT_EQ(get_dev_info(OBJECT, nullptr, &root), nullptr);
                    EXPECT_EQ(get_dev_info(OBJECT, "get", nullptr), nullptr);
                    EXPECT_EQ(get_param_dev_info(nullptr, "get", message, &root), nullptr);
                    EXPECT_EQ(get_one_array_info(OBJECT, nullptr, 0, &root), nullptr);
                }),
                MatchesRegex("(get_dev_info [0-9]+ param is NULL\n)+get_param.*\n.*\n"));
    EXPECT_EQ(get_dev_specInfo(OBJECT, "get", nullptr, &root), nullptr);
    EXPECT_EQ(set_dev_info(nullptr, "set", message), -1);
    EXPECT_EQ(set_dev_info(OBJECT, nullptr), -1);
    EXPECT_THAT(log_messages(), ElementsAre("param is NULL", "param is NULL", "param is NULL"));
    EXPECT_TRUE(rig.router.calls().empty());
}

TEST(BusAccess, SendsMembersInOrderWithTheirTypes) {
    RouterRig rig;
    BusMessage message;
    message.integer("z", -1).text("a", "x\"\xc3\xa4").integer("m", INT32_MAX).text("empty", nullptr);
    set_dev_info(OBJECT, "set", message);
    set_dev_info(OBJECT, "get");
    EXPECT_THAT(rig.arguments(OBJECT, "*"),
                ElementsAre(R"({"z":-1,"a":"x\"ä","m":2147483647,"empty":""})", "{}"));
}

} // namespace
