// SPDX-License-Identifier: Apache-2.0
// What reaches a client, byte by byte, when the simulated cloud is told to misbehave.
#include "client.h"
#include <gmock/gmock.h>
#include <numeric>

namespace {

using cloudsim::Cloud;
using cloudsim::Fault;
using cloudsim::Scheme;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

struct Faulty {
    explicit Faulty(Scheme scheme = Scheme::https) : image(40000, '\0') {
        std::iota(image.begin(), image.end(), '\0'); // different from their neighbours
        cloud.start(0, scheme);
        cloud.offer({.name = "image.bin", .image = image, .version = "2"});
    }
    Reply download(long timeout_ms = 30000) {
        return perform({.url = cloud.url("/firmware/image.bin"), .timeout_ms = timeout_ms});
    }
    std::string image;
    Cloud cloud;
};

void expect_endings(Scheme scheme) {
    struct Row {
        const char *name;
        Fault fault;
        std::vector<CURLcode> results; // any of them
        std::size_t bytes;             // received of the image
    };
    const std::vector<CURLcode> ok{CURLE_OK}, timed_out{CURLE_OPERATION_TIMEDOUT};
    const std::vector<CURLcode> broken{CURLE_PARTIAL_FILE, CURLE_RECV_ERROR};
    const std::vector<CURLcode> nothing{CURLE_GOT_NOTHING, CURLE_RECV_ERROR};
    const Row rows[] = {
        {"none", {.count = 1}, ok, 40000},
        {"cut at 0", {.cut = 0}, broken, 0},
        {"cut at 1", {.cut = 1}, broken, 1},
        {"cut before the last byte", {.cut = 39999}, broken, 39999},
        {"cut in pieces", {.pieces = 7, .cut = 100}, broken, 100},
        {"silent after 1000", {.cut = 1000, .silent = true}, timed_out, 1000},
        {"delayed too long", {.delay = milliseconds(60000)}, timed_out, 0},
        {"dropped", {.drop = true}, nothing, 0},
        {"reset", {.reset = true}, nothing, 0},
        {"in pieces", {.pieces = 1024}, ok, 40000},
    };
    Faulty server(scheme);
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        server.cloud.fault(row.fault);
        Reply reply = server.download(row.results == timed_out ? 1000 : 30000);
        EXPECT_THAT(row.results, testing::Contains(reply.result)) << curl_easy_strerror(reply.result);
        EXPECT_EQ(reply.body, server.image.substr(0, row.bytes));
        EXPECT_EQ(server.download().body, server.image) << "the fault outlived its request";
    }
}

TEST(CloudFaults, DownloadsEndWhereTheyShould) {
    expect_endings(Scheme::https);
    expect_endings(Scheme::http);
}

TEST(CloudFaults, PiecesReachTheWriteCallbackOneByOne) {
    Faulty server;
    for (std::size_t size : {1u, 1000u, 16384u}) {
        const std::string body(size == 1 ? 300 : 200'000, '\0');
        server.cloud.fault({.endpoint = "firmware", .body = body, .pieces = size});
        Reply reply = server.download();
        EXPECT_EQ(reply.body, body);
        std::vector<std::size_t> expected(body.size() / size, size);
        if (body.size() % size > 0) expected.push_back(body.size() % size);
        EXPECT_EQ(reply.pieces, expected);
    }
}

TEST(CloudFaults, ApplyInTurnToTheirEndpoint) {
    Faulty server;
    server.cloud.fault({.endpoint = "any", .count = 0, .status = 599});
    server.cloud.fault({.endpoint = "firmware", .count = 2, .status = 501});
    server.cloud.fault({.endpoint = "firmware", .status = 502});
    std::vector<long> statuses(5);
    for (long &status : statuses)
        status = server.download().status;
    EXPECT_THAT(statuses, testing::ElementsAre(501, 501, 502, 599, 599));
    EXPECT_EQ(server.cloud.pending_faults(), 1u);
    server.cloud.clear_faults();
    EXPECT_EQ(server.download().status, 200);
}

TEST(CloudFaults, PortRefusesAndListensAgain) {
    Faulty server;
    server.cloud.fault({.refuse = milliseconds(0)});
    EXPECT_EQ(server.download().result, CURLE_COULDNT_CONNECT);
    server.cloud.clear_faults();
    EXPECT_EQ(server.download().result, CURLE_OK);
    auto start = steady_clock::now();
    server.cloud.fault({.refuse = milliseconds(200)});
    while (server.download().result != CURLE_OK)
        ASSERT_LT(steady_clock::now() - start, std::chrono::seconds(20)) << "the port stays closed";
    EXPECT_GE(steady_clock::now() - start, milliseconds(200));
}

} // namespace
