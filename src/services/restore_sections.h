// SPDX-License-Identifier: Apache-2.0
// The sections of a restore. Each writes what its record gives, in whole messages. 0, or -1 when the daemon
// refused something, which is logged, except by set_wifi_seniorConfig. Wi-Fi, IPTV and mesh call nobody and
// succeed without anything to write. Any thread.
#pragma once

#include "services/backup_document.h"

// Names, keys and switches of both networks, then each radio's settings; those stay as they are when the
// first are refused, so that no network gets the security of another.
int restore_wifi(const BackupWifi &wifi);
// Power and mode are in no document; a radio's other settings are written alone.
int set_wifi_seniorConfig(int radio, const BackupRadio &record);

int restore_iptv(const BackupIptv &iptv);
int restore_mesh(const BackupMesh &mesh);
// The password of the web account; an empty one fails, and so does a daemon that does not tell the present
// one.
int restore_account(const BackupAccount &account);
// By its mode; -1 for one that is none.
int restore_internet(const BackupInternet &internet);
