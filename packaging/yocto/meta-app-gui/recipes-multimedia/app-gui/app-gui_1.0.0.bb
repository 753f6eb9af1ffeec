SUMMARY = "On-screen display process of an embedded video decoder"
LICENSE = "CLOSED"

inherit qt6-cmake pkgconfig externalsrc systemd update-rc.d

# The tree that this layer lies in.
EXTERNALSRC ?= "${@os.path.abspath(os.path.join(d.getVar('THISDIR'), '../../../../..'))}"

DEPENDS = "cli11 nanomsg nlohmann-json qtbase qttools-native"
RDEPENDS:${PN} = "iproute2"
RRECOMMENDS:${PN} = "ttf-dejavu-sans"

PACKAGECONFIG ?= ""
PACKAGECONFIG[premultiplied-alpha] = "-DAPP_GUI_PREMULTIPLIED_ALPHA=ON,-DAPP_GUI_PREMULTIPLIED_ALPHA=OFF"

EXTRA_OECMAKE += "-DBUILD_TESTING=OFF"

SYSTEMD_SERVICE:${PN} = "app_gui.service"
INITSCRIPT_NAME = "app_gui"
INITSCRIPT_PARAMS = "defaults 90 10"

do_install:append() {
    install -D -m 0755 ${S}/packaging/init/app_gui ${D}${sysconfdir}/init.d/app_gui
    install -D -m 0644 ${S}/packaging/systemd/app_gui.service \
        ${D}${systemd_system_unitdir}/app_gui.service
    install -D -m 0644 ${S}/packaging/systemd/app_gui.conf \
        ${D}${nonarch_libdir}/tmpfiles.d/app_gui.conf
}

PACKAGE_BEFORE_PN = "${PN}-vdevice"

FILES:${PN} += " \
    ${datadir}/app_gui \
    ${datadir}/bash-completion \
    ${datadir}/fish \
    ${datadir}/zsh \
    ${nonarch_libdir}/tmpfiles.d \
    ${systemd_system_unitdir} \
"
FILES:${PN}-dev += "${libdir}/cmake"
FILES:${PN}-vdevice = "${bindir}/vdevice ${libdir}/app_gui"
RDEPENDS:${PN}-vdevice = "${PN} bubblewrap"
