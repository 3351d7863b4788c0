// SPDX-License-Identifier: Apache-2.0
// The digests against OpenSSL's.
#include <cstring>
#include <string>
#include <vector>

#include <openssl/evp.h>

#include "benchmarks.h"
#include "core/files.h"
#include "core/handles.h"
#include "digests/digest.h"
#include "upgrade/https_upgrade.h"

namespace bench {

namespace {

constexpr size_t BYTES = 8 << 20;
constexpr double MD5_GOAL = 1 / 0.8; // as fast as 0.8 of OpenSSL
constexpr char FILE_NAME[] = "/tmp/digest.bin";
constexpr size_t PIECE = 1024; // bytes read at a time, as the agent does
constexpr size_t READ_AHEAD = 16384;

struct FreeContext {
    void operator()(EVP_MD_CTX *context) const { EVP_MD_CTX_free(context); }
};
using Context = std::unique_ptr<EVP_MD_CTX, FreeContext>;

struct Digest {
    uint8_t bytes[EVP_MAX_MD_SIZE];
};

std::vector<uint8_t> some_bytes() {
    std::vector<uint8_t> bytes(BYTES);
    uint32_t value = 1;
    for (uint8_t &byte : bytes)
        byte = static_cast<uint8_t>((value = value * 1664525 + 1013904223) >> 24);
    return bytes;
}

Digest file_digest(const EVP_MD *kind) {
    Digest digest = {};
    const FileHandle file(fopen(FILE_NAME, "rbe"));
    const Context context(EVP_MD_CTX_new());
    if (!file || !context) return digest;
    setvbuf(file.get(), nullptr, _IOFBF, READ_AHEAD);
    EVP_DigestInit_ex(context.get(), kind, nullptr);
    uint8_t piece[PIECE];
    for (size_t got = 0; (got = fread(piece, 1, sizeof piece, file.get())) > 0;)
        EVP_DigestUpdate(context.get(), piece, got);
    EVP_DigestFinal_ex(context.get(), digest.bytes, nullptr);
    return digest;
}

void md5_of_file(benchmark::State &state) {
    const std::vector<uint8_t> bytes = some_bytes();
    if (!replace_file(FILE_NAME, std::string(bytes.begin(), bytes.end()), 0600)) {
        state.SkipWithError("cannot write the file");
        return;
    }
    char expected[33];
    const Digest right = file_digest(EVP_md5());
    for (size_t i = 0; i < 16; i++)
        snprintf(expected + 2 * i, 3, "%02x", right.bytes[i]);
    compare(
        state, {.with = "OpenSSL", .unit = "byte", .amount = BYTES, .goal = MD5_GOAL},
        [&] { return strcmp(get_file_md5(FILE_NAME).text, expected) == 0; },
        [&] { return memcmp(file_digest(EVP_md5()).bytes, right.bytes, 16) == 0; });
}

void sha1_of_buffer(benchmark::State &state) {
    const std::vector<uint8_t> bytes = some_bytes();
    Digest own = {};
    Digest right = {};
    compare(
        state, {.with = "OpenSSL", .unit = "byte", .amount = BYTES},
        [&] {
            utils_sha1(bytes.data(), bytes.size(), own.bytes);
            return true;
        },
        [&] {
            return EVP_Digest(bytes.data(), bytes.size(), right.bytes, nullptr, EVP_sha1(), nullptr) == 1;
        });
    if (memcmp(own.bytes, right.bytes, 20) != 0) state.SkipWithError("the digests differ");
}

} // namespace

void add_digests() {
    benchmark::RegisterBenchmark("MD5 of a file", md5_of_file)->UseManualTime();
    benchmark::RegisterBenchmark("SHA-1", sha1_of_buffer)->UseManualTime();
}

} // namespace bench
