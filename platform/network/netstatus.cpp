#include "platform/network/netstatus.h"

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <netinet/in.h>

#include <array>
#include <cerrno>
#include <string>
#include <vector>

#include "platform/network/interface_kind.h"
#include "platform/network/route.h"

struct netstatus_info_s {
  std::string default_interface;
};

struct netstatus_interface_details_s {
  netstatus_interface_type_t type;
  std::vector<std::string> addresses;
};

namespace {

/// Empty for an address of another family or of link-local scope.
std::string address_text(const sockaddr* address, int family) {
  if (address == nullptr || address->sa_family != family) return {};
  const void* bytes = nullptr;
  if (family == AF_INET) {
    bytes = &reinterpret_cast<const sockaddr_in*>(address)->sin_addr;
  } else {
    const in6_addr* v6 = &reinterpret_cast<const sockaddr_in6*>(address)->sin6_addr;
    if (IN6_IS_ADDR_LINKLOCAL(v6)) return {};
    bytes = v6;
  }
  std::array<char, INET6_ADDRSTRLEN> text{};
  return inet_ntop(family, bytes, text.data(), text.size()) ? text.data() : std::string();
}

std::vector<std::string> interface_addresses(const std::string& name) {
  std::vector<std::string> addresses;
  ifaddrs* list = nullptr;
  if (getifaddrs(&list) != 0) return addresses;
  for (const int family : {AF_INET, AF_INET6}) {
    for (const ifaddrs* entry = list; entry != nullptr; entry = entry->ifa_next) {
      if (name != entry->ifa_name) continue;
      if (std::string text = address_text(entry->ifa_addr, family); !text.empty()) addresses.push_back(std::move(text));
    }
  }
  freeifaddrs(list);
  return addresses;
}

}  // namespace

int netstatus_get_interface_details(const char* name, netstatus_interface_details_t** details) {
  *details = nullptr;
  std::string wanted = name ? name : "";
  if (name == nullptr) {
    if (const int error = default_interface(&wanted)) return error;
  }
  if (if_nametoindex(wanted.c_str()) == 0) return ENODEV;
  *details = new netstatus_interface_details_s{interface_kind(read_interface_traits("/sys/class/net", wanted)),
                                               interface_addresses(wanted)};
  return 0;
}

netstatus_interface_type_t netstatus_interface_get_type(const netstatus_interface_details_t* details) {
  return details->type;
}

const char* netstatus_interface_get_ip_address(const netstatus_interface_details_t* details, int index) {
  const auto at = static_cast<std::size_t>(index);
  return index >= 0 && at < details->addresses.size() ? details->addresses[at].c_str() : nullptr;
}

void netstatus_free_interface_details(netstatus_interface_details_t** details) {
  delete *details;
  *details = nullptr;
}

int netstatus_get_info(netstatus_info_t** info) {
  *info = nullptr;
  std::string name;
  if (const int error = default_interface(&name)) return error;
  *info = new netstatus_info_s{std::move(name)};
  return 0;
}

const char* netstatus_info_get_default_interface(const netstatus_info_t* info) {
  return info->default_interface.empty() ? nullptr : info->default_interface.c_str();
}

void netstatus_free_info(netstatus_info_t** info) {
  delete *info;
  *info = nullptr;
}
