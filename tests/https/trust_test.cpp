// SPDX-License-Identifier: Apache-2.0
// Servers that are not who they should be, to everything that makes requests.
#include <csignal>
#include <optional>

#include <gmock/gmock.h>

#include "core/files.h"
#include "helper.h"
#include "https/ca_file.h"
#include "https/requests.h"
#include "sim/cloud/certificate.h"
#include "support/loopback_server.h"
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

// Answers a connection over TLS with settings, or plainly without.
void answer(int peer, SSL_CTX *settings) {
    char request[4096];
    if (!settings) {
        if (recv(peer, request, sizeof request, 0) > 0) send(peer, ANSWER, sizeof ANSWER - 1, MSG_NOSIGNAL);
        return;
    }
    const TlsOwner<SSL> tls(SSL_new(settings));
    SSL_set_fd(tls.get(), peer);
    if (SSL_accept(tls.get()) != 1 || SSL_read(tls.get(), request, sizeof request) <= 0) return;
    SSL_write(tls.get(), ANSWER, sizeof ANSWER - 1);
    SSL_shutdown(tls.get());
}

TlsOwner<SSL_CTX> settings_with(const std::optional<cloudsim::CertificateWish> &wish) {
    if (!wish) return nullptr;
    const Certificate certificate = make_certificate(*wish);
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
    const struct {
        const char *name;
        std::optional<cloudsim::CertificateWish> certificate; // none: not over TLS
        const char *why = nullptr;                            // of OpenSSL|of mbedTLS; null: believed
        const char *scheme = "https";
        const char *trusts = AUTHORITIES;
    } rows[] = {
        {"good", {{.issuer = &authority}}},
        {"good, strong RSA", {{.rsa_bits = 2048, .issuer = &authority}}},
        {"expired", {{.not_after = "20200101000000Z", .issuer = &authority}}, "has expired|_EXPIRED"},
        {"not yet valid", {{.not_before = "20980101000000Z", .issuer = &authority}}, "not yet valid|_FUTURE"},
        {"wrong name", {{.names = "DNS:other.example.com", .issuer = &authority}}, "localhost|_CN_MISMATCH"},
        {"self-signed", {{}}, "self.signed|_NOT_TRUSTED"},
        {"unknown CA", {{.issuer = &unknown}}, "unable to get local issuer|_NOT_TRUSTED"},
        {"weak key", {{.rsa_bits = 1024, .issuer = &authority}}, "key too weak"},
        {"plain http behind https", {}, "wrong version number|invalid SSL record"},
        {"plain http", {}, "http", "http"},
        {"no authorities", {{.issuer = &authority}}, "", "https", "/apetc/none.pem"},
    };
    const bool with_openssl = strstr(curl_version(), " OpenSSL/") != nullptr;
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        if (row.name == std::string("weak key") && !with_openssl) continue;
        const TlsOwner<SSL_CTX> settings = settings_with(row.certificate);
        const LoopbackServer server([&](int peer) { answer(peer, settings.get()); });
        authorities = row.trusts;
        const std::vector<std::string> said = complaints(server.url(row.scheme));
        EXPECT_EQ(said.size(), row.why ? 3U : 0U); // the post's, the image's, the helper's
        for (const std::string &line : said)
            EXPECT_THAT(line, MatchesRegex("(#http upgrade# |: )?server not verified: .*(" +
                                           std::string(row.why) + ").*\n?"));
        // as built by default, nobody is asked who they are
        authorities = "";
        const bool speaks = row.name != std::string("plain http behind https");
        EXPECT_EQ(complaints(server.url(row.scheme)).empty(), speaks);
    }
}

} // namespace
