// SPDX-License-Identifier: Apache-2.0
#include "upgrade/retries.h"

#include "core/clock.h"
#include "core/text.h"

int with_retries(const Retries &how, const std::function<int()> &attempt, LogSite site) {
    int result = attempt();
    if (result == 0) return 0;
    const auto say = [&](const char *then) {
        how.say(format_text<128>("#http upgrade# %s ret[%d], %s\n", how.what, result, then).text, site);
    };
    say("start retry");
    int count = 0;
    for (unsigned pause : how.pauses) {
        pause_seconds(pause);
        result = attempt();
        if (result == 0) return 0;
        say(format_text<32>("retry count[%d]", ++count).text);
    }
    say("exit retry");
    return result;
}
