// SPDX-License-Identifier: Apache-2.0
// Replies become the document that their JSON text says, on whichever way they are turned.
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "core/bus_library.h"
#include "core/bus_reply.h"

namespace {

class Message {
  public:
    Message() { blob_buf_init(&buffer, 0); }
    ~Message() { blob_buf_free(&buffer); }
    Message(const Message &) = delete;
    Message &operator=(const Message &) = delete;

    blob_buf buffer{};
};

std::string text_of(json_object *document) {
    return json_object_to_json_string_ext(document, JSON_C_TO_STRING_PLAIN);
}

std::string expected(blob_attr *message) {
    char *text = blobmsg_format_json(message, true);
    const JsonRoot document(json_tokener_parse(text));
    free(text);
    return text_of(document.get());
}

std::string nested(size_t depth) {
    std::string text = "1";
    for (size_t i = 0; i < depth; i++)
        text = R"({"a":)" + text + "}";
    return text;
}

TEST(Reply, IsWhatItsTextSays) {
    const std::string documents[] = {
        "{}",
        R"({"a":"","b":"x\"\\\/\b\f\n\r\té\u0001"})",
        R"({"a":[],"b":{},"c":[[1],{"d":[]}]})",
        R"({"a":true,"b":false,"c":null,"d":0,"e":-1,"f":2147483648,"g":-9223372036854775808})",
        R"({"a":0.1,"b":1e20,"c":[1,0.5]})",
        R"({"a":{"":"x"}})",
        nested(8),
        nested(9),
        nested(31),
    };
    for (const std::string &text : documents) {
        Message message;
        ASSERT_TRUE(blobmsg_add_json_from_string(&message.buffer, text.c_str()));
        EXPECT_EQ(text_of(bus::reply_document(message.buffer.head).get()), expected(message.buffer.head));
    }
}

TEST(Reply, ThatRepeatsANameKeepsTheLastValue) {
    Message message;
    blobmsg_add_u32(&message.buffer, "a", 1);
    blobmsg_add_u32(&message.buffer, "b", 2);
    blobmsg_add_string(&message.buffer, "a", "last");
    EXPECT_EQ(text_of(bus::reply_document(message.buffer.head).get()), R"({"a":"last","b":2})");
}

TEST(Reply, WithNumbersOfEveryWidthIsSigned) {
    Message message;
    blobmsg_add_u8(&message.buffer, "byte", 200);
    blobmsg_add_u16(&message.buffer, "short", 65535);
    blobmsg_add_u32(&message.buffer, "int", 4294967295U);
    blobmsg_add_u64(&message.buffer, "long", UINT64_MAX);
    EXPECT_EQ(text_of(bus::reply_document(message.buffer.head).get()),
              R"({"byte":true,"short":-1,"int":-1,"long":-1})");
}

TEST(Reply, ThatIsDamagedOrTooDeepIsWhatItsTextSays) {
    Message damaged;
    blobmsg_add_string(&damaged.buffer, "a", "text");
    char *message = static_cast<char *>(static_cast<void *>(damaged.buffer.head));
    memset(message + blob_raw_len(damaged.buffer.head) - 8, 'x',
           8); // the text, its terminator and the padding
    blobmsg_add_u32(&damaged.buffer, "b", 1);
    EXPECT_EQ(text_of(bus::reply_document(damaged.buffer.head).get()), expected(damaged.buffer.head));

    Message deep;
    std::vector<void *> tables;
    for (int i = 0; i < 40; i++)
        tables.push_back(blobmsg_open_table(&deep.buffer, "a"));
    for (; !tables.empty(); tables.pop_back())
        blobmsg_close_table(&deep.buffer, tables.back());
    EXPECT_EQ(bus::reply_document(deep.buffer.head), nullptr);
}

} // namespace
