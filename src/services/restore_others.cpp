// SPDX-License-Identifier: Apache-2.0
// IPTV, mesh and the web account.
#include <string>

#include "core/bus.h"
#include "core/json_path.h"
#include "core/log.h"
#include "core/text.h"
#include "services/account.h"
#include "services/backup_fields.h"
#include "services/restore_sections.h"

namespace {

using namespace backup;

// "101" for the first and the third interface; empty unless all three are given.
Text<8> ethport_of(const BackupIptvPort &port) {
    for (int32_t flag : port.interfaces)
        if (flag == -1) return {};
    return format_text<8>("%d%d%d", port.interfaces[0], port.interfaces[1], port.interfaces[2]);
}

int restore_port(const BackupIptvPort &port) {
    BusMessage message;
    int count = write_given_message(IPTV_PORT, &port, &message);
    const Text<8> ethport = ethport_of(port);
    if (*ethport.text != '\0') {
        message.text("ethport", ethport.text);
        count++;
    }
    if (count == 0 || set_dev_info("vrop.iptv", "set", message) == 0) return 0;
    LOG("set iptv vlanId:%d  ethport:%s buf:fail", port.vlan_id, ethport.text);
    return -1;
}

} // namespace

int restore_iptv(const BackupIptv &iptv) {
    int result = 0;
    for (int32_t i = 0; i < iptv.count; i++)
        if (restore_port(iptv.ports[i]) != 0) result = -1;
    return result;
}

int restore_mesh(const BackupMesh &mesh) {
    BusMessage message;
    if (write_given_message(MESH_RESTORE, &mesh, &message) == 0) return 0;
    return set_or_log("vrop.mesh", "set", message, "start mesh fail");
}

int restore_account(const BackupAccount &account) {
    JsonRoot root;
    json_object *present = get_dev_info("vrop.devinfo", "getaccount", &root);
    if (present == nullptr) {
        LOG("get ftinfo obj fail");
        return -1;
    }
    std::string encoded;
    if (!encode_passwd(account.password, &encoded)) {
        LOG("encode new passwd fail");
        return -1;
    }
    BusMessage message;
    message.text("user", *account.username != '\0' ? account.username : _json_get_str(present, "user"))
        .text("oldpasswd", _json_get_str(present, "passwd")) // in Base64 already
        .text("newpasswd", encoded.c_str());
    return set_or_log("vrop.devinfo", "setaccount", message, "change passwd fail");
}
