// SPDX-License-Identifier: Apache-2.0
// Whom the device trusts.
#pragma once

// Path of the PEM file with the certificate authorities that servers are verified against, as set at build
// time by QVTK_CA_FILE; empty: servers are not verified. Any thread. A source of its own, so that a test can
// link another.
const char *ca_file();
