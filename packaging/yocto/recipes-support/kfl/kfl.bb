SUMMARY = "Foundation library for the processes of a small Linux network device"
SECTION = "libs"

# The layer that takes this recipe in says under which licence, and where the sources are, for example in its
# conf/layer.conf: KFL_LICENSE, KFL_LIC_FILES_CHKSUM, KFL_SOURCE = "git://HOST/PATH;protocol=https;branch=main"
# and KFL_REVISION, the commit of the tag.
LICENSE = "${KFL_LICENSE}"
LIC_FILES_CHKSUM = "${KFL_LIC_FILES_CHKSUM}"
SRC_URI = "${KFL_SOURCE}"
SRCREV = "${KFL_REVISION}"
PV = "1.0.0"
S = "${WORKDIR}/git"

inherit cmake

EXTRA_OECMAKE = "-DKFL_TESTS=OFF -DKFL_EXAMPLES=OFF -DKFL_TOOLS=ON"

# The library for hosts, its headers and gdb's printers for SDKs (kfl-dev), kfl-host (kfl-staticdev), the command apart.
PACKAGES =+ "${PN}-tools"
FILES:${PN}-tools = "${bindir}/kfl ${mandir}/man1 ${datadir}/bash-completion"
FILES:${PN}-dev += "${datadir}/gdb"

BBCLASSEXTEND = "nativesdk"
