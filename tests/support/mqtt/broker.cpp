// SPDX-License-Identifier: Apache-2.0
#include "support/mqtt/broker.h"

#include "core/handles.h"

#include <chrono>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <thread>

extern char **environ;

namespace test_mqtt {

namespace {

constexpr auto LIMIT = std::chrono::seconds(10);

bool takes_connections(const std::string &path) {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
    Descriptor probe(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    return connect(probe.get(), reinterpret_cast<sockaddr *>(&address), sizeof address) == 0;
}

} // namespace

Broker::Broker(const std::string &folder, int tcp_port, const std::string &extra)
    : config_(folder + "/mosquitto.conf"), socket_(folder + "/broker.sock") {
    std::filesystem::create_directories(folder);
    std::string text = "user root\nallow_anonymous true\nlog_dest none\nlistener 0 " + socket_ + "\n";
    if (tcp_port) text += "listener " + std::to_string(tcp_port) + " 127.0.0.1\n";
    std::ofstream(config_) << text << extra;
    start();
}

bool Broker::start() {
    stop();
    std::filesystem::remove(socket_);
    std::string program = "/usr/sbin/mosquitto", option = "-c";
    char *arguments[] = {program.data(), option.data(), config_.data(), nullptr};
    if (posix_spawn(&process_, program.c_str(), nullptr, nullptr, arguments, environ) != 0) process_ = -1;
    auto deadline = std::chrono::steady_clock::now() + LIMIT;
    while (running() && std::chrono::steady_clock::now() < deadline) {
        if (takes_connections(socket_)) return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    stop();
    return false;
}

void Broker::stop() {
    if (!running()) return;
    kill(process_, SIGKILL);
    waitpid(process_, nullptr, 0);
    process_ = -1;
}

void Broker::stall() {
    if (running()) kill(process_, SIGSTOP);
}

} // namespace test_mqtt
