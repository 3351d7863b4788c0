// SPDX-License-Identifier: Apache-2.0
// The answers to the cloud's requests. Every answer has a code, which is also its MQTT user property "code":
//
//   property get   0 and the property's document as it is; else {"code":n,"message":".."}
//   property set   {"code":n}, n being what the set slot returned; with "reply" when the slot wrote one
//   upgrade        {"code":n}, n being what the callback returned
//   service        {"code":n,"data":{..}}, n being what the handler answered
//
// A request that reaches no slot is answered {"code":-1,"message":".."}, or, for a service, with one of
// SERVICE_* and the same "message" beside an empty "data".
#pragma once

#include <string>

inline constexpr int REFUSED = -1;
inline constexpr int SERVICE_MALFORMED = 400;
inline constexpr int SERVICE_UNKNOWN = 404;
inline constexpr int SERVICE_TIMED_OUT = 408;
inline constexpr int SERVICE_BUSY = 503;

struct Answer {
    int code;
    std::string body; // of a JSON document
};

Answer plain_answer(int code);
Answer refusal(int code, const char *message);
Answer set_answer(int code, const char *reply);
// `json` null counts as "{}"; a text that is not JSON is passed on as a JSON text.
Answer service_answer(int code, const char *json);
Answer service_refusal(int code, const char *message);
