// SPDX-License-Identifier: Apache-2.0
// What the services that upload a file to an address of the request have in common.
#pragma once

#include <string>

#include "services/service.h"

inline constexpr size_t UPLOAD_URL_SIZE = 512; // with the terminator; longer addresses are cut

// The request's "uploadUrl". True when there is one; else *refusal is the stated answer, and the log says
// why.
bool take_upload_url(const ServiceRequest &request, std::string *url, ServiceAnswer *refusal);

// The request's "url" as it stands, cut to UPLOAD_URL_SIZE - 1 bytes between characters; "" when there is
// none.
std::string answer_url(json_object *request);

// Hands the address and then the file that `path` names to common_put_file, with the address file kept to
// itself until that has ended. The path is one of ours: no shell may read anything into it. 200 {"url": the
// request's}, or the stated failures. Blocks while the file is sent.
ServiceAnswer upload_file(const ServiceRequest &request, const std::string &url, const char *(*path)());
