include $(sort $(wildcard $(BR2_EXTERNAL_KFL_PATH)/package/*/*.mk))
