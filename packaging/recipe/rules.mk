# SPDX-License-Identifier: Apache-2.0
# As much of the distribution's build system as the Makefiles in packaging/openwrt use: packaging/ipk stages what they
# install and asks them for the package's control file.
INCLUDE_DIR:=$(TOPDIR)/include
INSTALL_DIR:=install -d -m0755
INSTALL_BIN:=install -m0755
INSTALL_DATA:=install -m0644
INSTALL_CONF:=install -m0600
