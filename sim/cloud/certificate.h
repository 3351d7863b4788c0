// SPDX-License-Identifier: Apache-2.0
// The server's own certificate and the TLS settings that present it.
#pragma once
#include <memory>
#include <openssl/ssl.h>
#include <string>

namespace cloudsim {

struct FreeTls {
    void operator()(SSL *tls) const { SSL_free(tls); }
    void operator()(SSL_CTX *settings) const { SSL_CTX_free(settings); }
    void operator()(X509 *certificate) const { X509_free(certificate); }
    void operator()(EVP_PKEY *key) const { EVP_PKEY_free(key); }
    void operator()(BIO *bio) const { BIO_free_all(bio); }
};
template <class T>
using TlsOwner = std::unique_ptr<T, FreeTls>;

struct Certificate {
    TlsOwner<EVP_PKEY> key;
    TlsOwner<X509> certificate;
};

// What a certificate says, and who signs it.
struct CertificateWish {
    const char *subject = "cloudsim";
    const char *names = "DNS:localhost,IP:127.0.0.1,IP:::1"; // as in an openssl.cnf
    const char *not_before = "20000101000000Z", *not_after = "20991231235959Z";
    unsigned rsa_bits = 0;               // 0: a P-256 key
    const Certificate *issuer = nullptr; // null: itself
};

// A fresh key with its certificate (RFC 5280), by default self-signed for localhost and the loopback
// addresses and valid for so long that a moved clock does not matter. Throws std::runtime_error.
Certificate make_certificate(const CertificateWish &wish = {});

std::string to_pem(const Certificate &certificate);

// Server settings with that certificate. Throws std::runtime_error.
TlsOwner<SSL_CTX> make_server_settings(const Certificate &certificate);

} // namespace cloudsim
