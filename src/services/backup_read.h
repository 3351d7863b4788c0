// SPDX-License-Identifier: Apache-2.0
// The router's present configuration as a backup document. Any thread.
#pragma once

#include <json-c/json.h>

#include "core/handles.h"

// The document's text and its terminator into `buffer`. 0; -1 for a null buffer or a size below 1, when the
// configuration cannot be read, and when the text does not fit, in which case the buffer holds "".
int tunningBackupCfg_get(char *buffer, int size);

// The whole document. Null when the Wi-Fi, the Internet access or the account cannot be read; a router
// without mesh or IPTV gives a document without those sections.
JsonRoot get_tunningBackupCfg_config();

// Each adds its section to the document, with the members that the daemon gives. 0, or -1, with the document
// as before, when the daemon does not answer.
int get_backupWifi_config(json_object *document);
int get_backupInternet_config(json_object *document);
int get_backupMesh_config(json_object *document);
int get_backupWeb_config(json_object *document);
int get_backupIptv_config(json_object *document);
