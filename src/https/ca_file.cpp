// SPDX-License-Identifier: Apache-2.0
#include "https/ca_file.h"

const char *ca_file() {
    return QVTK_CA_FILE;
}
