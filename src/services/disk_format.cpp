// SPDX-License-Identifier: Apache-2.0
#include "services/disk_format.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <memory>
#include <string>

#include "core/bus.h"
#include "core/clock.h"
#include "core/json_path.h"
#include "core/registration.h"
#include "core/text.h"
#include "core/thread.h"
#include "relay/event_client.h"
#include "services/disks.h"
#include "services/members.h"
#include "services/service.h"

namespace {

constexpr size_t LONGEST_PATH = 127;
constexpr char ALLOWED[] = "1";
constexpr char OBJECT[] = "vrop.ecm";
constexpr unsigned LONGEST_SECONDS = 600;

// "formatstate" of the daemon.
enum FormatState { FORMAT_GOOD = 0, FORMAT_AT_WORK = 1, FORMAT_BAD = 2 };

std::atomic<bool> at_work;

void report_outcome(int result) {
    send_event<256>("{\"action\": \"outFormatFeedback\", \"result\": %d}", result);
}

// Where the daemon's work stands. One that does not answer now may do so later.
FormatState format_state() {
    JsonRoot root;
    json_object *storage = get_dev_info(OBJECT, "get", &root);
    if (storage == nullptr) return FORMAT_AT_WORK;
    int32_t state = FORMAT_BAD;
    JsonReadInt(storage, "formatstate", &state);
    return state == FORMAT_GOOD || state == FORMAT_AT_WORK ? static_cast<FormatState>(state) : FORMAT_BAD;
}

// The daemon's call returns at once, since nobody else could ask it anything meanwhile.
bool format_and_wait(const std::string &path) {
    BusMessage message;
    message.text("diskpath", path.c_str());
    if (set_dev_info(OBJECT, "format", message) != 0) return false;
    FormatState state = FORMAT_AT_WORK;
    for (unsigned second = 0; second < LONGEST_SECONDS && state == FORMAT_AT_WORK; second++) {
        pause_seconds(1);
        state = format_state();
    }
    return state == FORMAT_GOOD;
}

void *format_proc(void *argument) {
    const std::unique_ptr<std::string> path(static_cast<std::string *>(argument));
    const bool good = format_and_wait(*path);
    LOG("format disk:%s %s", path->c_str(), good ? "ok" : "fail");
    at_work = false;
    report_outcome(good ? 0 : 1);
    return nullptr;
}

bool is_listed(const std::string &path) {
    const std::vector<Disk> disks = external_disks();
    return std::any_of(disks.begin(), disks.end(), [&](const Disk &disk) { return disk.path == path; });
}

ServiceAnswer format_disk(const ServiceRequest &request) {
    auto path = std::make_unique<std::string>();
    const bool named = take_text(request.json, "diskPath", LONGEST_PATH, path.get()) == Member::good;
    if (strcmp(get_format_flag(), ALLOWED) != 0 || !named || !is_listed(*path)) {
        LOG_AT(request.site, "format disk is refused");
        return answer_failed();
    }
    if (at_work.exchange(true)) return answer_failed("{}", -1, SERVICE_BUSY);
    if (start_detached(format_proc, path.get()) != 0) {
        at_work = false;
        LOG_AT(request.site, "create pthread fail");
        return answer_failed();
    }
    (void)path.release();
    return answer_done();
}

constexpr Service OUTDISK_FORMAT = {.name = "outdiskFormat",
                                    .entry = "outdiskFormat_call ...\n",
                                    .parameters = Parameters::needed,
                                    .answers_bad_parameters = true};

} // namespace

int outdiskFormat_call(uint32_t handle, uint32_t id, void *, void *, const char *parameters) {
    return serve(OUTDISK_FORMAT, {handle, id, parameters}, format_disk);
}
