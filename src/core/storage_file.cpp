// SPDX-License-Identifier: Apache-2.0
#include "core/storage_file.h"

#include <cerrno>
#include <unistd.h>

#include "core/files.h"
#include "core/log.h"
#include "core/text.h"

static constexpr mode_t STORAGE_MODE = 0644; // other programs read it
static constexpr char STORAGE_DEFAULTS[] =
    "inmemoryop=0\noutmemoryop=0\nsamba=0\nhcdn_enable=1\nhcdn_open=0\nisusb=1";

namespace {

constexpr size_t STORAGE_MAX = 64 * 1024;

// Where the value of "KEY=" begins, in a line of its own; npos when no line has it.
size_t value_of(const std::string &text, const char *key) {
    const std::string label = std::string(key) + "=";
    for (size_t at = 0; at < text.size(); at = text.find('\n', at) + 1) {
        if (text.compare(at, label.size(), label) == 0) return at + label.size();
        if (text.find('\n', at) == std::string::npos) break;
    }
    return std::string::npos;
}

} // namespace

int ecm_init() {
    if (access(STORAGE_FILE, F_OK) == 0) {
        LOG("file:%s is exist", STORAGE_FILE);
        LOG("file:%s is exist\n", STORAGE_FILE);
        return 0;
    }
    if (!replace_storage(STORAGE_DEFAULTS)) {
        LOG("open file:%s fail", STORAGE_FILE);
        return -1;
    }
    LOG("end");
    return 0;
}

bool read_storage(std::string *text) {
    text->clear();
    if (!read_file(STORAGE_FILE, STORAGE_MAX + 1, text)) return errno == ENOENT;
    return text->size() <= STORAGE_MAX;
}

int storage_number(const std::string &text, const char *key, int otherwise) {
    const size_t at = value_of(text, key);
    if (at == std::string::npos) return otherwise;
    return leading_integer(text.substr(at, text.find('\n', at) - at).c_str(), otherwise);
}

std::string with_storage_number(const std::string &text, const char *key, int number) {
    const size_t at = value_of(text, key);
    const std::string value = std::to_string(number);
    if (at == std::string::npos) {
        const bool line_open = !text.empty() && text.back() != '\n';
        return text + (line_open ? "\n" : "") + key + "=" + value;
    }
    const size_t end = text.find('\n', at);
    return text.substr(0, at) + value + (end == std::string::npos ? "" : text.substr(end));
}

bool replace_storage(const std::string &text) {
    return replace_file(STORAGE_FILE, text, STORAGE_MODE);
}
