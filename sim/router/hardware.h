// SPDX-License-Identifier: Apache-2.0
// The hardware that Linux shows of the simulated router in /sys: ports, temperatures, disks. Only where /sys
// is an empty folder of a sandbox; a machine's own is never touched.
#pragma once

namespace router {

// Makes the home's hardware: wan and lan1 to lan3 (1000 Mbit/s, lan3 without a cable), a bridge, a radio's
// interface, two temperatures, the router's own flash, and a USB stick, /dev/sda1, which is mounted where the
// sandbox has mounted it. False when /sys is not ours or cannot be written.
bool make_hardware();

} // namespace router
