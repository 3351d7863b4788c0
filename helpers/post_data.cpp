// SPDX-License-Identifier: Apache-2.0
// post_data MODE: the signed requests that the agent leaves to a process of their own.
#include <cstdlib>
#include <cstring>

#include "core/files.h"
#include "core/json_path.h"
#include "core/program.h"
#include "core/text.h"
#include "devices/runtime_report.h"
#include "helper.h"
#include "https/helper_program.h"
#include "https/helper_requests.h"
#include "upgrade/upgrade_report.h"

namespace {

constexpr char USAGE[] = "post_data MODE (0: report client runtimes, 1: fetch time-control settings, "
                         "2: fetch the address in /tmp/url.txt, 3: report an upgrade)";

constexpr char SETTINGS_FILE[] = "/aptmp/time_settings.json";
constexpr char CONFIGURATION_FILE[] = "/tmp/backup.config";
constexpr size_t CONFIGURATION_LIMIT = 1024 * 1024; // bytes
constexpr mode_t PRIVATE_MODE = 0600;

using HeadBuilder = int (*)(char *body, char *sign, char *url, int body_size, int sign_size, int url_size);

bool keep(const char *path, const std::string &content) {
    return replace_file(path, content, PRIVATE_MODE) || fail("cannot write %s", path);
}

bool post_head(HeadBuilder build, JsonRoot *reply) {
    static char body[32 * 1024];
    char sign[64] = {};
    char url[128] = {};
    int result = build(body, sign, url, sizeof body, sizeof sign, sizeof url);
    if (result != HEAD_OK) return fail("the request cannot be built: %d", result);
    if (url[0] == '\0') return fail("the registration record holds no address for this request");
    Transfer transfer;
    if (transfer)
        transfer.header("Content-Type: application/json")
            .header(format_text<256>("sign: %s", sign).text)
            .take_headers()
            .post(body, strlen(body));
    Answer answer = {.text = {}, .limit = REPLY_LIMIT};
    return exchange(&transfer, url, &answer) && was_accepted(answer, reply);
}

bool report_runtimes() {
    JsonRoot reply;
    return post_head(post_runtime_head, &reply);
}

// A reply without "data" has nothing new to say: the settings stay.
bool fetch_settings() {
    JsonRoot reply;
    json_object *data = nullptr;
    if (!post_head(post_timecontrol_head, &reply)) return false;
    if (!JsonGetObj(reply.get(), "data", &data)) return true;
    return keep(SETTINGS_FILE, JsonPlainText(data));
}

bool fetch_configuration() {
    std::string address;
    if (!read_address(&address)) return false;
    Transfer transfer;
    Answer answer = {.text = {}, .limit = CONFIGURATION_LIMIT};
    if (!exchange(&transfer, address.c_str(), &answer)) return false;
    if (answer.text.empty()) return fail("the server sent an empty configuration");
    return keep(CONFIGURATION_FILE, answer.text);
}

bool report_upgrade() {
    JsonRoot reply;
    return post_head(post_upgradeprogress_head, &reply);
}

struct Mode {
    PostDataMode mode;
    bool (*run)();
};
constexpr Mode MODES[] = {
    {PostDataMode::runtime_report, report_runtimes},
    {PostDataMode::time_settings, fetch_settings},
    {PostDataMode::configuration, fetch_configuration},
    {PostDataMode::upgrade_progress, report_upgrade},
};

const Mode *find_mode(const char *text) {
    for (const Mode &mode : MODES)
        if (text[0] == '0' + static_cast<int>(mode.mode) && text[1] == '\0') return &mode;
    return nullptr;
}

} // namespace

int main(int argc, char **argv) {
    if (told_about_program(argc, argv, "post_data", USAGE)) return EXIT_SUCCESS;
    start_helper("post_data");
    const Mode *mode = argc == 2 ? find_mode(argv[1]) : nullptr;
    if (!mode) return wrong_usage(USAGE);
    return mode->run() ? EXIT_SUCCESS : EXIT_FAILURE;
}
