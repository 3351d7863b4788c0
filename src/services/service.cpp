// SPDX-License-Identifier: Apache-2.0
#include "services/service.h"

#include <cstdio>
#include <utility>

#include "core/json_path.h"
#include "core/report_gate.h"
#include "core/text.h"
#include "tebra_sdk.h"

namespace {

bool is_blank(const char *text) {
    return text == nullptr || text[0] == '\0';
}

bool is_refused(Parameters wanted, const char *text) {
    if (wanted == Parameters::needed) return is_blank(text);
    return wanted != Parameters::optional && text == nullptr;
}

// True, and the request (null for none) in *json; false, after having logged why, for what is refused.
bool read_parameters(const Service &service, const char *text, JsonRoot *json, LogSite site) {
    const Parameters wanted = service.parameters;
    if (wanted == Parameters::unread) return true;
    if (is_refused(wanted, text)) {
        LOG_AT(site, "param is NULL");
        return false;
    }
    if (service.before_parsing) service.before_parsing();
    if (is_blank(text) && wanted != Parameters::not_null) return true;
    *json = JsonParseUtf8(text);
    if (*json) return true;
    if (service.parse_tag) perror(service.parse_tag);
    LOG_AT(site, "JsonStr Token fail");
    return false;
}

// The work's answer, or the refusal of a request that is JSON and no object: its members would all count as
// absent, and some services do more without them than with them.
ServiceAnswer work_on(const Service &service, const ServiceRequest &request, ServiceWork work) {
    if (request.json == nullptr || json_object_is_type(request.json, json_type_object)) return work(request);
    if (service.before_refusal) service.before_refusal();
    LOG_AT(request.site, "param is no object");
    return answer_failed();
}

} // namespace

ServiceAnswer answer_with(std::string body, int result) {
    return {SERVICE_OK, std::move(body), result};
}

ServiceAnswer answer_done() {
    return answer_with("{}");
}

ServiceAnswer answer_with(const JsonRoot &document) {
    return answer_with(JsonPlainText(document.get()));
}

ServiceAnswer answer_with_list(const char *name, JsonRoot list) {
    const JsonRoot document(json_object_new_object());
    JsonSetObj(document.get(), nullptr, name, std::move(list));
    return answer_with(document);
}

ServiceAnswer answer_failed(std::string body, int result, int code) {
    return {code, std::move(body), result};
}

ServiceAnswer no_answer(int result) {
    return {0, {}, result};
}

ServiceAnswer lowering_set_flag(ServiceAnswer answer) {
    answer.afterwards = [](LogSite, const ServiceAnswer &) { lower_set_flag(); };
    return answer;
}

int serve(const Service &service, const ServiceCall &call, ServiceWork work, LogSite site) {
    if (service.entry) LOG_AT(site, "%s", service.entry);
    JsonRoot json;
    ServiceAnswer answer = no_answer();
    if (read_parameters(service, call.parameters, &json, site))
        answer = work_on(service, {json.get(), site, call.parameters}, work);
    else if (service.answers_bad_parameters)
        answer = answer_failed();
    if (answer.code != 0) // names of networks and files are any bytes
        TEBRA_SDK_Handle_Response(call.handle, call.id, answer.code, utf8_text(answer.body.c_str()).c_str(),
                                  service.name);
    if (answer.afterwards) answer.afterwards(site, answer);
    return answer.result;
}
