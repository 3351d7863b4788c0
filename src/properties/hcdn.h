// SPDX-License-Identifier: Apache-2.0
// "hcdn": the external disk, file sharing and the home content cache. Settings stand in /apetc/rvxa/ecm.conf,
// which the storage service reads; its state in /aptmp/ecm.status; the disk's path is the configuration
// daemon's.
#pragma once

// The slots of the property (see properties/property.h).
int hcdn_init();
int hcdn_set(const char *context, const char *value, char *reply, int reply_length);
int hcdn_get(const char *context, char *output, int length);
int hcdn_report();
