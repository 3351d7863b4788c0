// SPDX-License-Identifier: Apache-2.0
#include "services/remote_capture.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <memory>
#include <net/if.h>
#include <string>
#include <unistd.h>
#include <utility>

#include "core/clock.h"
#include "core/files.h"
#include "core/json_path.h"
#include "core/process.h"
#include "core/text.h"
#include "core/thread.h"
#include "relay/relay.h"
#include "services/capture.h"
#include "services/members.h"
#include "services/packet_file.h"
#include "services/service.h"

namespace {

constexpr char DRAFT_FILE[] = "/aptmp/qvtk_capture.draft";
constexpr size_t CAPTURE_MAX = 8 * 1024 * 1024;
constexpr size_t LONGEST_INTERFACE = 15, LONGEST_FILTER = 255, LONGEST_UPLOAD_URL = 511;
constexpr int64_t LONGEST_TIME = 300; // seconds
constexpr unsigned LOOK_MILLIS = 100; // between two looks at what has come
constexpr unsigned END_LOOKS = 30;    // for tcpdump to end by itself
constexpr int CHECK_MILLIS = 10000;   // for tcpdump to look up the names in a filter
constexpr int FAIL_MILLIS = 500;      // within which tcpdump ends that may not capture

std::atomic<bool> at_work;

struct Capture {
    int64_t seconds = 0;
    std::string interface, filter, upload_url, url;
    std::unique_ptr<Process> tcpdump;
};

bool read_capture(json_object *request, Capture *capture) {
    const Member filter = take_text(request, "filter", LONGEST_FILTER, &capture->filter);
    return take_integer(request, "time", 1, LONGEST_TIME, &capture->seconds) == Member::good &&
           take_text(request, "interface", LONGEST_INTERFACE, &capture->interface) == Member::good &&
           take_text(request, "uploadUrl", LONGEST_UPLOAD_URL, &capture->upload_url) == Member::good &&
           take_text(request, "url", CAPTURE_ADDRESS_MAX, &capture->url) == Member::good &&
           JsonQuote(capture->url.c_str()).size() <= CAPTURE_ADDRESS_MAX && filter != Member::bad;
}

// The filter stands behind "--", so that none of it is an option.
Arguments tcpdump_arguments(const Capture &capture, const Arguments &options) {
    Arguments arguments = {"tcpdump", "-n", "-i", capture.interface};
    arguments.insert(arguments.end(), options.begin(), options.end());
    if (!capture.filter.empty()) arguments.insert(arguments.end(), {"--", capture.filter});
    return arguments;
}

// Asks tcpdump itself whether the filter is one. Its words go to the log.
bool check_filter(const Capture &capture, LogSite site) {
    Process check(tcpdump_arguments(capture, {"-d"}), Process::Piped::error);
    if (!check) {
        LOG_AT(site, "tcpdump cannot be run: %s",
               check.error() == ENOENT ? "install the package tcpdump" : "fail");
        return false;
    }
    constexpr size_t WORDS = 256;
    std::string words;
    if (check.read_all(WORDS, CHECK_MILLIS, &words) == 0) return true;
    util_strip_blank_of_string_end(words.data());
    LOG_AT(site, "tcpdump refuses: %s", words.c_str());
    return false;
}

// What the file holds so far. Of one thread.
struct CaptureFile {
    Descriptor file;
    PacketLength length;
    size_t size = 0;
    bool is_full = false; // something is missing from here on
};

// Takes over what tcpdump has written since. False when there is no more room, or it has closed its end.
bool take_packets(int from, CaptureFile *to) {
    uint8_t piece[16 * 1024];
    while (!to->is_full) {
        const ssize_t got = read(from, piece, sizeof piece);
        if (got < 0) return errno == EAGAIN || errno == EINTR;
        const auto count = static_cast<size_t>(got);
        if (count == 0) return false;
        to->is_full = to->size + count > CAPTURE_MAX ||
                      !write_all(to->file.get(), reinterpret_cast<char *>(piece), count);
        if (to->is_full) break;
        to->length.take(piece, count);
        to->size += count;
    }
    return false;
}

void capture_for_its_time(const Capture &capture, CaptureFile *file) {
    const time_t start = monotonic_seconds();
    while (take_packets(capture.tcpdump->output(), file) && monotonic_seconds() - start < capture.seconds)
        pause_millis(LOOK_MILLIS);
    capture.tcpdump->signal(SIGINT); // it writes what it still holds, and ends
    for (unsigned look = 0; look < END_LOOKS && !capture.tcpdump->has_ended(); look++) {
        take_packets(capture.tcpdump->output(), file);
        pause_millis(LOOK_MILLIS);
    }
    take_packets(capture.tcpdump->output(), file);
}

// The file appears under its name when it is whole.
void *capture_proc(void *argument) {
    const std::unique_ptr<Capture> capture(static_cast<Capture *>(argument));
    CaptureFile file = {.file = create_private_file(DRAFT_FILE), .length = {}, .size = 0};
    if (file.file) capture_for_its_time(*capture, &file);
    const bool whole = file.file && file.length.whole() > 0 &&
                       ftruncate(file.file.get(), static_cast<off_t>(file.length.whole())) == 0;
    set_cap_config(0, CAPTURE_FILE, capture->url.c_str(), capture->upload_url.c_str());
    if (!whole || rename(DRAFT_FILE, CAPTURE_FILE) != 0) unlink(DRAFT_FILE);
    LOG("capture ended, bytes:%zu", whole ? file.length.whole() : 0);
    at_work = false;
    return nullptr;
}

// True when the capture runs, and is its thread's.
bool start_capture(std::unique_ptr<Capture> capture, LogSite site) {
    if (!check_filter(*capture, site)) return false;
    unlink(CAPTURE_FILE); // of an agent that was ended before it could send it
    capture->tcpdump = std::make_unique<Process>(tcpdump_arguments(*capture, {"-U", "-w", "-"}));
    if (!*capture->tcpdump || capture->tcpdump->closes_within(FAIL_MILLIS)) {
        LOG_AT(site, "tcpdump ended at once");
        return false;
    }
    if (start_detached(capture_proc, capture.get()) != 0) {
        LOG_AT(site, "create pthread fail");
        return false;
    }
    (void)capture.release();
    return true;
}

ServiceAnswer capture_packets(const ServiceRequest &request) {
    auto capture = std::make_unique<Capture>();
    if (!read_capture(request.json, capture.get()) || if_nametoindex(capture->interface.c_str()) == 0) {
        LOG_AT(request.site, "capture is refused");
        return answer_failed();
    }
    if (at_work.exchange(true)) return answer_failed("{}", -1, SERVICE_BUSY);
    const bool pending = capture_is_pending();
    if (!pending && start_capture(std::move(capture), request.site)) return answer_done();
    at_work = false;
    return pending ? answer_failed("{}", -1, SERVICE_BUSY) : answer_failed();
}

constexpr Service REMOTE_CAP = {.name = "remoteCap",
                                .entry = "remotecap_call ...\n",
                                .parameters = Parameters::needed,
                                .answers_bad_parameters = true};

} // namespace

int remotecap_call(uint32_t handle, uint32_t id, void *, void *, const char *parameters) {
    return serve(REMOTE_CAP, {handle, id, parameters}, capture_packets);
}
