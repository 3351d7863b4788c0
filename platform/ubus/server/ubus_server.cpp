// SPDX-License-Identifier: Apache-2.0
#include "ubus_server.h"

#include <fcntl.h>
#include <filesystem>
#include <map>
#include <sys/stat.h>
#include <sys/un.h>
#include <system_error>
#include <unistd.h>

#include "broker.h"
#include "loop_work.h"

namespace {
// A client and how the loop watches it.
struct Connection {
    std::shared_ptr<BusClient> client;
    WatchedFd watched;
    bool waits_to_write = false;

    Connection(std::shared_ptr<BusClient> bus_client, std::function<void()> ready)
        : client(std::move(bus_client)), watched(client->fd(), std::move(ready)) {}
};
} // namespace

struct UbusServer::State {
    LoopWork work{[this] { flush_all(); }};
    ObjectTable objects;
    Broker broker{&objects};
    std::map<int, std::unique_ptr<Connection>> clients; // by descriptor
    std::unique_ptr<WatchedFd> watched_listener;
    int listener = -1;
    // Closed for a moment when there is no descriptor left, to accept a client and let it go: who waits in
    // the listener's queue would keep the loop awake for ever.
    int spare = open("/dev/null", O_RDONLY | O_CLOEXEC);
    std::string path;

    ~State() { close(spare); }
    void watch_listener();
    void accept_all();
    bool refuse_one();
    void serve(int fd);
    void flush_all();
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

// Removes the socket of a server that has ended; nothing else that has its name.
void remove_stale(const sockaddr_un &address) {
    struct stat there {};
    if (lstat(address.sun_path, &there) != 0 || !S_ISSOCK(there.st_mode)) return;
    int fd = unix_socket();
    int ret = connect(fd, reinterpret_cast<const sockaddr *>(&address), sizeof(address));
    bool refused = ret != 0 && errno == ECONNREFUSED;
    close(fd);
    if (refused) unlink(address.sun_path);
}
} // namespace

void UbusServer::State::watch_listener() {
    if (listener < 0) return;
    watched_listener = std::make_unique<WatchedFd>(listener, [this] {
        accept_all();
        flush_all();
    });
    watched_listener->watch();
}

void UbusServer::State::accept_all() {
    int fd;
    do {
        while ((fd = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK)) >= 0) {
            auto client = std::make_shared<BusClient>(fd, objects.free_id());
            clients[fd] = std::make_unique<Connection>(std::move(client), [this, fd] { serve(fd); });
            clients[fd]->watched.watch();
        }
    } while ((errno == EMFILE || errno == ENFILE) && refuse_one());
}

// Accepts a client only to close it; false when that does not go either.
bool UbusServer::State::refuse_one() {
    close(spare);
    const int fd = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
    close(fd);
    spare = open("/dev/null", O_RDONLY | O_CLOEXEC);
    return fd >= 0 && spare >= 0;
}

void UbusServer::State::serve(int fd) {
    std::shared_ptr<BusClient> client = clients.at(fd)->client;
    bool alive = client->read();
    wire::Message message;
    auto connected = [&] {
        auto at = clients.find(fd);
        return at != clients.end() && at->second->client == client;
    };
    while (connected() && client->next(&message))
        broker.handle(client, message);
    if (connected() && (!alive || client->broken())) clients.erase(fd);
    flush_all();
}

// Everything that a turn had to say to a client goes out in one write.
void UbusServer::State::flush_all() {
    for (auto at = clients.begin(); at != clients.end();) {
        Connection &connection = *at->second;
        const bool alive = connection.client->flush();
        const bool pending = connection.client->pending();
        if (alive && pending != connection.waits_to_write) connection.watched.watch(pending);
        connection.waits_to_write = pending;
        at = alive ? std::next(at) : clients.erase(at);
    }
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
}

void UbusServer::close_listener() {
    if (state->listener < 0) return;
    state->watched_listener.reset();
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
    state->clients.clear();
}

void UbusServer::run() {
    state->watch_listener();
    state->work.run();
    state->watched_listener.reset();
    state->clients.clear();
}

void UbusServer::stop() {
    state->work.stop();
}

void UbusServer::post(std::function<void()> function) {
    state->work.post(std::move(function));
}

void UbusServer::after(int milliseconds, std::function<void()> function) {
    state->work.after(milliseconds, std::move(function));
}
