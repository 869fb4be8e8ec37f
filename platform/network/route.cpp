#include "platform/network/route.h"

#include <arpa/inet.h>
#include <linux/rtnetlink.h>
#include <net/if.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>

namespace {

// Reserved Internet addresses: the route to them is the default route. Nothing is sent there.
constexpr const char* probe_v4 = "203.0.113.1";
constexpr const char* probe_v6 = "2000::1";

struct Request {
  nlmsghdr header;
  rtmsg route;
  rtattr destination;
  std::array<unsigned char, sizeof(in6_addr)> address;
};

Request make_request(int family, const char* destination) {
  Request request{};
  const std::size_t address_size = family == AF_INET ? sizeof(in_addr) : sizeof(in6_addr);
  request.header.nlmsg_len = static_cast<__u32>(offsetof(Request, address) + address_size);
  request.header.nlmsg_type = RTM_GETROUTE;
  request.header.nlmsg_flags = NLM_F_REQUEST;
  request.route.rtm_family = static_cast<unsigned char>(family);
  request.route.rtm_dst_len = static_cast<unsigned char>(address_size * 8);
  request.destination.rta_len = static_cast<unsigned short>(RTA_LENGTH(address_size));
  request.destination.rta_type = RTA_DST;
  inet_pton(family, destination, request.address.data());
  return request;
}

/// Copies the T at a possibly unaligned offset.
/// @return false past the end
template <typename T>
bool read_at(std::span<const std::byte> bytes, std::size_t offset, T* out) {
  if (offset > bytes.size() || bytes.size() - offset < sizeof(T)) return false;
  std::memcpy(out, bytes.data() + offset, sizeof(T));
  return true;
}

/// @return 0 if there is no such route
int ask(int netlink, int family, const char* destination) {
  const Request request = make_request(family, destination);
  if (send(netlink, &request, request.header.nlmsg_len, 0) < 0) return 0;
  std::array<std::byte, 8192> answer;
  const ssize_t size = recv(netlink, answer.data(), answer.size(), 0);
  return size > 0 ? route_interface(std::span(answer).first(static_cast<std::size_t>(size))) : 0;
}

}  // namespace

int route_interface(std::span<const std::byte> answer) {
  nlmsghdr header;
  rtmsg route;
  if (!read_at(answer, 0, &header) || header.nlmsg_type != RTM_NEWROUTE || header.nlmsg_len > answer.size()) return 0;
  if (!read_at(answer, NLMSG_HDRLEN, &route) || route.rtm_type != RTN_UNICAST) return 0;
  const std::span message = answer.first(header.nlmsg_len);
  std::size_t offset = NLMSG_HDRLEN + NLMSG_ALIGN(sizeof(rtmsg));
  for (rtattr attribute; read_at(message, offset, &attribute) && attribute.rta_len >= sizeof attribute;
       offset += RTA_ALIGN(attribute.rta_len)) {
    int index = 0;
    if (attribute.rta_type == RTA_OIF && read_at(message, offset + RTA_LENGTH(0), &index)) return index;
  }
  return 0;
}

int default_interface(std::string* name) {
  name->clear();
  const int netlink = socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_ROUTE);
  if (netlink < 0) return EIO;
  // The kernel answers during the send; an emulated one might not answer at all.
  const timeval patience{.tv_sec = 1, .tv_usec = 0};
  setsockopt(netlink, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
  int index = ask(netlink, AF_INET, probe_v4);
  if (index == 0) index = ask(netlink, AF_INET6, probe_v6);
  close(netlink);
  std::array<char, IF_NAMESIZE> buffer{};
  if (index > 0 && if_indextoname(static_cast<unsigned>(index), buffer.data())) *name = buffer.data();
  return 0;
}
