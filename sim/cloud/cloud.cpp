// SPDX-License-Identifier: Apache-2.0
#include "cloud.h"

#include "control.h"
#include "core/files.h"
#include "endpoints.h"
#include "json.h"
#include "listener.h"
#include <stdexcept>

namespace cloudsim {

// `lifecycle` guards the members below it; the endpoints' threads use `services` alone.
struct Cloud::Impl {
    explicit Impl(const Options &options)
        : services(options), server(options.max_upload),
          control(std::max<std::size_t>(options.max_upload, 256u << 20)) {}

    Services services;
    HttpServer server, control;
    mutable std::mutex lifecycle;
    int port = 0;
    TlsOwner<SSL_CTX> tls;
    std::unique_ptr<Listener> listener, control_listener;
};

Cloud::Cloud(const Options &options) : impl_(std::make_unique<Impl>(options)) {
    add_signed_endpoints(impl_->server, impl_->services);
    add_transfers(impl_->server, impl_->services);
    add_control(impl_->control, *this);
}

Cloud::~Cloud() {
    stop();
}

int Cloud::start(int port, Scheme scheme) {
    std::lock_guard lock(impl_->lifecycle);
    if (impl_->listener) throw std::runtime_error("the cloud runs already");
    impl_->services.scheme = scheme;
    impl_->tls.reset();
    if (scheme == Scheme::https) {
        Certificate certificate = make_certificate();
        impl_->tls = make_server_settings(certificate);
        const std::string &out = impl_->services.options.certificate_out;
        if (!out.empty() && !replace_file(out.c_str(), to_pem(certificate), 0644))
            throw std::runtime_error("cannot write " + out);
    }
    auto listener = std::make_unique<Listener>(
        impl_->tls.get(), [this](Connection &connection) { impl_->server.serve(connection); });
    impl_->port = listener->listen_tcp(impl_->services.options.host, port);
    impl_->listener = std::move(listener);
    return impl_->port;
}

void Cloud::stop() {
    std::unique_ptr<Listener> listener, control;
    {
        std::lock_guard lock(impl_->lifecycle);
        listener = std::move(impl_->listener);
        control = std::move(impl_->control_listener);
    }
    // Outside the lock: the threads that end here may be waiting for it.
}

int Cloud::port() const {
    std::lock_guard lock(impl_->lifecycle);
    return impl_->port;
}

std::string Cloud::url(std::string_view path) const {
    const char *scheme = impl_->services.scheme == Scheme::https ? "https://" : "http://";
    return scheme + impl_->services.options.host + ":" + std::to_string(port()) + std::string(path);
}

void Cloud::set_listening(bool listening) {
    std::lock_guard lock(impl_->lifecycle);
    if (impl_->listener) impl_->listener->set_listening(listening);
}

void Cloud::add_device(Device device) {
    impl_->services.catalog.add(std::move(device));
}

void Cloud::offer(Firmware firmware) {
    require_plain_name(firmware.name);
    impl_->services.catalog.offer(std::make_shared<const Firmware>(std::move(firmware)));
}

void Cloud::withdraw() {
    impl_->services.catalog.offer(nullptr);
}

void Cloud::set_settings(const std::string &json) {
    if (!parse_json(json)) throw std::invalid_argument("the settings are not JSON");
    impl_->services.catalog.settings(json);
}

std::string Cloud::add_backup(const std::string &name, const std::string &bytes) {
    require_plain_name(name);
    impl_->services.backups.put(name, bytes);
    return "/backup/" + name;
}

void Cloud::fault(Fault fault) {
    if (!fault.refuse) return impl_->services.faults.add(std::move(fault));
    std::lock_guard lock(impl_->lifecycle);
    if (impl_->listener) impl_->listener->set_listening(false, *fault.refuse);
}

void Cloud::clear_faults() {
    impl_->services.faults.clear();
    set_listening(true);
}

std::vector<Request> Cloud::requests() const {
    return impl_->services.journal.all();
}

void Cloud::clear_requests() {
    impl_->services.journal.clear();
}

std::optional<std::string> Cloud::uploaded(const std::string &name) const {
    return impl_->services.uploads.get(name);
}

void Cloud::start_control(const std::string &socket_path) {
    auto listener = std::make_unique<Listener>(
        nullptr, [this](Connection &connection) { impl_->control.serve(connection); });
    listener->listen_unix(socket_path);
    std::lock_guard lock(impl_->lifecycle);
    impl_->control_listener = std::move(listener);
}

} // namespace cloudsim
