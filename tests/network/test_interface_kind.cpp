#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>

#include "platform/network/interface_kind.h"
#include "tests/support/temp_dir.h"

namespace fs = std::filesystem;

namespace {

/// A folder as the kernel shows one for each interface.
class Interfaces : public ::testing::Test {
 protected:
  void add(const std::string& name, int type, const std::string& uevent = "INTERFACE=x\nIFINDEX=2\n") {
    fs::create_directories(dir_.file(name));
    write_file(dir_.file(name + "/type"), std::to_string(type) + "\n");
    write_file(dir_.file(name + "/uevent"), uevent);
  }
  void add_device(const std::string& name, const std::string& bus, const std::string& driver) {
    fs::create_directories(dir_.file(name + "/device"));
    // As in sysfs, where the links lead out of the folder; here they dangle.
    fs::create_symlink("../../../bus/" + bus, dir_.file(name + "/device/subsystem"));
    if (!driver.empty()) fs::create_symlink("../../../drivers/" + driver, dir_.file(name + "/device/driver"));
  }
  netstatus_interface_type_t kind(const std::string& name) const {
    return interface_kind(read_interface_traits(dir_.path(), name));
  }

  TempDir dir_;
};

TEST_F(Interfaces, CablesAndWhatPassesForOne) {
  add("enp3s0", 1);
  add_device("enp3s0", "pci", "r8169");
  add("eth0", 1);
  add_device("eth0", "virtio", "virtio_net");
  add("veth", 1);
  add("br0", 1, "DEVTYPE=bridge\nINTERFACE=br0\n");
  add("dock", 1);
  add_device("dock", "usb", "r8152");
  for (const char* name : {"enp3s0", "eth0", "veth", "br0", "dock"}) {
    EXPECT_EQ(kind(name), NETSTATUS_INTERFACE_TYPE_WIRED) << name;
  }
}

TEST_F(Interfaces, RadiosAreTold) {
  add("wlp2s0", 1, "DEVTYPE=wlan\nINTERFACE=wlp2s0\n");
  add_device("wlp2s0", "pci", "iwlwifi");
  add("old", 1);
  fs::create_directory(dir_.file("old/wireless"));
  add("stick", 1);
  add_device("stick", "usb", "mt76x0u");
  fs::create_symlink("../../ieee80211/phy1", dir_.file("stick/phy80211"));
  for (const char* name : {"wlp2s0", "old", "stick"}) EXPECT_EQ(kind(name), NETSTATUS_INTERFACE_TYPE_WIFI) << name;

  add("wwan0", 65534, "DEVTYPE=wwan\n");
  fs::create_directories(dir_.file("wwan0/qmi"));
  add_device("wwan0", "usb", "qmi_wwan");
  add("wwp0", 1, "INTERFACE=wwp0\nDEVTYPE=wwan");
  add_device("wwp0", "usb", "cdc_mbim");
  add("rmnet", 519);
  for (const char* name : {"wwan0", "wwp0", "rmnet"}) {
    EXPECT_EQ(kind(name), NETSTATUS_INTERFACE_TYPE_CELLULAR) << name;
  }

  add("bnep0", 1, "DEVTYPE=bluetooth\n");
  EXPECT_EQ(kind("bnep0"), NETSTATUS_INTERFACE_TYPE_BLUETOOTH_DUN);
}

TEST_F(Interfaces, TunnelsAndTelephonesAreTold) {
  add("tun0", 65534);
  write_file(dir_.file("tun0/tun_flags"), "0x1001\n");
  add("tap0", 1);
  write_file(dir_.file("tap0/tun_flags"), "0x1002\n");
  add("wg0", 65534, "DEVTYPE=wireguard\nINTERFACE=wg0\n");
  add("ppp0", 512, "DEVTYPE=ppp\n");
  add("gre1", 778);
  for (const char* name : {"tun0", "tap0", "wg0", "ppp0", "gre1"}) {
    EXPECT_EQ(kind(name), NETSTATUS_INTERFACE_TYPE_VPN) << name;
  }

  for (const char* driver : {"rndis_host", "cdc_ether", "cdc_ncm", "ipheth", ""}) {
    const std::string name = std::string("phone-") + driver;
    add(name, 1);
    add_device(name, "usb", driver);
    EXPECT_EQ(kind(name), NETSTATUS_INTERFACE_TYPE_USB) << name;
  }
}

TEST_F(Interfaces, WhatIsNoNetworkCardIsUnknown) {
  add("lo", 772);
  add("can0", 280);
  fs::create_directories(dir_.file("empty"));
  add("damaged", 1);
  write_file(dir_.file("damaged/type"), "ethernet\n");
  for (const char* name : {"lo", "can0", "empty", "damaged", "missing"}) {
    EXPECT_EQ(kind(name), NETSTATUS_INTERFACE_TYPE_UNKNOWN) << name;
  }
}

TEST(Netstatus, DetailsOfTheLoopback) {
  netstatus_interface_details_t* details = nullptr;
  ASSERT_EQ(netstatus_get_interface_details("lo", &details), 0);
  EXPECT_EQ(netstatus_interface_get_type(details), NETSTATUS_INTERFACE_TYPE_UNKNOWN);
  EXPECT_STREQ(netstatus_interface_get_ip_address(details, 0), "127.0.0.1");
  EXPECT_EQ(netstatus_interface_get_ip_address(details, -1), nullptr);
  EXPECT_EQ(netstatus_interface_get_ip_address(details, 1000), nullptr);
  netstatus_free_interface_details(&details);
  EXPECT_EQ(details, nullptr);
  EXPECT_EQ(netstatus_get_interface_details("no-such-interface-anywhere", &details), ENODEV);
  EXPECT_EQ(details, nullptr);
}

}  // namespace
