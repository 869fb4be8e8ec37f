#pragma once

// The kernel's network interfaces. "Default" is the interface of the default route. Any thread.

using netstatus_info_t = struct netstatus_info_s;
using netstatus_interface_details_t = struct netstatus_interface_details_s;

enum netstatus_interface_type_t {
  NETSTATUS_INTERFACE_TYPE_UNKNOWN = 0,
  NETSTATUS_INTERFACE_TYPE_WIRED = 1,
  NETSTATUS_INTERFACE_TYPE_WIFI = 2,
  NETSTATUS_INTERFACE_TYPE_BLUETOOTH_DUN = 3,
  NETSTATUS_INTERFACE_TYPE_USB = 4,
  NETSTATUS_INTERFACE_TYPE_VPN = 5,
  NETSTATUS_INTERFACE_TYPE_BB = 6,
  NETSTATUS_INTERFACE_TYPE_CELLULAR = 7,
  NETSTATUS_INTERFACE_TYPE_P2P = 8,
};

/// @param name  null: the default interface
/// @return 0, ENODEV (no such interface, no default route) or EIO. The caller frees the details.
int netstatus_get_interface_details(const char* name, netstatus_interface_details_t** details);
netstatus_interface_type_t netstatus_interface_get_type(const netstatus_interface_details_t* details);
/// IPv4 addresses first. Null past the last one. Valid until the details are freed.
const char* netstatus_interface_get_ip_address(const netstatus_interface_details_t* details, int index);
void netstatus_free_interface_details(netstatus_interface_details_t** details);

/// @return 0 or EIO. The caller frees the information.
int netstatus_get_info(netstatus_info_t** info);
/// Null if there is no default route. Valid until the information is freed.
const char* netstatus_info_get_default_interface(const netstatus_info_t* info);
void netstatus_free_info(netstatus_info_t** info);
