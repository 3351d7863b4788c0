// SPDX-License-Identifier: Apache-2.0
#include "services/account.h"

#include <cstring>

#include "core/bus.h"
#include "core/log.h"
#include "digests/digest.h"

bool encode_passwd(const char *passwd, std::string *text) {
    const size_t length = passwd == nullptr ? 0 : strlen(passwd);
    text->resize((length + 2) / 3 * 4);
    size_t written = 0;
    return base64_encode(reinterpret_cast<const uint8_t *>(passwd), length, text->data(), &written) == 0;
}

int set_passwd(const char *user, const char *old_passwd, const char *new_passwd) {
    std::string old_text, new_text;
    if (!encode_passwd(old_passwd, &old_text)) {
        LOG("encode old passwd fail");
        return -1;
    }
    if (!encode_passwd(new_passwd, &new_text)) {
        LOG("encode new passwd fail");
        return -1;
    }
    BusMessage message;
    message.text("user", user).text("oldpasswd", old_text.c_str()).text("newpasswd", new_text.c_str());
    return set_dev_info("vrop.devinfo", "setaccount", message);
}
