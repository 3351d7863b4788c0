// SPDX-License-Identifier: Apache-2.0
// The nodes of the mesh: this router first, each with the devices behind it.
#include "devices/mesh_topology.h"

#include <gmock/gmock.h>

#include "core/json_path.h"
#include "support/router_rig.h"

namespace {

using testing::ElementsAre;

// Each node as "name parent link devices mac ip role rssi".
std::vector<std::string> nodes() {
    static char text[65536];
    std::vector<std::string> lines;
    EXPECT_EQ(meshTopology_get("", text, sizeof text), 0);
    JsonRoot document(json_tokener_parse(text));
    json_object *list = nullptr;
    json_object *devices = nullptr;
    JsonGetObj(document.get(), "meshTopology.nodes", &list);
    for (size_t i = 0; i < json_object_array_length(list); i++) {
        json_object *node = json_object_array_get_idx(list, i);
        JsonGetObj(node, "apDevices", &devices);
        std::string line;
        for (const char *member : {"name", "parent", "link"})
            line += JsonGetStr(node, member) + std::string(" ");
        line += std::to_string(json_object_array_length(devices));
        for (const char *member : {"mac", "ip", "role", "rssi"})
            line += std::string(" ") + JsonGetStr(node, member);
        lines.push_back(line);
    }
    return lines;
}

TEST(MeshTopology, IsThisRouterAloneOrWithItsNodes) {
    RouterRig rig;
    const std::string alone = "AX3000  wired 10 a1b2c3d4e5f6 198.51.100.23 0 0";
    EXPECT_THAT(nodes(), ElementsAre(alone));
    rig.router.set_state("/vrop.mesh/enable", "1");
    EXPECT_THAT(nodes(), ElementsAre("AX3000  wired 2 a1b2c3d4e5f6 192.168.10.1 1 0",
                                     "Upstairs a1b2c3d4e5f6 5G 2 02a0c9f00002 192.168.10.2 2 -57",
                                     "Garden 02a0c9f00002 2.4G 1 02a0c9f00003 192.168.10.3 2 -69"));
    EXPECT_EQ(rig.router.calls("vrop.laninfo", "list").size(), 2U); // once for each document
    rig.router.set_state("/sim/meshnodes", R"([7,{"name":"odd","parent":"x","link":9,"stations":{}}])");
    EXPECT_THAT(nodes(), ElementsAre("odd x wired 0   0 0"));
    rig.router.add_fault(
        {.kind = router::Fault::Kind::Result, .object = "vrop.mesh", .method = "topology", .value = 1});
    EXPECT_THAT(nodes(), ElementsAre(alone));
    rig.router.add_fault({.kind = router::Fault::Kind::Absent, .object = "vrop.*"});
    EXPECT_THAT(nodes(), ElementsAre("  wired 0   0 0"));
}

} // namespace
