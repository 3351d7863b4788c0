// SPDX-License-Identifier: Apache-2.0
#include "certificate.h"

#include <openssl/ec.h>
#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/rsa.h>
#include <openssl/x509v3.h>
#include <stdexcept>

namespace cloudsim {
namespace {

void require(bool done, const char *what) {
    if (!done) throw std::runtime_error(std::string("certificate: cannot ") + what);
}

void add_extension(X509 *certificate, int kind, const char *value) {
    X509V3_CTX context;
    X509V3_set_ctx_nodb(&context);
    X509V3_set_ctx(&context, certificate, certificate, nullptr, nullptr, 0);
    X509_EXTENSION *extension = X509V3_EXT_conf_nid(nullptr, &context, kind, value);
    bool added = extension != nullptr && X509_add_ext(certificate, extension, -1) == 1;
    X509_EXTENSION_free(extension);
    require(added, value);
}

void set_subject(X509 *certificate, const char *subject, const X509 *issuer) {
    const auto *text = reinterpret_cast<const unsigned char *>(subject);
    require(X509_NAME_add_entry_by_txt(X509_get_subject_name(certificate), "CN", MBSTRING_ASC, text, -1, -1,
                                       0) == 1 &&
                X509_set_issuer_name(certificate, X509_get_subject_name(issuer)) == 1,
            "name it");
}

// Two servers of one name must not share a serial number, or clients that keep both refuse the second.
void set_serial(X509 *certificate) {
    std::uint32_t serial = 0;
    require(RAND_bytes(reinterpret_cast<unsigned char *>(&serial), sizeof serial) == 1, "number it");
    ASN1_INTEGER_set(X509_get_serialNumber(certificate), static_cast<long>(serial));
}

} // namespace

Certificate make_certificate(const CertificateWish &wish) {
    EVP_PKEY *key = wish.rsa_bits > 0 ? EVP_RSA_gen(wish.rsa_bits) : EVP_EC_gen("P-256");
    Certificate made{TlsOwner<EVP_PKEY>(key), TlsOwner<X509>(X509_new())};
    const Certificate &issuer = wish.issuer ? *wish.issuer : made;
    X509 *certificate = made.certificate.get();
    require(made.key != nullptr && certificate != nullptr, "make a key");
    X509_set_version(certificate, X509_VERSION_3);
    set_serial(certificate);
    ASN1_TIME_set_string(X509_getm_notBefore(certificate), wish.not_before);
    ASN1_TIME_set_string(X509_getm_notAfter(certificate), wish.not_after);
    X509_set_pubkey(certificate, made.key.get());
    set_subject(certificate, wish.subject, issuer.certificate.get());
    add_extension(certificate, NID_basic_constraints, wish.issuer ? "critical,CA:FALSE" : "critical,CA:TRUE");
    add_extension(certificate, NID_subject_alt_name, wish.names);
    require(X509_sign(certificate, issuer.key.get(), EVP_sha256()) > 0, "sign it");
    return made;
}

std::string to_pem(const Certificate &certificate) {
    TlsOwner<BIO> memory(BIO_new(BIO_s_mem()));
    require(memory != nullptr && PEM_write_bio_X509(memory.get(), certificate.certificate.get()) == 1,
            "write it");
    char *text = nullptr;
    long length = BIO_get_mem_data(memory.get(), &text);
    return std::string(text, static_cast<std::size_t>(length));
}

TlsOwner<SSL_CTX> make_server_settings(const Certificate &certificate) {
    TlsOwner<SSL_CTX> settings(SSL_CTX_new(TLS_server_method()));
    require(settings != nullptr &&
                SSL_CTX_use_certificate(settings.get(), certificate.certificate.get()) == 1 &&
                SSL_CTX_use_PrivateKey(settings.get(), certificate.key.get()) == 1,
            "use it");
    return settings;
}

} // namespace cloudsim
