// SPDX-License-Identifier: Apache-2.0
// Bad input for every row of the property table: a row is covered by being there. Bad requests are made of
// what the row's own get gives; more of them, and bad members, are sent to the daemon by tests/system.
#include <cstring>

#include <gmock/gmock.h>

#include "properties/property_rig.h"

namespace {

TEST(BadInput, ArgumentsThatAreMissingOrBrokenAreRefusedAndLongOnesFitTheEvent) {
    int events = 0;
    for (const property_row *row : rows_with(&property_row::set)) {
        SCOPED_TRACE(row->name);
        PropertyRig rig(WITH_TASKS);
        const std::string good = get(row->name);
        char reply[64];
        rig.forget();
        EXPECT_EQ(row->set(nullptr, good.c_str(), reply, sizeof reply), -1);
        EXPECT_EQ(row->set("wan0", nullptr, reply, sizeof reply), -1);
        EXPECT_EQ(row->set("wan0", good.c_str(), nullptr, sizeof reply), -1);
        EXPECT_EQ(row->set("wan0", good.c_str(), reply, 0), -1);
        EXPECT_EQ(row->set("wan0", good.c_str(), reply, -1), -1);
        EXPECT_TRUE(has_logged("param is NULL"));
        EXPECT_EQ(set(row->name, good.substr(0, good.size() - 1)), -1);
        EXPECT_EQ(set(row->name, "{\"junk\":\"\xc3\x28\"," + good.substr(1)), -1);
        EXPECT_THAT(rig.take(), testing::IsEmpty());
        EXPECT_EQ(set(row->name, good, std::string(300, 'i').c_str()), 0);
        const std::string last = rig.take().back();
        events += last.starts_with("{") && last.size() == 127;
    }
    EXPECT_EQ(events, 4);
}

TEST(BadInput, GetsCutToTheRoomThereIs) {
    for (const property_row *row : rows_with(&property_row::get)) {
        SCOPED_TRACE(row->name);
        PropertyRig rig(WITH_TASKS);
        std::string whole(16384, '\0');
        ASSERT_EQ(row->get("wan0", whole.data(), static_cast<int>(whole.size())), 0);
        const int length = static_cast<int>(strlen(whole.c_str()));
        for (const int room : {1, 2, length, length + 1, 0, -1}) {
            const auto size = static_cast<size_t>(std::max(room, 0));
            std::string output(size + 8, '#');
            EXPECT_EQ(row->get("wan0", output.data(), room), room > 0 ? 0 : -1);
            std::string expected(size + 8, '#');
            if (room > 0) expected.replace(0, size, whole, 0, size - 1).insert(size - 1, 1, '\0');
            EXPECT_EQ(output, expected) << "room for " << room;
        }
        EXPECT_EQ(row->get(nullptr, whole.data(), 8), -1);
        EXPECT_EQ(row->get("wan0", nullptr, 8), -1);
        EXPECT_TRUE(has_logged("param is error"));
    }
}

} // namespace
