// SPDX-License-Identifier: Apache-2.0
#include <cmath>
#include <gtest/gtest.h>
#include <limits>

extern "C" {
#include <libubox/blobmsg_json.h>
}

#include "bytes.h"

namespace {

struct Buffer : blob_buf {
    Buffer() : blob_buf{} { blob_buf_init(this, 0); }
    ~Buffer() { blob_buf_free(this); }
    Buffer(const Buffer &) = delete;
    Buffer &operator=(const Buffer &) = delete;
};

std::string take(char *text) {
    std::string copy = text ? text : "(null)";
    free(text);
    return copy;
}

TEST(BlobmsgJson, TextBecomesAMessageAndTextAgain) {
    struct Row {
        const char *in, *out; // null: refused, nothing added
    };
    const Row rows[] = {
        {R"({"a":1,"b":[1,"x"]})", R"({"a":1,"b":[1,"x"]})"},
        {"{}", "{}"},
        {R"({"t":true,"f":false,"n":null,"o":{},"l":[]})", R"({"t":true,"f":false,"n":null,"o":{},"l":[]})"},
        {R"({"min":-2147483648,"below":-2147483649,"max":2147483647,"above":2147483648})",
         R"({"min":-2147483648,"below":-2147483649,"max":2147483647,"above":2147483648})"},
        {R"({"a":99999999999999999999,"b":-99999999999999999999})",
         R"({"a":9223372036854775807,"b":-9223372036854775808})"},
        {R"({"d":1.0,"e":1e2,"f":0.1})", R"({"d":1.000000,"e":100.000000,"f":0.100000})"},
        {R"({"a":1,"b":2,"a":3})", R"({"a":3,"b":2})"},
        {R"({"s":"cut\u0000here"})", R"({"s":"cut"})"},
        {R"({"s":"\b\n\t\r\"\\\f\u001f/\u007f\u00e9"})",
         "{\"s\":\"\\b\\n\\t\\r\\\"\\\\\\u000c\\u001f/\x7f\xc3\xa9\"}"},
        {R"({"na\"me":1})", R"({"na\"me":1})"},
        {" {'a':1,} trailing", R"({"a":1})"},
        {"[1]", nullptr},
        {"1", nullptr},
        {"null", nullptr},
        {"\"x\"", nullptr},
        {"", nullptr},
        {"{\"a\":", nullptr},
        {"{a:1}", nullptr},
    };
    for (const Row &row : rows) {
        Buffer buffer;
        EXPECT_EQ(blobmsg_add_json_from_string(&buffer, row.in), row.out != nullptr) << row.in;
        EXPECT_EQ(take(blobmsg_format_json(buffer.head, true)), row.out ? row.out : "{}") << row.in;
    }
}

TEST(BlobmsgJson, WritesEachValueAsTheOriginalDoes) {
    constexpr double infinite = std::numeric_limits<double>::infinity();
    Buffer buffer;
    blobmsg_add_u8(&buffer, "u8", 200);
    blobmsg_add_u16(&buffer, "u16", 0xffff);
    blobmsg_add_u32(&buffer, "u32", 4294967295U);
    blobmsg_add_u64(&buffer, "u64", UINT64_MAX);
    blobmsg_add_double(&buffer, "big", 1e16);
    blobmsg_add_double(&buffer, "zero", -0.0);
    blobmsg_add_double(&buffer, "nan", std::nan(""));
    blobmsg_add_double(&buffer, "inf", -infinite);
    blobmsg_add_u32(&buffer, "", 1);
    EXPECT_EQ(take(blobmsg_format_json(buffer.head, true)),
              R"({"u8":true,"u16":-1,"u32":-1,"u64":-1,"big":10000000000000000.000000,"zero":-0.000000,)"
              R"("nan":nan,"inf":-inf,1})");

    blob_buf_init(&buffer, 0);
    blobmsg_add_double(&buffer, nullptr, -std::numeric_limits<double>::max());
    auto *longest = static_cast<blob_attr *>(blob_data(buffer.head));
    EXPECT_EQ(take(blobmsg_format_json_value(longest)).size(), 316U);
}

TEST(BlobmsgJson, FormatsInEveryShape) {
    Buffer buffer;
    ASSERT_TRUE(blobmsg_add_json_from_string(&buffer, R"({"list":[1,{}],"empty":[]})"));
    auto *list = static_cast<blob_attr *>(blob_data(buffer.head));
    EXPECT_EQ(take(blobmsg_format_json_indent(buffer.head, true, 0)),
              "{\n\t\"list\": [\n\t\t1,\n\t\t{\n\t\t\t\n\t\t}\n\t],\n\t\"empty\": [\n\t\t\n\t]\n}");
    EXPECT_EQ(take(blobmsg_format_json(list, true)), "[1,{}]");
    EXPECT_EQ(take(blobmsg_format_json(list, false)), R"("list":[1,{}])");
    EXPECT_EQ(take(blobmsg_format_json_value(list)), "[1,{}]");
    EXPECT_EQ(take(blobmsg_format_json(buffer.head, false)), "null");
    auto shout = [](void *, blob_attr *attr) {
        return blobmsg_type(attr) == BLOBMSG_TYPE_INT32 ? "ONE" : nullptr;
    };
    EXPECT_EQ(take(blobmsg_format_json_with_cb(buffer.head, true, shout, nullptr, -1)),
              R"({"list":[ONE,{}],"empty":[]})");
}

TEST(BlobmsgJson, LeavesOutWhatIsInvalid) {
    std::string bytes =
        from_hex("00000028 8500000c 00016100 00000001 8500000b 00017800 00000000 8500000c 00016200 00000002");
    EXPECT_EQ(take(blobmsg_format_json(reinterpret_cast<blob_attr *>(bytes.data()), true)),
              R"({"a":1,,"b":2})");
}

// As deep as a message of the largest size can nest; a formatter that calls itself would run off a small
// stack.
TEST(BlobmsgJson, FormatsTheDeepestMessage) {
    constexpr uint32_t DEPTH = 131000;
    Buffer buffer;
    ASSERT_NE(blob_new(&buffer, 0, DEPTH * 8), nullptr);
    auto *content = static_cast<blob_attr *>(blob_data(static_cast<blob_attr *>(blob_data(buffer.head))));
    for (uint32_t i = 0; i < DEPTH; i++) {
        blob_attr *array = reinterpret_cast<blob_attr *>(reinterpret_cast<char *>(content) + i * 8);
        array->id_len = cpu_to_be32(0x81000000U | ((DEPTH - i) * 8));
        memset(array->data, 0, 4);
    }
    std::string text = take(blobmsg_format_json(static_cast<blob_attr *>(blob_data(buffer.head)), true));
    EXPECT_EQ(text, "{" + std::string(DEPTH, '[') + std::string(DEPTH, ']') + "}");
}

} // namespace
