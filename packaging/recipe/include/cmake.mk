# SPDX-License-Identifier: Apache-2.0
# The programs have been built and installed into PKG_INSTALL_DIR.
