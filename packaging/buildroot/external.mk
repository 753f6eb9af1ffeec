include $(sort $(wildcard $(BR2_EXTERNAL_APP_GUI_PATH)/package/*/*.mk))
