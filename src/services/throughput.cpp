// SPDX-License-Identifier: Apache-2.0
#include "services/throughput.h"

#include "core/bus.h"
#include "core/clock.h"
#include "core/json_path.h"
#include "core/report_gate.h"
#include "core/text.h"
#include "devices/station_rates.h"
#include "properties/device_status.h"
#include "properties/field.h"
#include "services/lan_rates.h"
#include "services/service.h"

namespace {

constexpr char DEFAULT_DOWNLOAD[] = QVTK_SPEED_TEST_URL;
constexpr int DEFAULT_SECONDS = 8;
constexpr int DEFAULT_INTERVAL_MILLIS = 1000;
constexpr int LOOKS = 10;

ServiceAnswer wan_speed(const ServiceRequest &request) {
    int up = 0, down = 0;
    if (get_device_speed(&up, &down) != 0) LOG_AT(request.site, "get_dev_specInfo fail");
    LOG_AT(request.site, "downspeed:%d", down);
    LOG_AT(request.site, "upseed:%d", up);
    const auto body = format_text<128>("{\"upSpeed\": %d, \"downSpeed\": %d}", up, down);
    LOG_AT(request.site, "buf:%s", body.text);
    return answer_with(body.text);
}

int integer_or(json_object *request, const char *key, int otherwise) {
    const int value = request_integer(request, key);
    return value == -1 ? otherwise : value;
}

// Raises set_flag before its parameters are parsed, and a parse that fails leaves it up.
ServiceAnswer measure_download(const ServiceRequest &request) {
    const ReportsHeld held; // also against another service that lowers the flag
    char url[128];
    copy_text(url, request_text(request.json, "url"));
    if (url[0] == '\0') copy_text(url, DEFAULT_DOWNLOAD);
    const int time = integer_or(request.json, "time", DEFAULT_SECONDS);
    const int interval = integer_or(request.json, "interval", DEFAULT_INTERVAL_MILLIS);
    if (set_speedTest(url, time, interval) != 0) LOG_AT(request.site, "set speedtest info fail");
    ServiceAnswer answer = answer_with(format_text<64>("{\"downSpeed\":%d}", get_maxSpeed(time)).text);
    answer.afterwards = [](LogSite site, const ServiceAnswer &sent) {
        LOG_AT(site, "buf:%s", sent.body.c_str());
        lower_set_flag();
    };
    return answer;
}

ServiceAnswer device_speed(const ServiceRequest &request) {
    char mac[64], body[128];
    copy_text(mac, request_text(request.json, "mac"));
    const int result = get_one_lanDeviceInfo(mac, get_alldevice_num(), body, sizeof body);
    if (result != 0) return answer_failed("{}", result);
    LOG_AT(request.site, "buf:%s", body);
    return answer_with(body);
}

ServiceAnswer all_device_speeds(const ServiceRequest &request) {
    std::string body;
    const int result = get_lanDeviceInfo(&body);
    if (result != 0) return answer_failed("{}", result);
    LOG_AT(request.site, "buf:%s", body.c_str());
    return answer_with(body);
}

// The speed that the daemon says now, if it is at least the best so far.
void look_at_speed(int *best) {
    JsonRoot root;
    const char *speed = JsonGetStr(get_dev_info("vrop.speedtest", "getinfo", &root), "speed");
    if (speed == nullptr) return;
    const auto buf = format_text<64>("%s", speed);
    LOG("buf:%s", buf.text);
    if (leading_integer(buf.text) < *best) return;
    *best = leading_integer(buf.text);
    LOG("downspeed:%d", *best);
}

} // namespace

int set_speedTest(const char *url, int time, int interval) {
    BusMessage message;
    message.text("url", url).integer("time", time).integer("interval", interval);
    return set_dev_info("vrop.speedtest", "setdownload", message);
}

int get_maxSpeed(int time) {
    LOG("ENTER get maxSpeed");
    const unsigned look_millis = pause_of_request(time) * 1000 / LOOKS;
    int best = 0;
    for (int look = 0; look < LOOKS; look++) {
        look_at_speed(&best);
        pause_millis(look_millis);
    }
    return best;
}

int monitorSpeed_call(uint32_t handle, uint32_t id, void *, void *, const char *parameters) {
    constexpr Service SERVICE = {.name = "monitorSpeed", .entry = "monitorSpeed_call ...\n"};
    return serve(SERVICE, {handle, id, parameters}, wan_speed);
}

int maxMonitorSpeed_call(uint32_t handle, uint32_t id, void *, void *, const char *parameters) {
    constexpr Service SERVICE = {.name = "maxMonitorSpeed",
                                 .entry = "maxMonitorSpeed_call ...\n",
                                 .parameters = Parameters::not_null,
                                 .parse_tag = "JsonStrToken",
                                 .before_parsing = raise_set_flag,
                                 .before_refusal = lower_set_flag};
    return serve(SERVICE, {handle, id, parameters}, measure_download);
}

int apMonitorSpeed_call(uint32_t handle, uint32_t id, void *, void *, const char *parameters) {
    constexpr Service SERVICE = {.name = "apMonitorSpeed",
                                 .entry = "apMonitorSpeed_call ...\n",
                                 .parameters = Parameters::not_null,
                                 .parse_tag = "JsonStrToken"};
    return serve(SERVICE, {handle, id, parameters}, device_speed);
}

int allApMonitorSpeed_call(uint32_t handle, uint32_t id, void *, void *, const char *parameters) {
    // answered under the name of the service for one device, which the cloud knows
    constexpr Service SERVICE = {.name = "apMonitorSpeed", .entry = "allApMonitorSpeed_call ...\n"};
    return serve(SERVICE, {handle, id, parameters}, all_device_speeds);
}
