// SPDX-License-Identifier: Apache-2.0
// The finished packet capture that waits for its upload. Any thread may call these.
#pragma once

// Says which file is to be uploaded, to which address, and after how many seconds from the file's appearance.
// The real address is where it can be had then; `upload_url`, when there is one, is left in the address file
// for the helper, and then the file is uploaded once and removed, uploaded or not. Null texts count as empty:
// without a real address nothing is uploaded. The path is at most 127 characters, the real address 255, the
// other 511. 0; -1 when the path is not one word to the shell, which leaves the settings as they were.
int set_cap_config(int seconds, const char *path, const char *real_url, const char *upload_url = nullptr);

// Whether a file with an address for the helper waits for its upload or is being sent.
bool capture_is_pending();

// Copies the upload address, cut to size - 1 characters. 0, or -1 for a null argument or a size below 1.
int get_cap_realurl(char *address, int size);

// What the client status thread does once a second: counts down while the file is there, then uploads it; an
// upload of a remote capture that succeeds is told to the cloud.
void capture_round();
