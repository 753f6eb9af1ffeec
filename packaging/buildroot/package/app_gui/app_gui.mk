################################################################################
#
# app_gui
#
################################################################################

APP_GUI_VERSION = 1.0.0
# The tree that this external tree lies in.
APP_GUI_SITE = $(BR2_EXTERNAL_APP_GUI_PATH)/../..
APP_GUI_SITE_METHOD = local
APP_GUI_INSTALL_STAGING = YES
APP_GUI_SUPPORTS_IN_SOURCE_BUILD = NO

APP_GUI_DEPENDENCIES = cli11 host-pkgconf host-qt6tools json-for-modern-cpp nanomsg qt6base

APP_GUI_CONF_OPTS = \
	-DBUILD_TESTING=OFF \
	-DQT_HOST_PATH=$(HOST_DIR) \
	-DAPP_GUI_PREMULTIPLIED_ALPHA=$(if $(BR2_PACKAGE_APP_GUI_PREMULTIPLIED_ALPHA),ON,OFF)

# Component by component: `make install` would put headers and documents on the board.
APP_GUI_COMPONENTS = runtime $(if $(BR2_PACKAGE_APP_GUI_VDEVICE),tools)

define APP_GUI_INSTALL_STAGING_CMDS
	$(foreach component,runtime dev,\
		$(TARGET_MAKE_ENV) DESTDIR=$(STAGING_DIR) $(BR2_CMAKE) --install $(APP_GUI_BUILDDIR) \
			--component $(component)$(sep))
endef

define APP_GUI_INSTALL_TARGET_CMDS
	$(foreach component,$(APP_GUI_COMPONENTS),\
		$(TARGET_MAKE_ENV) DESTDIR=$(TARGET_DIR) $(BR2_CMAKE) --install $(APP_GUI_BUILDDIR) \
			--component $(component)$(sep))
endef

define APP_GUI_INSTALL_INIT_SYSV
	$(INSTALL) -D -m 0755 $(@D)/packaging/init/app_gui $(TARGET_DIR)/etc/init.d/S90app_gui
endef

define APP_GUI_INSTALL_INIT_SYSTEMD
	$(INSTALL) -D -m 0644 $(@D)/packaging/systemd/app_gui.service \
		$(TARGET_DIR)/usr/lib/systemd/system/app_gui.service
	$(INSTALL) -D -m 0644 $(@D)/packaging/systemd/app_gui.conf \
		$(TARGET_DIR)/usr/lib/tmpfiles.d/app_gui.conf
endef

$(eval $(cmake-package))
