// SPDX-License-Identifier: Apache-2.0
// The helper programs that make requests outside the agent's process. Any thread; a call blocks until the
// helper ends.
#pragma once

inline constexpr char POST_DATA_PROGRAM[] = "/usr/bin/post_data";
inline constexpr char PUT_FILE_PROGRAM[] = "/usr/bin/common_put_file";

// What post_data sends or fetches.
enum class PostDataMode { runtime_report = 0, time_settings = 1, configuration = 2, upgrade_progress = 3 };

// Runs post_data. *status becomes its exit status; it stays as it was when the program could not be run.
void run_post_data(PostDataMode mode, int *status);
