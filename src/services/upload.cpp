// SPDX-License-Identifier: Apache-2.0
#include "services/upload.h"

#include "core/command.h"
#include "core/json_path.h"
#include "core/text.h"
#include "https/helper_program.h"
#include "properties/field.h"
#include "services/url_file.h"

bool take_upload_url(const ServiceRequest &request, std::string *url, ServiceAnswer *refusal) {
    const char *address = request_text(request.json, "uploadUrl");
    if (address == nullptr) {
        LOG_AT(request.site, "url is invalid");
        *refusal = answer_failed(R"({"url content":"empty"})");
        return false;
    }
    if (*address == '\0') {
        LOG_AT(request.site, "url content is empty");
        *refusal = answer_failed(R"({"url":"failed"})");
        return false;
    }
    LOG_AT(request.site, "url is %s", address);
    char cut[UPLOAD_URL_SIZE];
    copy_text(cut, address);
    *url = cut;
    return true;
}

std::string answer_url(json_object *request) {
    const char *given = request_text(request, "url");
    std::string url = given != nullptr ? given : "";
    cut_between_characters(&url, UPLOAD_URL_SIZE - 1);
    return url;
}

ServiceAnswer upload_file(const ServiceRequest &request, const std::string &url, const char *(*path)()) {
    const UrlFile file(url.c_str(), request.site);
    if (!file) return answer_failed(R"({"urltxt":"failed"})");
    if (run_cmd_ext(format_text<512>("%s %s", PUT_FILE_PROGRAM, path()).text) != 0) {
        LOG_AT(request.site, "put file failed");
        return answer_failed(R"({"upload":"failed"})");
    }
    return answer_with("{\"url\": " + JsonQuote(answer_url(request.json).c_str()) + "}");
}
