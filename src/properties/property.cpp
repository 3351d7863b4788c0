// SPDX-License-Identifier: Apache-2.0
#include "properties/property.h"

#include <cstdio>
#include <cstring>
#include <string>
#include <utility>

#include "core/handles.h"
#include "core/json_path.h"
#include "core/report_gate.h"
#include "core/text.h"
#include "tebra_sdk.h"

namespace {

// The property's document, or null after having logged why.
JsonRoot make_document(const Property &property, const char *create_failed, LogSite site) {
    JsonRoot document(json_object_new_object());
    if (!document) {
        perror("JsonObjNew");
        LOG_AT(site, "%s", create_failed);
        return nullptr;
    }
    if (property.fill(document.get()) != 0) return nullptr;
    return document;
}

// The property's document as a text, "" after having logged why. Names of networks and of devices are any
// bytes.
std::string document_text(const Property &property, const char *create_failed, LogSite site) {
    const JsonRoot document = make_document(property, create_failed, site);
    if (!document) return "";
    const char *text = json_object_to_json_string(document.get());
    if (text == nullptr) {
        perror("JsonObjToStr");
        LOG_AT(site, "JsonObj To String fail");
    }
    return utf8_text(text);
}

JsonRoot parse_request(const Property &property, const char *text, LogSite site) {
    JsonRoot request = JsonParseUtf8(text);
    if (!request) {
        perror(property.parse_tag);
        LOG_AT(site, "%s%s", property.parse_failed, property.parse_failed_shows_request ? text : "");
    }
    return request;
}

// Posts the text, without the lock, unless it is the one that was posted last. One thread posts at a time;
// what others leave meanwhile it posts too, the newest of it.
void post_in_turn(const Property &property, std::unique_lock<std::mutex> *lock, std::string text,
                  const char *line, LogSite site) {
    Outbox &outbox = property.outbox;
    outbox.text = std::move(text);
    outbox.full = true;
    if (outbox.posting) return;
    outbox.posting = true;
    while (outbox.full) {
        outbox.full = false;
        const std::string next = std::move(outbox.text);
        if (property.last_sent != nullptr && next == property.last_sent) continue;
        lock->unlock();
        LOG_AT(site, "%s%s", line, next.c_str());
        TEBRA_SDK_PostProperty(next.c_str());
        lock->lock();
        copy_text(property.last_sent, property.last_sent_size, next.c_str());
    }
    outbox.posting = false;
}

} // namespace

int property_init(const Property &property, void (*reset)(), LogSite site) {
    LOG_AT(site, "------------->start enter %sinit<-------------------", property.start);
    std::lock_guard lock(*property.lock);
    if (reset != nullptr) reset();
    return 0;
}

int property_set(const Property &property, const SetCall &call, Apply apply, LogSite site) {
    LOG_AT(site, "------------->start enter %sset<--------------", property.start);
    if (call.context == nullptr || call.value == nullptr || call.reply == nullptr || call.reply_length <= 0) {
        LOG_AT(site, "param is NULL");
        return -1;
    }
    if (property.request_line != nullptr) LOG_AT(site, "%s%s", property.request_line, call.value);
    JsonRoot request = parse_request(property, call.value, site);
    if (!request) return -1;
    json_object *member = nullptr;
    if (JsonGetObj(request.get(), property.name, &member) == 0 ||
        !json_object_is_type(member, property.request_type)) {
        perror("JsonGetObj");
        if (property.member_missing != nullptr) LOG_AT(site, "%s", property.member_missing);
        return -1;
    }
    std::lock_guard lock(*property.lock);
    return apply(member, call.context);
}

int property_get(const Property &property, const char *context, char *output, int length, LogSite site) {
    LOG_AT(site, "------------->start enter %sget<-------------------", property.start);
    if (context == nullptr || output == nullptr || length < 1) {
        LOG_AT(site, "param is error");
        return -1;
    }
    std::lock_guard lock(*property.lock);
    const std::string text = document_text(property, property.create_failed, site);
    if (text.empty()) return -1;
    copy_text(output, static_cast<size_t>(length), text.c_str());
    LOG_AT(site, "outbuff:%s", output);
    return 0;
}

int property_post(const Property &property, LogSite site) {
    std::unique_lock lock(*property.lock);
    std::string text = document_text(property, property.create_failed, site);
    if (text.empty()) return -1;
    post_in_turn(property, &lock, std::move(text), "outbuff:", site);
    return 0;
}

int property_report(const Property &property, LogSite site) {
    get_report_status();
    std::unique_lock lock(*property.lock);
    std::string text = document_text(property, "create json obj fail", site);
    if (text.empty()) return -1;
    if (text.size() >= property.report_size) text.resize(property.report_size - 1);
    post_in_turn(property, &lock, std::move(text), property.changed, site);
    return 0;
}
