#include "platform/network/interface_kind.h"

#include <linux/if_arp.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <string_view>

namespace fs = std::filesystem;

namespace {

/// "bluetooth" from a line DEVTYPE=bluetooth; empty for other lines.
std::string read_devtype(const fs::path& uevent) {
  constexpr std::string_view key = "DEVTYPE=";
  std::ifstream file(uevent);
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with(key)) return line.substr(key.size());
  }
  return {};
}

std::string link_name(const fs::path& link) {
  std::error_code error;
  return fs::read_symlink(link, error).filename().string();
}

bool has_entry(const fs::path& path) {
  std::error_code error;
  return fs::exists(fs::symlink_status(path, error));
}

bool is_tunnel(const interface_traits_s& traits) {
  constexpr std::array types = {ARPHRD_NONE, ARPHRD_PPP,   ARPHRD_TUNNEL, ARPHRD_TUNNEL6,
                                ARPHRD_SIT,  ARPHRD_IPGRE, ARPHRD_IP6GRE};
  return traits.tunnel || traits.devtype == "wireguard" || std::ranges::count(types, traits.hardware_type) > 0;
}

/// A phone sharing its connection, recognized by the drivers of USB's own network classes. Adapters and docks with
/// their own driver are ordinary Ethernet ports. In doubt assume a phone, whose owner pays for the traffic.
bool is_tethered(const interface_traits_s& traits) {
  constexpr std::array<std::string_view, 7> drivers = {"",           "cdc_eem", "cdc_ether", "cdc_ncm",
                                                       "cdc_subset", "ipheth",  "rndis_host"};
  return traits.bus == "usb" && std::ranges::count(drivers, traits.driver) > 0;
}

}  // namespace

interface_traits_s read_interface_traits(const std::string& root, const std::string& name) {
  const fs::path folder = fs::path(root) / name;
  interface_traits_s traits;
  std::ifstream(folder / "type") >> traits.hardware_type;
  traits.devtype = read_devtype(folder / "uevent");
  traits.bus = link_name(folder / "device/subsystem");
  traits.driver = link_name(folder / "device/driver");
  traits.wireless = has_entry(folder / "wireless") || has_entry(folder / "phy80211");
  traits.tunnel = has_entry(folder / "tun_flags");
  return traits;
}

netstatus_interface_type_t interface_kind(const interface_traits_s& traits) {
  // Modems speak raw IP, which looks like a tunnel, and often sit on USB; Wi-Fi radios may sit on USB too.
  if (traits.devtype == "wwan" || traits.hardware_type == ARPHRD_RAWIP) return NETSTATUS_INTERFACE_TYPE_CELLULAR;
  if (traits.wireless || traits.devtype == "wlan") return NETSTATUS_INTERFACE_TYPE_WIFI;
  if (traits.devtype == "bluetooth") return NETSTATUS_INTERFACE_TYPE_BLUETOOTH_DUN;
  if (is_tunnel(traits)) return NETSTATUS_INTERFACE_TYPE_VPN;
  if (is_tethered(traits)) return NETSTATUS_INTERFACE_TYPE_USB;
  // Also bridges, bonds and the ends of container links: whatever they lead to, they are Ethernet.
  if (traits.hardware_type == ARPHRD_ETHER) return NETSTATUS_INTERFACE_TYPE_WIRED;
  return NETSTATUS_INTERFACE_TYPE_UNKNOWN;
}
