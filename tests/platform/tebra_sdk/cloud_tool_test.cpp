// SPDX-License-Identifier: Apache-2.0
// dev/cloud, run as a developer runs it: what it prints and how it ends.
#include "device.h"

#include <cstdlib>
#include <sys/wait.h>
#include <unistd.h>

namespace {

struct Outcome {
    int status;
    std::string output; // of both streams
};

Outcome run(const std::string &arguments) {
    Outcome outcome = {-1, ""};
    FILE *pipe = popen((std::string(DEV_CLOUD " ") + arguments + " 2>&1").c_str(), "r");
    if (!pipe) return outcome;
    char piece[4096];
    while (size_t count = fread(piece, 1, sizeof piece, pipe))
        outcome.output.append(piece, count);
    int status = pclose(pipe);
    outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return outcome;
}

class CloudToolTest : public SdkTest {
  protected:
    CloudToolTest() { setenv("QVTK_BROKER", broker.socket().c_str(), 1); }
};

struct Run {
    const char *arguments;
    int status;
    const char *output; // a part of it
};

void expect_runs(std::initializer_list<Run> runs) {
    for (const Run &expected : runs) {
        Outcome outcome = run(expected.arguments);
        EXPECT_EQ(outcome.status, expected.status) << expected.arguments << ": " << outcome.output;
        EXPECT_NE(outcome.output.find(expected.output), std::string::npos)
            << expected.arguments << ": " << outcome.output;
    }
}

TEST_F(CloudToolTest, DrivesADevice) {
    start();
    gate.open();
    expect_runs({
        {"list", 0, "serial1  product1  A1:B2:C3:D4:E5:F6  1.2.3\n"},
        {"set echo '{\"a\": 1}'", 0, "{\"code\":0}\n"},
        {"get echo", 0, "{\"a\": 1}\n"},
        {"get echo --product product1 --device serial1", 0, "{\"a\": 1}\n"},
        {"get locked", 1, "cannot read"},
        {"set locked {}", 1, "{\"code\":7,"},
        {"call echo '[1]'", 0, "{\"code\":200,\"data\":[1]}\n"},
        {"echo; echo '[2]' | " DEV_CLOUD " call echo -", 0, "[2]"},
        {"call echo", 0, "null"},
        {"call refuse", 1, "402"},
        {"upgrade http://h/i 0123 0 now", 0, "{\"code\":0}"},
        {"upgrade http://h/i 0123 4 now", 1, "{\"code\":4}"},
        {"call later --timeout 0.2", 3, "no answer from serial1 within 0.2 s"},
        {"get echo --device serial2", 4, "device serial2 is not online"},
        {"set echo '{'", 2, "not JSON"},
        {"set echo '{' --unchecked", 0, "{\"code\":0}"},
        {"get a/b", 2, "not a name"},
        {"get", 2, "number of arguments"},
        {"", 2, "--help"},
        {"--device", 2, "--device"},
        {"--help", 0, "dev/cloud get NAME"},
        {"watch status --count 1", 0, "  serial1  status  {\"online\":true"},
        {"watch event --count 1 --timeout 0.2", 3, "watching"},
        {"watch gossip", 2, "a kind is one of"},
    });
}

TEST_F(CloudToolTest, WatchShowsOneSafeLineEach) {
    start();
    TEBRA_SDK_PostEvent("before", "{}");
    FILE *pipe = popen(DEV_CLOUD " watch event/one property progress --count 3 --timeout 20 2>&1", "r");
    ASSERT_NE(pipe, nullptr);
    char line[256] = "";
    ASSERT_STREQ(fgets(line, sizeof line, pipe), "dev/cloud: watching\n");
    TEBRA_SDK_PostEvent("other", "{}");
    TEBRA_SDK_PostEvent("one", "a\nb\x1b[2J");
    TEBRA_SDK_PostProperty("{\"p\":1}");
    TEBRA_SDK_PostUpgress(10);
    for (const char *expected : {"  serial1  event/one  a\\nb\\x1b[2J\n", "  serial1  property  {\"p\":1}\n",
                                 "  serial1  progress  {\"progress\":10}\n"}) {
        ASSERT_NE(fgets(line, sizeof line, pipe), nullptr);
        EXPECT_TRUE(std::string(line).ends_with(expected)) << line;
    }
    EXPECT_EQ(pclose(pipe), 0);
}

TEST_F(CloudToolTest, SaysWhatIsMissing) {
    expect_runs({
        {"list", 4, "no device is online"},
        {"get echo", 4, "no device is online"},
        {"list --broker /absent.sock", 4, "no broker at /absent.sock"},
        {"list --broker localhost:70000", 4, "no broker at localhost:70000"},
    });
    client.emplace(broker.socket());
    const std::string online = "{\"online\":true}";
    for (const char *topic : {"tebra/p/a/status", "tebra/p/b/status", "tebra/q/b/status"})
        client->publish({.topic = topic, .payload = online, .retain = true});
    client->publish({.topic = "tebra/p/gone/status", .payload = "{\"online\":false}", .retain = true});
    client->publish({.topic = "tebra/p/odd/status", .payload = "[not JSON", .retain = true});
    ASSERT_TRUE(client->subscribe("tebra/+/odd/status"));
    ASSERT_TRUE(client->wait("tebra/p/odd/status")); // all are kept now
    expect_runs({
        {"get echo", 4, "--product p --device a\n  --product p --device b\n  --product q --device b\n"},
        {"get echo --device b", 4, "several devices"},
        {"get echo --device gone", 4, "not online"},
        {"get echo --device a --timeout 1", 3, "no answer"}, // its status is still there, but nobody listens
        {"list --product q", 0, "b  q  -  -\n"},
    });
}

TEST_F(CloudToolTest, FindsTheNewestRunningDemo) {
    start();
    unsetenv("QVTK_BROKER");
    setenv("XDG_RUNTIME_DIR", "/tmp", 1);
    std::string demos = "/tmp/qvtk-demo-" + std::to_string(getuid());
    std::string command = "mkdir -p " + demos + "/1 " + demos + "/3 && ln -s /tmp/broker " + demos +
                          "/2 && touch " + demos + "/1/broker.sock " + demos +
                          "/3/broker.sock"; // 1 and 3 have no broker any more
    ASSERT_EQ(system(command.c_str()), 0);
    expect_runs({{"get echo", 0, "{}"}});
}

} // namespace
