// SPDX-License-Identifier: Apache-2.0
// The simulated router as a program.
#include <algorithm>
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

Of the bus, lookups, calls and pings are served: what lists and calls works, what listens, waits, subscribes,
monitors or sends events is refused ("Invalid command").

While it runs, the object "sim" changes the world and sets faults: see --list.
)";

struct Options {
    std::string socket = router::DEFAULT_SOCKET, patch;
    std::vector<std::string> settings;
    std::vector<router::Fault> faults;
    std::string (*shown)() = nullptr; // what is printed instead of serving
};

std::string read_file(const std::string &path) {
    std::ifstream file(path);
    std::stringstream text;
    text << file.rdbuf();
    if (!file) throw std::runtime_error("cannot read " + path);
    return text.str();
}

struct Shown {
    const char *option;
    std::string (*text)();
};
constexpr Shown SHOWN[] = {{"--help", [] { return std::string(USAGE); }},
                           {"-h", [] { return std::string(USAGE); }},
                           {"--list", router::listing},
                           {"--home", router::home_state}};

struct Valued {
    const char *option;
    void (*take)(Options &, const std::string &value);
};
constexpr Valued VALUED[] = {
    {"--socket", [](Options &options, const std::string &value) { options.socket = value; }},
    {"--state", [](Options &options, const std::string &value) { options.patch = read_file(value); }},
    {"--set", [](Options &options, const std::string &value) { options.settings.push_back(value); }},
    {"--fault", [](Options &options,
                   const std::string &value) { options.faults.push_back(router::parse_fault(value)); }},
};

Options parse(const std::vector<std::string> &words) {
    Options options;
    for (size_t i = 0; i < words.size(); i++) {
        const Shown *shown = std::ranges::find(SHOWN, words[i], &Shown::option);
        const Valued *valued = std::ranges::find(VALUED, words[i], &Valued::option);
        if (shown != std::end(SHOWN))
            options.shown = shown->text;
        else if (valued == std::end(VALUED))
            throw std::runtime_error("unknown option " + words[i]);
        else if (i + 1 == words.size())
            throw std::runtime_error("no value for " + words[i]);
        else
            valued->take(options, words[++i]);
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

void serve(const Options &options, router::Router &router) {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr); // before the server's thread, which inherits it
    signal(SIGPIPE, SIG_IGN);

    if (!router::share_images()) fprintf(stderr, "routersim: cannot link the images of /tmp to /aptmp\n");
    router::make_hardware();
    router.call("sim", "storage"); // writes the status file, where there is a place for it
    router.run_clock();
    router.start(options.socket);
    printf("routersim: serving %s\n", options.socket.c_str());
    fflush(stdout);
    int number = 0;
    sigwait(&signals, &number);
}

} // namespace

int main(int count, char **words) {
    bool understood = false; // before, an error is one of the arguments
    try {
        const Options options = parse({words + 1, words + count});
        if (options.shown != nullptr) return printf("%s", options.shown().c_str()) < 0;
        router::Router router(options.patch);
        apply(options, router);
        understood = true;
        serve(options, router);
        return 0;
    } catch (const std::exception &error) {
        fprintf(stderr, "routersim: %s%s\n", error.what(), understood ? "" : "; see --help");
        return understood ? 1 : 2;
    }
}
