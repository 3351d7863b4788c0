// SPDX-License-Identifier: Apache-2.0
#include "options.h"

#include "core/handles.h"
#include "sim/router/router.h"
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <stdexcept>
#include <sys/stat.h>

using namespace cloudsim;

namespace {

FileHandle open_log(const std::string &path) {
    Descriptor file(path.empty() ? dup(STDOUT_FILENO)
                                 : open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600));
    FileHandle log(file ? fdopen(file.get(), "a") : nullptr);
    if (!log) throw std::invalid_argument("--log: cannot write " + path + ": " + std::strerror(errno));
    file.release();
    return log;
}

void prepare(Cloud &cloud, const CommandLine &line) {
    if (line.firmware) cloud.offer(*line.firmware);
    if (line.settings) cloud.set_settings(*line.settings);
    for (const auto &[name, bytes] : line.backups)
        cloud.add_backup(name, bytes);
    for (const Fault &fault : line.faults)
        cloud.fault(fault);
}

// The control socket comes last: whoever sees it finds everything else ready.
void run(CommandLine line) {
    FileHandle log = open_log(line.log);
    line.options.log = [&](const std::string &text) {
        std::fprintf(log.get(), "%s\n", text.c_str());
        std::fflush(log.get());
    };
    sigset_t ends;
    sigemptyset(&ends);
    sigaddset(&ends, SIGINT);
    sigaddset(&ends, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &ends, nullptr);
    if (line.options.devices.empty()) line.options.devices = {device_of_home(router::home_state())};
    Cloud cloud(line.options);
    prepare(cloud, line);
    cloud.start(line.port, line.scheme);
    std::fprintf(stderr, "cloudsim: listening on %s\n", cloud.url("").c_str());
    if (!line.control.empty()) cloud.start_control(line.control);
    int which = 0;
    sigwait(&ends, &which);
}

} // namespace

int main(int count, char **arguments) {
    try {
        CommandLine line = parse_command_line({arguments + 1, arguments + count});
        if (line.help)
            std::fputs(usage().c_str(), stdout);
        else
            run(std::move(line));
        return 0;
    } catch (const std::invalid_argument &error) {
        std::fprintf(stderr, "cloudsim: %s; see --help\n", error.what());
        return 2;
    } catch (const std::exception &error) {
        std::fprintf(stderr, "cloudsim: %s\n", error.what());
        return 1;
    }
}
