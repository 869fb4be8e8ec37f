#pragma once

// The default route, from the kernel through rtnetlink. Any thread.

#include <cstddef>
#include <span>
#include <string>

/// The interface in the kernel's answer to a request for one route.
/// @return its index; 0 if the answer is an error or truncated, or names an unreachable route
int route_interface(std::span<const std::byte> answer);

/// The interface used for traffic to the Internet, IPv4 before IPv6. The kernel chooses by its metrics and rules, so
/// that a VPN counts even if it leaves the main table's default route alone.
/// @param name receives the interface's name; empty without a default route
/// @return 0 or EIO
int default_interface(std::string* name);
