// SPDX-License-Identifier: Apache-2.0
#include "https/helper_program.h"

#include "core/command.h"
#include "core/text.h"

void run_post_data(PostDataMode mode, int *status) {
    rvxa_run_cmd(status, format_text<128>("%s %d", POST_DATA_PROGRAM, static_cast<int>(mode)).text);
}
