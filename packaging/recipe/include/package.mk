# SPDX-License-Identifier: Apache-2.0
define BuildPackage
$(eval $(Package/$(1)))
.PHONY: stage control conffiles

stage:
$(call Package/$(1)/install,$(STAGED))

conffiles:
	@printf '%s\n' $(strip $(Package/$(1)/conffiles))

control:
	@printf '%s: %s\n' Package '$(1)' Version '$(PKG_VERSION)-r$(PKG_RELEASE)' \
		Depends 'libc $(patsubst +%,%,$(filter +%,$(DEPENDS)))' License '$(PKG_LICENSE)' Section '$(SECTION)' \
		Maintainer '$(PKG_MAINTAINER)' URL '$(URL)' Description '$(TITLE)'
endef
