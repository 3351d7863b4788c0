// SPDX-License-Identifier: Apache-2.0
// A listening socket with a thread that accepts and one thread per connection.
#pragma once
#include "connection.h"
#include <condition_variable>
#include <functional>
#include <list>
#include <mutex>
#include <optional>
#include <thread>

namespace cloudsim {

class Listener {
  public:
    using Serve = std::function<void(Connection &)>; // called on the connection's thread

    // `tls` (null: plain) must outlive it.
    Listener(SSL_CTX *tls, Serve serve);
    ~Listener(); // ends all connections, then all threads
    Listener(const Listener &) = delete;
    Listener &operator=(const Listener &) = delete;

    // One of these, once. Both throw std::runtime_error.
    int listen_tcp(const std::string &host, int port); // the port; 0: any free one
    void listen_unix(const std::string &path);         // mode 0600; a socket left there is replaced

    // Any thread. Done when it returns: false closes the listening socket, true opens it at the same address.
    // With a time, false turns true by itself after it. Connections that stand are left alone. Throws
    // std::runtime_error when the address cannot be had back.
    void set_listening(bool listening, std::chrono::milliseconds time = {});

  private:
    struct Worker {
        std::unique_ptr<Connection> connection;
        std::thread thread;
        bool done = false;
    };
    void start();
    void run();
    void follow_wish();
    int patience();
    void wake() const;
    bool accept_one();
    void serve(Worker &worker);
    void join_done_workers(bool all);

    SSL_CTX *tls_;
    Serve serve_;
    sockaddr_storage address_{};
    socklen_t address_length_ = 0;
    Descriptor socket_, wake_;
    std::thread thread_;
    std::mutex mutex_;
    std::condition_variable changed_;
    bool wished_ = true, listening_ = true, stopping_ = false;
    std::optional<std::chrono::steady_clock::time_point> resume_;
    std::list<Worker> workers_;
};

} // namespace cloudsim
