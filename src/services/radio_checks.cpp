// SPDX-License-Identifier: Apache-2.0
#include "services/radio_checks.h"

#include "core/bus.h"
#include "core/json_path.h"
#include "core/report_gate.h"
#include "core/text.h"
#include "properties/field.h"
#include "properties/radio.h"
#include "services/channel_scores.h"
#include "services/service.h"

namespace {

constexpr int DISTURBED_PERCENT = 80;
constexpr int BAD_SCORE = 49; // and below

// The band's "getinterference", whose members stand in a member named like the object or at the top; null
// when the call fails.
json_object *read_interference(int radio, JsonRoot *root) {
    const char *object = radio_device(radio_of(radio));
    {
        std::lock_guard lock(ubus_mutex);
        root->reset(_ubus_call(object, "getinterference", nullptr));
    }
    json_object *nested = nullptr;
    if (*root && json_object_object_get_ex(root->get(), object, &nested)) return nested;
    if (*root && result_to_ret(_json_get_str(root->get(), "result")) == 0) return root->get();
    LOG("get %s json obj fail", radio_of(radio) == RADIO_5G ? "5G" : "2.4G");
    return nullptr;
}

// A failed read leaves set_flag up: the reports wait until a later service lowers it, and the cloud counts on
// it.
ServiceAnswer check_signal(const ServiceRequest &request) {
    const ReportsHeld held; // also against another service that lowers the flag
    raise_set_flag();
    const int radio = request_integer(request.json, "wifiSignal");
    LOG_AT(request.site, "wifiSignal:%d", radio);
    JsonRoot root;
    json_object *settings = get_dev_info(radio_settings(radio_of(radio)), "get", &root);
    if (settings == nullptr) {
        LOG_AT(request.site, "get %s wifiSignal obj fail", radio_of(radio) == RADIO_5G ? "5g" : "2.4g");
        return no_answer();
    }
    int32_t txpower = -1;
    JsonReadInt(settings, "txpower", &txpower);
    const auto body = format_text<64>("{\"signal\": %d}", classify_power(txpower));
    LOG_AT(request.site, "buf:%s", body.text);
    return lowering_set_flag(answer_with(body.text));
}

// The present channel's score, where there is one, counts before the share of disturbance.
bool is_disturbed(int radio) {
    const int disturbed = get_interferencepercent(radio);
    const int score = get_currentchannel_score(radio);
    return score != 0 ? score <= BAD_SCORE : disturbed != 0;
}

ServiceAnswer check_interference(const ServiceRequest &request) {
    const ReportsHeld held;
    raise_set_flag();
    int radio = request_integer(request.json, "wifiSignal");
    if (radio == -1) {
        LOG_AT(request.site, "app send data error");
        radio = CLOUD_RADIO_2G;
    }
    const bool disturbed = is_disturbed(radio);
    LOG_AT(request.site, "interferencepercent:%d", disturbed);
    JsonRoot document(json_object_new_object());
    if (!document) return no_answer();
    JsonSetBool(document.get(), nullptr, "interference", disturbed);
    const std::string text = JsonPlainText(document.get());
    if (text.empty()) return answer_failed();
    LOG_AT(request.site, "buff:%s", text.c_str());
    return lowering_set_flag(answer_with(text));
}

ServiceAnswer measure_interference(const ServiceRequest &request) {
    const int radio = request_integer(request.json, "radio");
    LOG_AT(request.site, "radio:%d", radio);
    int noise = 0, interference = 0;
    if (get_interference(radio, &noise, &interference) != 0) {
        LOG_AT(request.site, "get wirelessInterference fail");
        return answer_failed();
    }
    LOG_AT(request.site, "noise: %d interference: %d", noise, interference);
    return answer_with(format_text<64>("{\"noise\": %d, \"interference\": %d}", noise, interference).text);
}

} // namespace

int classify_power(int txpower) {
    return txpower >= 61 ? 0 : txpower >= 41 ? 1 : 2;
}

int get_interferencepercent(int radio) {
    JsonRoot root;
    json_object *values = read_interference(radio, &root);
    if (values == nullptr) return -1;
    int32_t percent = 0;
    JsonReadInt(values, "interferencepercent", &percent);
    return percent >= DISTURBED_PERCENT ? 1 : 0;
}

int get_interference(int radio, int *noise, int *interference) {
    JsonRoot root;
    json_object *values = read_interference(radio, &root);
    if (values == nullptr) return -1;
    JsonReadInt(values, "noise", noise);
    JsonReadInt(values, "interferencepercent", interference);
    LOG("interference: %d noise: %d", *interference, *noise);
    return 0;
}

int checkSignal_call(uint32_t handle, uint32_t id, void *, void *, const char *parameters) {
    constexpr Service SERVICE = {.name = "checkSignal", .parameters = Parameters::not_null};
    return serve(SERVICE, {handle, id, parameters}, check_signal);
}

int wifi_interference_call(uint32_t handle, uint32_t id, void *, void *, const char *parameters) {
    constexpr Service SERVICE = {.name = "checkInterference", .parameters = Parameters::not_null};
    return serve(SERVICE, {handle, id, parameters}, check_interference);
}

int wirelessInterference_call(uint32_t handle, uint32_t id, void *, void *, const char *parameters) {
    constexpr Service SERVICE = {.name = "wirelessInterference", .parameters = Parameters::not_null};
    return serve(SERVICE, {handle, id, parameters}, measure_interference);
}
