// SPDX-License-Identifier: Apache-2.0
#include "https/firmware_rig.h"

#include <csignal>
#include <filesystem>
#include <sys/resource.h>

#include <openssl/evp.h>

namespace {

using cloudsim::Fault;
namespace fs = std::filesystem;

constexpr size_t IMAGE_SIZE = 300 * 1024;
constexpr rlim_t SMALL_DISK = 64 * 1024;
constexpr long SHORT_LIMIT = 300; // milliseconds, for a server that says nothing

std::string image() {
    std::string bytes = "version=V2.0.0\n";
    while (bytes.size() < IMAGE_SIZE)
        bytes += static_cast<char>(bytes.size() * 31 + bytes.size() / 251);
    return bytes;
}

void limit_files(rlim_t bytes) {
    signal(SIGXFSZ, SIG_IGN);
    rlimit limit = {};
    getrlimit(RLIMIT_FSIZE, &limit);
    limit.rlim_cur = bytes;
    setrlimit(RLIMIT_FSIZE, &limit);
}

Fault download_fault(int count) {
    Fault fault;
    fault.endpoint = "firmware";
    fault.count = count;
    return fault;
}

template <size_t BYTES>
void cut_after(FirmwareRig &rig) {
    Fault fault = download_fault(0);
    fault.cut = BYTES;
    rig.cloud.fault(fault);
}

template <int STATUS>
void answer_status(FirmwareRig &rig) {
    Fault fault = download_fault(0);
    fault.status = STATUS;
    fault.body = "<html>no image here</html>";
    rig.cloud.fault(fault);
}

template <int COUNT>
void drop_first(FirmwareRig &rig) {
    Fault fault = download_fault(COUNT);
    fault.drop = true;
    rig.cloud.fault(fault);
}

void stay_silent(FirmwareRig &rig) {
    curl_spy::limit_to(SHORT_LIMIT);
    Fault fault = download_fault(0);
    fault.silent = true;
    rig.cloud.fault(fault);
}

void send_one_byte_more(FirmwareRig &rig) {
    Fault fault = download_fault(0);
    fault.wrong_size = true;
    rig.cloud.fault(fault);
}

void change_a_byte(FirmwareRig &rig) {
    Fault fault = download_fault(0);
    fault.wrong_md5 = true;
    rig.cloud.fault(fault);
}

} // namespace

FirmwareRig::FirmwareRig(const ImagePaths &image_paths) : paths(image_paths) {
    fs::create_symlink(paths.written, paths.handed_over);
    cloud.start();
    cloud.add_device({"*", "*", "simulated-device-secret"});
    firmware.name = "router.img";
    firmware.image = image();
    firmware.version = "V2.0.0";
    firmware.strategy = "force";
    cloud.offer(firmware);
    for (const char *key : {"checkaddr", "reportaddr"})
        rig.router.set_state(
            std::string("/vrop.fota/") + key,
            "\"" + cloud.url(key[0] == 'c' ? cloudsim::check_upgrade_path : cloudsim::upgrade_progress_path) +
                "\"");
}

std::string FirmwareRig::url() const {
    return firmware.url.value_or(cloud.url("/firmware/router.img"));
}

std::string FirmwareRig::md5() const {
    if (firmware.md5) return *firmware.md5;
    uint8_t digest[16];
    EVP_Digest(firmware.image.data(), firmware.image.size(), digest, nullptr, EVP_md5(), nullptr);
    std::string text;
    for (uint8_t byte : digest)
        for (int nibble : {byte >> 4, byte & 0xf})
            text += (firmware.upper_md5 ? "0123456789ABCDEF" : "0123456789abcdef")[nibble];
    return text;
}

std::vector<std::string> FirmwareRig::flash_requests() {
    std::vector<std::string> requests = rig.arguments("vrop", "upgrade");
    rig.router.clear_calls();
    return requests;
}

bool FirmwareRig::image_is_there() const {
    return fs::exists(paths.written);
}

void FirmwareRig::repair() {
    limit_files(RLIM_INFINITY);
    curl_spy::limit_to(0);
    if (fs::is_directory(paths.written)) fs::remove(paths.written);
    cloud.clear_faults();
    cloud.clear_requests();
    rig.router.clear_faults();
    firmware.url.reset();
    firmware.md5.reset();
    firmware.upper_md5 = firmware.wrong_size = false;
    firmware.version = "V3.0.0";
    cloud.offer(firmware);
    moving_clock::clear_pauses();
}

std::ostream &operator<<(std::ostream &out, const DownloadCase &c) {
    return out << c.name;
}

std::string case_name(const testing::TestParamInfo<DownloadCase> &row) {
    return row.param.name;
}

std::vector<DownloadCase> download_cases() {
    using R = FirmwareRig;
    return {
        {"good_at_once", [](R &) {}, Outcome::flashed},
        {"good_on_second_try", drop_first<1>, Outcome::flashed, 1},
        {"good_on_third_try", drop_first<2>, Outcome::flashed, 2},
        {"connection_refused", [](R &r) { r.firmware.url = "https://127.0.0.1:1/router.img"; },
         Outcome::not_downloaded},
        {"silent_server", stay_silent, Outcome::not_downloaded},
        {"cut_at_0", cut_after<0>, Outcome::not_downloaded},
        {"cut_at_1", cut_after<1>, Outcome::not_downloaded},
        {"cut_at_half", cut_after<IMAGE_SIZE / 2>, Outcome::not_downloaded},
        {"cut_before_last_byte", cut_after<IMAGE_SIZE - 1>, Outcome::not_downloaded},
        {"disk_full", [](R &) { limit_files(SMALL_DISK); }, Outcome::not_downloaded},
        {"file_not_writable", [](R &r) { fs::create_directory(r.paths.written); }, Outcome::not_downloaded},
        {"http_404", answer_status<404>, Outcome::wrong_size},
        {"http_500", answer_status<500>, Outcome::wrong_size},
        {"one_byte_more", send_one_byte_more, Outcome::wrong_size},
        {"byte_changed", change_a_byte, Outcome::wrong_digest},
        {"other_digest_announced", [](R &r) { r.firmware.md5 = "0123456789abcdef0123456789abcdef"; },
         Outcome::wrong_digest},
        {"no_digest_announced", [](R &r) { r.firmware.md5 = ""; }, Outcome::wrong_digest},
        {"upper_case_digest", [](R &r) { r.firmware.upper_md5 = true; }, Outcome::flashed},
        {"flash_refused",
         [](R &r) {
             r.rig.router.add_fault(
                 {.kind = router::Fault::Kind::Result, .object = "vrop", .method = "upgrade", .value = 2});
         },
         Outcome::refused},
        {"flash_unanswered",
         [](R &r) { r.rig.router.add_fault({.kind = router::Fault::Kind::Absent, .object = "vrop"}); },
         Outcome::refused},
    };
}

std::vector<moving_clock::Millis> download_pauses(int count) {
    const std::vector<moving_clock::Millis> all = {60000, 120000, 180000};
    return {all.begin(), all.begin() + count};
}
