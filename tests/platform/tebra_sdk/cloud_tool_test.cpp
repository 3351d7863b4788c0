// SPDX-License-Identifier: Apache-2.0
// dev/cloud, run as a developer runs it: what it prints and how it ends.
#include "device.h"

#include <cstdlib>
#include <cstring>
#include <sys/wait.h>

namespace {

TEST_F(SdkTest, TheCloudsToolDrivesADevice) {
    const struct {
        const char *arguments;
        int status;
        const char *output; // a part of it
    } runs[] = {
        {"list", 0, "serial1  product1  A1:B2:C3:D4:E5:F6  1.2.3\n"},
        {"set echo '{\"a\": 1}'", 0, "{\"code\":0}\n"},
        {"get echo --product product1 --device serial1", 0, "{\"a\": 1}\n"},
        {"get locked", 1, "cannot read"},
        {"set locked {}", 1, "{\"code\":7,"},
        {"call echo '[1]'", 0, "{\"code\":200,\"data\":[1]}\n"},
        {"call refuse", 1, "402"},
        {"upgrade http://h/i 0123 4 now", 1, "{\"code\":4}"},
        {"call later --timeout 0.2", 3, "no answer from serial1 within 0.2 s"},
        {"get echo --device serial2", 4, "device serial2 is not online"},
        {"list --broker /absent.sock", 4, "no broker at /absent.sock"},
        {"set echo '{'", 2, "not JSON"},
        {"call reboot '[1]'", 2, "not an object"},
        {"services", 0, "pingTest              loss in percent"},
        {"get", 2, "number of arguments"},
        {"", 2, "no command"},
        {"list --timeout 0", 2, "above 0"},
        {"list --broker host:port", 2, "HOST:PORT"},
        {"--help", 0, "dev/cloud get NAME"},
        {"watch status --count 1", 0, "  serial1  status  {\"online\":true"},
    };
    setenv("QVTK_BROKER", broker.socket().c_str(), 1);
    start();
    gate.count_down();
    for (const auto &run : runs) {
        FILE *pipe = popen((std::string(DEV_CLOUD " ") + run.arguments + " 2>&1").c_str(), "r");
        ASSERT_NE(pipe, nullptr);
        char output[8192];
        output[fread(output, 1, sizeof output - 1, pipe)] = '\0';
        EXPECT_EQ(WEXITSTATUS(pclose(pipe)), run.status) << run.arguments << ": " << output;
        EXPECT_NE(strstr(output, run.output), nullptr) << run.arguments << ": " << output;
    }
}

} // namespace
