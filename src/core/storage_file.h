// SPDX-License-Identifier: Apache-2.0
// The key=value store of the storage features: external disk, file sharing, home content cache.
#pragma once

inline constexpr char STORAGE_FILE[] = "/apetc/rvxa/ecm.conf";

// Creates the file with its defaults when it is missing; one that is there is left as it is. 0 when it is
// there, -1 when it could not be created. Of start-up.
int ecm_init();
