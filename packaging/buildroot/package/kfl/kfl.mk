################################################################################
#
# kfl
#
################################################################################

# The sources that this folder lies in. A product takes a tag of its own repository instead:
# KFL_VERSION = v1.0.0, and KFL_SITE with KFL_SITE_METHOD = git.
KFL_SITE = $(BR2_EXTERNAL_KFL_PATH)/../..
KFL_SITE_METHOD = local
KFL_VERSION = $(shell sed -n 's/^.define KFL_VERSION_STRING "\(.*\)"/\1/p' $(KFL_SITE)/include/kfl/version.h)

KFL_INSTALL_STAGING = YES
KFL_CONF_OPTS = \
	-DKFL_TESTS=OFF \
	-DKFL_EXAMPLES=OFF \
	-DKFL_TOOLS=$(if $(BR2_PACKAGE_KFL_TOOLS),ON,OFF)

$(eval $(cmake-package))
