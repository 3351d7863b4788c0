// SPDX-License-Identifier: Apache-2.0
// A mosquitto broker of the test's own, on a Unix socket and, if wanted, on 127.0.0.1.
#pragma once

#include <string>
#include <sys/types.h>

namespace test_mqtt {

class Broker {
  public:
    // Keeps its files in `folder`, which is made when missing; `tcp_port` 0: the socket only. `extra` is
    // added to the configuration. Starts at once.
    explicit Broker(const std::string &folder = "/tmp/broker", int tcp_port = 0,
                    const std::string &extra = "");
    ~Broker() { stop(); }
    Broker(const Broker &) = delete;
    Broker &operator=(const Broker &) = delete;

    // Returns when it takes connections; false after ten seconds without that.
    bool start();
    // Returns when it has gone.
    void stop();
    // Stops serving without closing anything, until stop().
    void stall();
    bool running() const { return process_ > 0; }
    const std::string &socket() const { return socket_; }

  private:
    std::string config_;
    std::string socket_;
    pid_t process_ = -1;
};

} // namespace test_mqtt
