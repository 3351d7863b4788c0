// SPDX-License-Identifier: Apache-2.0
// Replies become the document that their JSON text says, on whichever way they are turned.
#include <gtest/gtest.h>

#include "core/bus_library.h"
#include "core/bus_reply.h"
#include "support/blob_buffer.h"

namespace {

std::string text_of(const JsonRoot &document) {
    return json_object_to_json_string_ext(document.get(), JSON_C_TO_STRING_PLAIN);
}

std::string nested(size_t depth) {
    std::string text = "1";
    for (size_t i = 0; i < depth; i++)
        text = R"({"a":)" + text + "}";
    return text;
}

// The document as text, after it was compared with what the message's own text says.
std::string document_of(const Buffer &message) {
    const std::string text = take(blobmsg_format_json(message.head, true));
    std::string document = text_of(bus::reply_document(message.head));
    EXPECT_EQ(document, text_of(JsonRoot(json_tokener_parse(text.c_str()))));
    return document;
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
    for (const std::string &text : documents)
        document_of(Buffer(text));
}

TEST(Reply, ThatNoJsonTextGivesIsWhatItsTextSays) {
    Buffer numbers(R"({"byte":1,"name":2})");
    blobmsg_add_u8(&numbers, "byte", 200);
    add_u16(&numbers, "short", 65535);
    blobmsg_add_u32(&numbers, "int", 4294967295U);
    blobmsg_add_u64(&numbers, "long", UINT64_MAX);
    EXPECT_EQ(document_of(numbers), R"({"byte":true,"name":2,"short":-1,"int":-1,"long":-1})");

    Buffer damaged, deep, inner(nested(31));
    blobmsg_add_field(&damaged, BLOBMSG_TYPE_STRING, "a", "not ended", 9);
    blobmsg_add_u32(&damaged, "b", 1);
    EXPECT_EQ(document_of(damaged), "null");
    blobmsg_add_field(&deep, BLOBMSG_TYPE_TABLE, "a", blob_data(inner.head),
                      static_cast<unsigned>(blob_len(inner.head)));
    EXPECT_EQ(document_of(deep), "null");
}

} // namespace
