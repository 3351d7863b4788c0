// SPDX-License-Identifier: Apache-2.0
// A week of the client status thread in a house whose clients come, go and are renamed, beside a plain
// account of it.
#include <filesystem>
#include <map>
#include <random>

#include <gmock/gmock.h>

#include "core/clock.h"
#include "core/json_path.h"
#include "https/event_catcher.h"
#include "https/helper_stub.h"
#include "https/runtime.h"
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
    std::string mac, name;
    time_t since;
};

struct Entry {
    std::string name;
    long run_time;
    time_t taken;
    bool operator==(const Entry &) const = default;
};
using Account = std::map<std::string, Entry>;
void PrintTo(const Entry &entry, std::ostream *out) {
    *out << entry.name << " " << entry.run_time << " taken " << entry.taken;
}

long within_a_day(long seconds) {
    return seconds > DAY ? seconds - DAY : seconds;
}

std::string colon_capitals(const std::string &mac) {
    std::string text;
    for (size_t i = 0; i < mac.size(); i++)
        text += std::string(i && i % 2 == 0 ? ":" : "") + static_cast<char>(toupper(mac[i]));
    return text;
}

Account account_of(const std::string &text) {
    Account account;
    JsonRoot file(json_tokener_parse(text.c_str()));
    for (size_t i = 0; file && i < json_object_array_length(file.get()); i++) {
        json_object *entry = json_object_array_get_idx(file.get(), i);
        const time_t taken = _json_get_int(entry, "timestamp");
        account[_json_get_str(entry, "mac")] = {_json_get_str(entry, "name"), _json_get_int(entry, "runTime"),
                                                taken};
    }
    return account;
}

// What is at home, and what the agent must make of it.
class House {
  public:
    explicit House(RouterRig &rig) : rig_(rig) {
        for (int i = 0; i < 6; i++)
            arrive(now_seconds() - i * 20000);
    }

    // One poll's worth of life, told to the router when there is something to tell.
    void live(bool quiet) {
        if ((quiet || !change()) && known_) return;
        std::string list;
        for (const Client &client : clients_)
            list += (list.empty() ? "" : ",") +
                    (R"({"mac":")" + client.mac + R"(","devname":")" + client.name + R"(","uptime":)" +
                     std::to_string(now_seconds() - client.since) + "}");
        rig_.router.set_state("/vrop.laninfo", "[" + list + "]");
    }
    // What the poll at this moment does to the account; returns who is announced, in order.
    std::vector<std::string> poll() {
        std::vector<std::string> arrived, gone, present;
        for (const Client &client : clients_)
            present.push_back(client.mac);
        for (auto client = clients_.rbegin(); client != clients_.rend(); ++client)
            if (known_ && !contains(*known_, client->mac)) arrived.push_back(client->mac);
        if (known_ && arrived.empty())
            for (const std::string &mac : *known_)
                if (!contains(present, mac)) gone.push_back(mac);
        if (!known_ || !arrived.empty())
            take_account(now_seconds() + 2 * static_cast<long>(arrived.size()) + 2);
        for (size_t i = 0; i < gone.size(); i++)
            for (auto &[mac, entry] : account)
                entry.run_time = within_a_day(entry.run_time);
        known_ = present;
        return arrived;
    }
    Account close_day() {
        Account day;
        for (const auto &[mac, entry] : account)
            day[mac] = {entry.name, entry.run_time + now_seconds() - entry.taken, 0};
        account.clear();
        known_.reset();
        return day;
    }

    Account account;

  private:
    static bool contains(const std::vector<std::string> &macs, const std::string &mac) {
        return std::find(macs.begin(), macs.end(), mac) != macs.end();
    }
    void take_account(time_t taken) {
        account.clear();
        for (const Client &client : clients_)
            account[colon_capitals(client.mac)] = {client.name, within_a_day(now_seconds() - client.since),
                                                   taken};
    }
    void arrive(time_t since) {
        char mac[16];
        snprintf(mac, sizeof mac, "02a0c9%06x", static_cast<unsigned>(random_() % 0x1000000));
        clients_.push_back({mac, "client " + std::to_string(random_() % 100), since});
    }
    bool change() {
        const unsigned dice = static_cast<unsigned>(random_() % 120);
        const size_t one = clients_.empty() ? 0 : random_() % clients_.size();
        if (dice < 3 && clients_.size() < HOUSE)
            arrive(now_seconds() - static_cast<long>(random_() % 20));
        else if (dice < 6 && !clients_.empty())
            clients_.erase(clients_.begin() + static_cast<long>(one));
        else if (dice == 6 && !clients_.empty())
            clients_[one].name += "'";
        else if (dice == 7 && clients_.size() < HOUSE && !clients_.empty()) { // one goes as another comes
            clients_.erase(clients_.begin() + static_cast<long>(one));
            arrive(now_seconds());
        } else
            return false;
        return true;
    }

    RouterRig &rig_;
    std::vector<Client> clients_;
    std::optional<std::vector<std::string>> known_;
    std::mt19937 random_{77};
};

std::vector<std::string> macs_of(const std::vector<std::string> &events) {
    std::vector<std::string> macs;
    for (const std::string &text : events) {
        JsonRoot event(json_tokener_parse(text.c_str()));
        macs.push_back(_json_get_str(event.get(), "mac"));
    }
    return macs;
}

TEST(Week, FilesEventsAndNightlyReportsAgreeWithAPlainAccount) {
    setenv("TZ", "UTC", 1);
    RouterRig rig;
    EventCatcher relay(256);
    HelperStub helper("post_data");
    House house(rig);
    StaStatusState state = sta_status_start(5);
    int days_closed = 0, reports = 0;
    std::string today_text;
    Account today;

    for (unsigned round = 0; now_seconds() < FIRST_MIDNIGHT + NIGHTS * DAY - 3600; round++) {
        const long second = now_seconds() % DAY;
        const bool polls = round % POLL == 0;
        const bool closes = second >= DAY - 4;
        const bool at_report = second > state.report_point && second <= state.report_point + 4;
        std::vector<std::string> announced;
        if (polls) { // changes make the round longer: none while the second matters
            const bool quiet =
                second > DAY - 120 || (second > state.report_point - 120 && second < state.report_point + 4);
            house.live(quiet);
            announced = house.poll();
        }
        const Account day = closes ? house.close_day() : Account();
        check_staStatus_round(&state);

        if (polls) {
            ASSERT_EQ(macs_of(relay.take()), announced);
            if (std::string text = text_of(TODAY); text != today_text) {
                today_text = text;
                today = account_of(text);
            }
            ASSERT_EQ(today, house.account) << "round " << round;
        }
        if (closes) {
            days_closed++;
            ASSERT_EQ(account_of(text_of(LAST_DAY)), day);
            ASSERT_FALSE(std::filesystem::exists(TODAY));
        }
        if (at_report && helper.take_runs() == "0\n") reports++;
        moving_clock::advance(1000);
    }
    EXPECT_EQ(days_closed, NIGHTS);
    EXPECT_EQ(reports, NIGHTS);
    EXPECT_EQ(helper.take_runs(), "");
}

} // namespace
