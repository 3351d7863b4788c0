// SPDX-License-Identifier: Apache-2.0
#include "services/diagnostics.h"

#include <cstring>

#include "core/bus.h"
#include "core/clock.h"
#include "core/json_path.h"
#include "core/text.h"
#include "core/wan_status.h"
#include "properties/field.h"
#include "properties/protocol_family.h"
#include "services/ping.h"
#include "services/service.h"
#include "services/storage_status.h"

namespace {

constexpr char DEFAULT_HOST[] = QVTK_PING_HOST;
constexpr int DEFAULT_DNS_TIMEOUT_MILLIS = 100;
constexpr int DNS_PINGS = 4;
constexpr size_t CONNECT_ANSWER_MAX = 127;

ServiceAnswer nat(const ServiceRequest &) {
    int nat_type = 0, upnp = 0;
    get_natType(&nat_type, &upnp);
    return answer_with(
        format_text<64>("{\"natType\": %d, \"upnp\": %s}", nat_type, upnp != 0 ? "true" : "false").text);
}

ServiceAnswer connect_check(const ServiceRequest &request) {
    int registered = 0;
    get_ecm_status(&registered);
    const int connected = get_networkStatus();
    JsonRoot document(json_object_new_object());
    if (!document) {
        perror("JsonObjNew");
        LOG_AT(request.site, "create json obj fail");
        return no_answer();
    }
    JsonSetBool(document.get(), nullptr, "networkStatus", connected != 0);
    JsonSetBool(document.get(), nullptr, "hcdnRegister", registered != 0);
    const std::string text = JsonPlainText(document.get(), CONNECT_ANSWER_MAX);
    if (!text.empty()) return answer_with(text);
    perror("JsonObjToStr");
    LOG_AT(request.site, "JsonObj To String fail");
    return answer_failed();
}

ServiceAnswer missing(const ServiceRequest &request, const char *key) {
    LOG_AT(request.site, "%s is not exist", key);
    return answer_failed();
}

ServiceAnswer ping_test(const ServiceRequest &request) {
    const int times = request_integer(request.json, "times");
    if (times == -1) return missing(request, "times");
    const char *url = request_text(request.json, "testUrl");
    if (url == nullptr) return missing(request, "testUrl");
    char host[128];
    copy_text(host, url);
    if (start_ping(host, 0) != 0) return answer_failed();
    pause_seconds(pause_of_request(times) + 1);
    PingResult result;
    if (read_ping_result(&result) != 0) return answer_failed();
    LOG_AT(request.site, "loss:%d relay:%s", result.loss, result.delay);
    return answer_with("{\"loss\": " + std::to_string(result.loss) +
                       ", \"relay\": " + JsonQuote(result.delay) + "}");
}

ServiceAnswer network_check(const ServiceRequest &request) {
    char host[128];
    const char *url = request_text(request.json, "testUrl");
    copy_text(host, url != nullptr ? url : DEFAULT_HOST);
    int timeout = request_integer(request.json, "dnsTimeout");
    if (timeout == -1) timeout = DEFAULT_DNS_TIMEOUT_MILLIS;
    LOG_AT(request.site, "test_url:%s timeout:%d", host, timeout);
    const int slow = get_dnsDelay(host, DNS_PINGS, timeout);
    const int ipv6_type = get_dev_ipv6_type();
    const int ipv6 = ipv6_type == 0 ? 0 : get_ipv6_status();
    LOG_AT(request.site, "network_type:%d", ipv6_type);
    const auto body = format_text<64>("{\"isIpv6\": %d, \"dnsStatus\": %d}", ipv6, slow);
    LOG_AT(request.site, "buf:%s", body.text);
    return answer_with(body.text);
}

} // namespace

int get_dev_ipv6_type() {
    return get_ipv6Status();
}

// The sense is inverted, and the cloud reads it so: an IPv6 connection that is up gives 0.
int get_ipv6_status() {
    JsonRoot root;
    json_object *wan = get_dev_info("vrop.waninfo", "get", &root);
    if (wan == nullptr || strcmp(_json_get_str(wan, "workmode"), "BRIDGE") == 0) return 0;
    const bool ipv6 = strstr(_json_get_str(wan, "protocoltype"), "IPv6") != nullptr;
    return ipv6 && strcmp(_json_get_str(wan, "status6"), "Unconnected") == 0 ? 1 : 0;
}

int nat_call(uint32_t handle, uint32_t id, void *, void *, const char *parameters) {
    constexpr Service SERVICE = {.name = "nat", .entry = "natType_call ...\n"};
    return serve(SERVICE, {handle, id, parameters}, nat);
}

int connectCheck_call(uint32_t handle, uint32_t id, void *, void *, const char *parameters) {
    constexpr Service SERVICE = {.name = "connectCheck", .entry = "connectCheck_call ...\n"};
    return serve(SERVICE, {handle, id, parameters}, connect_check);
}

int ping_test_call(uint32_t handle, uint32_t id, void *, void *, const char *parameters) {
    constexpr Service SERVICE = {.name = "pingTest", .parameters = Parameters::not_null};
    return serve(SERVICE, {handle, id, parameters}, ping_test);
}

int networkCheck_call(uint32_t handle, uint32_t id, void *, void *, const char *parameters) {
    constexpr Service SERVICE = {.name = "networkCheck",
                                 .entry = "networkCheck_call ...\n",
                                 .parameters = Parameters::needed_may_be_empty,
                                 .parse_tag = "JsonStrToken"};
    return serve(SERVICE, {handle, id, parameters}, network_check);
}
