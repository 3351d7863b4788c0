// SPDX-License-Identifier: Apache-2.0
// The nodes of the mesh: this router first, each with the devices behind it.
#include "devices/mesh_topology.h"

#include <gmock/gmock.h>

#include "core/json_path.h"
#include "support/router_rig.h"

namespace {

using testing::ElementsAre;

// Each node as "name parent link devices".
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
        lines.push_back(std::string(JsonGetStr(node, "name")) + " " + JsonGetStr(node, "parent") + " " +
                        JsonGetStr(node, "link") + " " + std::to_string(json_object_array_length(devices)));
    }
    return lines;
}

TEST(MeshTopology, IsThisRouterAloneOrWithItsNodes) {
    RouterRig rig;
    const std::string alone = "AX3000  wired " + std::to_string(10);
    EXPECT_THAT(nodes(), ElementsAre(alone));
    rig.router.set_state("/vrop.mesh/enable", "1");
    EXPECT_THAT(nodes(),
                ElementsAre("AX3000  wired 2", "Upstairs a1b2c3d4e5f6 5G 2", "Garden 02a0c9f00002 2.4G 1"));
    rig.router.set_state("/sim/meshnodes", R"([7,{"name":"odd","parent":"x","link":9,"stations":{}}])");
    EXPECT_THAT(nodes(), ElementsAre("odd x wired 0"));
    rig.router.add_fault(
        {.kind = router::Fault::Kind::Result, .object = "vrop.mesh", .method = "topology", .value = 1});
    EXPECT_THAT(nodes(), ElementsAre(alone));
    rig.router.add_fault({.kind = router::Fault::Kind::Absent, .object = "vrop.*"});
    EXPECT_THAT(nodes(), ElementsAre("  wired 0"));
}

} // namespace
