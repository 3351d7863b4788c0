// SPDX-License-Identifier: Apache-2.0
#include "services/service.h"

#include <cstdio>
#include <utility>

#include "core/json_path.h"
#include "tebra_sdk.h"

namespace {

bool is_blank(const char *text) {
    return text == nullptr || text[0] == '\0';
}

bool is_refused(Parameters wanted, const char *text) {
    if (wanted == Parameters::needed) return is_blank(text);
    return wanted == Parameters::needed_may_be_empty && text == nullptr;
}

} // namespace

ServiceAnswer answer_with(std::string body, int result) {
    return {SERVICE_OK, std::move(body), result};
}

ServiceAnswer answer_done() {
    return answer_with("{}");
}

ServiceAnswer answer_failed(std::string body, int result, int code) {
    return {code, std::move(body), result};
}

ServiceAnswer no_answer(int result) {
    return {0, {}, result};
}

bool read_parameters(const Service &service, Parameters wanted, const char *text, JsonRoot *json,
                     LogSite site) {
    json->reset();
    if (wanted == Parameters::unread) return true;
    if (is_refused(wanted, text)) {
        LOG_AT(site, "param is NULL");
        return false;
    }
    if (service.before_parsing) service.before_parsing();
    if (is_blank(text)) return true;
    *json = JsonParseUtf8(text);
    const bool unusable =
        service.answers_bad_parameters && !json_object_is_type(json->get(), json_type_object);
    if (*json && !unusable) return true;
    if (service.parse_tag) perror(service.parse_tag);
    LOG_AT(site, "JsonStr Token fail");
    return false;
}

int serve(const Service &service, const ServiceCall &call, ServiceWork work, LogSite site) {
    if (service.entry) LOG_AT(site, "%s", service.entry);
    JsonRoot json;
    ServiceAnswer answer = no_answer();
    if (read_parameters(service, service.parameters, call.parameters, &json, site))
        answer = work({json.get(), site});
    else if (service.answers_bad_parameters)
        answer = answer_failed();
    if (answer.code != 0)
        TEBRA_SDK_Handle_Response(call.handle, call.id, answer.code, answer.body.c_str(), service.name);
    return answer.result;
}
