// SPDX-License-Identifier: Apache-2.0
// post_file: uploads the newest configuration backup, /tmp/*_*_*.config, to the administration server.
#include <cstdlib>
#include <glob.h>
#include <sys/stat.h>

#include "core/files.h"
#include "core/program.h"
#include "core/text.h"
#include "helper.h"
#include "https/helper_requests.h"

namespace {

constexpr char USAGE[] = "post_file (uploads the newest /tmp/*_*_*.config)";

constexpr char BACKUP_PATTERN[] = "/tmp/*_*_*.config";
constexpr size_t BACKUP_LIMIT = 1024 * 1024; // bytes

struct MimeFree {
    void operator()(curl_mime *parts) const { curl_mime_free(parts); }
};
using Mime = std::unique_ptr<curl_mime, MimeFree>;

bool newer(const timespec &one, const timespec &other) {
    return one.tv_sec != other.tv_sec ? one.tv_sec > other.tv_sec : one.tv_nsec > other.tv_nsec;
}

// The newest of the agent's own; empty when there is none.
std::string newest_backup() {
    glob_t found = {};
    std::string newest;
    timespec newest_time = {};
    if (glob(BACKUP_PATTERN, 0, nullptr, &found) == 0)
        for (size_t i = 0; i < found.gl_pathc; i++) {
            const Descriptor file = open_own_file(found.gl_pathv[i]);
            struct stat status = {};
            if (!file || fstat(file.get(), &status) != 0) continue;
            if (!newest.empty() && !newer(status.st_mtim, newest_time)) continue;
            newest = found.gl_pathv[i];
            newest_time = status.st_mtim;
        }
    globfree(&found);
    return newest;
}

bool add_field(curl_mime *parts, const char *name, const char *value) {
    curl_mimepart *part = curl_mime_addpart(parts);
    return part && curl_mime_name(part, name) == CURLE_OK &&
           curl_mime_data(part, value, CURL_ZERO_TERMINATED) == CURLE_OK;
}

bool add_file(curl_mime *parts, const std::string &path) {
    std::string content;
    if (!read_own_file(path.c_str(), BACKUP_LIMIT + 1, &content) || content.size() > BACKUP_LIMIT)
        return false;
    curl_mimepart *file = curl_mime_addpart(parts);
    return file && curl_mime_name(file, "file") == CURLE_OK &&
           curl_mime_filename(file, path.c_str() + path.rfind('/') + 1) == CURLE_OK &&
           curl_mime_type(file, "application/octet-stream") == CURLE_OK &&
           curl_mime_data(file, content.data(), content.size()) == CURLE_OK;
}

bool add_parts(curl_mime *parts, const std::string &path, const RequestSender &sender) {
    return add_file(parts, path) && add_field(parts, "sn", sender.name) &&
           add_field(parts, "productKey", sender.registration.product_key) &&
           add_field(parts, "timestamp", format_text<24>("%ld", sender.timestamp).text);
}

bool post_backup() {
    const std::string path = newest_backup();
    if (path.empty()) return fail("there is no %s", BACKUP_PATTERN);
    RequestSender sender;
    char sign[64] = {};
    if (sign_request("vrop.devinfo", &sender, sign, sizeof sign) != HEAD_OK) return fail("signing failed");
    const char *address = sender.registration.backup_url;
    if (address[0] == '\0') return fail("the registration record holds no address for backups");

    Transfer transfer;
    if (!transfer) return fail("libcurl cannot be used");
    const Mime parts(curl_mime_init(transfer.get()));
    if (!parts || !add_parts(parts.get(), path, sender)) return fail("cannot read %s", path.c_str());
    transfer.header(format_text<256>("sign: %s", sign).text).take_headers().multipart(parts.get());
    Answer answer = {.text = {}, .limit = REPLY_LIMIT};
    JsonRoot reply;
    return exchange(&transfer, address, &answer) && was_accepted(answer, &reply);
}

} // namespace

int main(int argc, char **argv) {
    if (told_about_program(argc, argv, "post_file", USAGE)) return EXIT_SUCCESS;
    start_helper("post_file");
    if (argc != 1) return wrong_usage(USAGE);
    return post_backup() ? EXIT_SUCCESS : EXIT_FAILURE;
}
