// SPDX-License-Identifier: Apache-2.0
// What every service handler does: log its entry, look at the parameters, parse them, work, and answer
// exactly once under its row's name. A handler describes itself in one Service, its work says what is
// answered, and the answer is sent here and nowhere else, so that there is never none by accident nor a
// second.
//
// A request that is JSON and no object is answered 400 "{}" by all of them.
//
// Threads: the SDK calls handlers from several threads at once, the same one too. What a handler's work
// shares with others it guards itself.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string>

#include <json-c/json.h>

#include "core/handles.h"
#include "core/log.h"

// What a handler wants of its parameters. A text that is empty counts as none unless it is said otherwise.
enum class Parameters {
    unread,              // not looked at
    optional,            // none is a call without a request
    needed,              // none is refused, and so is an empty text
    not_null,            // null is refused; an empty text is no JSON
    needed_may_be_empty, // null is refused; an empty text is a call without a request
};

struct Service {
    const char *name;            // in the answer: the row's, where no other is said to be kept
    const char *entry = nullptr; // the line logged first, as it stands
    Parameters parameters = Parameters::unread;
    const char *parse_tag = nullptr;    // what the console says of a text that is not JSON; null: nothing
    void (*before_parsing)() = nullptr; // runs once there is a text to parse
    // Runs before the refusal of JSON that is no object, which is always 400 "{}" and -1.
    void (*before_refusal)() = nullptr;
    // What becomes of parameters that are missing or cannot be parsed: no answer at all and -1, or 400 "{}"
    // and -1.
    bool answers_bad_parameters = false;
};

// The handler's arguments that matter. `parameters` is JSON text or null.
struct ServiceCall {
    uint32_t handle;
    uint32_t id;
    const char *parameters;
};

// What the work is given. Log with LOG_AT(request.site, ...), so that the line bears the handler's name.
struct ServiceRequest {
    json_object *json; // an object, borrowed; null without a request. properties/field.h reads its members.
    LogSite site;
    const char *text; // the parameters as they came; may be null
};

// What the handler says and returns.
struct ServiceAnswer {
    int code;         // 0: no answer is sent
    std::string body; // JSON text
    int result;       // what the handler returns to the SDK
    // Runs once the answer has been sent.
    void (*afterwards)(LogSite site, const ServiceAnswer &sent) = nullptr;
};
inline constexpr int SERVICE_OK = 200;
inline constexpr int SERVICE_FAILED = 400;
inline constexpr int SERVICE_WRONG_PASSWORD = 402;
inline constexpr int SERVICE_BUSY = 409; // with the same work for another request

ServiceAnswer answer_with(std::string body, int result = 0);     // 200
ServiceAnswer answer_done();                                     // 200 "{}"
ServiceAnswer answer_with(const JsonRoot &document);             // 200 and its text
ServiceAnswer answer_with_list(const char *name, JsonRoot list); // 200 {name: list}
// A failure: 400 unless another code is named.
ServiceAnswer answer_failed(std::string body = "{}", int result = -1, int code = SERVICE_FAILED);
ServiceAnswer no_answer(int result = -1);
// The same answer; once it has been sent, set_flag goes down.
ServiceAnswer lowering_set_flag(ServiceAnswer answer);

// The longest that a request may have a service wait; the SDK waits no longer for its answer either.
inline constexpr int LONGEST_PAUSE_SECONDS = 600;
// Seconds of a request as what a sleep can be: 0 for negative ones, LONGEST_PAUSE_SECONDS for more.
inline unsigned pause_of_request(int seconds) {
    return static_cast<unsigned>(std::clamp(seconds, 0, LONGEST_PAUSE_SECONDS));
}

using ServiceWork = ServiceAnswer (*)(const ServiceRequest &request);

// One call from entry to answer. Returns what the handler returns. Any thread; blocks while the work does.
int serve(const Service &service, const ServiceCall &call, ServiceWork work, LogSite site = LogSite::here());
