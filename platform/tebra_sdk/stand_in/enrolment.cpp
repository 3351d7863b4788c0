// SPDX-License-Identifier: Apache-2.0
#include "enrolment.h"

#include "core/files.h"
#include "core/log.h"
#include "json_text.h"

void write_enrolment(const std::string &path, const std::string &secret) {
    if (path.empty() || secret.empty()) return;
    JsonRoot root(json_object_new_object());
    json_object_object_add(root.get(), "secret", json_object_new_string(secret.c_str()));
    if (!replace_file(path.c_str(), json_text(root), 0600)) LOG("%s cannot be written", path.c_str());
}
