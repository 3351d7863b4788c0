// SPDX-License-Identifier: Apache-2.0
#include "helper.h"

#include <csignal>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>

#include "core/files.h"
#include "core/json_path.h"
#include "core/text.h"

namespace {

constexpr char ADDRESS_FILE[] = "/tmp/url.txt";
constexpr size_t LONGEST_ADDRESS = 1023;

const char *program_name = "";
int messages = STDERR_FILENO; // where the caller reads

void write_message(const char *text) {
    ssize_t written = write(messages, text, strlen(text));
    (void)written; // the exit status tells the same
}

// Only what a signal handler may call.
void end_late(int) {
    write_message(program_name);
    write_message(": timed out\n");
    _exit(EXIT_FAILURE);
}

size_t collect(void *data, size_t size, size_t count, void *destination) {
    auto *answer = static_cast<Answer *>(destination);
    const size_t length = size * count;
    if (length > answer->limit - answer->text.size()) return 0;
    answer->text.append(static_cast<const char *>(data), length);
    return length;
}

} // namespace

void start_helper(const char *name) {
    program_name = name;
    messages = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 3);
    int nowhere = -1;
    do // one that the caller had closed is filled, so that nothing else gets its number
        nowhere = open("/dev/null", O_RDWR);
    while (nowhere >= 0 && nowhere < STDOUT_FILENO);
    if (nowhere < 0) _exit(EXIT_FAILURE);
    dup2(nowhere, STDOUT_FILENO);
    dup2(nowhere, STDERR_FILENO);
    if (nowhere > STDERR_FILENO) close(nowhere);
    signal(SIGPIPE, SIG_IGN);
    signal(SIGALRM, end_late);
    alarm(PROGRAM_SECONDS);
    init_transfers(); // without it, no transfer can be made, and the first one says so
}

bool fail(const char *format, ...) {
    char message[256];
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(message, sizeof message, format, arguments);
    va_end(arguments);
    write_message(format_text<320>("%s: %s\n", program_name, message).text);
    return false;
}

int wrong_usage(const char *text) {
    write_message(format_text<512>("usage: %s\n", text).text);
    return EXIT_WRONG_USAGE;
}

bool exchange(Transfer *transfer, const char *address, Answer *answer) {
    if (!*transfer) return fail("libcurl cannot be used");
    CURLcode result = transfer->url(address)
                          .write_with(collect, answer)
                          .trust()
                          .connect_limit(CONNECT_SECONDS)
                          .whole_limit(TRANSFER_SECONDS)
                          .no_signals()
                          .perform();
    if (const char *why = transfer->distrust(result)) return fail("server not verified: %s", why);
    if (result != CURLE_OK) return fail("transfer failed: %s", curl_easy_strerror(result));
    const long status = transfer->http_status();
    return status / 100 == 2 || fail("the server answered HTTP %ld", status);
}

bool was_accepted(const Answer &answer, JsonRoot *reply) {
    reply->reset(json_tokener_parse(answer.text.c_str()));
    int code = 0;
    if (!JsonReadInt(reply->get(), "code", &code))
        return fail("the server's reply holds no number as \"code\"");
    return code == 0 || fail("the server refused the request with code %d", code);
}

bool read_address(std::string *address) {
    if (!read_own_file(ADDRESS_FILE, LONGEST_ADDRESS + 1, address))
        return fail("cannot read %s", ADDRESS_FILE);
    if (address->size() > LONGEST_ADDRESS) return fail("the address in %s is too long", ADDRESS_FILE);
    util_strip_blank_of_string_end(address->data());
    address->resize(strlen(address->c_str()));
    return !address->empty() || fail("%s holds no address", ADDRESS_FILE);
}
