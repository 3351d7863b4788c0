// SPDX-License-Identifier: Apache-2.0
// Messages come from outside and may nest a hundred thousand deep, so open containers are kept in a list of
// our own and not on the caller's stack.
#include <cinttypes>
#include <cstdio>
#include <vector>

extern "C" {
#include <libubox/blobmsg_json.h>
}

#include "text.h"

namespace {
constexpr int MAX_TABS = 16;
constexpr size_t DOUBLE_TEXT = 317; // the longest text that is written, with its NUL

// An open container: what is left of its content.
struct Level {
    const blob_attr *next;
    size_t rem;
    bool array;
    bool first;
};

class Formatter {
  public:
    explicit Formatter(int tabs) : indent(tabs) {}

    void content(const blob_attr *attr) {
        open(attr, blob_is_extended(attr) && blobmsg_type(attr) == BLOBMSG_TYPE_ARRAY);
        finish();
    }
    void attribute(const blob_attr *attr, bool named) {
        element(attr, blob_pad_len(attr), named);
        finish();
    }
    char *release() { return text.release(); }

  private:
    void open(const blob_attr *container, bool array);
    void close();
    void finish();
    void separator();
    void element(const blob_attr *attr, size_t rem, bool named);
    void value(const blob_attr *attr);
    void string(const char *string);
    void integer(int64_t number);
    void real(double number);

    GrowingText text;
    std::vector<Level> levels;
    int indent;
};

void Formatter::separator() {
    if (indent < 0) return;
    text.append('\n');
    for (int tab = 0; tab < indent && tab < MAX_TABS; tab++)
        text.append('\t');
}

// Of a container from anybody: nothing has checked a root's own header before.
bool header_fits(const blob_attr *container) {
    if (!blob_is_extended(container)) return true;
    return blob_len(container) >= sizeof(blobmsg_hdr) &&
           blobmsg_hdrlen(blob_get_u16(container)) <= blob_len(container);
}

void Formatter::open(const blob_attr *container, bool array) {
    const bool fits = header_fits(container);
    const void *start = fits ? blobmsg_data(container) : blob_data(container);
    levels.push_back(
        {static_cast<const blob_attr *>(start), fits ? blobmsg_data_len(container) : 0, array, true});
    text.append(array ? '[' : '{');
    if (indent >= 0) indent++;
    separator();
}

void Formatter::close() {
    if (indent >= 0) indent--;
    separator();
    text.append(levels.back().array ? ']' : '}');
    levels.pop_back();
}

// Writes what is left of the open containers.
void Formatter::finish() {
    while (!levels.empty()) {
        Level &level = levels.back();
        const blob_attr *attr = level.next;
        bool fits = level.rem >= sizeof(blob_attr) && blob_pad_len(attr) <= level.rem &&
                    blob_pad_len(attr) >= sizeof(blob_attr);
        if (!fits) {
            close();
            continue;
        }
        if (!level.first) {
            text.append(',');
            separator();
        }
        size_t rem = level.rem;
        level.first = false;
        level.next = blob_next(attr);
        level.rem -= blob_pad_len(attr);
        element(attr, rem, !level.array);
    }
}

void Formatter::element(const blob_attr *attr, size_t rem, bool named) {
    if (!blobmsg_check_attr_len(attr, false, rem)) return;
    if (named && blobmsg_name(attr)[0] != '\0') {
        string(blobmsg_name(attr));
        text.append(indent < 0 ? ":" : ": ");
    }
    value(attr);
}

void Formatter::value(const blob_attr *attr) {
    auto *checked = const_cast<blob_attr *>(attr);
    switch (blobmsg_type(attr)) {
    case BLOBMSG_TYPE_ARRAY:
        return open(attr, true);
    case BLOBMSG_TYPE_TABLE:
        return open(attr, false);
    case BLOBMSG_TYPE_STRING:
        return string(blobmsg_get_string(checked));
    case BLOBMSG_TYPE_INT8:
        return text.append(blobmsg_get_bool(checked) ? "true" : "false");
    case BLOBMSG_TYPE_INT16:
    case BLOBMSG_TYPE_INT32:
    case BLOBMSG_TYPE_INT64:
        return integer(blobmsg_cast_s64(checked));
    case BLOBMSG_TYPE_DOUBLE:
        return real(blobmsg_get_double(checked));
    default:
        return text.append("null");
    }
}

void Formatter::integer(int64_t number) {
    char digits[24];
    snprintf(digits, sizeof(digits), "%" PRId64, number);
    text.append(digits);
}

void Formatter::real(double number) {
    char digits[DOUBLE_TEXT];
    snprintf(digits, sizeof(digits), "%f", number);
    text.append(digits);
}

// The letter of a short escape, or NUL.
char short_escape(char character) {
    switch (character) {
    case '\b':
        return 'b';
    case '\n':
        return 'n';
    case '\t':
        return 't';
    case '\r':
        return 'r';
    case '"':
    case '\\':
        return character;
    default:
        return '\0';
    }
}

void Formatter::string(const char *string) {
    text.append('"');
    const char *plain = string;
    for (const char *at = string; *at; at++) {
        char letter = short_escape(*at);
        bool control = static_cast<unsigned char>(*at) < ' ';
        if (!letter && !control) continue;
        text.append(plain, static_cast<size_t>(at - plain));
        plain = at + 1;
        char escape[8];
        if (letter)
            snprintf(escape, sizeof(escape), "\\%c", letter);
        else
            snprintf(escape, sizeof(escape), "\\u%04x", static_cast<unsigned>(*at));
        text.append(escape);
    }
    text.append(plain);
    text.append('"');
}
} // namespace

char *blobmsg_format_json_indent(blob_attr *attr, bool list, int indent) {
    Formatter formatter(indent);
    if (list)
        formatter.content(attr);
    else
        formatter.attribute(attr, true);
    return formatter.release();
}
