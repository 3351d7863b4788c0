// SPDX-License-Identifier: Apache-2.0
// A text that grows. Running out of memory empties it for good, which the owner sees at the end.
#pragma once

#include <cstddef>

class GrowingText {
  public:
    GrowingText() = default;
    GrowingText(const GrowingText &) = delete;
    GrowingText &operator=(const GrowingText &) = delete;
    ~GrowingText();

    void append(const char *text, size_t length);
    void append(const char *text);
    void append(char character) { append(&character, 1); }
    // Hands the text over, for free(); null when memory ran out.
    char *release();

  private:
    bool reserve(size_t length);

    char *text_ = nullptr;
    size_t length_ = 0;
    size_t capacity_ = 0;
    bool failed_ = false;
};
