// SPDX-License-Identifier: Apache-2.0
#include "support/main_log.h"

#include <algorithm>
#include <cstdio>
#include <unistd.h>

#include "core/log.h"
#include "support/text_file.h"
#include "support/wait_until.h"

void set_default_logs() {
    set_log_filepath(MAIN_LOG);
    set_upgrade_log_filepath(UPGRADE_LOG);
}

std::string main_log() {
    return text_of(MAIN_LOG);
}

std::string upgrade_log() {
    return text_of(UPGRADE_LOG);
}

// A line without its "[time][function][line]", if it begins with one.
static std::string message_of(const std::string &line) {
    int end = 0;
    sscanf(line.c_str(), "[%*4d-%*2d-%*2d %*2d:%*2d:%*2d][%*[A-Za-z0-9_]][%*d]%n", &end);
    return line.substr(static_cast<size_t>(end));
}

std::vector<std::string> log_messages(const std::string &log) {
    std::vector<std::string> messages;
    std::istringstream lines(log);
    for (std::string line; std::getline(lines, line);)
        messages.push_back(message_of(line));
    return messages;
}

bool has_logged(const std::string &message) {
    std::vector<std::string> messages = log_messages();
    return std::find(messages.begin(), messages.end(), message) != messages.end();
}

bool wait_for_log(const std::string &message, std::chrono::milliseconds limit) {
    return wait_until([&] { return has_logged(message); }, limit);
}

void clear_main_log() {
    unlink(MAIN_LOG);
}
