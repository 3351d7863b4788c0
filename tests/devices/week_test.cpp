// SPDX-License-Identifier: Apache-2.0
// A week of the client status thread in a house whose clients come, go and are renamed, beside a plain
// account of it.
#include <random>
#include <set>

#include <gmock/gmock.h>

#include "core/clock.h"
#include "core/text.h"
#include "devices/runtime.h"
#include "support/event_catcher.h"
#include "support/helper_stub.h"
#include "support/moving_clock.h"
#include "support/router_rig.h"

namespace {

constexpr char TODAY[] = "/aptmp/client_runTime.log";
constexpr char LAST_DAY[] = "/aptmp/runTime_oneDay.log";
constexpr long DAY = 86400;
constexpr time_t FIRST_MIDNIGHT = 1714608000; // 2024-05-02 00:00:00 UTC
constexpr int NIGHTS = 7;
constexpr unsigned POLL = 25; // rounds
constexpr size_t HOUSE = 18;  // as many as a list that can be compared holds

struct Client {
    std::string mac, colon_mac, name;
    time_t since;
};

struct Entry {
    std::string mac, start; // its JSON text up to the runtime
    long run_time;
    time_t taken;

    std::string with(long seconds) const { return start + std::to_string(seconds); }
};

long within_a_day(long seconds) {
    return seconds > DAY ? seconds - DAY : seconds;
}

// The elements as a JSON array.
template <typename Element, typename Text>
std::string array_of(const std::vector<Element> &elements, Text text_of_element) {
    std::string list;
    for (const Element &element : elements)
        list += (list.empty() ? "" : ",") + text_of_element(element);
    return "[" + list + "]";
}

// Who is at home, and what the agent must make of it.
class House {
  public:
    explicit House(RouterRig &rig) : rig_(rig) {
        for (int i = 0; i < 6; i++)
            arrive(now_seconds() - i * 20000);
    }

    // What happens until a poll, told to the router when it is new to it. Returns who is announced, in order.
    std::vector<std::string> live(bool quiet) {
        if (!known_ || (!quiet && change())) tell_router();
        std::vector<std::string> announced;
        std::set<std::string> present;
        time_t at = now_seconds();
        for (auto client = clients_.rbegin(); client != clients_.rend(); ++client) {
            present.insert(client->mac);
            if (!known_ || known_->contains(client->mac)) continue;
            announced.push_back(R"({"action": "deviceConnect", "mac": ")" + client->mac +
                                R"(", "devName": ")" + client->name + R"(", "time": )" + std::to_string(at) +
                                "}");
            at += 2;
        }
        if (!known_ || !announced.empty())
            take_account(at + 2);
        else
            for (const std::string &mac : *known_)
                if (!present.contains(mac)) close_one(mac);
        known_ = present;
        return announced;
    }
    // The runtime file.
    std::string today() const {
        if (!known_) return "";
        return array_of(account_, [](const Entry &entry) {
            return entry.with(entry.run_time) + R"(,"timestamp":)" + std::to_string(entry.taken) +
                   R"(,"onlineNotice":1})";
        });
    }
    // The day file, with which today ends.
    std::string close_day() {
        known_.reset();
        return array_of(account_, [](const Entry &entry) {
            return entry.with(entry.run_time + now_seconds() - entry.taken) + "}";
        });
    }

  private:
    void tell_router() {
        std::string list = array_of(clients_, [](const Client &client) {
            return R"({"mac":")" + client.mac + R"(","devname":")" + client.name + R"(","uptime":)" +
                   std::to_string(now_seconds() - client.since) + "}";
        });
        rig_.router.set_state("/vrop.laninfo", list);
    }
    void take_account(time_t taken) {
        account_.clear();
        for (const Client &c : clients_)
            account_.push_back({c.mac,
                                R"({"mac":")" + c.colon_mac + R"(","name":")" + c.name + R"(","runTime":)",
                                within_a_day(now_seconds() - c.since), taken});
    }
    void close_one(const std::string &mac) {
        for (Entry &entry : account_) {
            entry.run_time = within_a_day(entry.run_time);
            if (entry.mac == mac) entry.run_time += now_seconds() - entry.taken;
        }
    }
    void arrive(time_t since) {
        const unsigned number = static_cast<unsigned>(random_());
        const unsigned a = number & 0xff, b = number >> 8 & 0xff, c = number >> 16 & 0xff;
        clients_.push_back({format_text<32>("02a0c9%02x%02x%02x", a, b, c).text,
                            format_text<32>("02:A0:C9:%02X:%02X:%02X", a, b, c).text,
                            "client " + std::to_string(random_() % 100), since});
    }
    bool change() {
        const unsigned dice = static_cast<unsigned>(random_() % 120);
        const bool comes = dice < 3 || dice == 7, goes = (dice >= 3 && dice < 6) || dice == 7;
        if (comes ? clients_.size() == HOUSE : clients_.empty()) return false;
        const size_t one = clients_.empty() ? 0 : random_() % clients_.size();
        if (goes && !clients_.empty()) clients_.erase(clients_.begin() + static_cast<long>(one));
        if (comes) arrive(now_seconds() - static_cast<long>(random_() % 20));
        if (dice == 6) clients_[one].name += "'";
        return dice < 8;
    }

    RouterRig &rig_;
    std::vector<Client> clients_;
    std::vector<Entry> account_;
    std::optional<std::set<std::string>> known_; // MACs of the poll before
    std::mt19937 random_{77};
};

TEST(Week, FilesEventsAndNightlyReportsAgreeWithAPlainAccount) {
    setenv("TZ", "UTC", 1);
    RouterRig rig;
    EventCatcher relay(256);
    HelperStub helper("post_data");
    House house(rig);
    StaStatusState state = sta_status_start(5);
    std::string reports;

    for (unsigned round = 0; now_seconds() < FIRST_MIDNIGHT + NIGHTS * DAY - 3600; round++) {
        const long second = now_seconds() % DAY, after_report_point = second - state.report_point;
        const bool polls = round % POLL == 0, closes = second >= DAY - 4;
        std::vector<std::string> announced;
        if (polls) // changes make the round longer: none while the second matters
            announced =
                house.live(second > DAY - 120 || (after_report_point > -120 && after_report_point < 4));
        const std::string day = closes ? house.close_day() : "";
        check_staStatus_round(&state);

        if (polls) {
            ASSERT_EQ(relay.take(), announced);
            ASSERT_EQ(text_of(TODAY), house.today()) << "round " << round;
        }
        if (closes) {
            ASSERT_EQ(text_of(LAST_DAY), day);
            ASSERT_EQ(text_of(TODAY), "");
        }
        if (after_report_point == 0) {
            ASSERT_EQ(helper.take_runs(), "");
        }
        if (after_report_point == 4) reports += helper.take_runs();
        moving_clock::advance(1000);
    }
    EXPECT_EQ(reports, "0\n0\n0\n0\n0\n0\n0\n");
    EXPECT_EQ(helper.take_runs(), "");
}

} // namespace
