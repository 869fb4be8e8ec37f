#pragma once

// The kind of link behind a network interface, according to sysfs. Any thread.

#include <string>

#include "platform/network/netstatus.h"

struct interface_traits_s {
  int hardware_type = -1;  ///< ARPHRD_*; -1 if there is no such interface
  std::string devtype;     ///< "wlan", "wwan", "bluetooth", "wireguard" …, often empty
  std::string bus;         ///< of the underlying device: "pci", "usb" …; empty for a virtual interface
  std::string driver;      ///< of that device, may be empty
  bool wireless = false;   ///< it has an 802.11 radio
  bool tunnel = false;     ///< a program is at the other end (tun, tap)
};

/// @param root the folder of the interfaces, /sys/class/net
interface_traits_s read_interface_traits(const std::string& root, const std::string& name);

/// Never BB or P2P, which no computer has.
netstatus_interface_type_t interface_kind(const interface_traits_s& traits);
