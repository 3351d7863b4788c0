// SPDX-License-Identifier: Apache-2.0
// The sections of a restore. Each writes what its record gives, in whole messages; without anything to write
// it calls nobody and succeeds. 0, or -1 after having logged what the daemon refused. Any thread.
#pragma once

#include "services/backup_document.h"

// Names, keys and switches of both networks, then each radio's settings; those stay as they are when the
// first are refused, so that no network gets the security of another.
int restore_wifi(const BackupWifi &wifi);
// Power and mode are in no document; a radio's other settings are written alone.
int set_wifi_seniorConfig(int radio, const BackupRadio &record);

int restore_iptv(const BackupIptv &iptv);
int restore_mesh(const BackupMesh &mesh);
// The password of the web account; an empty one fails.
int restore_account(const BackupAccount &account);
int restore_internet(const BackupInternet &internet);
