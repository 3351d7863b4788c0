// SPDX-License-Identifier: Apache-2.0
// Servers that are not who they should be, to everything that makes requests.
#include <csignal>
#include <functional>
#include <thread>

#include <gmock/gmock.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include "core/files.h"
#include "core/handles.h"
#include "helper.h"
#include "https/ca_file.h"
#include "https/requests.h"
#include "sim/cloud/certificate.h"
#include "support/main_log.h"
#include "upgrade/firmware.h"

static const char *authorities = ""; // what this build trusts

const char *ca_file() {
    return authorities;
}

namespace {

using cloudsim::Certificate;
using cloudsim::TlsOwner;
using testing::MatchesRegex;

constexpr char AUTHORITIES[] = "/apetc/authorities.pem";
constexpr char ANSWER[] = "HTTP/1.1 200 OK\r\nContent-Length: 10\r\nConnection: close\r\n\r\n{\"code\":0}";

// Answers every connection alike, over TLS with settings.
class Server {
  public:
    explicit Server(TlsOwner<SSL_CTX> settings) : settings_(std::move(settings)) {
        sockaddr_in address = {AF_INET, 0, {htonl(INADDR_LOOPBACK)}, {}};
        socklen_t length = sizeof address;
        auto *any = reinterpret_cast<sockaddr *>(&address);
        EXPECT_TRUE(bind(socket_.get(), any, length) == 0 && listen(socket_.get(), 8) == 0);
        getsockname(socket_.get(), any, &length);
        port_ = ntohs(address.sin_port);
        thread_ = std::jthread([this] { serve(); });
    }
    ~Server() { shutdown(socket_.get(), SHUT_RDWR); }
    std::string address(const std::string &scheme) const {
        return scheme + "://127.0.0.1:" + std::to_string(port_) + "/file";
    }

  private:
    void serve() {
        for (Descriptor peer; (peer = Descriptor(accept(socket_.get(), nullptr, nullptr)));) {
            settings_ ? answer_tls(peer.get()) : answer_plain(peer.get());
            shutdown(peer.get(), SHUT_WR);
            char rest[1024]; // unread bytes would reset the connection
            while (recv(peer.get(), rest, sizeof rest, 0) > 0) {
            }
        }
    }
    void answer_tls(int peer) {
        const TlsOwner<SSL> tls(SSL_new(settings_.get()));
        SSL_set_fd(tls.get(), peer);
        char request[4096];
        if (SSL_accept(tls.get()) != 1 || SSL_read(tls.get(), request, sizeof request) <= 0) return;
        SSL_write(tls.get(), ANSWER, sizeof ANSWER - 1);
        SSL_shutdown(tls.get());
    }
    static void answer_plain(int peer) {
        char request[4096];
        if (recv(peer, request, sizeof request, 0) > 0) send(peer, ANSWER, sizeof ANSWER - 1, MSG_NOSIGNAL);
    }

    Descriptor socket_{socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)};
    TlsOwner<SSL_CTX> settings_;
    int port_ = 0;
    std::jthread thread_;
};

TlsOwner<SSL_CTX> settings_with(const cloudsim::CertificateWish &wish) {
    const Certificate certificate = make_certificate(wish);
    TlsOwner<SSL_CTX> settings(SSL_CTX_new(TLS_server_method()));
    SSL_CTX_set_security_level(settings.get(), 0); // presents weak keys, too
    EXPECT_EQ(SSL_CTX_use_certificate(settings.get(), certificate.certificate.get()), 1);
    EXPECT_EQ(SSL_CTX_use_PrivateKey(settings.get(), certificate.key.get()), 1);
    return settings;
}

// Makes a request in each of the ways; gives what was said of it, one line each: empty when all succeeded.
std::vector<std::string> complaints(const std::string &address) {
    std::vector<std::string> lines;
    clear_main_log();
    char text[64] = {};
    ReplyBuffer reply = {text, sizeof text};
    testing::internal::CaptureStderr();
    const bool posted = curl_post("{}", 2, &reply, address.c_str(), 1) == 0;
    const bool loaded = fetch_image(address.c_str(), "/tmp/image", 10, ProgressMeter::hidden) == 0;
    Transfer transfer;
    Answer answer = {.text = {}, .limit = REPLY_LIMIT};
    const bool exchanged = exchange(&transfer, address.c_str(), &answer);
    const std::string said = testing::internal::GetCapturedStderr();
    EXPECT_TRUE(posted == loaded && loaded == exchanged) << posted << loaded << exchanged;
    EXPECT_EQ(access("/tmp/image", F_OK) == 0, loaded);
    for (const std::string &line : log_messages())
        if (line.find("not verified") != std::string::npos) lines.push_back(line);
    if (!exchanged) lines.push_back(said);
    return lines;
}

TEST(Trust, IsGivenToWhomTheAuthoritiesVouchFor) {
    signal(SIGPIPE, SIG_IGN); // the server's, when a client has seen enough
    set_default_logs();
    init_transfers();
    const Certificate authority = cloudsim::make_certificate({.subject = "authority"});
    const Certificate unknown = cloudsim::make_certificate({.subject = "unknown authority"});
    ASSERT_TRUE(replace_file(AUTHORITIES, to_pem(authority), 0644));
    struct Row {
        const char *name;
        std::function<TlsOwner<SSL_CTX>()> settings;
        const char *why; // null: believed
        const char *scheme = "https";
        const char *trusts = AUTHORITIES;
    };
    const auto with = [](const cloudsim::CertificateWish &wish) {
        return [wish] { return settings_with(wish); };
    };
    const auto plain = [] { return TlsOwner<SSL_CTX>(); };
    const auto good = with({.issuer = &authority});
    const Row rows[] = {
        {"good", good, nullptr},
        {"good, strong RSA", with({.rsa_bits = 2048, .issuer = &authority}), nullptr},
        {"expired", with({.not_after = "20200101000000Z", .issuer = &authority}), ".*has expired"},
        {"not yet valid", with({.not_before = "20980101000000Z", .issuer = &authority}), ".*not yet valid"},
        {"wrong name", with({.names = "DNS:other.example.com", .issuer = &authority}), ".*127.0.0.1.*"},
        {"self-signed", with({}), ".*self.signed.*"},
        {"unknown CA", with({.issuer = &unknown}), ".*unable to get local issuer.*"},
        {"weak key", with({.rsa_bits = 1024, .issuer = &authority}), ".*key too weak"},
        {"plain http behind https", plain, ".*wrong version number"},
        {"plain http", plain, ".*http.*", "http"},
        {"no authorities", good, ".*", "https", "/apetc/none.pem"},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        const Server server(row.settings());
        authorities = row.trusts;
        const std::vector<std::string> said = complaints(server.address(row.scheme));
        EXPECT_EQ(said.size(), row.why ? 3U : 0U); // the post's, the image's, the helper's
        for (const std::string &line : said)
            EXPECT_THAT(line, MatchesRegex("(#http upgrade# |: )?server not verified: " +
                                           std::string(row.why) + "\n?"));
        // as built by default, nobody is asked who they are
        authorities = "";
        const bool speaks = row.name != std::string("plain http behind https");
        EXPECT_EQ(complaints(server.address(row.scheme)).empty(), speaks);
    }
}

} // namespace
