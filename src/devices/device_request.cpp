// SPDX-License-Identifier: Apache-2.0
#include "devices/device_request.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "core/json_path.h"
#include "core/log.h"
#include "core/text.h"
#include "properties/field.h"
#include "properties/schedule.h"

namespace {

constexpr size_t URL_MAX = 255;
constexpr size_t APP_NAME_MAX = 127;

// 0, 1, or -1 for one that is absent, as all negative ones are.
int32_t request_switch(json_object *request, const char *key) {
    const int32_t value = request_integer(request, key);
    if (value < 0) return -1;
    return value == 0 ? 0 : 1;
}

// The member when it has that type, else null.
json_object *member_of_type(json_object *element, const char *key, json_type type) {
    json_object *member = nullptr;
    JsonGetObj(element, key, &member);
    return json_object_is_type(member, type) ? member : nullptr;
}

void copy_characters(char *to, size_t size, std::string text) {
    cut_between_characters(&text, size - 1);
    copy_text(to, size, text.c_str());
}

bool read_limit(json_object *element, DeviceSettings *settings) {
    json_object *limit = member_of_type(element, "limitSpeed", json_type_object);
    settings->has_limit = limit != nullptr;
    settings->limit.open = request_switch(limit, "open");
    settings->limit.upSpeed = request_integer(limit, "upSpeed");
    settings->limit.downSpeed = request_integer(limit, "downSpeed");
    return limit == nullptr || settings->limit.open != -1;
}

// What a rule's switch is to be.
class RuleSwitch {
  public:
    // `kind` is the switch of the kind of rule, -1 for kinds that have none.
    RuleSwitch(const DeviceSettings &settings, int32_t kind)
        : closed_(settings.parentalEnable == 1 || (settings.parentalEnable != -1 && kind == 0)) {}
    int32_t of(json_object *entry) const {
        const int32_t own = request_switch(entry, "open");
        return closed_ || own == 0 ? 0 : 1;
    }

  private:
    bool closed_;
};

// A rule's text, borrowed; null, which is logged, when it is none or too long to be the same in the daemon.
// A null key: the entry itself is the text.
const char *rule_text(json_object *entry, const char *key, size_t most) {
    const char *text = request_text(entry, key);
    if (text != nullptr && text[0] != '\0' && strlen(text) <= most) return text;
    LOG("a rule without a usable %s", key != nullptr ? key : "text");
    return nullptr;
}

// Appends what `make` makes of the list's entries, which may refuse one with false.
template <typename Rule, typename Make>
void take_rules(json_object *list, const char *mac, std::vector<Rule> *rules, Make make) {
    const size_t given = json_object_array_length(list);
    if (given > MOST_RULES) LOG("mac:%s %zu rules, the first %zu are taken", mac, given, MOST_RULES);
    for (size_t i = 0; i < std::min(given, MOST_RULES); i++) {
        Rule rule{};
        if (make(json_object_array_get_idx(list, i), &rule)) rules->push_back(std::move(rule));
    }
}

bool is_listed(const std::vector<UrlRule> &rules, const char *url) {
    return std::any_of(rules.begin(), rules.end(), [url](const UrlRule &rule) { return rule.url == url; });
}

} // namespace

bool read_settings(json_object *element, DeviceSettings *settings) {
    *settings = {};
    if (const char *mac = request_text(element, "mac")) copy_text(settings->mac, mac);
    const char *name = request_text(element, "name");
    settings->has_name = name != nullptr;
    if (name != nullptr) copy_characters(settings->name, sizeof settings->name, name);
    settings->operationType = request_integer(element, "operationType");
    settings->blackEnable = request_switch(element, "blackEnable");
    settings->onlineNotice = request_switch(element, "onlineNotice");
    settings->parentalEnable = request_switch(element, "parentalEnable");
    settings->timeControlEnable = request_switch(element, "timeControlEnable");
    settings->webControlEnable = request_switch(element, "webControlEnable");
    settings->disconnect = request_integer(element, "disconnect");
    settings->parentFlag = request_integer(element, "parentFlag");
    for (std::string *mac :
         {&settings->urls.mac, &settings->sites.mac, &settings->times.mac, &settings->apps.mac})
        *mac = settings->mac;
    return read_limit(element, settings);
}

bool read_web_control(json_object *element, DeviceSettings *settings) {
    json_object *control = member_of_type(element, "parentalWebControl", json_type_object);
    if (control == nullptr) return false;
    const RuleSwitch open(*settings, settings->webControlEnable);
    settings->urls.controlPolicy = settings->sites.controlPolicy = request_integer(control, "controlPolicy");
    if (json_object *urls = member_of_type(control, "urls", json_type_array))
        take_rules(urls, settings->mac, &settings->urls.rules, [&](json_object *entry, UrlRule *rule) {
            const char *url = rule_text(entry, "url", URL_MAX);
            if (url != nullptr) *rule = {url, open.of(entry)};
            return url != nullptr;
        });
    // the document lists the same addresses twice: those with switches of their own count
    if (json_object *sites = member_of_type(control, "sites", json_type_array))
        take_rules(sites, settings->mac, &settings->sites.rules, [&](json_object *entry, UrlRule *rule) {
            const char *url = rule_text(entry, nullptr, URL_MAX);
            if (url == nullptr || is_listed(settings->urls.rules, url)) return false;
            *rule = {url, open.of(nullptr)};
            return true;
        });
    return true;
}

bool read_time_control(json_object *element, DeviceSettings *settings) {
    json_object *rules = member_of_type(element, "parentalTimeControl", json_type_array);
    if (rules == nullptr) return false;
    const RuleSwitch open(*settings, settings->timeControlEnable);
    take_rules(rules, settings->mac, &settings->times.rules, [&](json_object *entry, TimeRule *rule) {
        const char *frame = request_text(entry, "timeFrame");
        if (frame == nullptr) return false;
        copy_text(rule->timeFrame, frame);
        read_days(entry, rule->daysOfWeek);
        rule->open = open.of(entry);
        return true;
    });
    return true;
}

bool get_apdev_appcontrol_data(json_object *element, int apptype, DeviceSettings *settings) {
    const auto kind = std::find_if(std::begin(APP_KINDS), std::end(APP_KINDS),
                                   [apptype](const AppKind &known) { return known.apptype == apptype; });
    if (kind == std::end(APP_KINDS)) return false;
    json_object *urls =
        member_of_type(member_of_type(element, kind->key, json_type_object), "urls", json_type_array);
    if (urls == nullptr) return false;
    const RuleSwitch open(*settings, -1);
    take_rules(urls, settings->mac, &settings->apps.rules, [&](json_object *entry, AppRule *rule) {
        const char *name = rule_text(entry, "appname", APP_NAME_MAX);
        json_object *given = nullptr;
        const bool has_url = JsonGetObj(entry, "url", &given) != 0;
        const char *url = has_url ? rule_text(entry, "url", URL_MAX) : "";
        if (name != nullptr && url != nullptr) *rule = {url, name, apptype, open.of(entry)};
        return name != nullptr && url != nullptr;
    });
    settings->has_apps = true;
    return true;
}
