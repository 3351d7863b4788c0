// SPDX-License-Identifier: Apache-2.0
// The finished packet capture that waits for its upload. Any thread may call these.
#pragma once

// Says which file is to be uploaded, to which address, and after how many seconds from the file's appearance.
// Null texts count as empty: nothing is uploaded. The path is at most 127 characters, the address 255. 0; -1
// when the path is not one word to the shell, which leaves the settings as they were.
int set_cap_config(int seconds, const char *path, const char *real_url);

// Copies the upload address, cut to size - 1 characters. 0, or -1 for a null argument or a size below 1.
int get_cap_realurl(char *address, int size);

// What the client status thread does once a second: counts down while the file is there, then uploads it.
void capture_round();
