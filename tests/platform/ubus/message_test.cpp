// SPDX-License-Identifier: Apache-2.0
// Building, reading and checking of attributes. What comes from outside is checked on copies of exact size,
// so that the address sanitizer sees a read past the end.
#include <vector>

#include "captured.h"

namespace {

std::string bytes_of(const Buffer &buffer) {
    return {reinterpret_cast<char *>(buffer.head), blob_pad_len(buffer.head)};
}

// The start of a heap copy without a byte to spare.
struct Exact : std::vector<char> {
    explicit Exact(const std::string &bytes) : std::vector<char>(bytes.begin(), bytes.end()) {}
    blob_attr *attr() { return reinterpret_cast<blob_attr *>(data()); }
};

TEST(Blob, BuildsTheCapturedMessageWithEachAdder) {
    Buffer buffer;
    blob_put_u32(&buffer, 3, captured::OBJECT_ID);
    blob_put_string(&buffer, 4, "echo");
    void *data = blob_nest_start(&buffer, 7);
    blobmsg_add_string(&buffer, "text", "hi");
    blobmsg_add_u8(&buffer, "on", 1);
    add_u16(&buffer, "w", 513);
    blobmsg_add_u32(&buffer, "count", static_cast<uint32_t>(-3));
    blobmsg_add_u64(&buffer, "big", 5000000000U);
    blobmsg_add_double(&buffer, "d", 1.5);
    void *table = blobmsg_open_table(&buffer, "tbl");
    void *array = blobmsg_open_array(&buffer, "arr");
    blobmsg_add_string(&buffer, nullptr, "a");
    blobmsg_add_u32(&buffer, nullptr, 7);
    blobmsg_close_array(&buffer, array);
    blobmsg_close_table(&buffer, table);
    blob_nest_end(&buffer, data);
    EXPECT_EQ(bytes_of(buffer), captured::INVOKE_ECHO.substr(8));
}

TEST(Blob, RefusesWhatTheFormatCannotHold) {
    Buffer buffer;
    std::vector<char> much(0xff0000);
    EXPECT_EQ(blobmsg_add_field(&buffer, BLOBMSG_TYPE_UNSPEC, "much", much.data(), 0xff0000), 0);
    std::string before = bytes_of(buffer);
    EXPECT_EQ(blobmsg_add_field(&buffer, BLOBMSG_TYPE_UNSPEC, "more", much.data(), 0x10000), -1);
    EXPECT_EQ(blob_new(&buffer, 1, -1), nullptr);
    EXPECT_EQ(blobmsg_open_table(&buffer, std::string(0x10000, 'n').c_str()), nullptr);
    EXPECT_FALSE(blobmsg_add_json_from_string(
        &buffer, (R"({"a":{"b":[")" + std::string(0xffff, 'x') + "\"]}}").c_str()));
    EXPECT_TRUE(bytes_of(buffer) == before);
}

TEST(Blob, ChecksOneAttribute) {
    const struct {
        const char *what;
        std::string bytes;
        bool valid, valid_named;
    } rows[] = {
        {"int32", "8500000c 00016100 00000007"_hex, true, true},
        {"int32 of 3 bytes", "8500000b 00016100 00000007"_hex, false, false},
        {"int16", "8600000a 00016100 00010000"_hex, true, true},
        {"int64 of 4 bytes", "8400000c 00016100 00000007"_hex, false, false},
        {"double of 4 bytes", "8800000c 00016100 00000007"_hex, false, false},
        {"string", "8300000a 00016100 61000000"_hex, true, true},
        {"string without its NUL", "83000009 00016100 61000000"_hex, false, false},
        {"string of no bytes", "83000008 00016100"_hex, false, false},
        {"type 9", "89000008 00016100"_hex, false, false},
        {"empty name", "80000008 00000000"_hex, true, false},
        {"name not ended", "80000008 00016161"_hex, false, false},
        {"name longer than the attribute", "80000008 00ff6100"_hex, false, false},
        {"name header of 2 bytes", "80000006 00000000"_hex, false, false},
        {"length below the word", "80000003"_hex, false, false},
    };
    for (const auto &row : rows) {
        Exact copy(row.bytes);
        EXPECT_EQ(blobmsg_check_attr_len(copy.attr(), false, copy.size()), row.valid) << row.what;
        EXPECT_EQ(blobmsg_check_attr_len(copy.attr(), true, copy.size()), row.valid_named) << row.what;
        for (size_t size = 0; row.valid && size < blob_raw_len(copy.attr()); size++) {
            Exact cut(row.bytes.substr(0, size));
            EXPECT_FALSE(blobmsg_check_attr_len(cut.attr(), false, size)) << row.what << " cut to " << size;
        }
    }
}

// Any bytes: nothing is read outside them and every function comes back.
TEST(Blob, SurvivesAnyBytes) {
    std::mt19937 random(20240607);
    const std::string seed = captured::ECHO_DATA.substr(8);
    for (int round = 0; round < 20000; round++) {
        Exact copy(damaged(seed.substr(0, (random() % (seed.size() / 4) + 1) * 4), random));
        blob_attr *attr;
        size_t rem;
        __blob_for_each(attr, copy.data(), copy.size(), rem) {
            take(blobmsg_format_json(attr, false));
            if (!blobmsg_check_attr_len(attr, false, rem)) continue;
            take(blobmsg_format_json_indent(attr, true, 0));
        }
    }
}

TEST(BlobmsgJson, TextBecomesAMessageAndTextAgain) {
    struct Row {
        const char *in, *out; // null: refused, nothing added
    };
    const char UNCHANGED[] = R"({"t":true,"f":false,"n":null,"o":{},"l":[],"min":-2147483648,)"
                             R"("below":-2147483649,"max":2147483647,"above":2147483648})";
    const Row rows[] = {
        {UNCHANGED, UNCHANGED},
        {R"({"a":99999999999999999999,"b":-99999999999999999999})",
         R"({"a":9223372036854775807,"b":-9223372036854775808})"},
        {R"({"d":1.0,"e":1e2,"f":0.1})", R"({"d":1.000000,"e":100.000000,"f":0.100000})"},
        {R"({"a":1,"b":2,"a":3})", R"({"a":3,"b":2})"},
        {R"({"s":"cut\u0000here"})", R"({"s":"cut"})"},
        {R"({"s":"\b\n\t\r\"\\\f\u001f/\u007f\u00e9"})",
         "{\"s\":\"\\b\\n\\t\\r\\\"\\\\\\u000c\\u001f/\x7f\xc3\xa9\"}"},
        {" {'a':1,} trailing", R"({"a":1})"},
        {"[1]", nullptr},
        {"", nullptr},
        {"{\"a\":", nullptr},
        {"{a:1}", nullptr},
    };
    for (const auto &row : rows) {
        Buffer buffer;
        EXPECT_EQ(blobmsg_add_json_from_string(&buffer, row.in), row.out != nullptr) << row.in;
        EXPECT_EQ(take(blobmsg_format_json(buffer.head, true)), row.out ? row.out : "{}") << row.in;
    }
}

// As deep as a message of the largest size can nest; a formatter that calls itself would run off a small
// stack.
TEST(BlobmsgJson, FormatsTheDeepestMessage) {
    constexpr uint32_t DEPTH = 131000;
    std::vector<uint32_t> words{htobe32(DEPTH * 8 + 4)};
    for (uint32_t left = DEPTH; left > 0; left--)
        words.insert(words.end(), {htobe32(0x81000000U | (left * 8)), 0});
    EXPECT_EQ(take(blobmsg_format_json(reinterpret_cast<blob_attr *>(words.data()), true)),
              "{" + std::string(DEPTH, '[') + std::string(DEPTH, ']') + "}");
}

} // namespace
