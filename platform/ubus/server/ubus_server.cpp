// SPDX-License-Identifier: Apache-2.0
#include "ubus_server.h"

#include <filesystem>
#include <map>
#include <poll.h>
#include <sys/un.h>
#include <system_error>
#include <unistd.h>

#include "broker.h"
#include "event_loop.h"

struct UbusServer::State {
    EventLoop loop;
    ObjectTable objects;
    Broker broker{&objects};
    std::map<int, std::shared_ptr<BusClient>> clients; // by descriptor
    int listener = -1;
    std::string path;

    State() {
        loop.before_wait([this] { flush_all(); });
    }
    void accept_all();
    void serve(int fd);
    void flush_all();
    void drop(int fd);
};

namespace {
sockaddr_un unix_address(const std::string &path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof(address.sun_path))
        throw std::system_error(ENAMETOOLONG, std::generic_category(), path);
    path.copy(address.sun_path, path.size());
    return address;
}

int unix_socket() {
    int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (fd < 0) throw std::system_error(errno, std::generic_category(), "socket");
    return fd;
}

// Removes the socket file of a server that has ended.
void remove_stale(const sockaddr_un &address) {
    int fd = unix_socket();
    int ret = connect(fd, reinterpret_cast<const sockaddr *>(&address), sizeof(address));
    bool refused = ret != 0 && errno == ECONNREFUSED;
    close(fd);
    if (refused) unlink(address.sun_path);
}
} // namespace

void UbusServer::State::accept_all() {
    int fd;
    while ((fd = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK)) >= 0) {
        clients[fd] = std::make_shared<BusClient>(fd, objects.free_id());
        loop.watch(fd, POLLIN, [this, fd](short) { serve(fd); });
    }
}

void UbusServer::State::serve(int fd) {
    std::shared_ptr<BusClient> client = clients.at(fd);
    bool alive = client->read();
    wire::Message message;
    auto connected = [&] {
        auto at = clients.find(fd);
        return at != clients.end() && at->second == client;
    };
    while (connected() && client->next(&message))
        broker.handle(client, message);
    if (connected() && (!alive || client->broken())) drop(fd);
}

// Everything that a turn had to say to a client goes out in one write.
void UbusServer::State::flush_all() {
    std::vector<int> gone;
    for (const auto &[fd, client] : clients) {
        if (!client->flush()) gone.push_back(fd);
        loop.change(fd, client->pending() ? POLLIN | POLLOUT : POLLIN);
    }
    for (int fd : gone)
        drop(fd);
}

void UbusServer::State::drop(int fd) {
    loop.unwatch(fd);
    clients.erase(fd);
}

UbusServer::UbusServer() : state(std::make_unique<State>()) {}

UbusServer::~UbusServer() {
    close_listener();
}

void UbusServer::listen(const std::string &path) {
    sockaddr_un address = unix_address(path);
    std::filesystem::create_directories(std::filesystem::absolute(path).parent_path());
    close_listener();
    remove_stale(address);
    int fd = unix_socket();
    if (bind(fd, reinterpret_cast<sockaddr *>(&address), sizeof(address)) != 0 ||
        ::listen(fd, SOMAXCONN) != 0) {
        int error = errno;
        close(fd);
        throw std::system_error(error, std::generic_category(), path);
    }
    state->listener = fd;
    state->path = path;
    state->loop.watch(fd, POLLIN, [this](short) { state->accept_all(); });
}

void UbusServer::close_listener() {
    if (state->listener < 0) return;
    state->loop.unwatch(state->listener);
    close(state->listener);
    unlink(state->path.c_str());
    state->listener = -1;
}

uint32_t UbusServer::add_object(const std::string &path, std::vector<UbusMethod> methods, Handler handler) {
    return state->objects.add(path, std::move(methods), std::move(handler));
}

bool UbusServer::remove_object(const std::string &path) {
    return state->objects.remove(path);
}

uint32_t UbusServer::object_id(const std::string &path) const {
    const BusObject *object = state->objects.by_path(path);
    return object ? object->id : 0;
}

void UbusServer::renumber() {
    state->objects.renumber();
}

void UbusServer::drop_clients() {
    state->flush_all();
    while (!state->clients.empty())
        state->drop(state->clients.begin()->first);
}

void UbusServer::run() {
    state->loop.run();
}

void UbusServer::stop() {
    state->loop.stop();
}

void UbusServer::post(std::function<void()> function) {
    state->loop.post(std::move(function));
}

uint64_t UbusServer::after(int milliseconds, std::function<void()> function) {
    return state->loop.after(milliseconds, std::move(function));
}

void UbusServer::cancel(uint64_t timer) {
    state->loop.cancel(timer);
}
