#pragma once

// The default route, asked of the kernel by rtnetlink. Any thread.

#include <cstddef>
#include <span>
#include <string>

/// The interface of a kernel's answer to a request for one route.
/// @return its index; 0 when the answer is an error, is cut short, or names a route that leads nowhere
int route_interface(std::span<const std::byte> answer);

/// The interface that traffic to the Internet leaves by, IPv4 before IPv6. The kernel makes the choice, with its
/// metrics and rules, so that a VPN counts that leaves the main table's default route alone.
/// @param name  receives the interface's name, empty without a default route
/// @return 0 or EIO
int default_interface(std::string* name);
