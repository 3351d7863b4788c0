// SPDX-License-Identifier: Apache-2.0
#include "text.h"

#include <cstdlib>
#include <cstring>

namespace {
constexpr size_t FIRST_CAPACITY = 256;
}

GrowingText::~GrowingText() {
    free(text_);
}

bool GrowingText::reserve(size_t length) {
    if (length_ + length < capacity_) return true;
    size_t capacity = capacity_ ? capacity_ : FIRST_CAPACITY;
    while (capacity <= length_ + length)
        capacity *= 2;
    auto *text = static_cast<char *>(realloc(text_, capacity));
    if (!text) return false;
    text_ = text;
    capacity_ = capacity;
    return true;
}

void GrowingText::append(const char *text, size_t length) {
    if (failed_ || !reserve(length)) {
        failed_ = true;
        return;
    }
    memcpy(text_ + length_, text, length);
    length_ += length;
}

void GrowingText::append(const char *text) {
    append(text, strlen(text));
}

char *GrowingText::release() {
    append('\0');
    if (failed_) return nullptr;
    char *text = text_;
    text_ = nullptr;
    length_ = capacity_ = 0;
    return text;
}
