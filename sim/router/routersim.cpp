// SPDX-License-Identifier: Apache-2.0
// The simulated router as a program.
#include <csignal>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "sim/router/faults.h"
#include "sim/router/hardware.h"
#include "sim/router/images.h"
#include "sim/router/listing.h"
#include "sim/router/router.h"

namespace {

constexpr char USAGE[] =
    R"(usage: routersim [--socket PATH] [--state FILE] [--set POINTER=JSON]... [--fault FAULT]...
       routersim --list | --home | --help

Serves a bus with the configuration daemon of a simulated home router, until SIGINT or SIGTERM.

  --socket PATH       the bus's socket (default: /apvar/run/ubus/ubus.sock)
  --state FILE        changes to the built-in home, as a JSON merge patch
  --set POINTER=JSON  one change of the state: --set '/vrop.waninfo/status="Unconnected"'
  --fault FAULT       what goes wrong from the start, as "KIND [OBJECT [METHOD [COUNT]]]"; KIND is no_reply,
                      delay=MILLISECONDS, result=NUMBER, absent, status=NUMBER or reply=JSON; OBJECT and METHOD are
                      glob patterns: --fault 'result=2 vrop.wifi.* set 1'
  --list              every object and method, then exit
  --home              the built-in home, then exit
  --help              this text

While it runs, the object "sim" changes the world and sets faults: see --list.
)";

struct Options {
    std::string socket = router::DEFAULT_SOCKET, patch;
    std::vector<std::string> settings;
    std::vector<router::Fault> faults;
};

std::string read_file(const char *path) {
    std::ifstream file(path);
    std::stringstream text;
    text << file.rdbuf();
    if (!file) throw std::runtime_error(std::string("cannot read ") + path);
    return text.str();
}

Options parse(int count, char **words) {
    Options options;
    for (int i = 1; i < count; i += 2) {
        const std::string word = words[i];
        if (i + 1 >= count) throw std::runtime_error("unknown option, or no value for it: " + word);
        if (word == "--socket")
            options.socket = words[i + 1];
        else if (word == "--state")
            options.patch = read_file(words[i + 1]);
        else if (word == "--set")
            options.settings.emplace_back(words[i + 1]);
        else if (word == "--fault")
            options.faults.push_back(router::parse_fault(words[i + 1]));
        else
            throw std::runtime_error("unknown option " + word);
    }
    return options;
}

void apply(const Options &options, router::Router &router) {
    for (const std::string &setting : options.settings) {
        std::size_t equals = setting.find('=');
        if (equals == std::string::npos) throw std::runtime_error("no '=' in " + setting);
        router.set_state(setting.substr(0, equals), setting.substr(equals + 1));
    }
    for (const router::Fault &fault : options.faults)
        router.add_fault(fault);
}

int serve(const Options &options) {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr); // before the server's thread, which inherits it
    signal(SIGPIPE, SIG_IGN);

    router::Router router(options.patch);
    apply(options, router);
    if (!router::share_images()) fprintf(stderr, "routersim: cannot link the images of /tmp to /aptmp\n");
    router::make_hardware();
    router.run_clock(true);
    router.start(options.socket);
    printf("routersim: serving %s\n", options.socket.c_str());
    fflush(stdout);
    int number = 0;
    sigwait(&signals, &number);
    return 0;
}

} // namespace

int main(int count, char **words) {
    const std::string first = count == 2 ? words[1] : "";
    if (first == "--help" || first == "-h") return printf("%s", USAGE) < 0;
    if (first == "--list") return printf("%s", router::listing().c_str()) < 0;
    if (first == "--home") return printf("%s", router::home_state().c_str()) < 0;
    try {
        return serve(parse(count, words));
    } catch (const std::exception &error) {
        fprintf(stderr, "routersim: %s\n", error.what());
        return 1;
    }
}
