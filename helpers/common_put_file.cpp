// SPDX-License-Identifier: Apache-2.0
// common_put_file FILE: HTTP PUT of the file to the address in /tmp/url.txt.
#include <cerrno>
#include <cstdlib>
#include <sys/stat.h>

#include "core/files.h"
#include "core/program.h"
#include "helper.h"

namespace {

constexpr char USAGE[] = "common_put_file FILE (PUT to the address in /tmp/url.txt)";

bool put_file(const char *path) {
    std::string address;
    if (!read_address(&address)) return false;
    Descriptor opened = open_own_file(path);
    if (!opened && errno == EPERM) return fail("%s is not a file of the agent's", path);
    FileHandle file(opened ? fdopen(opened.get(), "rb") : nullptr);
    struct stat status = {};
    if (!file || fstat(opened.release(), &status) != 0) return fail("cannot read %s", path);
    Transfer transfer;
    if (transfer)
        transfer
            .header("Expect:") // servers that ignore it cost a second
            .take_headers()
            .put(file.get(), status.st_size);
    Answer answer = {.text = {}, .limit = REPLY_LIMIT};
    return exchange(&transfer, address.c_str(), &answer);
}

} // namespace

int main(int argc, char **argv) {
    if (told_about_program(argc, argv, "common_put_file", USAGE)) return EXIT_SUCCESS;
    start_helper("common_put_file");
    if (argc != 2) return wrong_usage(USAGE);
    return put_file(argv[1]) ? EXIT_SUCCESS : EXIT_FAILURE;
}
