// SPDX-License-Identifier: Apache-2.0
#include "delivery.h"

#include <algorithm>

namespace cloudsim {
namespace {

// Where the head ends and the body begins (RFC 9112, 2.1).
std::size_t head_length(std::string_view answer) {
    std::size_t end = answer.find("\r\n\r\n");
    return end == std::string_view::npos ? answer.size() : end + 4;
}

bool send_pieces(Connection &connection, std::string_view body, const Fault &fault) {
    std::size_t piece = fault.pieces > 0 ? fault.pieces : std::max<std::size_t>(body.size(), 1);
    while (!body.empty()) {
        if (!connection.send(body.substr(0, piece))) return false;
        body.remove_prefix(std::min(piece, body.size()));
        if (!body.empty() && !connection.rest(fault.pause)) return false;
    }
    return true;
}

} // namespace

bool deliver(Connection &connection, const std::string &answer, const std::optional<Fault> &wanted) {
    const Fault fault = wanted.value_or(Fault{});
    if (!connection.rest(fault.delay)) return false;
    if (fault.reset) {
        connection.reset();
        return false;
    }
    bool answered = !fault.drop && (!fault.silent || fault.cut);
    std::string_view head = std::string_view(answer).substr(0, head_length(answer));
    std::string_view body = std::string_view(answer).substr(head.size());
    // The head leaves alone, so that a client's first write of the body begins with the body's first piece.
    if (answered && !(connection.send(head) &&
                      send_pieces(connection, body.substr(0, fault.cut.value_or(body.size())), fault)))
        return false;
    if (fault.silent)
        connection.wait_peer_gone();
    else if (fault.drop || fault.cut)
        connection.cut();
    return !fault.silent && !fault.drop && !fault.cut;
}

} // namespace cloudsim
